// orvantactl list, info and version beside the simulator.
#include "ctl/support/ctl_run.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace orvanta_tests;

TEST(list, prints_a_line_for_each_device) {
    service_process service;
    const run_of_a_program run = ctl({"list"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "1     orvanta3  3001 6e2b8410-5f3c-4d71-9a03-c53800000001\n"
                          "1001  palmetron 5001 b1470d29-e862-4a15-8c90-7ed400000001\n");
    EXPECT_EQ(run.errors, "");
}

TEST(list, prints_one_document_in_json) {
    service_process service({"--palmetron", "0"});
    const run_of_a_program run = ctl({"list", "--json"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, R"({"devices":[{"id":1,"type":"orvanta3","short_id":"3001",)"
                          R"("uuid":"6e2b8410-5f3c-4d71-9a03-c53800000001"}]})"
                          "\n");
}

TEST(list, says_that_there_is_no_service) {
    const run_of_a_program run = ctl({"list", "--timeout", "200ms"});
    EXPECT_EQ(run.end, status(exit_status::no_service));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors,
                testing::StartsWith("orvantactl: connect: unable to bind the client socket: no service"));
}

TEST(info, asks_for_a_choice_between_two_devices) {
    service_process service({"--orvanta3", "2", "--palmetron", "0"});
    const run_of_a_program run = ctl({"info"});
    EXPECT_EQ(run.end, status(exit_status::no_device));
    EXPECT_EQ(run.errors, "orvantactl: there are several devices; choose one with --device: "
                          "1 (orvanta3 3001, 6e2b8410-5f3c-4d71-9a03-c53800000001), "
                          "2 (orvanta3 3002, 6e2b8410-5f3c-4d71-9a03-c53800000002)\n");
}

TEST(info, shows_the_chosen_one) {
    service_process service({"--orvanta3", "2"});
    const run_of_a_program run = ctl({"info", "--device", "3002"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(run.output, testing::HasSubstr("uuid         6e2b8410-5f3c-4d71-9a03-c53800000002\n"));
}

} // namespace
