// What a client meets in each of the scenarios that are installed. A test's name begins with its scenario's.
#include "faults/scenario_bench.hpp"
#include "simulator/simulation/verbs.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

namespace fault_tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr compensation as_made{true, 0.75F};

unsigned times(const std::vector<std::string>& notes, const std::string& note) {
    return static_cast<unsigned>(std::count(notes.begin(), notes.end(), note));
}

// The log's lines but for those of connections.
std::vector<std::string> logged(scenario_bench& bench) {
    std::vector<std::string> lines = bench.log.take_messages();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("Connected: cid["); });
    return lines;
}

TEST(shipped_scenario, healthy_pair_serves_two_devices_as_they_were_configured) {
    scenario_bench bench("healthy_pair");
    bench.enter(1);
    EXPECT_EQ(bench.open(1001).refusal, 0U);
    EXPECT_EQ(bench.list(16).count, 2U);
    EXPECT_EQ(bench.ask_gravity(1).answer, (compensation{true, 0.5F}));
    vantu_orvanta_device device{};
    ASSERT_EQ(vantu_orvanta_device_info(bench.client().context(), 1, &device), 0);
    EXPECT_EQ(device.detail.orvanta3.handedness, vantu_orvanta_handedness_left);
    const std::uint64_t states = bench.cursor_states;
    bench.pass(1000);
    EXPECT_GE(bench.cursor_states, states + 99);
    EXPECT_GE(bench.grip_states, 99U);
    EXPECT_THAT(bench.codes, IsEmpty());
    EXPECT_THAT(logged(bench), IsEmpty());
}

TEST(shipped_scenario, lossy_line_leaves_some_handlers_waiting_and_calls_none_twice) {
    constexpr int asked = 200;
    scenario_bench bench("lossy_line");
    bench.enter(1);
    std::vector<int> calls(asked, 0);
    for (int& count : calls) {
        EXPECT_EQ(
            bench.client().config_gravity_compensation_get(1,
                                                           [&count](library_client&, const auto& answer) {
                                                               ++count;
                                                               EXPECT_EQ(answer.error, nullptr);
                                                           }),
            0);
        bench.pass(20);
    }
    const auto& faults = bench.simulated.faults();
    bench.pass_until([&] { return faults.happened(vantu::orvanta::simulator::fault_kind::reorder) > 0; });
    EXPECT_GT(std::count(calls.begin(), calls.end(), 0), 0);
    EXPECT_GT(std::count(calls.begin(), calls.end(), 1), asked / 3);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), [](int count) { return count > 1; }), 0);
    // A copy of an answer finds no handler.
    EXPECT_THAT(bench.unasked, Contains(as_made));
    EXPECT_GT(faults.happened(vantu::orvanta::simulator::fault_kind::drop), 0U);
    EXPECT_THAT(bench.codes, IsEmpty());
    EXPECT_THAT(logged(bench), IsEmpty());
}

