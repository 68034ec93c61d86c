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
using testing::Pair;
using vantu::orvanta::ns_per_millisecond;
using vantu::orvanta::communication::direction;

scenario_step step_at(std::int64_t due_ms, std::vector<std::string> verbs) {
    return {std::nullopt, due_ms * ns_per_millisecond, std::move(verbs)};
}

scenario_step after(scenario_trigger trigger, std::int64_t delay_ms, std::vector<std::string> verbs) {
    return {trigger, delay_ms * ns_per_millisecond, std::move(verbs)};
}

TEST(scenario_schedule, hands_out_nothing_where_there_are_no_steps) {
    scenario_schedule schedule({});
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    EXPECT_THAT(schedule.take_due(never_ns - 1), IsEmpty());
}

TEST(scenario_schedule, hands_out_a_step_at_its_time_and_once) {
    scenario_schedule schedule({step_at(20, {"heal"})});
    EXPECT_EQ(schedule.next_due_ns(), 20 * ns_per_millisecond);
    EXPECT_THAT(schedule.take_due(20 * ns_per_millisecond - 1), IsEmpty());
    EXPECT_THAT(schedule.take_due(20 * ns_per_millisecond), ElementsAre("heal"));
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    EXPECT_THAT(schedule.take_due(30 * ns_per_millisecond), IsEmpty());
}

