// A client in each of the scenarios that are installed. A test's name begins with its scenario's.
#include "faults/scenario_fixture.hpp"
#include "simulator/simulation/verbs.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

namespace orvanta_tests {
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
std::vector<std::string> logged(scenario_fixture& fixture) {
    std::vector<std::string> lines = fixture.log.take_messages();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("Connected: cid["); });
    return lines;
}

TEST(shipped_scenario, healthy_pair_serves_two_devices_as_they_were_configured) {
    scenario_fixture fixture("healthy_pair");
    fixture.enter(1);
    EXPECT_EQ(fixture.open(1001).refusal, 0U);
    EXPECT_EQ(fixture.list(16).count, 2U);
    EXPECT_EQ(fixture.ask_gravity(1).answer, (compensation{true, 0.5F}));
    vantu_orvanta_device device{};
    ASSERT_EQ(vantu_orvanta_device_info(fixture.client().context(), 1, &device), 0);
    EXPECT_EQ(device.detail.orvanta3.handedness, vantu_orvanta_handedness_left);
    const std::uint64_t states = fixture.cursor_states;
    fixture.pass(1000);
    EXPECT_GE(fixture.cursor_states, states + 99);
    EXPECT_GE(fixture.grip_states, 99U);
    EXPECT_THAT(fixture.codes, IsEmpty());
    EXPECT_THAT(logged(fixture), IsEmpty());
}

TEST(shipped_scenario, lossy_line_leaves_some_handlers_waiting_and_calls_none_twice) {
    constexpr int asked = 200;
    scenario_fixture fixture("lossy_line");
    fixture.enter(1);
    std::vector<int> calls(asked, 0);
    for (int& count : calls) {
        EXPECT_EQ(
            fixture.client().config_gravity_compensation_get(1,
                                                             [&count](library_client&, const auto& answer) {
                                                                 ++count;
                                                                 EXPECT_EQ(answer.error, nullptr);
                                                             }),
            0);
        fixture.pass(20);
    }
    const auto& faults = fixture.simulated.faults();
    fixture.pass_until([&] { return faults.happened(vantu::orvanta::simulator::fault_kind::reorder) > 0; });
    EXPECT_GT(std::count(calls.begin(), calls.end(), 0), 0);
    EXPECT_GT(std::count(calls.begin(), calls.end(), 1), asked / 3);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), [](int count) { return count > 1; }), 0);
    // A copy of an answer finds no handler.
    EXPECT_THAT(fixture.unasked, Contains(as_made));
    EXPECT_GT(faults.happened(vantu::orvanta::simulator::fault_kind::drop), 0U);
    EXPECT_THAT(fixture.codes, IsEmpty());
    EXPECT_THAT(logged(fixture), IsEmpty());
}

