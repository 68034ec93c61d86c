// How the tool comes by its connection.
#include "app/support/fake_service.hpp"
#include "app/support/tool_process.hpp"
#include "app/support/wire.hpp"
#include "support/udp_socket.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint16_t first_client_port = 54321;
constexpr int client_ports = 16;

std::string attempt(int number, const std::string& result) {
    return "Attempted to establish connection to port [" + std::to_string(first_client_port + number) +
           "] ret [" + result + "]";
}

std::string cannot_bind(int number) {
    return "no valid interface to bind 'localhost:" + std::to_string(first_client_port + number) + "'";
}

TEST(tool_connect, says_who_it_is) {
    fake_service service(service_port);
    service.accept_with();
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.program.type("4\n");
    tool.expect_end(succeeded);
    const bytes request = service.next(3);
    ASSERT_EQ(11U + 112U, request.size());
    const bytes start(request.begin(), request.begin() + 23);
    EXPECT_EQ(datagram(" FF 03 7000 00 0000 0000 00F2052A01000000"), start);
    const bytes name(request.begin() + 27, request.begin() + 59);
    EXPECT_EQ(from_hex("44657669636520436F6E666967 00000000000000000000000000000000000000"), name);
}

TEST(tool_connect, logs_the_port_and_the_connection) {
    fake_service service(service_port);
    service.accept_with();
    tool_process tool;
    tool.exchange("", banner + main_menu);
    EXPECT_THAT(tool.logged(), ElementsAre(StartsWith("Connected: cid[77], pid:["), attempt(0, "nil")));
    tool.program.type("4\n");
    tool.expect_end(succeeded);
}

TEST(tool_connect, takes_the_first_port_that_is_free) {
    fake_service service(service_port);
    service.accept_with();
    const fake_service first_taken(first_client_port);
    const fake_service second_taken(first_client_port + 1);
    tool_process tool;
    tool.exchange("", banner + main_menu);
    EXPECT_THAT(tool.logged(), ElementsAre(cannot_bind(0), attempt(0, "unable to bind the client socket"),
                                           cannot_bind(1), attempt(1, "unable to bind the client socket"),
                                           HasSubstr(":54323"), attempt(2, "nil")));
    tool.program.type("4\n");
    tool.expect_end(succeeded);
}

TEST(tool_connect, runs_beside_another_tool_on_the_next_port) {
    fake_service service(service_port);
    service.accept_with();
    tool_process first;
    first.exchange("", banner + main_menu);
    // On each address, where localhost has two.
    const std::string taken = std::to_string(first_client_port);
    const std::array held{udp_socket::bound_to("127.0.0.1", taken), udp_socket::bound_to("::1", taken)};
    tool_process second;
    second.exchange("", banner + main_menu);
    EXPECT_THAT(second.logged(), ElementsAre(cannot_bind(0), attempt(0, "unable to bind the client socket"),
                                             HasSubstr(":54322"), attempt(1, "nil")));
    first.program.type("4\n");
    first.expect_end(succeeded);
    second.program.type("4\n");
    second.expect_end(succeeded);
}

TEST(tool_connect, ends_when_all_sixteen_ports_are_taken) {
    fake_service service(service_port);
    std::vector<std::unique_ptr<fake_service>> taken;
    taken.reserve(client_ports);
    for (int i = 0; i < client_ports; ++i) {
        taken.push_back(std::make_unique<fake_service>(static_cast<std::uint16_t>(first_client_port + i)));
    }
    child_process tool({ORVANTA_CLI_PATH}, attachment::pipes);
    EXPECT_EQ(aborted, tool.wait());
    const std::vector<std::string> messages = log_messages(tool.rest());
    ASSERT_EQ(16U, messages.size());
    for (int i = 0; i < client_ports; ++i) {
        EXPECT_EQ(attempt(i, "unable to bind the client socket"), messages[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ("", without_log_lines(tool.rest()));
    const std::vector<std::string> warnings = log_messages(tool.rest_of_errors());
    ASSERT_EQ(16U, warnings.size());
    EXPECT_EQ(cannot_bind(15), warnings.back());
    EXPECT_THAT(tool.rest_of_errors(), HasSubstr("client.connect: unable to bind the client socket"));
    EXPECT_TRUE(service.requests().empty());
}

TEST(tool_connect, ends_after_sixteen_seconds_when_the_service_is_absent) {
    const auto start = std::chrono::steady_clock::now();
    child_process tool({ORVANTA_CLI_PATH}, attachment::pipes);
    EXPECT_EQ(aborted, tool.wait());
    const auto taken = std::chrono::steady_clock::now() - start;
    const std::vector<std::string> messages = log_messages(tool.rest());
    ASSERT_EQ(16U, messages.size());
    for (int i = 0; i < client_ports; ++i) {
        EXPECT_EQ(attempt(i, "operation timed out"), messages[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ("", without_log_lines(tool.rest()));
    EXPECT_THAT(tool.rest_of_errors(), HasSubstr("client.connect: unable to bind the client socket"));
    EXPECT_GE(taken, std::chrono::seconds(16));
    EXPECT_LT(taken, std::chrono::seconds(30)) << "a port is waited for one second, not two";
}

struct refusal {
    const char* answer;
    const char* text;

    friend std::ostream& operator<<(std::ostream& out, const refusal& value) { return out << value.text; }
};

class refused_tool : public testing::TestWithParam<refusal> {};

TEST_P(refused_tool, ends_at_the_first_port_with_the_reason) {
    fake_service service(service_port);
    service.answer(3, from_hex(GetParam().answer));
    child_process tool({ORVANTA_CLI_PATH}, attachment::pipes);
    EXPECT_EQ(aborted, tool.wait());
    EXPECT_EQ(std::vector{attempt(0, GetParam().text)}, log_messages(tool.rest()));
    EXPECT_EQ("", without_log_lines(tool.rest()));
    EXPECT_THAT(tool.rest_of_errors(), HasSubstr(std::string("client.connect: ") + GetParam().text + "\n"));
    EXPECT_EQ(1U, service.requests().size());
}

INSTANTIATE_TEST_SUITE_P(
    by, refused_tool,
    testing::Values(
        refusal{"E99E 0100 0000 FF F0 0500 00 00000000 B2", "another client is already connected"},
        refusal{"E99E 0100 0000 FF F0 0500 00 00000000 B3", "an internal buffer is either full or empty"},
        refusal{"E99E 0100 0000 FF F0 0500 00 00000000 A0", "unable to parse the service protocol"},
        refusal{"E99E 0200 0000 FF 04 0800 00 4D00000000000000", "unable to parse the service protocol"}));

} // namespace
