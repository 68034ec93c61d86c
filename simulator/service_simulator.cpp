// The simulator as a class for programs of other people.
#include "vantu/orvanta/simulator.hpp"

#include "network/socket.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/control/scenario_runner.hpp"
#include "simulator/service/streams.hpp"
#include "simulator/simulation/verbs.hpp"
#include "simulator/sockets/server.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <charconv>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vantu::orvanta {
namespace {

using namespace simulator;

std::uint64_t random_seed() {
    std::random_device source;
    return (static_cast<std::uint64_t>(source()) << 32U) | source();
}

bool is_port(const std::string& text) {
    std::uint16_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc{} && stop == end;
}

// Throws for what is out of range.
service_simulator::settings checked(service_simulator::settings wanted) {
    if (!is_port(wanted.port)) {
        throw std::invalid_argument(
            formatted("port '{}'; a decimal number from 0 to 65535 would be right", wanted.port));
    }
    if (std::max(wanted.orvanta3_count, wanted.palmetron_count) > most_devices_of_a_type) {
        throw std::invalid_argument(formatted("more than {} devices of a type; 0 to {} would be right",
                                              most_devices_of_a_type, most_devices_of_a_type));
    }
    if (!(wanted.rate_hz >= 0 && wanted.rate_hz <= greatest_rate_hz)) {
        throw std::invalid_argument(
            formatted("rate {} Hz; 0 to {} would be right", wanted.rate_hz, greatest_rate_hz));
    }
    return wanted;
}

scenario scenario_of(const std::string& path) {
    return path.empty() ? scenario{} : read_scenario(path);
}

std::optional<saved_state> state_of(const std::string& path) {
    return path.empty() ? std::nullopt : std::make_optional<saved_state>(path);
}

const std::string& with_sockets(const std::string& port) {
    [[maybe_unused]] static const bool started = (socket_startup(), true);
    return port;
}

} // namespace

class service_simulator::implementation {
  public:
    explicit implementation(settings wanted)
        : wanted_(checked(std::move(wanted))), scenario_(scenario_of(wanted_.scenario_path)),
          state_(state_of(wanted_.state_path)), simulated_(simulated_settings()),
          sockets_(with_sockets(wanted_.port)),
          runner_(simulated_, scenario_.steps, [this](std::string_view text) { tell(text); }),
          server_(
              simulated_, sockets_, [this] { return time_ns(); }, drive()) {}

    ~implementation() { stop(); }
    implementation(const implementation&) = delete;
    implementation& operator=(const implementation&) = delete;

    [[nodiscard]] const std::string& port() const noexcept { return sockets_.port(); }
    [[nodiscard]] std::uint64_t seed() const noexcept { return simulated_.seed(); }

    // Calls the function with the simulation, and with the lock held.
    template <typename Function> auto look(Function function) const {
        const std::scoped_lock lock(mutex_);
        return function(simulated_);
    }

    std::string command(std::string_view line) {
        const std::scoped_lock lock(mutex_);
        if (!quit_) {
            runner_.advance_to(time_ns());
        }
        const verb_result result = run_verb(simulated_, line);
        if (!result.good) {
            throw std::invalid_argument(result.text);
        }
        runner_.attend();
        if (result.quit || runner_.has_quit()) {
            quit();
        }
        server_.send_outgoing();
        return result.text;
    }

    [[nodiscard]] bool has_quit() const {
        const std::scoped_lock lock(mutex_);
        return quit_;
    }

    void start() {
        refuse_if(wanted_.manual_clock, "start needs a simulator without a manual clock");
        if (thread_.joinable()) {
            return;
        }
        const std::scoped_lock lock(mutex_);
        stopping_ = false;
        clock_ = [base = simulated_.now_ns(), steady = make_steady_clock()] { return base + steady(); };
        thread_ = std::thread([this] { serve(); });
    }

    void stop() {
        {
            const std::scoped_lock lock(mutex_);
            stopping_ = true;
        }
        if (thread_.joinable()) {
            thread_.join();
        }
        const std::scoped_lock lock(mutex_);
        clock_ = {};
        say_goodbye();
    }

    void advance(std::chrono::nanoseconds by) {
        refuse_if(!wanted_.manual_clock, "advance needs a simulator with a manual clock");
        if (by.count() < 0) {
            throw std::invalid_argument("time cannot move back; 0 or more nanoseconds would be right");
        }
        // In steps, so that what is sent does not pile up.
        constexpr std::int64_t longest_step_ns = 100'000'000;
        const std::scoped_lock lock(mutex_);
        const std::int64_t end_ns = manual_ns_ + by.count();
        while (manual_ns_ < end_ns) {
            manual_ns_ = std::min(end_ns, manual_ns_ + longest_step_ns);
            move();
        }
    }

