// Ctrl-C while orvantactl waits; a program that a test starts under Wine has no console to get it from.
#include "ctl/support/ctl_run.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;

TEST(wait_for_a_device, is_interrupted) {
    service_process service({"--orvanta3", "0"});
    child_process waiting(ctl_command({"wait", "-v"}), attachment::pipes);
    waiting.read_errors_until("ret [nil]");
    waiting.interrupt();
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_THAT(run.errors, testing::EndsWith("orvantactl: interrupted\n"));
}

TEST(wait_for_the_service, is_interrupted) {
    child_process waiting(ctl_command({"wait", "service", "-v"}), attachment::pipes);
    waiting.read_errors_until("orvantactl: ");
    waiting.interrupt();
    const run_of_a_program run = ended(waiting);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_THAT(run.errors, testing::EndsWith("orvantactl: interrupted\n"));
}

} // namespace
