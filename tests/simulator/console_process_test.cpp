// The simulator as a program with --interactive and a script on its standard input.
#include "app/support/child_process.hpp"
#include "simulator/fixtures/running_simulator.hpp"
#include "simulator/fixtures/test_client.hpp"

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// Reads the two lines of the start and returns the port.
std::string port_of(child_process& program) {
    EXPECT_EQ(program.read_until("listening on port "), "listening on port ");
    const std::string line = program.read_until("\n");
    EXPECT_EQ(program.read_until("seed "), "seed ");
    (void)program.read_until("\n");
    return line.substr(0, line.size() - 1);
}

void connect(test_client& client) {
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive_until(16).empty());
}

TEST(the_console, shows_no_prompt_to_a_script_and_serves_on_after_its_end) {
    child_process program(interactive_command({}), attachment::pipes);
    const std::string port = port_of(program);
    program.type("drop 0.5\n\n# a remark\nheal\r\ndrop 0");
    program.close_input();
    EXPECT_EQ(program.read_until("ok\nok\nok\n"), "ok\nok\nok\n");
    test_client client("127.0.0.1", port);
    connect(client);
    program.kill();
    EXPECT_EQ(killed, program.wait());
    EXPECT_EQ(program.rest(), "");
    EXPECT_EQ(program.rest_of_errors(), "");
}

TEST(the_console, does_a_script_in_the_order_of_its_lines_with_its_waits) {
    child_process program(interactive_command({}), attachment::pipes);
    (void)port_of(program);
    const auto begin = std::chrono::steady_clock::now();
    program.type("wait 300\nplug palmetron\nnonsense\nquit\nheal\n");
    EXPECT_EQ(ending{1}, program.wait()) << "a line failed";
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(290));
    const std::string answers = program.rest();
    EXPECT_THAT(answers, StartsWith("ok\n"));
    EXPECT_LT(answers.find("1002"), answers.find("error: "));
    EXPECT_LT(answers.find("error: "), answers.find("nonsense"));
}

TEST(the_console, tells_clients_what_is_plugged_in_and_unplugged) {
    child_process program(interactive_command({"--rate", "0"}), attachment::pipes);
    test_client client("127.0.0.1", port_of(program));
    connect(client);
    program.type("unplug 1\n");
    EXPECT_EQ(client.receive_until(17), datagram({{0xFF, 0x11, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}}));
    program.type("plug orvanta3\n");
    EXPECT_FALSE(client.receive_until(16).empty());
    program.type("goodbye\n");
    EXPECT_EQ(client.receive_until(6), goodbye_of_the_service);
}

TEST(the_console, says_goodbye_to_clients_when_it_quits) {
    child_process program(interactive_command({"--rate", "0"}), attachment::pipes);
    test_client client("127.0.0.1", port_of(program));
    connect(client);
    program.type("quit\n");
    EXPECT_EQ(client.receive_until(6), goodbye_of_the_service);
    EXPECT_EQ(succeeded, program.wait());
}

TEST(the_console, is_there_for_those_alone_who_ask_for_it) {
    child_process program({SIMULATOR_PROGRAM, "--port", "0"}, attachment::pipes);
    test_client client("127.0.0.1", port_of(program));
    program.type("quit\n");
    program.close_input();
    connect(client);
    program.kill();
    EXPECT_EQ(killed, program.wait());
    EXPECT_EQ(program.rest(), "");
}

} // namespace
} // namespace orvanta_tests
