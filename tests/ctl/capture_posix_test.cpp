// The option --capture where the system is the subject: links, and a file that becomes too large.
#include "ctl/support/capture_lines.hpp"
#include "ctl/support/ctl_run.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

TEST(capture, does_not_take_the_place_of_a_link) {
    const scratch_folder folder;
    const std::string link = folder.file("link.pcap");
    std::filesystem::create_symlink(folder.file("target.pcap"), link);
    const run_of_a_program run = ctl({"list", "--capture", link});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors, "orvantactl: " + link + ": this is no regular file\n");
    EXPECT_FALSE(std::filesystem::exists(folder.file("target.pcap")));
}

class a_capture_without_room : public testing::Test {
  protected:
    // A file may have 512 or 1024 bytes, by the shell.
    run_of_a_program run(const std::string& arguments) {
        child_process program({"/bin/sh", "-c",
                               "ulimit -f 1; trap '' XFSZ; exec \"$0\" " + arguments + " --capture \"$1\"",
                               ORVANTACTL_PATH, path},
                              attachment::pipes);
        return ended(program);
    }

    scratch_folder folder;
    std::string path = folder.file("full.pcap");
    service_process service;
};

TEST_F(a_capture_without_room, is_told_after_the_results) {
    const run_of_a_program told = run("get");
    EXPECT_EQ(told.end, status(exit_status::refused));
    EXPECT_THAT(told.output, HasSubstr("scaling-factor=0.75\n"));
    EXPECT_EQ(told.errors, "orvantactl: cannot write " + path + ": File too large\n");
}

TEST_F(a_capture_without_room, is_told_beside_a_failure_of_the_command) {
    service.kill();
    const run_of_a_program told = run("wait service --for 300ms");
    EXPECT_EQ(told.end, status(exit_status::timed_out));
    EXPECT_THAT(told.errors, HasSubstr("no service answered in time"));
    EXPECT_THAT(told.errors, HasSubstr("orvantactl: cannot write " + path + ": File too large\n"));
}

} // namespace
