// The state of a simulation as the data of the public header.
#include "simulator/library/implementation.hpp"
#include "simulator/simulation/verbs.hpp"

#include <algorithm>

namespace vantu::orvanta {

using namespace simulator;

namespace {

std::chrono::nanoseconds time_of(std::uint64_t ns) {
    const auto longest = static_cast<std::uint64_t>(std::chrono::nanoseconds::max().count());
    return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(ns, longest)));
}

std::size_t opened_by(const simulation& simulated, std::uint32_t device_id) {
    const auto has_it = [device_id](const simulator::client& one) {
        return std::any_of(one.opened.begin(), one.opened.end(),
                           [device_id](const open_device& opened) { return opened.id == device_id; });
    };
    return static_cast<std::size_t>(
        std::count_if(simulated.clients().begin(), simulated.clients().end(), has_it));
}

service_simulator::configuration configuration_of(const simulator::device& one) {
    return {one.settings.gravity_compensation, one.settings.scaling_factor, one.settings.torque_scaling,
            one.settings.handedness == vantu_orvanta_handedness_left};
}

} // namespace

std::vector<service_simulator::client> service_simulator::clients() const {
    return implementation_->look([](const simulation& simulated) {
        std::vector<client> all;
        for (const simulator::client& one : simulated.clients()) {
            auto& made = all.emplace_back();
            made.id = one.id;
            made.number = simulated.number_of(one);
            made.name = one.name;
            made.address = address_text(one.address);
            for (const open_device& opened : one.opened) {
                made.opened.push_back(opened.id);
            }
            made.keep_alive = time_of(one.keep_alive_ns);
            made.silent_for = std::chrono::nanoseconds(simulated.now_ns() - one.last_heard_ns);
        }
        return all;
    });
}

std::vector<service_simulator::device> service_simulator::devices() const {
    return implementation_->look([](const simulation& simulated) {
        std::vector<device> all;
        for (const simulator::device& one : simulated.devices()) {
            auto& made = all.emplace_back();
            const operation_counts::of_device counted = simulated.operations().of(one.id);
            made.id = one.id;
            made.type = one.is_orvanta3() ? device_type::orvanta3 : device_type::palmetron;
            made.short_id = one.description.short_id;
            made.uuid = uuid_text(one);
            made.configured = one.is_orvanta3() ? configuration_of(one) : configuration{};
            made.opened_by = opened_by(simulated, one.id);
            made.requests = counted.requests;
            made.states = counted.states;
        }
        return all;
    });
}

std::vector<service_simulator::rule> service_simulator::rules() const {
    return implementation_->look([](const simulation& simulated) {
        std::vector<rule> all;
        for (const rule_state& one : simulated.faults().rules()) {
            all.push_back({one.number, one.rule.name, text_of(one.rule), one.fitted, one.happened});
        }
        return all;
    });
}

} // namespace vantu::orvanta
