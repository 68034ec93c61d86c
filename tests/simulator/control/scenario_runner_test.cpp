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
    void receive(const bytes& content) { target.receive(peer_of(1), std::as_bytes(std::span(content))); }

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
