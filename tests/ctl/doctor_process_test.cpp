// orvantactl doctor beside a healthy simulator, and beside one that misbehaves; each remedy is tried.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/doctor_run.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>

namespace {

using namespace orvanta_tests;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(doctor, finds_a_healthy_desk_well) {
    service_process service;
    const doctor_run run = doctor();
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.names(), (std::vector<std::string>{"loopback", "service-port", "client-ports", "handshake",
                                                     "devices", "open", "request", "stream", "versions"}));
    EXPECT_THAT(run.seen("service-port"), HasSubstr("orvanta-simulator"));
    EXPECT_EQ(run.seen("devices"), "1 orvanta3, 1 palmetron");
    EXPECT_EQ(run.seen("open"), "device 1 opens");
    for (const char* name : {"service-port", "client-ports", "devices", "open", "versions"}) {
        EXPECT_EQ(run.outcome(name), "ok") << name;
    }
    // A busy machine may make these late, never keep them from coming.
    for (const char* name : {"loopback", "handshake", "request", "stream"}) {
        EXPECT_THAT(run.outcome(name), testing::AnyOf("ok", "warning")) << name << ": " << run.seen(name);
    }
    EXPECT_GT(run.figure("stream", "rate_hz"), 0);
    EXPECT_GT(run.figure("request", "worst_ms"), 0);
    EXPECT_LE(run.figure("request", "median_ms"), run.figure("request", "worst_ms"));
}

TEST(doctor, prints_a_line_for_each_check_without_colour_in_a_pipe) {
    service_process service({"--orvanta3", "0"});
    const run_of_a_program run = ctl({"doctor"});
    EXPECT_EQ(run.end, status(exit_status::no_device));
    EXPECT_THAT(
        run.output,
        AllOf(HasSubstr("\nfailed   devices       0 orvanta3, 1 palmetron\n"
                        "                       plug an Orvanta3 in and switch its power on; if it is, start "
                        "the service anew\n"
                        "skipped  open          devices failed\n"
                        "skipped  request       devices failed\n"
                        "skipped  stream        devices failed\n"
                        "ok       versions      "),
              testing::Not(HasSubstr("\x1b"))));
    EXPECT_EQ(run.errors, "orvantactl: devices failed: 0 orvanta3, 1 palmetron\n");
}

TEST(doctor, changes_nothing_and_leaves_no_client_behind) {
    child_process service({ORVANTA_SIMULATOR_PATH, "--verbose", "--interactive"}, attachment::pipes);
    service.read_until("listening on port 54320\n");
    EXPECT_EQ(doctor().end, succeeded);
    service.type("status\nquit\n");
    EXPECT_EQ(service.wait(), succeeded);
    EXPECT_THAT(service.rest(), HasSubstr("clients 0\n"));
    // Each client's number is another one.
    const std::string log =
        std::regex_replace(service.rest_of_errors(), std::regex("client [0-9]+|process [0-9]+"), "N");
    EXPECT_EQ(log, "orvanta-simulator: N: connected, 'orvantactl doctor', N\n"
                   "orvanta-simulator: N: said goodbye\n"
                   "orvanta-simulator: N: connected, 'orvantactl', N\n"
                   "orvanta-simulator: N: opened device 1\n"
                   "orvanta-simulator: N: closed device 1\n"
                   "orvanta-simulator: N: said goodbye\n");
}

TEST(doctor, says_that_nobody_holds_the_port_until_a_service_does) {
    const doctor_run without = doctor();
    EXPECT_EQ(without.end, status(exit_status::no_service));
    EXPECT_EQ(without.failure(), "service-port: nobody holds UDP port 54320");
    EXPECT_EQ(without.remedy("service-port"),
              "start the device service, or orvanta-simulator where there is no device");
    EXPECT_EQ(without.outcome("client-ports"), "ok");
    for (const char* name : {"handshake", "devices", "open", "request", "stream"}) {
        EXPECT_EQ(without.outcome(name), "skipped");
        EXPECT_EQ(without.seen(name), "service-port failed");
    }
    EXPECT_EQ(without.outcome("versions"), "ok");
    service_process service;
    EXPECT_EQ(doctor().end, succeeded);
}

