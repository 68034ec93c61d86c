#include "simulator/library/implementation.hpp"

#include "network/socket.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <stdexcept>

namespace vantu::orvanta {

using namespace simulator;

namespace {

void refuse_if(bool wrong, const char* what) {
    if (wrong) {
        throw std::logic_error(what);
    }
}

const std::string& with_sockets(const std::string& port) {
    [[maybe_unused]] static const bool started = (socket_startup(), true);
    return port;
}

} // namespace

service_simulator::implementation::implementation(const settings& wanted)
    : manual_clock_(wanted.manual_clock), prepared_(prepare(wanted)), simulated_(prepared_.simulated),
      sockets_(with_sockets(prepared_.chosen.port.value_or("0"))),
      record_(prepared_.chosen, simulated_, times()),
      runner_(
          simulated_, prepared_.script.steps, wanted.show ? wanted.show : [](std::string_view) {},
          prepared_.script.for_each_client),
      server_(
          simulated_, sockets_, [this] { return time_ns(); },
          [this](std::int64_t since_start_ns) { runner_.advance_to(since_start_ns); }) {
    for (const fault_rule& rule : prepared_.faults) {
        simulated_.add_fault(rule);
    }
    if (record_.is_wanted()) {
        server_.tell([this](const wire_datagram& what) { record_.note(what); });
        simulated_.watch_faults([this](const fault_note& what) { record_.note(what); });
    }
}

// With a manual clock a capture begins with the year 1970, so that it is the same each time.
record_times service_simulator::implementation::times() {
    return {[this] { return time_ns(); },
            [this] {
                using namespace std::chrono;
                return manual_clock_
                           ? manual_ns_
                           : duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
            }};
}

void service_simulator::implementation::tell_all() {
    record_.flush();
    happened_.notify_all();
}

// Stands still while nothing moves it.
std::int64_t service_simulator::implementation::time_ns() const {
    if (manual_clock_) {
        return manual_ns_;
    }
    return clock_ ? clock_() : simulated_.now_ns();
}

bool service_simulator::implementation::wait_until(const std::function<bool(const simulation&)>& holds,
                                                   std::chrono::nanoseconds longest) const {
    refuse_if(manual_clock_, "wait_for needs a simulator without a manual clock");
    // A time that the steady clock can reach.
    constexpr std::chrono::nanoseconds longest_of_all = std::chrono::hours(24 * 365);
    std::unique_lock lock(mutex_);
    return happened_.wait_for(lock, std::min(longest, longest_of_all), [&] { return holds(simulated_); });
}

std::string service_simulator::implementation::command(std::string_view line) {
    const std::scoped_lock lock(mutex_);
    server_.catch_up();
    const verb_result result = runner_.run(line);
    if (!result.good) {
        throw std::invalid_argument(result.text);
    }
    runner_.attend();
    notice_quit();
    server_.send_outgoing();
    tell_all();
    return result.text;
}

bool service_simulator::implementation::has_quit() const {
    const std::scoped_lock lock(mutex_);
    return runner_.has_quit();
}

void service_simulator::implementation::serve(const std::function<bool()>& ends,
                                              std::chrono::nanoseconds longest_sleep) {
    refuse_if(manual_clock_, "serve needs a simulator without a manual clock");
    begin();
    serve_until(ends, std::max<std::int64_t>(0, longest_sleep.count()));
}

void service_simulator::implementation::start() {
    refuse_if(manual_clock_, "start needs a simulator without a manual clock");
    if (thread_.joinable()) {
        if (!has_quit()) {
            return;
        }
        thread_.join();
    }
    begin();
    // A datagram that a command has made due is late by this at most.
    constexpr std::int64_t longest_sleep_ns = 10'000'000;
    try {
        thread_ = std::thread([this] { serve_until({}, longest_sleep_ns); });
    } catch (...) {
        end();
        throw;
    }
}

void service_simulator::implementation::stop() {
    {
        const std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    const std::scoped_lock lock(mutex_);
    say_goodbye();
}

void service_simulator::implementation::begin() {
    const std::scoped_lock lock(mutex_);
    refuse_if(serving_, "the simulator serves already");
    serving_ = true;
    stopping_ = false;
    runner_.go_on();
    clock_ = make_steady_clock(simulated_);
}

void service_simulator::implementation::serve_until(const std::function<bool()>& ends,
                                                    std::int64_t longest_ns) {
    platform::make_sleeps_precise();
    while (!ends || !ends()) {
        const auto due_ns = turn();
        if (!due_ns) {
            break;
        }
        (void)wait_for_packets(sockets_.sockets(),
                               platform::steady_now_ns() + std::clamp<std::int64_t>(*due_ns, 0, longest_ns));
    }
    end();
}

std::optional<std::int64_t> service_simulator::implementation::turn() {
    const std::scoped_lock lock(mutex_);
    if (stopping_ || runner_.has_quit()) {
        return std::nullopt;
    }
    server_.serve_waiting();
    tell_all();
    notice_quit();
    return runner_.has_quit() ? std::nullopt : std::make_optional(runner_.next_due_ns() - time_ns());
}

void service_simulator::implementation::end() {
    const std::scoped_lock lock(mutex_);
    say_goodbye();
    clock_ = {};
    serving_ = false;
}

void service_simulator::implementation::advance(std::chrono::nanoseconds by) {
    refuse_if(!manual_clock_, "advance needs a simulator with a manual clock");
    if (by.count() < 0 || by > longest_advance) {
        throw std::invalid_argument("time moves on by 0 to 24 hours at once");
    }
    // From one due time to the next, so that what is sent does not pile up, and each goes out at its time.
    const std::scoped_lock lock(mutex_);
    const std::int64_t end_ns = manual_ns_ + by.count();
    while (manual_ns_ < end_ns && !runner_.has_quit()) {
        manual_ns_ = std::clamp(runner_.next_due_ns(), manual_ns_ + 1, end_ns);
        runner_.advance_to(manual_ns_);
        server_.send_outgoing();
        notice_quit();
    }
    record_.flush();
    manual_ns_ = end_ns;
}

std::size_t service_simulator::implementation::serve_waiting() {
    refuse_if(!manual_clock_, "serve_waiting needs a simulator with a manual clock");
    const std::scoped_lock lock(mutex_);
    std::size_t all = 0;
    for (std::size_t taken = 1; taken > 0 && !runner_.has_quit(); all += taken) {
        taken = server_.serve_waiting();
        notice_quit();
    }
    record_.flush();
    return all;
}

void service_simulator::implementation::notice_quit() {
    if (runner_.has_quit()) {
        say_goodbye();
    }
}

void service_simulator::implementation::say_goodbye() {
    simulated_.say_goodbye();
    server_.send_outgoing();
    tell_all();
}

} // namespace vantu::orvanta
