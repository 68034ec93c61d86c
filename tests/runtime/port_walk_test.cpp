// The walk over the local ports 54321 to 54336 towards the service's own port.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"
#include "support/told_traffic.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::HasSubstr;

class port_walk : public testing::Test {
  protected:
    port_walk() { vantu_orvanta_init(); }
    ~port_walk() override { vantu_orvanta_disconnect(context); }

    std::int32_t connect(std::uint64_t timeout_ns) {
        return vantu_orvanta_connect(context, "test client", 0, 0, keep_alive_ns, timeout_ns);
    }

    // The lines about attempts.
    std::vector<std::string> attempts() {
        std::vector<std::string> result;
        for (const log_line& line : log.take()) {
            if (line.message.rfind("Attempted", 0) == 0) {
                EXPECT_EQ(line.level, log_level::info);
                result.push_back(line.message);
            }
        }
        return result;
    }

    log_capture log;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

std::string attempt(int port, const std::string& text) {
    return "Attempted to establish connection to port [" + std::to_string(port) + "] ret [" + text + "]";
}

TEST_F(port_walk, connects_from_port_54321_and_logs_nil) {
    scripted_service service("54320");
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(connect(patient_timeout_ns), vantu_orvanta_success);
    EXPECT_THAT(attempts(), ElementsAre(attempt(54321, "nil")));
    EXPECT_THAT(service.last_sender(), HasSubstr(":54321"));
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
    context = nullptr;
}

TEST_F(port_walk, passes_over_taken_ports_and_time_outs) {
    const scripted_service first("54321");
    const scripted_service second("54322");
    scripted_service service("54320");
    service.expect(connect_request());
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(connect(500'000'000), vantu_orvanta_success);
    EXPECT_THAT(attempts(), ElementsAre(attempt(54321, "unable to bind the client socket"),
                                        attempt(54322, "unable to bind the client socket"),
                                        attempt(54323, "operation timed out"), attempt(54324, "nil")));
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
    context = nullptr;
}

TEST_F(port_walk, gives_5_after_sixteen_time_outs_when_no_service_is_there) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(connect(20'000'000), vantu_orvanta_socket_bind_failed);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(16 * 20));
    std::vector<std::string> expected;
    for (int port = 54321; port <= 54336; ++port) {
        expected.push_back(attempt(port, "operation timed out"));
    }
    EXPECT_EQ(attempts(), expected);
}

TEST_F(port_walk, tells_the_traffic_sink_of_the_request_from_each_port) {
    scripted_service service("54320");
    told_traffic told;
    told.listen_to(context);
    std::vector<std::string> expected;
    for (int port = 54321; port <= 54336; ++port) {
        service.expect(connect_request());
        expected.push_back("> " + std::to_string(port) + " " + hex(connect_request()));
    }
    EXPECT_EQ(connect(20'000'000), vantu_orvanta_socket_bind_failed);
    std::vector<std::string> seen;
    for (const told_traffic::entry& one : told.entries()) {
        seen.push_back((one.is_sent() ? "> " : "< ") + std::to_string(one.record.local.port) + " " +
                       hex(one.content));
        EXPECT_EQ(one.record.peer.port, 54320);
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(port_walk, gives_5_when_all_sixteen_ports_are_taken) {
    std::vector<std::unique_ptr<scripted_service>> holders;
    for (int port = 54321; port <= 54336; ++port) {
        holders.push_back(std::make_unique<scripted_service>(std::to_string(port)));
    }
    EXPECT_EQ(connect(patient_timeout_ns), vantu_orvanta_socket_bind_failed);
    const auto lines = attempts();
    ASSERT_EQ(lines.size(), 16U);
    EXPECT_EQ(lines.back(), attempt(54336, "unable to bind the client socket"));
}

TEST_F(port_walk, stops_at_a_refusal) {
    scripted_service service("54320");
    service.expect(connect_request()).answer(datagram({op(240, 0, {0, 0, 0, 0, 178})}));
    EXPECT_EQ(connect(patient_timeout_ns), vantu_orvanta_another_client_connected);
    EXPECT_THAT(attempts(), ElementsAre(attempt(54321, "another client is already connected")));
}

TEST_F(port_walk, stops_at_a_reply_that_makes_no_sense) {
    scripted_service service("54320");
    service.expect(connect_request()).answer({1, 2, 3});
    EXPECT_EQ(connect(patient_timeout_ns), vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(attempts(), ElementsAre(attempt(54321, "unable to parse the service protocol")));
}

TEST_F(port_walk, stops_at_a_single_look_that_finds_nothing) {
    scripted_service service("54320");
    service.expect(connect_request());
    EXPECT_EQ(connect(1), vantu_orvanta_os_socket_error);
    EXPECT_THAT(attempts(), ElementsAre(attempt(54321, "Socket error from the operating system")));
}

TEST_F(port_walk, lets_two_clients_stand_side_by_side) {
    scripted_service service("54320");
    service.expect(connect_request()).answer(acceptance());
    ASSERT_EQ(connect(patient_timeout_ns), vantu_orvanta_success);
    vantu_orvanta_context* second = vantu_orvanta_context_create();
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(vantu_orvanta_connect(second, "test client", 0, 0, keep_alive_ns, patient_timeout_ns),
              vantu_orvanta_success);
    EXPECT_THAT(service.last_sender(), HasSubstr(":54322"));
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(second);
    std::uint32_t id = 0;
    std::size_t count = 0;
    EXPECT_EQ(vantu_orvanta_device_ids(context, &id, &count), vantu_orvanta_success);
    service.close();
}

} // namespace
