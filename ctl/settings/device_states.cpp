#include "ctl/settings/device_states.hpp"

#include <chrono>
#include <string>
#include <thread>

namespace vantu::orvanta::ctl {
namespace {

constexpr auto between_looks = std::chrono::milliseconds(5);

} // namespace

session::callbacks device_states::callbacks() {
    session::callbacks told;
    told.on_motor_current = [this](session&, const motor_current& current) {
        keep(current.device_id, key::motor_current, current.values);
    };
    told.on_power_supply = [this](session&, const power_supply& supply) {
        keep(supply.device_id, key::power_supply, supply.state);
    };
    return told;
}

value device_states::wait_for(key which, const connection& to, std::uint32_t device_id) const {
    const auto end = std::chrono::steady_clock::now() + to.time_left();
    for (;;) {
        if (const auto told = last(device_id, which)) {
            return *told;
        }
        end_when_interrupted();
        (void)to.look_up(device_id);
        if (std::chrono::steady_clock::now() >= end) {
            throw failure_with_status(exit_status::timed_out,
                                      std::string(row_of(which).name) +
                                          ": the device has not told it in time; a longer --timeout may help",
                                      error_code::timed_out);
        }
        std::this_thread::sleep_for(between_looks);
    }
}

void device_states::keep(std::uint32_t device_id, key which, const value& told) {
    const std::lock_guard lock(mutex_);
    told_.insert_or_assign({device_id, which}, told);
}

std::optional<value> device_states::last(std::uint32_t device_id, key which) const {
    const std::lock_guard lock(mutex_);
    const auto found = told_.find({device_id, which});
    return found == told_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace vantu::orvanta::ctl
