// orvantactl doctor when other programs hold the ports; each remedy is tried.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/doctor_run.hpp"
#include "support/udp_socket.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// Wine gives the port of a program that has ended back a little later.
udp_socket taken(std::uint16_t port) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience_ms);
    while (std::chrono::steady_clock::now() < deadline) {
        if (std::optional<udp_socket> socket = udp_socket::bound_to("localhost", std::to_string(port))) {
            return std::move(*socket);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    throw std::runtime_error("port " + std::to_string(port) + " cannot be had");
}

TEST(doctor, names_the_silent_program_that_holds_the_port_of_the_service) {
    {
        const udp_socket foreign = taken(54320);
        const doctor_run run = doctor({"--timeout", "300ms"});
        EXPECT_EQ(run.end, status(exit_status::timed_out));
        EXPECT_THAT(run.seen("service-port"), HasSubstr("ctl_process_tests"));
        EXPECT_EQ(run.failure(), "handshake: no answer from UDP port 54320 within 300 ms");
        EXPECT_THAT(run.remedy("handshake"),
                    AllOf(StartsWith("end ctl_process_tests"), HasSubstr(" (process ")));
    }
    service_process service;
    EXPECT_EQ(doctor().end, succeeded);
}

TEST(doctor, names_the_program_that_answers_in_another_protocol) {
    {
        const udp_socket foreign = taken(54320);
        std::thread answering([&] {
            EXPECT_EQ(udp_socket::wait({&foreign}), std::vector{true});
            const std::optional<udp_datagram> asked = foreign.receive();
            EXPECT_TRUE(asked && foreign.send({0x68, 0x69}, asked->from));
        });
        const doctor_run run = doctor();
        answering.join();
        EXPECT_EQ(run.end, status(exit_status::no_service));
        EXPECT_EQ(run.failure(), "handshake: what answers does not speak the protocol of the service: "
                                 "2 bytes: 68 69");
        EXPECT_THAT(run.remedy("handshake"),
                    AllOf(StartsWith("end ctl_process_tests"),
                          EndsWith("if it is not the device service, and start that")));
    }
    service_process service;
    EXPECT_EQ(doctor().end, succeeded);
}

TEST(doctor, needs_a_free_client_port) {
    service_process service;
    std::vector<udp_socket> sockets;
    for (std::uint16_t port = 54321; port <= 54336; ++port) {
        sockets.push_back(taken(port));
    }
    const doctor_run none = doctor();
    EXPECT_EQ(none.end, status(exit_status::refused));
    EXPECT_THAT(none.failure(),
                AllOf(StartsWith("client-ports: 0 of the 16 UDP ports 54321 to 54336 are free, "
                                 "taken by ctl_process_tests"),
                      HasSubstr(" (process ")));
    EXPECT_EQ(none.remedy("client-ports"),
              "end one of the programs that hold them: each connection needs a port of its own");
    EXPECT_EQ(none.seen("handshake"), "client-ports failed");
    sockets.pop_back();
    const doctor_run one = doctor();
    EXPECT_EQ(one.end, succeeded) << one.failure();
    EXPECT_EQ(one.outcome("client-ports"), "warning");
    sockets.clear();
    EXPECT_EQ(doctor().outcome("client-ports"), "ok");
}

TEST(doctor, ends_in_time_when_all_is_silent) {
    const udp_socket foreign = taken(54320);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(doctor().end, status(exit_status::timed_out));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

} // namespace
