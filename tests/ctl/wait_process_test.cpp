// orvantactl wait beside the simulator, and where there is none.
#include "ctl/support/ctl_run.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using namespace orvanta_tests;

// With -v the library tells on standard error when it is connected.
void await_connection(child_process& program) {
    program.read_errors_until("ret [nil]");
}

constexpr const char* line_of_the_first = "1     orvanta3  3001 6e2b8410-5f3c-4d71-9a03-c53800000001\n";

TEST(wait_for_a_device, ends_at_once_where_it_is_there) {
    service_process service;
    const run_of_a_program run = ctl({"wait"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, line_of_the_first);
    EXPECT_EQ(run.errors, "");
}

TEST(wait_for_a_device, ends_when_it_is_plugged_in) {
    service_process service({"--orvanta3", "0"});
    child_process waiting(ctl_command({"wait", "device", "-v"}), attachment::pipes);
    await_connection(waiting);
    service.tell("plug orvanta3");
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(run.output, testing::StartsWith("1     orvanta3  "));
}

TEST(wait_for_a_device, wants_the_named_one) {
    service_process service({"--palmetron", "0"});
    child_process waiting(ctl_command({"wait", "--device", "B147", "--json", "-v"}), attachment::pipes);
    await_connection(waiting);
    service.tell("plug palmetron");
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(run.output, R"({"awaited":"device","device":{"id":1001,"type":"palmetron","short_id":"5001",)"
                            R"("uuid":"b1470d29-e862-4a15-8c90-7ed400000001"}})"
                            "\n");
}

TEST(wait_for_a_device, waits_for_the_service_too) {
    child_process waiting(ctl_command({"wait", "-v"}), attachment::pipes);
    waiting.read_errors_until("orvantactl: ");
    service_process service;
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, line_of_the_first);
}

TEST(wait_for_a_device, goes_on_after_the_service_was_started_anew) {
    auto service = std::make_unique<service_process>(std::vector<std::string>{"--orvanta3", "0"});
    child_process waiting(ctl_command({"wait", "-v"}), attachment::pipes);
    await_connection(waiting);
    service->kill();
    service.reset();
    service_process again;
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, line_of_the_first);
}

TEST(wait_for_a_device, ends_with_the_time) {
    service_process service({"--orvanta3", "0"});
    const run_of_a_program run = ctl({"wait", "--for", "100ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: no Orvanta3 came in time\n");
}

TEST(wait_for_a_device, tells_of_the_end_of_the_time_in_json) {
    service_process service;
    const run_of_a_program run = ctl({"wait", "--for", "100ms", "--device", "77", "--json"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors,
              R"({"error":{"kind":"timed_out","status":5,"message":"no device '77' came in time"}})"
              "\n");
}

TEST(wait_for_a_removal, ends_when_the_device_is_unplugged) {
    service_process service;
    child_process waiting(ctl_command({"wait", "removal", "-v"}), attachment::pipes);
    waiting.read_errors_until("orvantactl: device 1 is there\n");
    service.tell("unplug 1");
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, line_of_the_first);
}

TEST(wait_for_a_removal, needs_the_device_first) {
    service_process service({"--orvanta3", "0"});
    const run_of_a_program run = ctl({"wait", "removal"});
    EXPECT_EQ(run.end, status(exit_status::no_device));
    EXPECT_EQ(run.errors, "orvantactl: the service has no Orvanta3; plug one in, or see orvantactl list\n");
}

TEST(wait_for_a_removal, ends_with_the_time_while_the_device_stays) {
    service_process service;
    const run_of_a_program run = ctl({"wait", "removal", "--for", "100ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors, "orvantactl: device 1 was still there when the time was up\n");
}

TEST(wait_for_a_removal, is_lost_with_the_service) {
    service_process service;
    child_process waiting(ctl_command({"wait", "removal", "-v"}), attachment::pipes);
    waiting.read_errors_until("orvantactl: device 1 is there\n");
    service.kill();
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_THAT(run.errors, testing::EndsWith("orvantactl: the connection to the service is lost\n"));
}

TEST(wait_for_the_service, ends_when_it_answers) {
    child_process waiting(ctl_command({"wait", "service", "-v"}), attachment::pipes);
    waiting.read_errors_until("orvantactl: ");
    service_process service({"--orvanta3", "0"});
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "the service answers\n");
}

TEST(wait_for_the_service, prints_one_document_in_json) {
    service_process service;
    const run_of_a_program run = ctl({"wait", "service", "--json"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "{\"awaited\":\"service\"}\n");
}

TEST(wait_for_the_service, ends_with_the_time) {
    const run_of_a_program run = ctl({"wait", "service", "--for", "100ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_THAT(run.errors, testing::StartsWith("orvantactl: no service answered in time: connect: "));
}

} // namespace