TEST(shipped_scenario, restart_in_use_is_noticed_by_the_next_request_and_brings_saved_values_back) {
    scenario_bench bench("restart_in_use");
    bench.enter(1);
    const handled set = bench.set_gravity(1, {false, 0.25F});
    EXPECT_EQ(set.answer, (compensation{false, 0.25F}));
    bench.pass_until([&] { return bench.simulated.counters().restarts == 1; });
    const std::uint64_t states = bench.cursor_states;
    bench.pass(500);
    EXPECT_LE(bench.cursor_states, states + 1) << "but for one that was on its way";
    EXPECT_EQ(bench.ask_gravity(1).refusal, 176U);
    EXPECT_THAT(bench.notes, IsEmpty()) << "nobody has told the client";
    bench.leave();
    bench.enter(1);
    EXPECT_EQ(bench.ask_gravity(1).answer, as_made);
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenario, unplug_while_streaming_takes_the_device_away_and_brings_it_back) {
    scenario_bench bench("unplug_while_streaming");
    bench.enter(1);
    const std::int64_t opened_ms = bench.now_ms();
    bench.pass_until([&] { return times(bench.notes, "removed 1") == 1; });
    EXPECT_GE(bench.now_ms() - opened_ms, 1999);
    const std::uint64_t states = bench.cursor_states;
    EXPECT_GE(states, 199U);
    EXPECT_EQ(bench.list(16).count, 0U);
    EXPECT_EQ(bench.ask_gravity(1).refusal, 192U);
    bench.pass_until([&] { return times(bench.notes, "listed 1") == 1; });
    EXPECT_GE(bench.now_ms() - opened_ms, 3999);
    EXPECT_EQ(bench.cursor_states, states) << "a device that is back is not open";
    EXPECT_EQ(bench.ask_gravity(1).refusal, 177U);
    EXPECT_EQ(bench.open(1).refusal, 0U);
    bench.pass_until([&] { return bench.cursor_states > states; });
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenario, crowded_desk_has_more_devices_than_the_room_for_sixteen) {
    constexpr std::int32_t buffer_full = 9;
    scenario_bench bench("crowded_desk");
    ASSERT_EQ(bench.connect(), 0);
    const auto short_of_room = bench.list(16);
    EXPECT_EQ(short_of_room.code, buffer_full);
    EXPECT_EQ(short_of_room.count, 16U);
    EXPECT_EQ(bench.list(17).code, 0);
    bench.pass_until([&] { return times(bench.notes, "removed 1005") == 1; });
    EXPECT_GE(bench.now_ms(), 9999);
    EXPECT_EQ(bench.list(16).code, 0);
    EXPECT_EQ(bench.list(16).count, 16U);
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenario, refused_handshake_lets_the_third_client_in) {
    scenario_bench bench("refused_handshake");
    EXPECT_EQ(bench.connect(), 178);
    EXPECT_EQ(bench.connect(), 9);
    bench.enter(1);
    EXPECT_EQ(bench.ask_gravity(1).answer, as_made);
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenario, slow_and_late_answers_the_first_question_long_after_the_second) {
    scenario_bench bench("slow_and_late");
    bench.enter(1);
    std::vector<char> order;
    std::int64_t first_ms = 0;
    const std::int64_t asked_ms = bench.now_ms();
    EXPECT_EQ(bench.client().config_gravity_compensation_get(1,
                                                             [&](library_client&, const auto& answer) {
                                                                 EXPECT_EQ(answer.error, nullptr);
                                                                 first_ms = bench.now_ms() - asked_ms;
                                                             }),
              0);
    const handled second = bench.ask_gravity(1);
    EXPECT_EQ(second.answer, as_made);
    EXPECT_GE(second.after_ms, 19);
    EXPECT_LT(second.after_ms, 200);
    EXPECT_EQ(first_ms, 0) << "it still waits";
    bench.pass_until([&] { return first_ms != 0; });
    EXPECT_GE(first_ms, 819);
    EXPECT_THAT(bench.unasked, IsEmpty());
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenario, stale_and_forged_has_answers_of_yesterday_believed_and_a_device_that_is_not_there) {
    scenario_bench bench("stale_and_forged");
    bench.enter(1);
    EXPECT_EQ(bench.ask_gravity(1).answer, as_made);
    EXPECT_THAT(bench.notes, IsEmpty());
    bench.leave();
    EXPECT_TRUE(run_verb(bench.simulated, "set 1 gravity on 0.25").good);
    bench.enter(1);
    bench.pass_until([&] { return times(bench.notes, "gravity of 4095") == 1; });
    EXPECT_EQ(times(bench.notes, "listed 4095"), 1U);
    bench.unasked.clear();
    EXPECT_EQ(bench.ask_gravity(1).answer, as_made) << "the answer to the same tag of the session before";
    bench.pass_until([&] { return !bench.unasked.empty(); });
    EXPECT_THAT(bench.unasked, ElementsAre(compensation{true, 0.25F}));
    EXPECT_EQ(bench.list(16).count, 2U);
    EXPECT_EQ(bench.open(4095).refusal, 192U);
    EXPECT_THAT(bench.codes, IsEmpty());
}

TEST(shipped_scenarios, have_a_test_and_a_walk_each) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS_FOLDER)) {
        files.insert(entry.path().stem().string());
    }
    ASSERT_GE(files.size(), 6U);
    const auto& program = *testing::UnitTest::GetInstance();
    std::vector<std::string> names;
    for (int suite = 0; suite < program.total_test_suite_count(); ++suite) {
        const testing::TestSuite& tests = *program.GetTestSuite(suite);
        for (int i = 0; std::string(tests.name()) == "shipped_scenario" && i < tests.total_test_count();
             ++i) {
            names.emplace_back(tests.GetTestInfo(i)->name());
        }
    }
    EXPECT_EQ(names.size(), files.size());
    std::ifstream stream(DOCS_FOLDER "/simulator.md");
    const std::string document{std::istreambuf_iterator<char>(stream), {}};
    for (const std::string& file : files) {
        EXPECT_THAT(names, Contains(StartsWith(file + '_')));
        EXPECT_THAT(document, HasSubstr("\n`orvanta-simulator --scenario " + file + ".json"));
        EXPECT_FALSE(
            vantu::orvanta::simulator::read_scenario(SCENARIOS_FOLDER "/" + file + ".json").about.empty());
    }
}

} // namespace
} // namespace fault_tests
