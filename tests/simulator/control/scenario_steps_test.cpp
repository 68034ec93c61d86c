// Reading the steps of scenarios: what they hold, and what is said of wrong ones.
#include "simulator/fixtures/scenario_complaints.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using vantu::orvanta::ns_per_millisecond;

TEST(a_scenario, has_steps_at_times_and_after_events) {
    const scenario read = read_scenario_text(R"({"version": 1, "steps": [
        {"at": 1500, "do": "heal"},
        {"after": "open", "do": ["plug orvanta3", "unplug 1"]},
        {"after": {"event": "request", "op": 66, "n": 3}, "delay": 20, "do": "quit"},
        {"after": {"event": "request", "op": "config_save"}, "do": "restart"},
        {"after": {"event": "connect", "n": 2}, "delay": 0, "do": "goodbye"}]})");
    ASSERT_EQ(read.steps.size(), 5U);
    EXPECT_FALSE(read.steps[0].after);
    EXPECT_EQ(read.steps[0].due_ns, 1500 * ns_per_millisecond);
    EXPECT_THAT(read.steps[0].verbs, ElementsAre("heal"));
    EXPECT_EQ(read.steps[1].after->event, scenario_event::open);
    EXPECT_EQ(read.steps[1].after->nth, 1U);
    EXPECT_EQ(read.steps[1].due_ns, 0);
    EXPECT_THAT(read.steps[1].verbs, ElementsAre("plug orvanta3", "unplug 1"));
    EXPECT_EQ(read.steps[2].after->event, scenario_event::request);
    EXPECT_EQ(read.steps[2].after->code, 66);
    EXPECT_EQ(read.steps[2].after->nth, 3U);
    EXPECT_EQ(read.steps[2].due_ns, 20 * ns_per_millisecond);
    EXPECT_EQ(read.steps[3].after->code, 64);
    EXPECT_EQ(read.steps[4].after->event, scenario_event::connect);
    EXPECT_EQ(read.steps[4].after->nth, 2U);
}

TEST(a_scenario, has_steps_that_come_again) {
    const scenario read = read_scenario_text(R"({"version": 1, "steps": [
        {"at": 1000, "every": 500, "times": 10, "do": "heal"},
        {"after": "open", "delay": 5, "every": 1, "do": "heal"},
        {"after": {"event": "save", "n": 2}, "each": true, "do": "heal"},
        {"after": "save", "each": false, "do": "heal"}]})");
    ASSERT_EQ(read.steps.size(), 4U);
    EXPECT_EQ(read.steps[0].due_ns, 1000 * ns_per_millisecond);
    EXPECT_EQ(read.steps[0].every_ns, 500 * ns_per_millisecond);
    EXPECT_EQ(read.steps[0].times, 10U);
    EXPECT_EQ(read.steps[1].every_ns, ns_per_millisecond);
    EXPECT_EQ(read.steps[1].times, 0U);
    EXPECT_FALSE(read.steps[1].after->each);
    EXPECT_EQ(read.steps[2].after->nth, 2U);
    EXPECT_TRUE(read.steps[2].after->each);
    EXPECT_EQ(read.steps[2].every_ns, 0);
    EXPECT_FALSE(read.steps[3].after->each);
}

TEST(a_scenario, has_verbs_for_this_client_where_it_is_played_for_each) {
    const std::string step = R"({"at": 1, "do": ["drop 0.3@client=this", "send 01 client=this"]})";
    EXPECT_FALSE(read_scenario_text(R"({"version": 1, "steps": []})").for_each_client);
    for (const std::string& text : {R"({"version": 1, "steps": [)" + step + R"(], "for_each_client": true})",
                                    R"({"version": 1, "for_each_client": true, "steps": [)" + step + "]}"}) {
        const scenario read = read_scenario_text(text);
        EXPECT_TRUE(read.for_each_client);
        EXPECT_THAT(read.steps.at(0).verbs, ElementsAre("drop 0.3@client=this", "send 01 client=this"));
    }
    EXPECT_EQ(scenario_complaint("{\"version\": 1, \"for_each_client\": 1}"),
              "1: for_each_client is 1; true or false would be right");
    EXPECT_THAT(step_complaint(R"({"at": 1, "do": "drop 0.3@client=this"})"),
                StartsWith("3: step 1 do: drop: 'this' is no client's number"));
    EXPECT_THAT(scenario_complaint("{\"version\": 1, \"for_each_client\": true,\n"
                                   "\"steps\": [{\"at\": 1, \"do\": \"drop @client=that\"}]}"),
                StartsWith("2: step 1 do: drop: 'that' is no client's number"));
}

TEST(a_verb_for_a_client, has_its_number_in_the_place_of_this) {
    EXPECT_EQ(verb_for_client("drop 0.3@client=this", 12), "drop 0.3@client=12");
    EXPECT_EQ(verb_for_client("drop @op=66,client=this,as=loss-this", 3), "drop @op=66,client=3,as=loss-3");
    EXPECT_EQ(verb_for_client("send 01 client=this tag=1", 3), "send 01 client=3 tag=1");
    EXPECT_EQ(verb_for_client("heal loss-this", 3), "heal loss-3");
    for (const std::string same : {"heal this", "drop @as=this", "drop @client=thisone", "drop @client=1",
                                   "drop @as=loss-thisone", ""}) {
        EXPECT_EQ(verb_for_client(same, 3), same);
    }
}

