// A scenario played with a whole simulation, by a clock moved by hand.
#include "simulator/control/scenario_runner.hpp"

#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class a_scenario_runner : public testing::Test {
  protected:
    a_scenario_runner() : target(settings()) {}

    static simulation_settings settings() {
        simulation_settings made;
        made.devices = make_devices(1, 1);
        made.rate_hz = 0;
        return made;
    }
    void receive(const bytes& content, unsigned from = 1) {
        target.receive(peer_of(from), std::as_bytes(std::span(content)));
    }

    simulation target;
    std::vector<std::string> shown;
    const scenario_runner::print_function print{[this](std::string_view text) { shown.emplace_back(text); }};
};

scenario_step timed_step(std::int64_t due_ms, std::vector<std::string> verbs) {
    return {std::nullopt, due_ms * ns_per_millisecond, std::move(verbs)};
}

TEST_F(a_scenario_runner, does_each_verb_at_its_time_however_far_the_clock_jumps) {
    scenario_runner tested(target, {timed_step(10, {"status"}), timed_step(1500, {"status"})}, print);
    tested.advance_to(2 * ns_per_second);
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_THAT(shown[0], HasSubstr("tick 100, 0.010 s\n"));
    EXPECT_THAT(shown[1], HasSubstr("tick 15000, 1.500 s\n"));
    EXPECT_EQ(target.now_ns(), 2 * ns_per_second);
}

