// orvantactl where its results cannot be written: /dev/full stands in for a disk without room.
#include "ctl/support/ctl_run.hpp"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace orvanta_tests;

run_of_a_program into_a_full_device(const std::string& arguments) {
    std::string line = ORVANTACTL_PATH;
    line.append(" ").append(arguments).append(" >/dev/full");
    child_process program({"/bin/sh", "-c", line}, attachment::pipes);
    return ended(program);
}

TEST(results, that_cannot_be_written_are_an_error) {
    for (const char* arguments : {"version", "--help", "set --help"}) {
        const run_of_a_program run = into_a_full_device(arguments);
        EXPECT_EQ(run.end, status(exit_status::refused)) << arguments;
        EXPECT_EQ(run.errors, "orvantactl: cannot write the results: No space left on device\n") << arguments;
    }
}

TEST(results, that_cannot_be_written_are_an_error_in_json) {
    const run_of_a_program run = into_a_full_device("version --json");
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors, R"({"error":{"kind":"refused","status":1,)"
                          R"("message":"cannot write the results: No space left on device"}})"
                          "\n");
}

TEST(results, of_samples_that_cannot_be_written_end_the_watching) {
    service_process service;
    const run_of_a_program run = into_a_full_device("watch --for 60s --format csv");
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors, "orvantactl: cannot write the results: No space left on device\n");
}

} // namespace
