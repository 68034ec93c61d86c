// orvantactl complete, as the shells' scripts call it.
#include "ctl/support/ctl_run.hpp"

#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;

TEST(complete, prints_words_and_their_meanings) {
    const run_of_a_program run = ctl({"complete", "--", "--json", "wait", "--for", "1s", ""});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "device\tan Orvanta3 is there, or the device that --device names; the default\n"
                          "removal\ta device that is there is unplugged\n"
                          "service\ta service answers\n");
    EXPECT_EQ(run.errors, "");
}

TEST(complete, asks_the_service_for_devices) {
    service_process service;
    const run_of_a_program run = ctl({"complete", "--", "info", "--device", ""});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "1\torvanta3 3001 6e2b8410-5f3c-4d71-9a03-c53800000001\n"
                          "1001\tpalmetron 5001 b1470d29-e862-4a15-8c90-7ed400000001\n");
}

TEST(complete, is_silent_without_a_service) {
    const run_of_a_program run = ctl({"complete", "--", "info", "--device", ""});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
}

TEST(complete, leaves_files_to_the_shell) {
    const run_of_a_program run = ctl({"complete", "--", "backup", ""});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, ":files\n");
}

} // namespace
