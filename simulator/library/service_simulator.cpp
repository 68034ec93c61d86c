// The functions of the public class, each a look at the implementation or a call of it; clients, devices and
// rules are in snapshots.cpp.
#include "vantu/orvanta/simulator.hpp"

#include "simulator/library/implementation.hpp"
#include "simulator/simulation/conditions.hpp"
#include "simulator/simulation/verbs.hpp"

namespace vantu::orvanta {

using namespace simulator;

namespace {

communication::direction travels(service_simulator::direction way) {
    return way == service_simulator::direction::in ? communication::direction::to_service
                                                   : communication::direction::to_client;
}

} // namespace

service_simulator::service_simulator(const settings& wanted)
    : implementation_(std::make_unique<implementation>(wanted)) {}

service_simulator::~service_simulator() = default;

const std::string& service_simulator::port() const noexcept {
    return implementation_->port();
}

std::uint64_t service_simulator::seed() const noexcept {
    return implementation_->seed();
}

const std::string& service_simulator::about() const noexcept {
    return implementation_->about();
}

std::size_t service_simulator::failed_steps() const {
    return implementation_->failed_steps();
}

std::string service_simulator::command(std::string_view line) {
    return implementation_->command(line);
}

std::string service_simulator::status() const {
    return implementation_->look([](const simulation& simulated) { return status_text(simulated); });
}

service_simulator::counters service_simulator::count() const {
    return implementation_->look([](const simulation& simulated) {
        const simulation_counters& counted = simulated.counters();
        return counters{counted.received, counted.sent, counted.restarts, simulated.clients().size(),
                        simulated.devices().size()};
    });
}

std::uint64_t service_simulator::operations(direction way, std::string_view operation) const {
    const communication::operation& wanted = operation_named(travels(way), operation);
    return implementation_->look([&wanted](const simulation& simulated) {
        return simulated.operations().of(wanted.way, wanted.code);
    });
}

bool service_simulator::wait_for(direction way, std::string_view operation, std::chrono::nanoseconds longest,
                                 std::uint64_t count) const {
    const communication::operation& wanted = operation_named(travels(way), operation);
    return implementation_->wait_until(
        [&wanted, count](const simulation& simulated) {
            return simulated.operations().of(wanted.way, wanted.code) >= count;
        },
        longest);
}

std::uint64_t service_simulator::happened(std::string_view fault) const {
    const fault_row& row = fault_named(fault);
    return implementation_->look(
        [&row](const simulation& simulated) { return simulated.faults().happened(row.kind); });
}

std::chrono::nanoseconds service_simulator::now() const {
    return std::chrono::nanoseconds(
        implementation_->look([](const simulation& simulated) { return simulated.now_ns(); }));
}

bool service_simulator::has_quit() const {
    return implementation_->has_quit();
}

void service_simulator::serve(const std::function<bool()>& ends, std::chrono::nanoseconds longest_sleep) {
    implementation_->serve(ends, longest_sleep);
}

void service_simulator::start() {
    implementation_->start();
}

void service_simulator::stop() {
    implementation_->stop();
}

void service_simulator::advance(std::chrono::nanoseconds by) {
    implementation_->advance(by);
}

std::size_t service_simulator::serve_waiting() {
    return implementation_->serve_waiting();
}

} // namespace vantu::orvanta
