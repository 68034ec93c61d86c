// The client library and a simulation that plays one of the scenarios that are installed.
#include "faults/scenario_fixture.hpp"

#include "faults/fault_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <utility>

namespace orvanta_tests {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;

namespace {

prepared_settings settings_of(const std::string& scenario_path) {
    service_simulator::settings wanted;
    wanted.scenario_path = scenario_path;
    return prepare(wanted);
}

std::string about(const std::string& what, unsigned device_id) {
    return what + ' ' + std::to_string(device_id);
}

compensation value_of(const gravity& record) {
    return {record.enabled != 0, record.scaling_factor};
}

compensation answer_in(const reply<gravity>& answer) {
    return answer.record != nullptr ? value_of(*answer.record) : compensation{};
}

compensation answer_in(const reply<void>& /*answer*/) {
    return {};
}

// A handler that keeps what it is called with, and fails the test when it is called twice.
template <typename Record>
reply_handler<Record> keep_in(const std::shared_ptr<std::optional<handled>>& result) {
    return [result](library_client&, const reply<Record>& answer) {
        EXPECT_FALSE(result->has_value());
        *result = handled{0, answer.error != nullptr ? answer.error->status : 0, answer_in(answer)};
    };
}

} // namespace

scenario_fixture::scenario_fixture(const std::string& name)
    : scenario_fixture(settings_of(SCENARIOS_FOLDER "/" + name + ".json")) {}

scenario_fixture::scenario_fixture(prepared_settings prepared)
    : simulated(std::move(prepared.simulated)), runner_(
                                                    simulated, std::move(prepared.script.steps),
                                                    [](std::string_view) {}, prepared.script.for_each_client),
      server_(
          simulated, sockets_, [this] { return now_ns_; },
          [this](std::int64_t until_ns) { runner_.advance_to(until_ns); }) {
    for (const fault_rule& rule : prepared.faults) {
        simulated.add_fault(rule);
    }
}

scenario_fixture::~scenario_fixture() {
    simulated.faults().heal();
    leave();
}

library_client::config scenario_fixture::callbacks() {
    library_client::config wanted;
    wanted.on_device = [this](library_client&, unsigned id, const vantu_orvanta_device&) {
        notes.push_back(about("listed", id));
    };
    wanted.on_device_removed = [this](library_client&, unsigned id) {
        notes.push_back(about("removed", id));
    };
    wanted.on_disconnected = [this](library_client&) { notes.emplace_back("disconnected"); };
    wanted.on_error = [this](library_client&, unsigned id, const vantu_orvanta_error& error) {
        notes.push_back(about("error " + std::to_string(error.status) + " of", id));
    };
    wanted.on_config_gravity_compensation = [this](library_client&, unsigned id, const gravity& value) {
        notes.push_back(about("gravity of", id));
        unasked.push_back(value_of(value));
    };
    wanted.on_cursor_state = [this](library_client&, unsigned, const vantu_orvanta_cursor_state& state) {
        ++cursor_states;
        cursor = state;
    };
    wanted.on_palmetron_state = [this](library_client&, unsigned, const vantu_orvanta_palmetron_state&) {
        ++grip_states;
    };
    return wanted;
}

void scenario_fixture::while_serving(const std::function<void()>& blocking) {
    const auto call = std::async(std::launch::async, blocking);
    while (call.wait_for(std::chrono::microseconds(200)) != std::future_status::ready) {
        now_ns_ += ns_per_millisecond;
        server_.serve_waiting();
    }
    server_.serve_waiting();
}

std::int32_t scenario_fixture::connect() {
    return connect(patience_ns);
}

std::int32_t scenario_fixture::connect(std::uint64_t timeout_ns) {
    client_ = std::make_unique<library_client>(callbacks());
    if (prepare) {
        prepare(client_->context());
    }
    std::int32_t code = -1;
    while_serving([&] {
        code = vantu_orvanta_connect_ports(client_->context(), "0", sockets_.port().c_str(), "scenario", 0, 0,
                                           keep_alive_ns, timeout_ns);
    });
    connected_ = code == 0;
    return code;
}

void scenario_fixture::leave() {
    while_serving([this] { client_.reset(); });
    connected_ = false;
}

void scenario_fixture::enter(unsigned device_id) {
    ASSERT_EQ(connect(), 0);
    ASSERT_EQ(open(device_id).refusal, 0U);
}

void scenario_fixture::poll() {
    vantu_orvanta_event event{};
    for (int idle = 0; connected_ && idle < 2; ++idle) {
        const std::int32_t code = vantu_orvanta_poll(client_->context(), &event);
        if (code == vantu_orvanta_invalid_connection_state) {
            connected_ = false;
        } else if (code != 0) {
            codes.push_back(code);
            idle = -1;
        } else {
            if (on_event && event.event_type != vantu_orvanta_event_none) {
                on_event(event);
            }
            idle = client_->dispatch(event) ? -1 : idle;
        }
    }
}

void scenario_fixture::pass(std::int64_t milliseconds) {
    for (std::int64_t i = 0; i < milliseconds; ++i) {
        now_ns_ += ns_per_millisecond;
        server_.serve_waiting();
        poll();
    }
}

void scenario_fixture::pass_until(const std::function<bool()>& is_so) {
    const std::int64_t start_ms = now_ms();
    while (!is_so()) {
        ASSERT_LT(now_ms() - start_ms, 60'000) << "it does not come about";
        pass(1);
    }
}

handled scenario_fixture::outcome_of(std::int64_t since_ns, const std::optional<handled>& result) {
    pass_until([&result] { return result.has_value(); });
    handled seen = result.value_or(handled{});
    seen.after_ms = (now_ns_ - since_ns) / ns_per_millisecond;
    return seen;
}

handled scenario_fixture::open(unsigned device_id) {
    const auto result = std::make_shared<std::optional<handled>>();
    EXPECT_EQ(client_->device_open(device_id, 0, keep_in<void>(result)), 0);
    return outcome_of(now_ns_, *result);
}

handled scenario_fixture::ask_gravity(unsigned device_id) {
    const auto result = std::make_shared<std::optional<handled>>();
    EXPECT_EQ(client_->config_gravity_compensation_get(device_id, keep_in<gravity>(result)), 0);
    return outcome_of(now_ns_, *result);
}

handled scenario_fixture::set_gravity(unsigned device_id, const compensation& value) {
    const auto result = std::make_shared<std::optional<handled>>();
    const gravity wanted{static_cast<std::uint8_t>(value.on ? 1 : 0), value.factor};
    EXPECT_EQ(client_->config_gravity_compensation_set(device_id, wanted, keep_in<gravity>(result)), 0);
    return outcome_of(now_ns_, *result);
}

scenario_fixture::listing scenario_fixture::list(std::size_t room) {
    std::vector<std::uint32_t> ids(room);
    std::size_t count = room;
    const std::int32_t code = vantu_orvanta_device_ids(client_->context(), ids.data(), &count);
    return {code, count};
}

std::int64_t scenario_fixture::now_ms() const {
    return now_ns_ / ns_per_millisecond;
}

} // namespace orvanta_tests