TEST(doctor, tells_who_is_in_the_way_of_a_second_client) {
    service_process service({"--single-client"});
    const doctor_run alone = doctor();
    EXPECT_EQ(alone.end, succeeded) << alone.failure();
    {
        const another_client other;
        const doctor_run beside = doctor();
        EXPECT_EQ(beside.end, status(exit_status::no_service));
        EXPECT_EQ(beside.failure(),
                  "handshake: the service refuses the connection: status 0xB2, another client is "
                  "already connected");
        EXPECT_EQ(beside.remedy("handshake"),
                  "end the other program that is connected to the service: it serves one at a time");
        EXPECT_THAT(beside.seen("client-ports"),
                    AllOf(StartsWith("15 of the 16 "), HasSubstr("ctl_process_tests")));
    }
    EXPECT_EQ(doctor().end, succeeded);
}

TEST(doctor, connects_to_a_late_service_with_the_time_that_it_asks_for) {
    service_process service({"--delay", "200@dir=out"});
    const doctor_run hasty = doctor();
    EXPECT_EQ(hasty.outcome("handshake"), "failed");
    EXPECT_THAT(hasty.remedy("handshake"), HasSubstr("orvantactl --timeout "));
    const doctor_run patient = doctor({"--timeout", "10s"});
    EXPECT_EQ(patient.end, succeeded) << patient.failure();
    EXPECT_EQ(patient.outcome("request"), "warning");
}

TEST(doctor, skips_the_stream_after_the_service_is_lost) {
    service_process service({"--goodbye", "@op=47"});
    const doctor_run run = doctor();
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.outcome("request"), "failed");
    EXPECT_EQ(run.outcome("stream"), "skipped");
    EXPECT_EQ(run.seen("stream"), "the connection to the service is lost");
}

TEST(doctor, warns_of_a_lost_request) {
    service_process service({"--drop", "@op=47,nth=1"});
    const doctor_run run = doctor();
    EXPECT_EQ(run.end, succeeded) << run.failure();
    EXPECT_EQ(run.outcome("request"), "warning");
    EXPECT_THAT(run.seen("request"), StartsWith("device 1: 4 of 5 requests for the orientation answered"));
    EXPECT_THAT(run.remedy("request"), StartsWith("the protocol repeats nothing"));
}

TEST(doctor, warns_of_a_stream_that_stops_for_a_while) {
    service_process service({"--silence", "700@op=33,nth=50"});
    const doctor_run run = doctor();
    EXPECT_EQ(run.end, succeeded) << run.failure();
    EXPECT_EQ(run.outcome("stream"), "warning");
    EXPECT_GT(run.figure("stream", "longest_pause_ms"), 100);
    EXPECT_THAT(run.remedy("stream"), StartsWith("the stream is not steady"));
}

TEST(doctor, misses_the_states_of_a_service_that_sends_none) {
    service_process service({"--rate", "0"});
    const doctor_run run = doctor();
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.outcome("request"), "ok");
    EXPECT_EQ(run.failure(), "stream: device 1 sent no cursor state within 1000 ms");
    EXPECT_THAT(run.remedy("stream"), HasSubstr("--rate 0"));
}

TEST(doctor, opens_each_orvanta3_or_the_one_that_is_named) {
    service_process service({"--orvanta3", "3", "--error", "0xD0@op=18,nth=2"});
    const doctor_run all = doctor();
    EXPECT_EQ(all.end, status(exit_status::refused));
    EXPECT_EQ(all.seen("open"),
              "devices 1 and 3 open; device 2 does not open: communication error with device (208)");
    EXPECT_THAT(all.seen("request"), StartsWith("device 1: "));
    const doctor_run one = doctor({"--device", "3003"});
    EXPECT_EQ(one.end, succeeded) << one.failure();
    EXPECT_EQ(one.seen("open"), "device 3 opens");
    EXPECT_THAT(one.seen("stream"), StartsWith("device 3: "));
}

TEST(doctor, refuses_a_name_that_no_orvanta3_has) {
    service_process service;
    const doctor_run unknown = doctor({"--device", "77"});
    EXPECT_EQ(unknown.end, status(exit_status::no_device));
    EXPECT_THAT(unknown.failure(), StartsWith("open: no device is called '77'; there are: "));
    const doctor_run grip = doctor({"--device", "1001"});
    EXPECT_EQ(grip.end, status(exit_status::no_device));
    EXPECT_EQ(grip.failure(), "open: device 1001 is a palmetron, not an orvanta3");
}

} // namespace
