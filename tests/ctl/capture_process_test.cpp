// The option --capture: the file has all datagrams of the command, or the command sends nothing.
#include "ctl/arguments/command_table.hpp"
#include "ctl/support/capture_lines.hpp"
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/wire_service.hpp"
#include "support/scratch_folder.hpp"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string line(const std::string& ports, const std::string& content) {
    return ports + " " + hex(from_hex(content));
}

TEST(capture, has_the_datagrams_of_a_command_byte_by_byte) {
    wire_service service;
    service.answer(0x44, 0x44, {1});
    const scratch_folder folder;
    const std::string path = folder.file("get.pcap");
    const run_of_a_program run = ctl({"get", "torque-scaling", "--capture", path});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "on\n");
    EXPECT_EQ(run.errors, "");
    std::vector<std::string> lines = lines_of_capture(path);
    // A session may ask for the orientation of its own accord, where the machine is slow.
    std::erase_if(lines, [](const std::string& one) { return one.find(" FF 2F ") != std::string::npos; });
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_THAT(lines[0], StartsWith(line("54321>54320", "E99E 01000000 FF 03 7000 00")));
    EXPECT_THAT(lines[0], HasSubstr(hex(text_field("orvantactl", 32))));
    lines.erase(lines.begin());
    EXPECT_THAT(lines, ElementsAre(line("54320>54321",
                                        "E99E 01000000"
                                        "FF 10 1800 00 05000000 0107 EFBE 606162636465666768696A6B6C6D6E6F"
                                        "FF 17 0D00 00 05000000 3031323334353637 01"
                                        "FF 04 0800 00 8877665544332211"),
                                   line("54321>54320", "E99E 01000000 FF 12 0600 01 05000000 0000"),
                                   line("54320>54321", "E99E 01000000 FF 13 0400 01 05000000"),
                                   line("54321>54320", "E99E 01000000 FF 44 0400 02 05000000"),
                                   line("54320>54321", "E99E 01000000 FF 44 0500 02 05000000 01"),
                                   line("54321>54320", "E99E 01000000 FF 05 0000 00"),
                                   line("54320>54321", "E99E 01000000 FF 06 0000 00")));
}

TEST(capture, has_all_attempts_of_a_wait) {
    const scratch_folder folder;
    const std::string path = folder.file("wait.pcap");
    const run_of_a_program run = ctl({"wait", "service", "--for", "3s", "--capture", path});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    std::multiset<std::uint16_t> ports;
    for (const auto& one : datagrams_of(path)) {
        EXPECT_THAT(hex(content_of(one)), StartsWith("E9 9E 01 00 00 00 FF 03 70 00 00"));
        EXPECT_EQ(one.to.port, 54320);
        ports.insert(one.from.port);
    }
    for (std::uint16_t port = 54321; port <= 54336; ++port) {
        EXPECT_GE(ports.count(port), 1U) << port;
    }
    EXPECT_GT(ports.size(), 16U) << "it tries again";
}

TEST(capture, goes_with_each_command_that_talks_to_the_service) {
    using namespace vantu::orvanta::ctl;
    for (const command_row& row : commands()) {
        const bool talks = row.name != "version" && row.name != "replay";
        EXPECT_EQ(goes_with(option_id::capture, &row), talks) << row.name;
    }
    wire_service service;
    const scratch_folder folder;
    const std::string path = folder.file("watch.pcap");
    (void)ctl({"watch", "--for", "100ms", "--capture", path, "--timeout", "500ms"});
    EXPECT_GE(datagrams_of(path).size(), 4U);
    (void)ctl({"doctor", "--capture", path, "--timeout", "500ms"});
    EXPECT_GE(datagrams_of(path).size(), 4U);
}

TEST(capture, that_cannot_be_written_is_told_before_anything_is_sent) {
    wire_service service;
    const scratch_folder folder;
    const std::string nowhere = folder.file("none/list.pcap");
    const run_of_a_program run = ctl({"list", "--capture", nowhere});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, StartsWith("orvantactl: cannot write " + nowhere + ": "));
    EXPECT_EQ(service.connects(), 0U);
}

TEST(capture, does_not_take_the_place_of_what_is_no_regular_file) {
    wire_service service;
    const scratch_folder folder;
    const std::string path = folder.path().string();
    const run_of_a_program run = ctl({"list", "--json", "--capture", path});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("this is no regular file"));
    EXPECT_EQ(service.connects(), 0U);
}

TEST(capture, begins_a_file_anew) {
    wire_service service;
    const scratch_folder folder;
    const std::string path = folder.file("list.pcap");
    EXPECT_EQ(ctl({"list", "--capture", path}).end, succeeded);
    const std::size_t once = datagrams_of(path).size();
    EXPECT_EQ(ctl({"list", "--capture", path}).end, succeeded);
    EXPECT_EQ(datagrams_of(path).size(), once);
}

} // namespace