TEST(shipped_scenario, restart_in_use_is_noticed_by_the_next_request_and_brings_saved_values_back) {
    scenario_fixture fixture("restart_in_use");
    fixture.enter(1);
    const handled set = fixture.set_gravity(1, {false, 0.25F});
    EXPECT_EQ(set.answer, (compensation{false, 0.25F}));
    fixture.pass_until([&] { return fixture.simulated.counters().restarts == 1; });
    const std::uint64_t states = fixture.cursor_states;
    fixture.pass(500);
    EXPECT_LE(fixture.cursor_states, states + 1) << "but for one that was on its way";
    EXPECT_EQ(fixture.ask_gravity(1).refusal, 176U);
    EXPECT_THAT(fixture.notes, IsEmpty()) << "nobody has told the client";
    fixture.leave();
    fixture.enter(1);
    EXPECT_EQ(fixture.ask_gravity(1).answer, as_made);
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, unplug_while_streaming_takes_the_device_away_and_brings_it_back) {
    scenario_fixture fixture("unplug_while_streaming");
    fixture.enter(1);
    const std::int64_t opened_ms = fixture.now_ms();
    fixture.pass_until([&] { return times(fixture.notes, "removed 1") == 1; });
    EXPECT_GE(fixture.now_ms() - opened_ms, 1999);
    const std::uint64_t states = fixture.cursor_states;
    EXPECT_GE(states, 199U);
    EXPECT_EQ(fixture.list(16).count, 0U);
    EXPECT_EQ(fixture.ask_gravity(1).refusal, 192U);
    fixture.pass_until([&] { return times(fixture.notes, "listed 1") == 1; });
    EXPECT_GE(fixture.now_ms() - opened_ms, 3999);
    EXPECT_EQ(fixture.cursor_states, states) << "a device that is back is not open";
    EXPECT_EQ(fixture.ask_gravity(1).refusal, 177U);
    EXPECT_EQ(fixture.open(1).refusal, 0U);
    fixture.pass_until([&] { return fixture.cursor_states > states; });
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, crowded_desk_has_more_devices_than_the_room_for_sixteen) {
    constexpr std::int32_t buffer_full = 9;
    scenario_fixture fixture("crowded_desk");
    ASSERT_EQ(fixture.connect(), 0);
    const auto short_of_room = fixture.list(16);
    EXPECT_EQ(short_of_room.code, buffer_full);
    EXPECT_EQ(short_of_room.count, 16U);
    EXPECT_EQ(fixture.list(17).code, 0);
    fixture.pass_until([&] { return times(fixture.notes, "removed 1005") == 1; });
    EXPECT_GE(fixture.now_ms(), 9999);
    EXPECT_EQ(fixture.list(16).code, 0);
    EXPECT_EQ(fixture.list(16).count, 16U);
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, refused_handshake_lets_the_third_client_in) {
    scenario_fixture fixture("refused_handshake");
    EXPECT_EQ(fixture.connect(), 178);
    EXPECT_EQ(fixture.connect(), 9);
    fixture.enter(1);
    EXPECT_EQ(fixture.ask_gravity(1).answer, as_made);
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, slow_and_late_answers_the_first_question_long_after_the_second) {
    scenario_fixture fixture("slow_and_late");
    fixture.enter(1);
    std::vector<char> order;
    std::int64_t first_ms = 0;
    const std::int64_t asked_ms = fixture.now_ms();
    EXPECT_EQ(fixture.client().config_gravity_compensation_get(1,
                                                               [&](library_client&, const auto& answer) {
                                                                   EXPECT_EQ(answer.error, nullptr);
                                                                   first_ms = fixture.now_ms() - asked_ms;
                                                               }),
              0);
    const handled second = fixture.ask_gravity(1);
    EXPECT_EQ(second.answer, as_made);
    EXPECT_GE(second.after_ms, 19);
    EXPECT_LT(second.after_ms, 200);
    EXPECT_EQ(first_ms, 0) << "it still waits";
    fixture.pass_until([&] { return first_ms != 0; });
    EXPECT_GE(first_ms, 819);
    EXPECT_THAT(fixture.unasked, IsEmpty());
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, stale_and_forged_has_answers_of_yesterday_believed_and_a_device_that_is_not_there) {
    scenario_fixture fixture("stale_and_forged");
    fixture.enter(1);
    EXPECT_EQ(fixture.ask_gravity(1).answer, as_made);
    EXPECT_THAT(fixture.notes, IsEmpty());
    fixture.leave();
    EXPECT_TRUE(run_verb(fixture.simulated, "set 1 gravity on 0.25").good);
    fixture.enter(1);
    fixture.pass_until([&] { return times(fixture.notes, "gravity of 4095") == 1; });
    EXPECT_EQ(times(fixture.notes, "listed 4095"), 1U);
    fixture.unasked.clear();
    EXPECT_EQ(fixture.ask_gravity(1).answer, as_made) << "the answer to the same tag of the session before";
    fixture.pass_until([&] { return !fixture.unasked.empty(); });
    EXPECT_THAT(fixture.unasked, ElementsAre(compensation{true, 0.25F}));
    EXPECT_EQ(fixture.list(16).count, 2U);
    EXPECT_EQ(fixture.open(4095).refusal, 192U);
    EXPECT_THAT(fixture.codes, IsEmpty());
}

TEST(shipped_scenario, gaps_for_each_client_stops_what_passes_for_the_last_of_every_three_seconds) {
    scenario_fixture fixture("gaps_for_each_client");
    for (int visit = 0; visit < 2; ++visit) {
        fixture.enter(1);
        for (int round = 0; round < 2; ++round) {
            const std::uint64_t before = fixture.cursor_states;
            fixture.pass(1980);
            EXPECT_GE(fixture.cursor_states, before + 190);
            EXPECT_EQ(fixture.ask_gravity(1).answer, as_made);
            fixture.pass(20);
            const std::uint64_t in_gap = fixture.cursor_states;
            fixture.pass(960);
            EXPECT_EQ(fixture.cursor_states, in_gap);
            fixture.pass(40);
        }
        fixture.leave();
        fixture.pass(700);
    }
    EXPECT_THAT(fixture.codes, IsEmpty());
    EXPECT_THAT(logged(fixture), IsEmpty());
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
} // namespace orvanta_tests
