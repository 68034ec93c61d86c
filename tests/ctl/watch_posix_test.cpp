// orvantactl watch at signals, at a pseudo-terminal, beside a reader that does not read, and for long.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/watch_rows.hpp"
#include "ctl/support/xml_check.hpp"
#include "support/scratch_folder.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <regex>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;
using testing::Not;

constexpr std::uint64_t rate_hz = WATCH_RATE_HZ;
constexpr std::uint64_t most_growth_kib = WATCH_GROWTH_KIB;

// The end of the block that live mode draws.
constexpr const char* last_line = "as the service has them\x1b[K\r\n";

class terminal : public testing::Test {
  protected:
    terminal() {
        unsetenv("NO_COLOR");
        setenv("TERM", "xterm", 1);
    }
    ~terminal() override { unsetenv("NO_COLOR"); }

    service_process service;
};

// Live at a terminal until its third block, then ended as by Ctrl-C.
run_of_a_program live_run() {
    child_process program(ctl_command({"watch"}), attachment::pseudo_terminal);
    std::string shown;
    for (int blocks = 0; blocks < 3; ++blocks) {
        shown += program.read_until(last_line);
    }
    program.type("\x03");
    run_of_a_program run = ended(program);
    run.output = shown + run.output;
    return run;
}

TEST_F(terminal, shows_one_block_that_is_drawn_over_itself) {
    const run_of_a_program run = live_run();
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_THAT(run.output, HasSubstr(std::string(last_line) + "\x1b[J\r\x1b[21A"));
    EXPECT_THAT(run.output, HasSubstr("position x "));
    EXPECT_THAT(run.output, HasSubstr("\x1b[36m["));
    // Nothing is set that would have to be restored.
    EXPECT_THAT(run.output, Not(HasSubstr("\x1b[?")));
    EXPECT_THAT(run.output, testing::EndsWith("orvantactl: interrupted\r\n"));
}

TEST_F(terminal, has_no_colour_where_none_is_wanted) {
    setenv("NO_COLOR", "1", 1);
    const run_of_a_program run = live_run();
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_FALSE(std::regex_search(run.output, std::regex("\x1b\\[[0-9;]*m"))) << run.output;
    EXPECT_THAT(run.output, HasSubstr("\x1b[21A"));
}

TEST_F(terminal, gets_lines_where_they_are_asked_for) {
    child_process program(ctl_command({"watch", "--for", "300ms", "--format", "lines"}),
                          attachment::pseudo_terminal);
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, succeeded);
    EXPECT_THAT(run.output, HasSubstr(" s  position "));
    EXPECT_THAT(run.output, Not(HasSubstr("\x1b")));
}

TEST(an_interrupted_watch, keeps_its_lines_and_its_picture) {
    service_process service;
    const scratch_folder folder;
    child_process program(ctl_command({"watch", "--format", "csv", "--plot", folder.file("curves.svg")}),
                          attachment::pipes);
    program.read_until("\n0.1");
    program.interrupt();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_EQ(run.errors, "orvantactl: interrupted\n");
    EXPECT_EQ(run.output.back(), '\n');
    std::ifstream file(folder.file("curves.svg"));
    EXPECT_EQ(fault_in_xml({std::istreambuf_iterator<char>(file), {}}), "");
}

TEST(a_picture_file, takes_the_place_of_no_link_and_no_device) {
    const scratch_folder folder;
    std::filesystem::create_symlink("there", folder.file("link.svg"));
    for (const std::string& place : {folder.file("link.svg"), std::string("/dev/null")}) {
        const run_of_a_program run = ctl({"watch", "--plot", place});
        EXPECT_EQ(run.end, status(exit_status::refused));
        EXPECT_EQ(run.errors, "orvantactl: " + place + ": this is no regular file\n");
    }
}

TEST(a_lossy_stream, is_told_of_at_the_end) {
    service_process service({"--rate", "300", "--drop", "0.3@op=33,dir=out"});
    // A busy machine brings samples in bunches, of which watch says nothing: then it is asked again.
    run_of_a_program run;
    for (int attempts = 0; attempts < 6 && run.errors.empty(); ++attempts) {
        run = ctl({"watch", "--for", "5s"});
        EXPECT_EQ(run.end, succeeded);
    }
    EXPECT_TRUE(
        std::regex_match(run.errors, std::regex("orvantactl: about [0-9]+ % of the samples are missing\n")))
        << run.errors;
}

