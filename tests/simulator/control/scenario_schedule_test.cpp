// The schedule of a scenario, with times and operations made up by the test.
#include "simulator/control/scenario_schedule.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <array>
#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::IsEmpty;
using vantu::orvanta::ns_per_millisecond;
using vantu::orvanta::communication::direction;

scenario_step step_at(std::int64_t due_ms, std::vector<std::string> verbs) {
    return {std::nullopt, due_ms * ns_per_millisecond, std::move(verbs)};
}

scenario_step after(scenario_trigger trigger, std::int64_t delay_ms, std::vector<std::string> verbs) {
    return {trigger, delay_ms * ns_per_millisecond, std::move(verbs)};
}

TEST(scenario_schedule, hands_out_nothing_where_there_are_no_steps) {
    scenario_schedule schedule;
    EXPECT_TRUE(schedule.is_finished());
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    EXPECT_THAT(schedule.take_due(never_ns - 1), IsEmpty());
}

TEST(scenario_schedule, hands_out_a_step_at_its_time_and_once) {
    scenario_schedule schedule({step_at(20, {"heal"})});
    EXPECT_EQ(schedule.next_due_ns(), 20 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(20 * ns_per_millisecond - 1), IsEmpty());
    EXPECT_FALSE(schedule.is_finished());
    EXPECT_THAT(schedule.take_due(20 * ns_per_millisecond), ElementsAre("heal"));
    EXPECT_TRUE(schedule.is_finished());
    EXPECT_THAT(schedule.take_due(30 * ns_per_millisecond), IsEmpty());
}

TEST(scenario_schedule, hands_out_late_steps_by_their_times_and_those_of_one_time_by_their_places) {
    scenario_schedule schedule({step_at(30, {"third"}), step_at(10, {"first", "and on"}),
                                step_at(20, {"second"}), step_at(10, {"first too"}),
                                step_at(40, {"not yet"})});
    EXPECT_EQ(schedule.next_due_ns(), 10 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(35 * ns_per_millisecond),
                ElementsAre("first", "and on", "first too", "second", "third"));
    EXPECT_EQ(schedule.next_due_ns(), 40 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(40 * ns_per_millisecond), ElementsAre("not yet"));
}

TEST(scenario_schedule, waits_for_an_event_and_then_for_the_delay) {
    scenario_schedule schedule({after({scenario_event::connect, 0, 1}, 5, {"unplug 1"})});
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    EXPECT_THAT(schedule.take_due(100 * ns_per_millisecond), IsEmpty());
    schedule.observe({direction::to_client, 4}, 100 * ns_per_millisecond);
    EXPECT_EQ(schedule.next_due_ns(), 105 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(104 * ns_per_millisecond), IsEmpty());
    schedule.observe({direction::to_client, 4}, 104 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(105 * ns_per_millisecond), ElementsAre("unplug 1"));
    schedule.observe({direction::to_client, 4}, 106 * ns_per_millisecond);
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
}

TEST(scenario_schedule, counts_events_from_the_start) {
    scenario_schedule schedule({after({scenario_event::request, 66, 3}, 0, {"third"}),
                                after({scenario_event::request, 0, 4}, 0, {"fourth of any"})});
    const observed_operation get{direction::to_service, 66};
    schedule.observe(get, 1);
    schedule.observe({direction::to_service, 67}, 2);
    schedule.observe(get, 3);
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    schedule.observe(get, 4);
    EXPECT_EQ(schedule.next_due_ns(), 4);
    EXPECT_THAT(schedule.take_due(4), ElementsAre("third", "fourth of any"));
}

// Each event by the operation that it stands for, and the operation of that code that goes the other way.
TEST(scenario_schedule, knows_its_events_by_operation_and_direction) {
    struct expectation {
        scenario_event event;
        observed_operation is;
        observed_operation is_not;
    };
    const expectation expectations[] = {
        {scenario_event::connect, {direction::to_client, 4}, {direction::to_service, 3}},
        {scenario_event::open, {direction::to_client, 19}, {direction::to_service, 18}},
        {scenario_event::close, {direction::to_client, 21}, {direction::to_service, 20}},
        {scenario_event::save, {direction::to_client, 64}, {direction::to_service, 64}},
        {scenario_event::goodbye, {direction::to_service, 5}, {direction::to_client, 6}},
        {scenario_event::request, {direction::to_service, 64}, {direction::to_client, 64}},
    };
    ASSERT_EQ(std::size(expectations), scenario_events.size());
    for (const expectation& one : expectations) {
        const scenario_trigger trigger{one.event, 0, 1};
        EXPECT_TRUE(is_event(trigger, one.is)) << static_cast<int>(one.is.code);
        EXPECT_FALSE(is_event(trigger, one.is_not)) << static_cast<int>(one.is_not.code);
    }
}

TEST(scenario_schedule, takes_no_keep_alive_connect_or_goodbye_for_a_request_unless_its_code_is_named) {
    for (const std::uint8_t code : std::to_array<std::uint8_t>({1, 3, 5})) {
        EXPECT_FALSE(is_event({scenario_event::request, 0, 1}, {direction::to_service, code}));
        EXPECT_TRUE(is_event({scenario_event::request, code, 1}, {direction::to_service, code}));
    }
    for (const std::uint8_t code : std::to_array<std::uint8_t>({18, 20, 47, 64, 66, 67, 68, 69, 71, 241})) {
        EXPECT_TRUE(is_event({scenario_event::request, 0, 1}, {direction::to_service, code}));
    }
    EXPECT_FALSE(is_event({scenario_event::request, 66, 1}, {direction::to_service, 67}));
}

} // namespace
} // namespace orvanta_tests
