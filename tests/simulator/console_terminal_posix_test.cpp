// The simulator as a program with --interactive at a pseudo-terminal.
#include "app/support/child_process.hpp"
#include "simulator/fixtures/running_simulator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;

TEST(the_console, answers_verbs_at_a_terminal_and_ends_with_quit) {
    child_process program(interactive_command({"--seed", "42"}), attachment::pseudo_terminal);
    (void)program.read_until("seed 42\r\n> ");
    program.type("drop 0.3\n");
    EXPECT_THAT(program.read_until("> "), HasSubstr("ok\r\n"));
    program.type("status\n");
    const std::string status = program.read_until("> ");
    EXPECT_THAT(status, HasSubstr("42"));
    EXPECT_THAT(status, HasSubstr("drop 0.3: fits 0, happened 0"));
    program.type("dorp 0.3\n");
    const std::string refusal = program.read_until("> ");
    EXPECT_THAT(refusal, HasSubstr("error: "));
    EXPECT_THAT(refusal, HasSubstr("drop"));
    program.type("quit\n");
    EXPECT_EQ(succeeded, program.wait());
}

TEST(the_console, has_no_prompt_beside_json_at_a_terminal_either) {
    child_process program(interactive_command({"--seed", "42", "--json"}), attachment::pseudo_terminal);
    (void)program.read_until("seed 42\r\n");
    program.type("heal\n");
    EXPECT_EQ(program.read_until("}\r\n"), "heal\r\n{\"ok\":true,\"text\":\"\"}\r\n");
    program.type("quit\n");
    EXPECT_EQ(succeeded, program.wait());
    EXPECT_EQ(program.rest().find('>'), std::string::npos);
}

TEST(the_console, ends_at_the_end_of_what_is_typed) {
    child_process program(interactive_command({}), attachment::pseudo_terminal);
    (void)program.read_until("> ");
    program.type("\x04");
    EXPECT_EQ(succeeded, program.wait());
}

} // namespace
} // namespace orvanta_tests
