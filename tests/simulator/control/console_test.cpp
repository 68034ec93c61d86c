// The control console, with verbs and times made up by the test.
#include "simulator/control/console.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::IsEmpty;
using vantu::orvanta::ns_per_millisecond;

class a_console : public testing::Test {
  protected:
    console made(bool prompts) {
        return {[this](std::string_view line) {
                    done.emplace_back(line);
                    if (line == "quit") {
                        return verb_result{true, true, ""};
                    }
                    if (line == "bad") {
                        return verb_result{false, false, "no verb 'bad'; 'heal' would be right"};
                    }
                    if (line == "expect clients = 2" && clients != 2) {
                        return verb_result{false, false,
                                           "expected clients = 2; it is " + std::to_string(clients)};
                    }
                    return verb_result{true, false, line == "status" ? "seed 1\nticks 2\n" : ""};
                },
                text_answer, [this](std::string_view text) { shown += text; }, prompts};
    }
    // The output since the last call.
    std::string take_shown() { return std::exchange(shown, {}); }

    std::vector<std::string> done;
    std::string shown;
    int clients{0};
};

TEST_F(a_console, answers_every_line_in_turn) {
    console tested = made(false);
    tested.take("status");
    tested.take("heal");
    tested.take("bad");
    EXPECT_THAT(done, IsEmpty());
    tested.attend(0);
    EXPECT_THAT(done, ElementsAre("status", "heal", "bad"));
    EXPECT_EQ(shown, "seed 1\nticks 2\nok\nerror: no verb 'bad'; 'heal' would be right\n");
    EXPECT_FALSE(tested.has_quit());
}

TEST_F(a_console, passes_over_empty_lines_and_remarks) {
    console tested = made(false);
    for (const char* line : {"", " \t", "# drop everything", "  #heal"}) {
        tested.take(line);
    }
    tested.attend(0);
    EXPECT_THAT(done, IsEmpty());
    EXPECT_EQ(shown, "");
}

TEST_F(a_console, does_nothing_after_quit) {
    console tested = made(false);
    tested.take("quit");
    tested.take("heal");
    tested.attend(0);
    EXPECT_TRUE(tested.has_quit());
    EXPECT_THAT(done, ElementsAre("quit"));
}

TEST_F(a_console, lets_a_script_wait_by_the_clock_that_it_is_given) {
    console tested = made(false);
    tested.take("wait 20");
    tested.take("heal");
    tested.take(" wait\t5");
    tested.take("status");
    EXPECT_FALSE(tested.is_waiting());
    tested.attend(7 * ns_per_millisecond);
    EXPECT_TRUE(tested.is_waiting());
    EXPECT_EQ(take_shown(), "ok\n");
    tested.attend(27 * ns_per_millisecond - 1);
    EXPECT_EQ(take_shown(), "");
    tested.attend(27 * ns_per_millisecond);
    EXPECT_EQ(take_shown(), "ok\nok\n");
    tested.attend(32 * ns_per_millisecond - 1);
    EXPECT_TRUE(tested.is_waiting());
    tested.attend(40 * ns_per_millisecond);
    EXPECT_EQ(take_shown(), "seed 1\nticks 2\n");
    EXPECT_FALSE(tested.is_waiting());
}

TEST_F(a_console, goes_on_as_soon_as_the_condition_of_a_wait_holds) {
    console tested = made(false);
    tested.take("wait 500 clients = 2");
    tested.take("status");
    tested.attend(0);
    EXPECT_TRUE(tested.is_waiting());
    EXPECT_EQ(take_shown(), "");
    clients = 2;
    tested.attend(ns_per_millisecond);
    EXPECT_EQ(take_shown(), "ok\nseed 1\nticks 2\n");
    EXPECT_FALSE(tested.has_failed());
    tested.take("wait 0 clients = 2");
    tested.attend(ns_per_millisecond);
    EXPECT_EQ(take_shown(), "ok\n");
}

TEST_F(a_console, says_what_a_wait_has_missed_when_its_time_is_over_and_goes_on) {
    console tested = made(false);
    tested.take("wait 500 clients = 2");
    tested.take("heal");
    tested.attend(0);
    clients = 1;
    tested.attend(500 * ns_per_millisecond - 1);
    EXPECT_EQ(take_shown(), "");
    EXPECT_FALSE(tested.has_failed());
    tested.attend(500 * ns_per_millisecond);
    EXPECT_EQ(take_shown(), "error: waited 500 ms for clients = 2; it is 1\nok\n");
    EXPECT_TRUE(tested.has_failed());
}

TEST_F(a_console, takes_no_other_word_for_a_wait) {
    console tested = made(false);
    tested.take("waiting 20");
    tested.take("wait");
    tested.attend(0);
    EXPECT_FALSE(tested.is_waiting());
    EXPECT_THAT(done, ElementsAre("waiting 20", "wait"));
}

TEST_F(a_console, goes_on_when_a_script_ends) {
    console tested = made(false);
    tested.take("heal");
    tested.end_of_input();
    tested.attend(0);
    EXPECT_EQ(shown, "ok\n");
    EXPECT_FALSE(tested.has_quit());
}

TEST_F(a_console, prompts_for_each_line_that_is_typed) {
    console tested = made(true);
    tested.attend(0);
    EXPECT_EQ(take_shown(), "> ");
    tested.attend(1);
    EXPECT_EQ(take_shown(), "");
    tested.take("heal");
    tested.take("status");
    tested.attend(2);
    EXPECT_EQ(take_shown(), "ok\nseed 1\nticks 2\n> ");
    tested.take("");
    tested.attend(3);
    EXPECT_EQ(take_shown(), "> ");
    tested.take("quit");
    tested.attend(4);
    EXPECT_EQ(take_shown(), "ok\n");
    EXPECT_TRUE(tested.has_quit());
}

TEST_F(a_console, prompts_again_when_a_wait_is_over) {
    console tested = made(true);
    tested.take("wait 10");
    tested.attend(0);
    EXPECT_EQ(take_shown(), "ok\n");
    tested.attend(10 * ns_per_millisecond);
    EXPECT_EQ(take_shown(), "> ");
}

TEST_F(a_console, quits_at_the_end_of_what_is_typed_once_all_of_it_is_done) {
    console tested = made(true);
    tested.take("wait 10");
    tested.take("heal");
    tested.end_of_input();
    tested.attend(0);
    EXPECT_FALSE(tested.has_quit());
    tested.attend(10 * ns_per_millisecond);
    EXPECT_TRUE(tested.has_quit());
    EXPECT_EQ(take_shown(), "ok\nok\n\n");
}

} // namespace
} // namespace orvanta_tests