TEST_F(a_scenario_runner, says_when_there_is_something_to_do) {
    scenario_runner tested(target, {timed_step(10, {"heal"})}, print);
    EXPECT_EQ(tested.next_due_ns(), 10 * ns_per_millisecond);
    tested.advance_to(9 * ns_per_millisecond);
    EXPECT_EQ(tested.next_due_ns(), 10 * ns_per_millisecond);
    tested.advance_to(10 * ns_per_millisecond);
    EXPECT_EQ(tested.next_due_ns(), never_ns);
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(a_scenario_runner, does_what_waited_for_a_datagram_right_after_it) {
    scenario_runner tested(target, {{scenario_trigger{scenario_event::connect, 0, 1}, 0, {"unplug 1"}}},
                           print);
    tested.advance_to(ns_per_second);
    EXPECT_EQ(target.devices().size(), 2U);
    receive(datagram({connect_operation(0)}));
    EXPECT_EQ(target.devices().size(), 2U);
    tested.attend();
    EXPECT_THAT(shown, ElementsAre("unplugged 1\n"));
    ASSERT_EQ(target.devices().size(), 1U);
    EXPECT_EQ(target.devices()[0].id, 1001U);
}

// The answer that is held back is sent inside the jump, and the delay counts from there.
TEST_F(a_scenario_runner, sees_events_on_the_way_of_a_jump) {
    scenario_runner tested(
        target,
        {timed_step(0, {"delay 300"}),
         {scenario_trigger{scenario_event::connect, 0, 1}, 200 * ns_per_millisecond, {"status"}}},
        print);
    tested.advance_to(0);
    receive(datagram({connect_operation(0)}));
    tested.advance_to(10 * ns_per_second);
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_THAT(shown[0], HasSubstr(", 0.800 s\n"));
}

TEST_F(a_scenario_runner, repeats_a_step_at_its_times_however_far_the_clock_jumps) {
    scenario_step step = timed_step(10, {"plug palmetron"});
    step.every_ns = 20 * ns_per_millisecond;
    step.times = 3;
    scenario_runner tested(target, {step, timed_step(49, {"status"})}, print);
    tested.advance_to(ns_per_second);
    EXPECT_THAT(shown, ElementsAre("plugged in 1002\n", "plugged in 1003\n", HasSubstr(", 0.049 s\n"),
                                   "plugged in 1004\n"));
    EXPECT_EQ(tested.next_due_ns(), never_ns);
}

// The step answers its own event; time passes between.
TEST_F(a_scenario_runner, does_not_stand_still_with_a_step_that_brings_its_own_event) {
    scenario_runner tested(
        target, {{scenario_trigger{scenario_event::connect, 0, 1, true}, 0, {"send connected"}}}, print);
    receive(datagram({connect_operation(0)}));
    tested.attend();
    const std::uint64_t sent = target.counters().sent;
    tested.advance_to(10 * simulation_tick_ns);
    EXPECT_EQ(target.counters().sent, sent + 10);
}

TEST_F(a_scenario_runner, takes_what_a_step_brings_for_an_event_of_the_next_tick) {
    scenario_runner tested(
        target,
        {timed_step(5, {"send connected"}), {scenario_trigger{scenario_event::connect, 0, 2}, 0, {"status"}}},
        print);
    receive(datagram({connect_operation(0)}));
    tested.advance_to(ns_per_second);
    EXPECT_THAT(shown, ElementsAre(HasSubstr("tick 51, ")));
}

class a_runner_for_each_client : public a_scenario_runner {
  protected:
    void connect(unsigned from, std::uint64_t keep_alive_ns = 0) {
        receive(datagram({connect_operation(0, keep_alive_ns)}), from);
        tested.attend();
    }
    scenario_runner tested{target,
                           {timed_step(10, {"send 01 client=this"}),
                            {scenario_trigger{scenario_event::goodbye}, 0, {"plug palmetron"}},
                            {scenario_trigger{scenario_event::goodbye}, ns_per_millisecond, {"status"}}},
                           print,
                           true};
};

TEST_F(a_runner_for_each_client, plays_the_steps_from_each_acceptance_on) {
    tested.advance_to(100 * ns_per_millisecond);
    connect(5);
    tested.advance_to(103 * ns_per_millisecond);
    connect(3);
    (void)target.take_outgoing();
    tested.advance_to(110 * ns_per_millisecond);
    ASSERT_EQ(target.take_outgoing().size(), 1U);
    tested.advance_to(112 * ns_per_millisecond);
    EXPECT_EQ(target.take_outgoing().size(), 0U);
    tested.advance_to(113 * ns_per_millisecond);
    const auto last = target.take_outgoing();
    ASSERT_EQ(last.size(), 1U);
    EXPECT_TRUE(same_peer(last[0].to, peer_of(3)));
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(a_runner_for_each_client, drops_the_steps_of_a_client_that_has_said_goodbye_after_that_event) {
    connect(5);
    receive(datagram({{0xFF, 0x05, 0x00, 0x00, 0x00}}), 5);
    tested.attend();
    EXPECT_THAT(shown, ElementsAre("plugged in 1002\n"));
    tested.advance_to(ns_per_second);
    EXPECT_EQ(shown.size(), 1U) << "neither its step at 10 ms, which would fail, nor the later one";
    EXPECT_EQ(tested.failures(), 0U);
}

TEST_F(a_runner_for_each_client, drops_the_steps_of_clients_that_are_silent_or_forgotten_by_a_restart) {
    connect(5, 2 * ns_per_millisecond);
    connect(3);
    tested.advance_to(5 * ns_per_millisecond);
    ASSERT_EQ(target.clients().size(), 1U);
    connect(4);
    target.restart();
    (void)target.take_outgoing();
    connect(6);
    (void)target.take_outgoing();
    tested.advance_to(ns_per_second);
    EXPECT_EQ(target.take_outgoing().size(), 1U);
    EXPECT_EQ(tested.failures(), 0U);
}

TEST_F(a_runner_for_each_client, starts_over_for_a_client_that_is_accepted_again) {
    connect(5);
    tested.advance_to(7 * ns_per_millisecond);
    connect(5);
    (void)target.take_outgoing();
    tested.advance_to(16 * ns_per_millisecond);
    EXPECT_EQ(target.take_outgoing().size(), 0U);
    tested.advance_to(17 * ns_per_millisecond);
    EXPECT_EQ(target.take_outgoing().size(), 1U);
    tested.advance_to(ns_per_second);
    EXPECT_EQ(target.take_outgoing().size(), 0U);
}

TEST_F(a_scenario_runner, stops_at_quit) {
    scenario_runner tested(target, {timed_step(10, {"quit", "status"}), timed_step(20, {"status"})}, print);
    tested.advance_to(ns_per_second);
    EXPECT_TRUE(tested.has_quit());
    EXPECT_EQ(target.now_ns(), 10 * ns_per_millisecond);
    tested.advance_to(2 * ns_per_second);
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(a_scenario_runner, shows_why_a_verb_cannot_be_done_now) {
    scenario_runner tested(target, {timed_step(1, {"unplug 7", "status"})}, print);
    tested.advance_to(ns_per_millisecond);
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_THAT(shown[0], testing::StartsWith("error: unplug 7: there is no device 7; "));
    EXPECT_EQ(shown[0].back(), '\n');
}

TEST_F(a_scenario_runner, observes_no_longer_than_it_lives) {
    { scenario_runner tested(target, {}, print); }
    receive(datagram({connect_operation(0)}));
    EXPECT_EQ(target.clients().size(), 1U);
}

} // namespace
} // namespace orvanta_tests
