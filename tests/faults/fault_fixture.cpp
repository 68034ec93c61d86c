// The client library and a simulation with faults, on real sockets in one process.
#include "faults/fault_fixture.hpp"

#include "faults/matrix.hpp"
#include "faults/system_text.hpp"
#include "simulator/service/motion.hpp"
#include "simulator/simulation/verbs.hpp"
#include "support/library_sockets.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <utility>

namespace orvanta_tests {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;

using library_client = vantu::orvanta::client; // the simulator has a record of that name

namespace {

const started_sockets sockets_of_the_program;

constexpr std::int64_t state_period_ns = 10 * ns_per_millisecond;
// More polls than a flood of the tables has datagrams: one that means nothing looks like none at all.
constexpr int polls_past_a_flood = 1100;

simulation_settings settings_with(double rate_hz) {
    simulation_settings settings;
    settings.rate_hz = rate_hz;
    settings.devices = make_devices(1, 0);
    return settings;
}

std::string event_name(std::uint32_t event_type) {
    for (const communication::operation& row : communication::operations) {
        if (row.event_type == event_type) {
            return std::string(row.name);
        }
    }
    return "event " + std::to_string(event_type);
}

std::string joined(std::vector<std::string> parts, const char* between, const char* none) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : between) + part;
    }
    return text.empty() ? none : text;
}

template <typename Record> std::string text_of(const reply<Record>& answer) {
    return answer.result == outcome::failed ? "failed" : "answered";
}

} // namespace

fault_fixture::fault_fixture(double rate_hz)
    : simulated(settings_with(rate_hz)), server_(simulated, sockets_, [this] { return now_ns_; }) {}

fault_fixture::~fault_fixture() {
    if (client_ != nullptr) {
        simulated.faults().heal();
        leave();
    }
}

void fault_fixture::tell(std::string_view verb) {
    if (verb.starts_with("flood")) {
        idle_polls_ = polls_past_a_flood;
    }
    for (const std::string_view one : verbs_of(verb)) {
        const verb_result result = run_verb(simulated, one);
        EXPECT_TRUE(result.good) << one << ": " << result.text;
    }
    server_.send_outgoing();
}

void fault_fixture::while_serving(const std::function<void()>& blocking) {
    const auto call = std::async(std::launch::async, blocking);
    while (call.wait_for(std::chrono::microseconds(200)) != std::future_status::ready) {
        now_ns_ += ns_per_millisecond;
        server_.serve_waiting();
    }
    server_.serve_waiting();
}

std::int32_t fault_fixture::connect(std::uint64_t timeout_ns) {
    if (client_ == nullptr) {
        client_ = std::make_unique<library_client>(library_client::config{});
    }
    std::int32_t code = -1;
    while_serving([&] {
        code = vantu_orvanta_connect_ports(client_->context(), "0", sockets_.port().c_str(), "matrix", 0, 0,
                                           keep_alive_ns, timeout_ns);
    });
    connected_ = code == 0;
    return code;
}

void fault_fixture::enter() {
    ASSERT_EQ(connect(patience_ns), 0);
    ASSERT_EQ(client_->device_open(1, 0, {}), 0);
    pass(0, 1);
    pass(simulator::simulation_tick_ns, 1);
    first_state_ns_ = simulated.now_ns();
    notes.clear();
    (void)log_.take();
}

std::int64_t fault_fixture::leave() {
    const auto start = std::chrono::steady_clock::now();
    while_serving([&] { client_.reset(); });
    connected_ = false;
    return (std::chrono::steady_clock::now() - start) / std::chrono::nanoseconds(1);
}

void fault_fixture::ask() {
    handled_.clear();
    const std::int32_t code = client_->config_gravity_compensation_get(
        1, [this](library_client&, const reply<vantu_orvanta_config_gravity_compensation>& answer) {
            handled_ = text_of(answer);
        });
    EXPECT_EQ(code, 0);
}

void fault_fixture::pass(std::int64_t step_ns, int steps) {
    for (int i = 0; i < steps; ++i) {
        now_ns_ += step_ns;
        server_.serve_waiting();
        take();
    }
}

void fault_fixture::take() {
    vantu_orvanta_event event{};
    for (int idle = 0; connected_ && idle < idle_polls_; ++idle) {
        const std::int32_t code = vantu_orvanta_poll(client_->context(), &event);
        if (code == vantu_orvanta_invalid_connection_state) {
            return;
        }
        if (code != 0) {
            notes.push_back("code " + std::to_string(code));
            idle = 0;
        } else if (event.event_type != 0) {
            note(event);
            idle = 0;
        }
    }
}

// The number of the period in which the state was measured.
std::string fault_fixture::text_of_state(const vantu_orvanta_event& event) const {
    const device& measured = simulated.devices().front();
    for (std::int64_t time_ns = first_state_ns_ - simulation_tick_ns; time_ns <= simulated.now_ns();
         time_ns += simulation_tick_ns) {
        const auto state = cursor_at(measured, time_ns);
        if (std::memcmp(event.payload, &state, sizeof state) == 0) {
            return ' ' +
                   std::to_string((time_ns - first_state_ns_ + 2 * simulation_tick_ns) / state_period_ns);
        }
    }
    return " of no time";
}

void fault_fixture::note(const vantu_orvanta_event& event) {
    std::string text = event_name(event.event_type);
    if (event.event_type == vantu_orvanta_event_cursor_state) {
        text += text_of_state(event);
    }
    if (event.event_type == vantu_orvanta_event_error) {
        vantu_orvanta_error error{};
        std::memcpy(&error, event.payload, sizeof error);
        text += " " + std::to_string(error.status);
    }
    if (event.device_id > 1) {
        text += " of " + std::to_string(event.device_id);
    }
    handled_.clear();
    client_->dispatch(event);
    if (!handled_.empty()) {
        text += ": handler " + std::exchange(handled_, {});
    }
    notes.push_back(text);
}

std::string fault_fixture::seen() {
    return joined(std::exchange(notes, {}), "; ", "nothing");
}

std::string fault_fixture::logged() {
    std::vector<std::string> lines = log_.take_messages();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("Connected: cid["); });
    std::transform(lines.begin(), lines.end(), lines.begin(), with_text_of_linux);
    return joined(std::move(lines), " / ", "-");
}

std::string fault_fixture::next() {
    simulated.faults().heal();
    pass(ns_per_millisecond, 1);
    notes.clear();
    if (!connected_) {
        return "connect " + std::to_string(connect(patience_ns));
    }
    std::string result = "no answer";
    const std::int32_t code = client_->device_open(1, 0, [&](library_client&, const reply<void>& answer) {
        result =
            answer.result == outcome::failed ? "refused " + std::to_string(answer.error->status) : "opened";
    });
    pass(ns_per_millisecond, 2);
    return code != 0 ? "code " + std::to_string(code) : result;
}

} // namespace orvanta_tests
