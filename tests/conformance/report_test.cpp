// The findings as the kit prints them, and its command line.
#include "conformance/options.hpp"
#include "conformance/report.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::conformance;
using testing::HasSubstr;

std::vector<finding> one_of_each() {
    return {
        {find_rule("connect_is_answered"), outcome::holds, "", 1'500'000},
        {find_rule("answers_copy_the_tag"), outcome::fails, "tag 9; expected \"<3>\" & more", 2'000'000'000},
        {find_rule("streams_have_tag_0"), outcome::stopped, "device_open_is_answered: nothing", 0},
        {find_rule("config_save_is_answered"), outcome::skipped, "only with --save", 0}};
}

TEST(a_report, has_a_line_for_each_rule_and_counts_them) {
    std::string lines;
    for (const finding& one : one_of_each()) {
        lines += line_of(one);
    }
    EXPECT_EQ(lines, "ok   connect_is_answered\n"
                     "FAIL answers_copy_the_tag: tag 9; expected \"<3>\" & more\n"
                     "stop streams_have_tag_0: device_open_is_answered: nothing\n"
                     "skip config_save_is_answered: only with --save\n");
    EXPECT_EQ(summary_of(one_of_each()), "4 rules: 1 ok, 1 failed, 1 stopped, 1 skipped\n");
}

TEST(a_report, is_one_json_document_on_a_line) {
    EXPECT_EQ(json_of(one_of_each()),
              "{\"rules\":["
              "{\"name\":\"connect_is_answered\",\"outcome\":\"ok\",\"text\":\"\",\"seconds\":0.0015},"
              "{\"name\":\"answers_copy_the_tag\",\"outcome\":\"FAIL\","
              "\"text\":\"tag 9; expected \\\"<3>\\\" & more\",\"seconds\":2.0},"
              "{\"name\":\"streams_have_tag_0\",\"outcome\":\"stop\","
              "\"text\":\"device_open_is_answered: nothing\",\"seconds\":0.0},"
              "{\"name\":\"config_save_is_answered\",\"outcome\":\"skip\",\"text\":\"only with --save\","
              "\"seconds\":0.0}],"
              "\"ok\":1,\"failed\":1,\"stopped\":1,\"skipped\":1}\n");
}

TEST(a_report, is_a_test_suite_of_junit) {
    EXPECT_EQ(
        junit_of(one_of_each()),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites>\n"
        "  <testsuite name=\"orvanta-conformance\" tests=\"4\" failures=\"1\" errors=\"1\" skipped=\"1\" "
        "time=\"2.002\">\n"
        "    <testcase classname=\"conformance\" name=\"connect_is_answered\" time=\"0.002\"></testcase>\n"
        "    <testcase classname=\"conformance\" name=\"answers_copy_the_tag\" time=\"2.000\">"
        "<failure message=\"tag 9; expected &quot;&lt;3>&quot; &amp; more\"/></testcase>\n"
        "    <testcase classname=\"conformance\" name=\"streams_have_tag_0\" time=\"0.000\">"
        "<error message=\"device_open_is_answered: nothing\"/></testcase>\n"
        "    <testcase classname=\"conformance\" name=\"config_save_is_answered\" time=\"0.000\">"
        "<skipped message=\"only with --save\"/></testcase>\n"
        "  </testsuite>\n"
        "</testsuites>\n");
}

TEST(a_report, is_bad_with_a_rule_that_fails_or_is_stopped) {
    const auto findings = one_of_each();
    EXPECT_TRUE(all_hold(std::span(findings).first(1)));
    EXPECT_FALSE(all_hold(std::span(findings).subspan(1, 1)));
    EXPECT_FALSE(all_hold(std::span(findings).subspan(2, 1)));
    EXPECT_TRUE(all_hold(std::span(findings).subspan(3, 1)));
}

parse_outcome parsed(std::vector<const char*> words) {
    words.insert(words.begin(), "orvanta-conformance");
    return parse_options(static_cast<int>(words.size()), words.data());
}

TEST(the_command_line, has_a_default_for_everything) {
    const parse_outcome plain = parsed({});
    EXPECT_EQ(plain.verdict, parse_verdict::run);
    EXPECT_EQ(plain.chosen.port, "54320");
    EXPECT_EQ(plain.chosen.rules.size(), rules().size());
    EXPECT_EQ(plain.chosen.answer_time_ns, 1'000'000'000);
    EXPECT_FALSE(plain.chosen.may_save);
    EXPECT_FALSE(plain.chosen.in_json);
    EXPECT_EQ(plain.chosen.junit_path, "");
}

TEST(the_command_line, chooses_rules_in_the_order_of_the_table) {
    const options chosen = parsed({"--rule", "streams_have_tag_0", "connect_is_answered", "--port", "4711",
                                   "--timeout", "250", "--save", "--json", "--junit", "a.xml"})
                               .chosen;
    EXPECT_THAT(chosen.rules,
                testing::ElementsAre(find_rule("connect_is_answered"), find_rule("streams_have_tag_0")));
    EXPECT_EQ(chosen.port, "4711");
    EXPECT_EQ(chosen.answer_time_ns, 250'000'000);
    EXPECT_TRUE(chosen.may_save);
    EXPECT_TRUE(chosen.in_json);
    EXPECT_EQ(chosen.junit_path, "a.xml");
}

TEST(the_command_line, is_refused_in_one_line) {
    for (const std::vector<const char*>& words : {std::vector<const char*>{"--rule", "connect_is_anwsered"},
                                                  {"--rule"},
                                                  {"--port", "0"},
                                                  {"--port", "65536"},
                                                  {"--timeout", "0"},
                                                  {"--junit"},
                                                  {"--tags"},
                                                  {"surplus"}}) {
        const parse_outcome wrong = parsed(words);
        EXPECT_EQ(wrong.verdict, parse_verdict::wrong) << words.front();
        EXPECT_NE(wrong.text, "") << words.front();
        EXPECT_EQ(wrong.text.find('\n'), std::string::npos) << wrong.text;
    }
    EXPECT_THAT(parsed({"--rule", "nonsense"}).text,
                HasSubstr("there is no rule 'nonsense'; --list tells them all"));
}

TEST(the_command_line, shows_help_version_and_rules) {
    EXPECT_THAT(parsed({"--help"}).text, HasSubstr("3 no service there"));
    EXPECT_THAT(parsed({"--version"}).text, testing::StartsWith("orvanta-conformance "));
    EXPECT_EQ(parsed({"--list"}).text, list_of_rules());
    EXPECT_THAT(list_of_rules(), HasSubstr("keep_alives_are_not_answered: `keep_alive` has no answer\n"));
}

} // namespace
} // namespace orvanta_tests
