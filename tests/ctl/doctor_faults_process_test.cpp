// orvantactl doctor beside a service with one fault, and after the fault is taken away.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/doctor_run.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::StartsWith;

struct cause {
    std::vector<std::string> options;
    exit_status status;
    const char* failure;
};

void PrintTo(const cause& of, std::ostream* to) {
    *to << testing::PrintToString(of.options);
}

class each_cause : public testing::TestWithParam<cause> {};

// The remedy of all these is a service without the fault.
TEST_P(each_cause, is_told_and_goes_with_its_fault) {
    service_process service(GetParam().options);
    const doctor_run ill = doctor();
    EXPECT_EQ(ill.end, status(GetParam().status));
    EXPECT_THAT(ill.failure(), StartsWith(GetParam().failure));
    service.have_done("heal");
    const doctor_run well = doctor();
    EXPECT_EQ(well.end, succeeded) << well.failure();
}

INSTANTIATE_TEST_SUITE_P(
    doctor, each_cause,
    testing::Values(
        cause{{"--error", "0xB2@op=connect"},
              exit_status::no_service,
              "handshake: the service refuses the connection: status 0xB2"},
        cause{{"--error", "0xB3@op=connect"},
              exit_status::no_service,
              "handshake: the service refuses the connection: status 0xB3"},
        cause{{"--patch", "header.version=other@op=4"},
              exit_status::no_service,
              "handshake: the answer is of version "},
        cause{{"--patch", "header.version=other@op=3"},
              exit_status::no_service,
              "handshake: the service does not know version 1 of the protocol: status 0xA0, invalid version"},
        cause{{"--cut", "5@op=connected"},
              exit_status::no_service,
              "handshake: the answer of the service is cut short: "},
        cause{{"--truncate", "0@op=4"},
              exit_status::no_service,
              "handshake: what answers does not speak the protocol of the service: 0 bytes"},
        cause{{"--drop", "@op=3"},
              exit_status::timed_out,
              "handshake: no answer from UDP port 54320 within 2000 ms"},
        cause{{"--delay", "200@dir=out"},
              exit_status::timed_out,
              "handshake: the service accepts a client after "},
        cause{
            {"--drop", "@op=18"}, exit_status::timed_out, "open: device 1 does not open: no answer within "},
        cause{{"--error", "0xD0@op=18"},
              exit_status::refused,
              "open: device 1 does not open: communication error with device (208)"},
        cause{{"--drop", "@op=47"},
              exit_status::timed_out,
              "request: device 1 was asked 5 times for its orientation, 0 answers: operation timed out (4)"},
        cause{{"--goodbye", "@op=47"}, exit_status::lost, "request: device 1 was asked "},
        cause{{"--drop", "@op=33"},
              exit_status::timed_out,
              "stream: device 1 sent no cursor state within 1000 ms"}));

} // namespace