// The datagrams that the service has sent.
std::uint64_t sent_by(child_process& service) {
    service.type("status\n");
    service.read_until(", sent ");
    return std::stoull(service.read_until(";"));
}

class fast_service {
  public:
    explicit fast_service(std::uint64_t rate)
        : program_(
              {ORVANTA_SIMULATOR_PATH, "--interactive", "--palmetron", "0", "--rate", std::to_string(rate)},
              attachment::pipes) {
        program_.read_until("listening on port 54320\n");
    }

    std::uint64_t sent() { return sent_by(program_); }

  private:
    child_process program_;
};

TEST(a_slow_reader, costs_lines_that_are_counted_and_no_line_is_cut) {
    fast_service service(10'000);
    child_process program(ctl_command({"watch", "--format", "csv"}), attachment::pipes);
    program.read_until("\n");
    // More than pipe and queue hold: some of them found no room.
    while (service.sent() < 20'000) {
    }
    program.interrupt();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    std::smatch counts;
    ASSERT_TRUE(std::regex_search(run.errors, counts,
                                  std::regex("orvantactl: ([0-9]+) of ([0-9]+) samples were not "
                                             "printed: the reader is too slow\n")))
        << run.errors;
    const std::vector<std::string> rows = lines_of(run.output);
    EXPECT_EQ(rows.size() + std::stoull(counts[1]), std::stoull(counts[2]));
    for (const std::string& row : rows) {
        ASSERT_EQ(cells_of(row).size(), 17U) << row;
    }
    EXPECT_EQ(run.output.back(), '\n');
}

std::uint64_t resident_kib(const child_process& program) {
    std::ifstream file("/proc/" + std::to_string(program.id()) + "/status");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return std::stoull(text.substr(text.find("VmRSS:") + 6));
}

std::uint64_t seconds_to_watch() {
    const char* asked = std::getenv("ORVANTA_WATCH_SECONDS");
    return asked == nullptr ? 10 : std::stoull(asked) / 10 * 10;
}

// ORVANTA_WATCH_SECONDS, in tens, sets for how long; docs/watch.md has figures.
TEST(a_long_watch, loses_nothing_tells_its_progress_and_needs_no_more_memory) {
    fast_service service(rate_hz);
    const scratch_folder folder;
    child_process program(
        ctl_command({"watch", "--for", "86400s", "--format", "csv", "--plot", folder.file("curves.svg")}),
        attachment::pipes);
    std::string output = program.read_until("\n2.");
    const std::uint64_t early_kib = resident_kib(program);
    for (std::uint64_t seconds = 10; seconds <= seconds_to_watch(); seconds += 10) {
        program.read_errors_until("orvantactl: " + std::to_string(seconds) + " s of 86400 s: ");
        program.read_errors_until(" a second\n");
    }
    const std::uint64_t late_kib = resident_kib(program);
    program.interrupt();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_EQ(run.errors, "orvantactl: interrupted\n") << "nothing missing, rejected or not printed";
    const std::vector<std::string> rows = lines_of(output + run.output);
    for (std::size_t at = 1; at < rows.size(); ++at) {
        ASSERT_EQ(number_of(rows[at]), at);
    }
    // Beside the samples: four answers a second, and what was on its way at the end, which a busy machine is
    // late to bring about.
    const std::uint64_t sent = service.sent();
    const std::uint64_t samples = rows.size() - 1;
    EXPECT_LE(samples, sent);
    EXPECT_GE(samples + 5 * (seconds_to_watch() + 1) + rate_hz, sent);
    EXPECT_LE(late_kib, early_kib + most_growth_kib);
    std::cout << samples << " samples of " << sent << " datagrams; " << early_kib << " KiB after 2 s, "
              << late_kib << " KiB after " << seconds_to_watch() << " s\n";
}

} // namespace