TEST(a_scenario, with_a_wrong_step_is_refused) {
    EXPECT_THAT(step_complaint("\"heal\""), HasSubstr("3: step 1 is \"heal\"; an object with \"at\""));
    EXPECT_EQ(step_complaint(R"({"do": "heal"})"),
              "3: step 1 has neither \"at\" nor \"after\"; one of the two would be right");
    EXPECT_EQ(step_complaint(R"({"at": 1, "after": "open", "do": "heal"})"),
              "3: step 1 has both \"at\" and \"after\"; one of the two would be right");
    EXPECT_EQ(step_complaint("{\"at\": 1,\n\"delay\": 1, \"do\": \"heal\"}"),
              "4: step 1 has \"delay\" without \"after\"; \"delay\" belongs to \"after\"");
    EXPECT_EQ(step_complaint(R"({"at": 1, "each": true, "do": "heal"})"),
              "3: step 1 has \"each\" without \"after\"; \"each\" belongs to \"after\"");
    EXPECT_EQ(step_complaint("{\"at\": 1,\n\"times\": 2, \"do\": \"heal\"}"),
              "4: step 1 has \"times\" without \"every\"; \"times\" belongs to \"every\"");
    EXPECT_EQ(step_complaint(R"({"after": "open", "every": 1, "each": true, "do": "heal"})"),
              "3: step 1 has \"each\" and \"every\"; one of the two would be right");
    EXPECT_EQ(step_complaint(R"({"at": 1, "every": 0, "do": "heal"})"),
              "3: step 1 every is 0; a whole number from 1 to 1000000000 would be right");
    EXPECT_EQ(step_complaint(R"({"at": 1, "every": 1, "times": 0, "do": "heal"})"),
              "3: step 1 times is 0; a whole number from 1 to 4294967295 would be right");
    EXPECT_EQ(step_complaint(R"({"after": "open", "each": 1, "do": "heal"})"),
              "3: step 1 each is 1; true or false would be right");
    EXPECT_EQ(step_complaint(R"({"at": -1, "do": "heal"})"),
              "3: step 1 at is -1; a whole number from 0 to 1000000000 would be right");
    EXPECT_EQ(step_complaint(R"({"after": "open", "delay": "1", "do": "heal"})"),
              "3: step 1 delay is \"1\"; a whole number from 0 to 1000000000 would be right");
    EXPECT_THAT(
        step_complaint(R"({"at": 1, "do": "heal", "then": "quit"})"),
        HasSubstr("3: step 1 has an unknown member \"then\"; it may have \"at\", \"after\", \"delay\", "
                  "\"each\", \"every\", \"times\" and \"do\""));
    EXPECT_EQ(step_complaint(R"({"at": 1})"), "3: step 1 has no \"do\"; it needs one");
}

TEST(a_scenario, with_a_wrong_event_is_refused) {
    EXPECT_EQ(step_complaint(R"({"after": "lunch", "do": "heal"})"),
              "3: step 1 after is \"lunch\"; \"connect\", \"open\", \"close\", \"save\", \"goodbye\" or "
              "\"request\" would be right");
    EXPECT_THAT(step_complaint(R"({"after": 3, "do": "heal"})"),
                HasSubstr("3: step 1 after is 3; \"connect\", "));
    EXPECT_EQ(step_complaint(R"({"after": {"n": 3}, "do": "heal"})"),
              "3: step 1 after has no \"event\"; it needs one");
    EXPECT_EQ(step_complaint(R"({"after": {"event": "request", "n": 0}, "do": "heal"})"),
              "3: step 1 after n is 0; a whole number from 1 to 4294967295 would be right");
    EXPECT_EQ(step_complaint("{\"after\": {\"event\": \"open\",\n\"op\": 66}, \"do\": \"heal\"}"),
              "4: step 1 after has an \"op\"; only the event \"request\" takes one");
    EXPECT_THAT(step_complaint(R"({"after": {"event": "request", "code": 66}, "do": "heal"})"),
                HasSubstr("step 1 after has an unknown member \"code\""));
    for (const char* wrong : {"2", "256", "\"66\"", "\"ack\"", "-66", "66.5"}) {
        EXPECT_THAT(step_complaint(R"({"after": {"event": "request", "op": )" + std::string(wrong) +
                                   R"(}, "do": "heal"})"),
                    HasSubstr("3: step 1 after op is "));
    }
}

TEST(a_scenario, with_a_wrong_verb_is_refused_in_the_words_of_the_verbs) {
    EXPECT_EQ(step_complaint(R"({"at": 1, "do": "dorp 0.3"})"), "3: step 1 do: " + check_verb("dorp 0.3"));
    EXPECT_EQ(step_complaint("{\"at\": 1, \"do\": [\"heal\",\n\"drop 3\"]}"),
              "4: step 1 do: " + check_verb("drop 3"));
    EXPECT_NE(check_verb("dorp 0.3"), "");
    EXPECT_NE(check_verb("drop 3"), "");
    for (const char* nothing : {"\"\"", "\"  \"", "\"# heal\"", "\"heal\\nquit\""}) {
        EXPECT_THAT(step_complaint(R"({"at": 1, "do": )" + std::string(nothing) + "}"),
                    HasSubstr("3: step 1 do "));
    }
    EXPECT_THAT(step_complaint(R"({"at": 1, "do": "wait 20"})"), HasSubstr("3: step 1 do waits; "));
    EXPECT_EQ(step_complaint(R"({"at": 1, "do": []})"),
              "3: step 1 do is empty; a verb or an array of verbs would be right");
    EXPECT_EQ(step_complaint(R"({"at": 1, "do": ["heal", 1]})"),
              "3: step 1 do is 1; a verb or an array of verbs would be right");
}

} // namespace
} // namespace orvanta_tests