TEST(scenario_schedule, hands_out_late_steps_by_their_times_and_those_of_one_time_by_their_places) {
    scenario_schedule schedule({step_at(30, {"third"}), step_at(10, {"first", "and on"}),
                                step_at(20, {"second"}), step_at(10, {"first too"}),
                                step_at(40, {"not yet"})});
    EXPECT_EQ(schedule.next_due_ns(), 10 * ns_per_millisecond);
    constexpr std::int64_t late_ns = 35 * ns_per_millisecond;
    EXPECT_THAT(schedule.take_due(late_ns), ElementsAre("first", "and on", "first too"));
    EXPECT_THAT(schedule.take_due(late_ns), ElementsAre("second"));
    EXPECT_THAT(schedule.take_due(late_ns), ElementsAre("third"));
    EXPECT_THAT(schedule.take_due(late_ns), IsEmpty());
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

scenario_step repeated(scenario_step step, std::int64_t every_ms, std::uint64_t times) {
    step.every_ns = every_ms * ns_per_millisecond;
    step.times = times;
    return step;
}

scenario_step after_each(scenario_trigger trigger, std::int64_t delay_ms, std::vector<std::string> verbs) {
    trigger.each = true;
    return after(trigger, delay_ms, std::move(verbs));
}

// The times in milliseconds at which steps are due, up to one or the end, and their verbs.
std::vector<std::pair<std::int64_t, std::string>> played(scenario_schedule& schedule, std::int64_t until_ms) {
    std::vector<std::pair<std::int64_t, std::string>> all;
    while (schedule.next_due_ns() <= until_ms * ns_per_millisecond) {
        const std::int64_t due_ns = schedule.next_due_ns();
        for (const std::string& verb : schedule.take_due(due_ns)) {
            all.emplace_back(due_ns / ns_per_millisecond, verb);
        }
    }
    return all;
}

constexpr std::int64_t ms(std::int64_t milliseconds) {
    return milliseconds * ns_per_millisecond;
}

observed_operation accepted(std::uint64_t client) {
    return {direction::to_client, 4, {}, client};
}

TEST(scenario_schedule, repeats_a_step_so_many_times) {
    scenario_schedule schedule({repeated(step_at(10, {"a"}), 5, 3), step_at(15, {"b"})});
    EXPECT_THAT(played(schedule, 1'000'000),
                ElementsAre(Pair(10, "a"), Pair(15, "a"), Pair(15, "b"), Pair(20, "a")));
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    scenario_schedule once({repeated(step_at(10, {"a"}), 5, 1)});
    EXPECT_THAT(played(once, 1'000'000), ElementsAre(Pair(10, "a")));
}

TEST(scenario_schedule, repeats_a_step_without_an_end) {
    scenario_schedule schedule({repeated(step_at(0, {"a"}), 1, 0)});
    EXPECT_EQ(played(schedule, 9999).size(), 10'000U);
    EXPECT_EQ(schedule.next_due_ns(), ms(10'000));
}

TEST(scenario_schedule, begins_to_repeat_with_the_event) {
    scenario_schedule schedule({repeated(after({scenario_event::open, 0, 2}, 3, {"a"}), 10, 3)});
    schedule.observe({direction::to_client, 19}, ms(100));
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    schedule.observe({direction::to_client, 19}, ms(200));
    schedule.observe({direction::to_client, 19}, ms(204));
    EXPECT_THAT(played(schedule, 1000), ElementsAre(Pair(203, "a"), Pair(213, "a"), Pair(223, "a")));
}

TEST(scenario_schedule, comes_after_each_event_from_the_nth_on) {
    scenario_schedule schedule({after_each({scenario_event::open}, 5, {"each"}),
                                after_each({scenario_event::open, 0, 3}, 0, {"from the third"})});
    for (const std::int64_t at_ms : {10, 12, 12, 20}) {
        schedule.observe({direction::to_client, 19}, ms(at_ms));
    }
    EXPECT_THAT(played(schedule, 1000),
                ElementsAre(Pair(12, "from the third"), Pair(15, "each"), Pair(17, "each"), Pair(17, "each"),
                            Pair(20, "from the third"), Pair(25, "each")));
}

TEST(scenario_schedule, holds_so_many_events_of_a_step_and_no_more) {
    scenario_schedule schedule({after_each({scenario_event::open}, 5, {"each"})});
    for (std::size_t i = 0; i < scenario_schedule::most_waiting + 10; ++i) {
        schedule.observe({direction::to_client, 19}, 0);
    }
    EXPECT_EQ(played(schedule, 1000).size(), scenario_schedule::most_waiting);
    schedule.observe({direction::to_client, 19}, ms(2000));
    EXPECT_EQ(played(schedule, 3000).size(), 1U);
}

TEST(scenario_schedule, begins_with_the_acceptance_of_each_client) {
    scenario_schedule schedule(
        {step_at(10, {"drop @client=this"}), after({scenario_event::connect}, 0, {"hello"})}, true);
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    schedule.observe(accepted(7), ms(100));
    schedule.observe(accepted(2), ms(105));
    schedule.observe(accepted(3), ms(105));
    EXPECT_THAT(played(schedule, 1000),
                ElementsAre(Pair(100, "hello"), Pair(105, "hello"), Pair(105, "hello"),
                            Pair(110, "drop @client=7"), Pair(115, "drop @client=2"),
                            Pair(115, "drop @client=3")));
}

TEST(scenario_schedule, has_events_of_its_own_for_each_client) {
    scenario_schedule schedule({after({scenario_event::open, 0, 2}, 0, {"second of @client=this"})}, true);
    schedule.observe({direction::to_client, 19, {}, 1}, ms(1));
    for (const std::uint64_t client : {1U, 2U}) {
        schedule.observe(accepted(client), ms(2));
    }
    schedule.observe({direction::to_client, 19, {}, 1}, ms(3));
    schedule.observe({direction::to_client, 19, {}, 2}, ms(4));
    EXPECT_EQ(schedule.next_due_ns(), never_ns);
    schedule.observe({direction::to_client, 19, {}, 2}, ms(5));
    EXPECT_THAT(played(schedule, 1000), ElementsAre(Pair(5, "second of @client=2")));
}

TEST(scenario_schedule, begins_anew_for_a_client_that_is_accepted_again) {
    scenario_schedule schedule({repeated(step_at(10, {"a"}), 10, 2), after({scenario_event::open}, 0, {"b"})},
                               true);
    schedule.observe(accepted(1), ms(0));
    schedule.observe({direction::to_client, 19, {}, 1}, ms(5));
    EXPECT_THAT(played(schedule, 15), ElementsAre(Pair(5, "b"), Pair(10, "a")));
    schedule.observe(accepted(1), ms(15));
    schedule.observe({direction::to_client, 19, {}, 1}, ms(16));
    EXPECT_THAT(played(schedule, 1000), ElementsAre(Pair(16, "b"), Pair(25, "a"), Pair(35, "a")));
}

TEST(scenario_schedule, drops_the_steps_of_clients_that_are_not_kept) {
    scenario_schedule schedule({step_at(10, {"send 01 client=this"})}, true);
    for (const std::uint64_t client : {1U, 2U, 3U}) {
        schedule.observe(accepted(client), 0);
    }
    schedule.keep_clients(std::array<std::uint64_t, 2>{2, 4});
    EXPECT_THAT(played(schedule, 1000), ElementsAre(Pair(10, "send 01 client=2")));
    scenario_schedule of_all({step_at(10, {"heal"})});
    of_all.keep_clients({});
    EXPECT_THAT(played(of_all, 1000), ElementsAre(Pair(10, "heal")));
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