    std::size_t serve_waiting() {
        refuse_if(!wanted_.manual_clock, "serve_waiting needs a simulator with a manual clock");
        const std::scoped_lock lock(mutex_);
        std::size_t all = 0;
        for (std::size_t taken = 1; taken > 0 && !quit_; all += taken) {
            taken = server_.serve_waiting();
            notice_quit();
        }
        return all;
    }

  private:
    static void refuse_if(bool wrong, const char* what) {
        if (wrong) {
            throw std::logic_error(what);
        }
    }

    simulation_settings simulated_settings() {
        simulation_settings made;
        made.announce = wanted_.devices == announce::before ? announce_order::before : announce_order::after;
        made.single_client = wanted_.single_client;
        made.rate_hz = wanted_.rate_hz;
        made.seed = wanted_.seed ? *wanted_.seed : scenario_.seed ? *scenario_.seed : random_seed();
        made.devices =
            scenario_.devices.value_or(make_devices(wanted_.orvanta3_count, wanted_.palmetron_count));
        made.state = state_ ? &*state_ : nullptr;
        made.narrate = [this](std::string_view text) { tell(text); };
        made.warn = made.narrate;
        return made;
    }

    simulation_drive drive() {
        return {[this](std::int64_t since_start_ns) { runner_.advance_to(since_start_ns); },
                [this] { runner_.attend(); }, [this] { return runner_.next_due_ns(); }};
    }

    void tell(std::string_view text) const {
        if (wanted_.narrate) {
            wanted_.narrate(text);
        }
    }

    // Stands still while nothing moves it.
    [[nodiscard]] std::int64_t time_ns() const {
        if (wanted_.manual_clock) {
            return manual_ns_;
        }
        return clock_ ? clock_() : simulated_.now_ns();
    }

    void move() {
        if (!quit_) {
            runner_.advance_to(manual_ns_);
            server_.send_outgoing();
            notice_quit();
        }
    }

    void notice_quit() {
        if (runner_.has_quit() && !quit_) {
            quit();
        }
    }

    void quit() {
        quit_ = true;
        say_goodbye();
    }

    void say_goodbye() {
        simulated_.say_goodbye();
        server_.send_outgoing();
    }

    void serve() {
        // A datagram that a command has made due is late by this at most.
        constexpr std::int64_t longest_sleep_ns = 10'000'000;
        platform::make_sleeps_precise();
        for (;;) {
            std::int64_t sleep_ns = 0;
            {
                const std::scoped_lock lock(mutex_);
                if (stopping_ || quit_) {
                    return;
                }
                server_.serve_waiting();
                notice_quit();
                sleep_ns = std::clamp<std::int64_t>(runner_.next_due_ns() - time_ns(), 0, longest_sleep_ns);
            }
            (void)wait_for_packets(sockets_.sockets(), platform::steady_now_ns() + sleep_ns);
        }
    }

    settings wanted_;
    scenario scenario_;
    std::optional<saved_state> state_;
    simulation simulated_;
    listeners sockets_;
    scenario_runner runner_;
    server server_;
    mutable std::mutex mutex_; // guards all above and below but the thread
    clock_function clock_;     // while the thread serves
    std::int64_t manual_ns_{0};
    bool stopping_{false};
    bool quit_{false};
    std::thread thread_;
};

service_simulator::service_simulator(settings wanted)
    : implementation_(std::make_unique<implementation>(std::move(wanted))) {}

service_simulator::~service_simulator() = default;

const std::string& service_simulator::port() const noexcept {
    return implementation_->port();
}

std::uint64_t service_simulator::seed() const noexcept {
    return implementation_->seed();
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

std::uint64_t service_simulator::happened(std::string_view fault) const {
    const fault_row* const row = find_fault(fault);
    if (row == nullptr) {
        throw std::invalid_argument(
            formatted("'{}' is no fault; one of those that 'help' lists would be right", fault));
    }
    return implementation_->look(
        [row](const simulation& simulated) { return simulated.faults().happened(row->kind); });
}

std::chrono::nanoseconds service_simulator::now() const {
    return std::chrono::nanoseconds(
        implementation_->look([](const simulation& simulated) { return simulated.now_ns(); }));
}

bool service_simulator::has_quit() const {
    return implementation_->has_quit();
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
