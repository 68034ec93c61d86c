// orvantactl watch beside the simulator: its formats, its ends and its refusals.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/watch_rows.hpp"
#include "ctl/support/xml_check.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

constexpr const char* csv_header =
    "time [s],number,stream,"
    "position x [not specified],position y [not specified],position z [not specified],"
    "velocity x [not specified],velocity y [not specified],velocity z [not specified],"
    "orientation r,orientation x,orientation y,orientation z,"
    "motor current 1 [not specified],motor current 2 [not specified],motor current 3 [not specified],"
    "power supply [not specified]";
constexpr std::size_t columns = 17;

std::string text_in_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void expect_whole_rows(const std::string& csv) {
    ASSERT_TRUE(csv.empty() || csv.back() == '\n') << csv;
    for (const std::string& row : lines_of(csv)) {
        EXPECT_EQ(cells_of(row).size(), columns) << row;
    }
}

TEST(watch, prints_csv_with_a_header_and_each_sample_once) {
    service_process service;
    const run_of_a_program run = ctl({"watch", "--for", "1500ms", "--format", "csv"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    const std::vector<std::string> rows = lines_of(run.output);
    ASSERT_GT(rows.size(), 2U);
    EXPECT_EQ(rows[0], csv_header);
    expect_whole_rows(run.output);
    double before = 0;
    bool has_current = false;
    bool has_orientation = false;
    for (std::size_t at = 1; at < rows.size(); ++at) {
        const std::vector<std::string> cells = cells_of(rows[at]);
        EXPECT_EQ(number_of(rows[at]), at);
        EXPECT_GE(std::stod(cells[0]), before);
        before = std::stod(cells[0]);
        has_orientation |= !cells[9].empty();
        has_current |= !cells[13].empty() && !cells[16].empty();
    }
    EXPECT_EQ(cells_of(rows[1])[0], "0.000000");
    EXPECT_TRUE(has_current);
    EXPECT_TRUE(has_orientation);
}

TEST(watch, prints_a_json_document_a_line) {
    service_process service;
    for (const std::vector<std::string>& wanted :
         {std::vector<std::string>{"--json"}, {"--format", "json"}}) {
        std::vector<std::string> command{"watch", "--for", "400ms"};
        command.insert(command.end(), wanted.begin(), wanted.end());
        const run_of_a_program run = ctl(command);
        EXPECT_EQ(run.end, succeeded);
        EXPECT_EQ(run.errors, "");
        std::uint64_t count = 0;
        for (const std::string& line : lines_of(run.output)) {
            const auto read = nlohmann::json::parse(line);
            EXPECT_EQ(read.at("number"), ++count);
            EXPECT_EQ(read.at("stream"), 1);
            EXPECT_EQ(read.at("position").size(), 3U);
            EXPECT_EQ(read.at("velocity").size(), 3U);
        }
        EXPECT_GT(count, 1U);
    }
}

TEST(watch, prints_a_line_a_sample_where_there_is_no_terminal) {
    service_process service;
    const run_of_a_program run = ctl({"watch", "--for", "300ms"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    ASSERT_GT(lines_of(run.output).size(), 1U);
    const std::regex row(" +[0-9]+\\.[0-9]+ s  position( +-?[0-9.]+)+  velocity( +-?[0-9.]+)+.*");
    for (const std::string& line : lines_of(run.output)) {
        EXPECT_TRUE(std::regex_match(line, row)) << line;
    }
}

TEST(watch, prints_fewer_samples_at_a_lower_rate_and_counts_all) {
    service_process service;
    const run_of_a_program run = ctl({"watch", "--for", "1s", "--rate", "5", "--format", "csv"});
    EXPECT_EQ(run.end, succeeded);
    const std::vector<std::string> rows = lines_of(run.output);
    ASSERT_GT(rows.size(), 2U);
    EXPECT_LE(rows.size(), 8U) << "header included";
    EXPECT_GE(number_of(rows.back()), rows.size());
}

TEST(watch, draws_a_picture_that_is_there_whole_or_not_at_all) {
    service_process service;
    const scratch_folder folder;
    const std::string path = folder.file("curves.svg");
    const run_of_a_program run = ctl({"watch", "--for", "300ms", "--plot", path});
    EXPECT_EQ(run.end, succeeded);
    const std::string svg = text_in_file(path);
    EXPECT_EQ(fault_in_xml(svg), "");
    EXPECT_THAT(svg, HasSubstr(">orvanta3 3001  6e2b8410-5f3c-4d71-9a03-c53800000001</text>"));
    EXPECT_THAT(svg, HasSubstr(">motor current [unit not specified]</text>"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "nothing is left";
}

TEST(watch, refuses_a_picture_that_it_cannot_write_before_it_connects) {
    const scratch_folder folder;
    const run_of_a_program run = ctl({"watch", "--plot", folder.file("none/curves.svg")});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_THAT(run.errors, testing::StartsWith("orvantactl: cannot create " +
                                                folder.file("none/curves.svg.new") + ": "));
    for (const std::string& place : {folder.path().string(), folder.path().parent_path().string()}) {
        const run_of_a_program other = ctl({"watch", "--plot", place});
        EXPECT_EQ(other.end, status(exit_status::refused));
        EXPECT_EQ(other.errors, "orvantactl: " + place + ": this is no regular file\n");
    }
}

TEST(watch, ends_when_the_device_is_unplugged) {
    service_process service;
    child_process program(ctl_command({"watch", "--format", "csv"}), attachment::pipes);
    program.read_until("\n1.");
    service.tell("unplug 1");
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.errors, "orvantactl: the device was unplugged\n");
    EXPECT_EQ(run.output.back(), '\n');
}

TEST(watch, ends_when_the_service_is_killed_and_keeps_what_it_has) {
    service_process service({"--rate", "10"});
    const scratch_folder folder;
    child_process program(ctl_command({"watch", "--format", "csv", "--plot", folder.file("curves.svg")}),
                          attachment::pipes);
    const std::string before =
        program.read_until([](const std::string& printed) { return lines_of(printed).size() > 2; });
    service.kill();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_THAT(run.errors, HasSubstr("orvantactl: the connection is lost: "));
    expect_whole_rows(before + run.output);
    EXPECT_EQ(fault_in_xml(text_in_file(folder.file("curves.svg"))), "");
}

TEST(watch, ends_when_the_service_was_started_anew) {
    service_process service;
    child_process program(ctl_command({"watch", "--json"}), attachment::pipes);
    program.read_until("\n");
    service.tell("restart");
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_THAT(run.errors, testing::StartsWith(R"({"error":{"kind":"lost","status":6,)"));
}

TEST(watch, ends_quietly_when_nobody_reads_any_more) {
    service_process service;
    const scratch_folder folder;
    child_process program(ctl_command({"watch", "--plot", folder.file("curves.svg")}), attachment::pipes);
    program.read_until("\n");
    program.close_output();
    EXPECT_EQ(program.wait(), succeeded);
    EXPECT_EQ(program.rest_of_errors(), "");
    EXPECT_EQ(fault_in_xml(text_in_file(folder.file("curves.svg"))), "");
}

TEST(watch, says_that_no_sample_came) {
    service_process service({"--rate", "0"});
    const run_of_a_program run = ctl({"watch", "--for", "200ms", "--format", "csv"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.output, std::string(csv_header) + "\n");
    EXPECT_EQ(run.errors, "orvantactl: no sample came; is the device switched on?\n");
}

TEST(watch, tells_of_messages_that_made_no_sense) {
    service_process service({"--patch", "header.magic=other@op=33,p=0.5"});
    const run_of_a_program run = ctl({"watch", "--for", "500ms"});
    EXPECT_EQ(run.end, succeeded);
    // In Wine the samples come too unevenly to tell the missing ones as well.
    EXPECT_TRUE(std::regex_search(
        run.errors,
        std::regex("orvantactl: [0-9]+ messages of the service made no sense and were dropped\n")))
        << run.errors;
}

TEST(watch, fails_as_the_service_does_when_it_refuses_to_open) {
    service_process service({"--error", "0xD0@op=device_open"});
    const run_of_a_program run = ctl({"watch", "--for", "200ms"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_THAT(run.errors, HasSubstr("communication error with device"));
}

TEST(watch, takes_its_time_for_connecting_from_the_time_out_and_not_the_watching) {
    service_process service;
    const run_of_a_program run = ctl({"watch", "--for", "1s", "--timeout", "500ms", "--format", "csv"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_GT(std::stod(cells_of(lines_of(run.output).back())[0]), 0.5);
}

TEST(watch, shows_no_palmetron) {
    service_process service;
    const run_of_a_program run = ctl({"watch", "--device", "1001"});
    EXPECT_EQ(run.end, status(exit_status::no_device));
    EXPECT_EQ(run.errors, "orvantactl: device 1001 is a palmetron; watch shows an Orvanta3\n");
}

struct wrong_usage {
    std::vector<std::string> options;
    const char* errors;
};

void PrintTo(const wrong_usage& one, std::ostream* out) { // NOLINT(readability-identifier-naming)
    for (const std::string& word : one.options) {
        *out << word << ' ';
    }
}

class wrong_options : public testing::TestWithParam<wrong_usage> {};

TEST_P(wrong_options, are_refused_before_anything_is_sent) {
    std::vector<std::string> command{"watch"};
    command.insert(command.end(), GetParam().options.begin(), GetParam().options.end());
    const run_of_a_program run = ctl(command);
    EXPECT_EQ(run.end, status(exit_status::wrong_usage));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr(GetParam().errors));
}

INSTANTIATE_TEST_SUITE_P(
    of_watch, wrong_options,
    testing::Values(
        wrong_usage{{"--format", "xml"},
                    "orvantactl: watch: --format: 'xml' is none of the formats live, lines, csv and json\n"},
        wrong_usage{{"--format", "live"},
                    "orvantactl: --format live needs a terminal; lines, csv and json go anywhere\n"},
        wrong_usage{{"--json", "--format", "csv"}, R"("--json and another --format exclude each other")"},
        wrong_usage{{"--rate", "0"}, "--rate"}, wrong_usage{{"--rate", "fast"}, "--rate"},
        wrong_usage{{"--for", "soon"}, "orvantactl: watch: --for: 'soon' is no time"}));

} // namespace
