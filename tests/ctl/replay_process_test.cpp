// orvantactl replay: of what --capture has written, and of files that are damaged.
#include "ctl/support/capture_lines.hpp"
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/settings_files.hpp"
#include "ctl/support/watch_rows.hpp"
#include "ctl/support/wire_service.hpp"
#include "support/scratch_folder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace orvanta_tests;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// The lines without their times, which stand in the first 16 columns.
std::vector<std::string> outcomes_in(const std::string& printed) {
    std::vector<std::string> lines = lines_of(printed);
    for (std::string& line : lines) {
        EXPECT_EQ(line.substr(std::min<std::size_t>(line.size(), 12), 4), " s  ") << line;
        line.erase(0, 16);
    }
    return lines;
}

// Captures of two commands with device 5: one whole, one with an answer that is cut short.
class a_replay : public testing::Test {
  protected:
    a_replay() {
        wire_service service;
        service.answer(0x44, 0x44, {1}).answer(0x42, 0x42, {1});
        EXPECT_EQ(ctl({"get", "torque-scaling", "--capture", path}).end, succeeded);
        EXPECT_EQ(ctl({"get", "gravity-compensation", "--capture", damaged, "--timeout", "300ms"}).end,
                  status(exit_status::timed_out));
    }

    scratch_folder folder;
    std::string path = folder.file("get.pcap");
    std::string damaged = folder.file("damaged.pcap");
};

TEST_F(a_replay, prints_what_the_library_makes_of_each_datagram) {
    const run_of_a_program run = ctl({"replay", path});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(outcomes_in(run.output),
                testing::ElementsAre("connected client_id=1234605616436508552 devices=5",
                                     "device_opened device=5 tag=1",
                                     "config_torque_scaling device=5 tag=2 enabled=1"));
    EXPECT_EQ(run.errors, "orvantactl: 4 datagrams to clients: 2 events, 0 rejected, 1 discarded after the "
                          "goodbye\n");
}

TEST_F(a_replay, prints_what_is_rejected_and_why) {
    const run_of_a_program run = ctl({"replay", damaged});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(outcomes_in(run.output),
                testing::Contains("rejected protocol_parse_failed: config_gravity_compensation_get is cut "
                                  "short: 5 of 9 bytes"));
    EXPECT_THAT(run.errors, HasSubstr(", 1 rejected"));
}

TEST_F(a_replay, prints_documents) {
    const run_of_a_program run = ctl({"replay", path, "--json"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    const std::vector<std::string> lines = lines_of(run.output);
    ASSERT_EQ(lines.size(), 4U);
    const auto connected = nlohmann::json::parse(lines[0]);
    EXPECT_EQ(connected.at("connected").at("client_id"), 0x1122334455667788U);
    EXPECT_EQ(connected.at("connected").at("devices"), std::vector<int>{5});
    const auto event = nlohmann::json::parse(lines[2]);
    EXPECT_EQ(event.at("client"), 54321);
    EXPECT_EQ(event.at("event"), "config_torque_scaling");
    EXPECT_EQ(event.at("device"), 5);
    EXPECT_EQ(event.at("tag"), 2);
    EXPECT_EQ(event.at("fields"), nlohmann::json({{"enabled", 1}}));
    EXPECT_EQ(lines[3], R"({"replayed":{"datagrams":4,"events":2,"rejected":0,"discarded":1,"others":0}})");
}

TEST_F(a_replay, of_a_file_that_is_cut_short_prints_what_is_there_and_fails) {
    const std::string whole = content_of(path);
    const std::string cut = folder.file("cut.pcap");
    write_file(cut, whole.substr(0, whole.size() - 60));
    const run_of_a_program run = ctl({"replay", cut});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_THAT(outcomes_in(run.output), testing::Contains("device_opened device=5 tag=1"));
    EXPECT_THAT(run.errors, EndsWith("orvantactl: " + cut + " ends in the middle of a frame\n"));
    EXPECT_THAT(run.errors, HasSubstr("datagrams to clients"));
}

TEST_F(a_replay, refuses_what_is_no_capture_or_has_other_frames) {
    const std::string other = folder.file("other.pcap");
    run_of_a_program run = ctl({"replay", folder.file("none.pcap")});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_THAT(run.errors, StartsWith("orvantactl: cannot read "));
    write_file(other, "time [s],number\n0.000000,1\n");
    run = ctl({"replay", other});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_THAT(run.errors, HasSubstr("is no capture"));
    std::string whole = content_of(path);
    whole[20] = 105; // of a wireless network
    write_file(other, whole);
    run = ctl({"replay", other, "--json"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("link type 105"));
}

TEST_F(a_replay, refuses_a_capture_of_other_programs) {
    const std::string other = folder.file("other.pcap");
    {
        vantu::orvanta::capture_writer file(other);
        vantu::orvanta::captured_datagram one;
        one.from.port = 53;
        one.to.port = 40000;
        one.bytes.resize(30);
        file.write(one);
    }
    const run_of_a_program run = ctl({"replay", other});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: " + other + " has no datagram of a device service\n");
}

} // namespace
