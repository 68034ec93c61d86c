// The walks of docs/simulator.md: its commands are run, and what it shows has to come.
#include "app/support/child_process.hpp"
#include "app/support/transcripts.hpp"

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {
namespace {

const std::string prompt = "Select option: \t";

// With one blank between words, and without the ids of clients.
std::string plain(const std::string& text) {
    static const std::regex blanks("[ \t\r]+");
    static const std::regex ids("[0-9]{12,20}");
    return std::regex_replace(std::regex_replace(text, blanks, " "), ids, "ID");
}

std::string without_numbers(const std::string& text) {
    static const std::regex numbers("[0-9]+(\\.[0-9]+)?");
    return std::regex_replace(plain(text), numbers, "N");
}

using block = std::vector<std::string>; // lines; "..." stands for any

bool shows(const std::string& printed, const block& wanted) {
    std::size_t at = 0;
    for (const std::string& line : wanted) {
        at = line == "..." ? at : printed.find(line, at);
        if (at == std::string::npos) {
            return false;
        }
    }
    return true;
}

class walk {
  public:
    explicit walk(const std::string& heading)
        : section_(section_of(heading)), service_(command(), attachment::pipes) {
        (void)service_.read_until("listening on port 54320\n");
    }
    // Also with lines that were wrong the service ends in order.
    ~walk() {
        service_.type("quit\n");
        EXPECT_EQ(service_.wait().signal, 0);
    }
    walk(const walk&) = delete;
    walk& operator=(const walk&) = delete;

    // The document's n-th block of the walk, from 0.
    [[nodiscard]] block shown(std::size_t n) const {
        std::vector<block> blocks(1);
        std::istringstream lines(section_);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("    ")) {
                const std::string text = plain(line);
                blocks.back().push_back(text.substr(1));
            } else if (!line.empty() && !blocks.back().empty()) {
                blocks.emplace_back();
            }
        }
        return blocks.at(n);
    }

    void begin_tool() { tool_.emplace(std::vector<std::string>{ORVANTA_CLI_PATH}, attachment::one_pipe); }
    // Begins the tool, which is going to ask.
    void begin_asked() {
        begin_tool();
        printed_ = tool_->read_until(prompt);
    }
    // Types each of these lines and waits for the next question.
    void type(std::initializer_list<const char*> lines) {
        for (const char* line : lines) {
            tool_->type(std::string(line) + '\n');
            printed_ = tool_->read_until(prompt);
        }
    }
    void type_factor(const char* factor) {
        tool_->type("2\n");
        (void)tool_->read_until(scaling_prompt);
        type({factor});
    }
    // Waits until the tool has printed that, since the line typed last.
    void see(const block& wanted) {
        if (!shows(plain(printed_), wanted)) {
            printed_ += tool_->read_until(
                [&](const std::string& more) { return shows(plain(printed_ + more), wanted); });
        }
    }
    // Types these lines over and over, until the tool has printed that.
    void see_after(std::initializer_list<const char*> lines, const block& wanted) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        do {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << printed_;
            type(lines);
        } while (!shows(plain(printed_), wanted));
    }
    void leave() {
        tool_->type("4\n");
        EXPECT_EQ(tool_->wait(), succeeded);
    }
    // The tool ends by itself, with these words.
    void see_end(const block& wanted) {
        EXPECT_EQ(tool_->wait(), aborted);
        EXPECT_TRUE(shows(plain(tool_->rest()), wanted)) << tool_->rest();
    }

    // Types the lines of a block that follow "> " at the simulator, and expects the others.
    void converse(const block& wanted) {
        for (const std::string& line : wanted) {
            if (line.starts_with("> ")) {
                service_.type(line.substr(2) + '\n');
            } else {
                (void)service_.read_until(line + '\n');
            }
        }
    }
    // Expects the lines of the service's side, on standard error and on standard output.
    void hear(const block& wanted) {
        for (const std::string& line : wanted) {
            const std::size_t id = line.find("ID");
            const std::string known = line.substr(id == std::string::npos ? 0 : id + 2) + '\n';
            (void)(line.starts_with("orvanta-simulator: ") ? service_.read_errors_until(known)
                                                           : service_.read_until(known));
        }
    }
    std::string status() {
        service_.type("status\nwait 0\n");
        return service_.read_until("\nok\n");
    }

  private:
    static std::string section_of(const std::string& heading) {
        std::ifstream stream(DOCS_FOLDER "/simulator.md");
        const std::string document{std::istreambuf_iterator<char>(stream), {}};
        const auto begin = document.find("\n### " + heading + "\n");
        EXPECT_NE(begin, std::string::npos) << heading;
        return document.substr(begin, document.find("\n##", begin + 1) - begin);
    }
    [[nodiscard]] std::vector<std::string> command() const {
        const std::string name = "`orvanta-simulator";
        const auto begin = section_.find(name) + name.size();
        std::istringstream words(section_.substr(begin, section_.find('`', begin) - begin));
        std::vector<std::string> all{ORVANTA_SIMULATOR_PATH, "--interactive"};
        std::copy(std::istream_iterator<std::string>(words), {}, std::back_inserter(all));
        return all;
    }

    std::string section_;
    child_process service_;
    std::optional<child_process> tool_;
    std::string printed_; // up to the last question
};

const block no_device{"No device connected - try using 'Find Orvanta3'"};

TEST(a_walk, shows_two_healthy_devices) {
    walk desk("Two healthy devices");
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"}, desk.shown(0));
    desk.leave();
}

// Losses differ from run to run: of the service's side the form is compared, of the tool's the end.
TEST(a_walk, leads_over_a_lossy_line) {
    walk desk("A lossy line");
    block wanted;
    for (const std::string& line : desk.shown(3)) {
        if (!line.starts_with("> ")) {
            wanted.push_back(without_numbers(line));
        }
    }
    desk.begin_asked();
    std::string status;
    for (int looks = 0; looks < 1000 && !shows(status, wanted); ++looks) {
        desk.type({"0"});
        status = without_numbers(desk.status());
    }
    EXPECT_TRUE(shows(status, wanted)) << status;
    desk.converse({"> heal"});
    desk.see_after({"0", "2"}, {"Gravity Compensation: On", "Scaling Factor: 0.75", "Torque Scaling: On"});
    desk.leave();
}

TEST(a_walk, goes_on_after_the_service_has_started_anew) {
    walk desk("The service starts anew under a client");
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"},
                   {"Scaling Factor: 0.75"}); // a change of one value sends the others as they are known
    desk.type({"3", "0"});
    desk.hear(desk.shown(0));
    desk.type({"8"});
    desk.see_after({"2"}, {"Gravity Compensation: Off"});
    desk.see_after({"0"}, desk.shown(1));
    desk.leave();
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"}, {"Gravity Compensation: On"});
    desk.leave();
}

// The two seconds in which no device is there are too short to be tested with a busy machine.
TEST(a_walk, brings_a_device_with_a_loose_plug_back) {
    walk desk("A loose plug");
    EXPECT_EQ(desk.shown(0), no_device);
    desk.begin_asked();
    desk.type({"0"});
    desk.hear(desk.shown(1));
    desk.see_after({"2"}, {"Gravity Compensation: On", "Scaling Factor: 0.75"});
    desk.leave();
}

TEST(a_walk, leads_to_one_of_many_devices) {
    walk desk("A crowded desk");
    desk.begin_asked();
    desk.type({"0"});
    desk.see(desk.shown(0));
    desk.see_after({"0"}, desk.shown(1));
    desk.type({"3"});
    desk.see_after({"1"}, desk.shown(2));
    desk.leave();
}

TEST(a_walk, ends_twice_at_a_service_that_is_taken) {
    walk desk("A service that is taken");
    desk.begin_tool();
    const block words = desk.shown(0);
    desk.see_end({words.begin(), words.begin() + 2});
    desk.begin_tool();
    desk.see_end({words.begin() + 2, words.end()});
    desk.begin_asked();
    desk.see_after({"0"}, {"Device Info Updated"});
    desk.leave();
}

// The values that are shown at once are gone too soon for a busy machine.
TEST(a_walk, comes_to_the_values_of_a_slow_service) {
    walk desk("Slow and late");
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"}, desk.shown(1));
    desk.leave();
}

TEST(a_walk, meets_a_device_that_a_stranger_made_up) {
    walk desk("Yesterday's answers and a stranger's datagrams");
    desk.begin_asked();
    desk.type({"0", "2"});
    desk.leave();
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"}, {"Scaling Factor: 0.75"});
    desk.type({"0"});
    desk.see(desk.shown(0));
    desk.type({"1"});
    desk.see(desk.shown(1));
    desk.see_after({"1"}, desk.shown(2));
    desk.see_after({"2"}, {"Handedness: Nil"});
    desk.leave();
}

// A gap is too short to be looked at with a busy machine.
TEST(a_walk, leads_over_the_gaps_of_a_client) {
    walk desk("Gaps for each client");
    desk.begin_asked();
    desk.type({"0"});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (desk.status().find("drop happened") == std::string::npos) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        desk.type({"0"});
    }
    desk.see_after({"0", "2"}, {"Gravity Compensation: On", "Scaling Factor: 0.75"});
    desk.leave();
}

TEST(a_walk, meets_one_error_by_one_line) {
    walk desk("One line");
    desk.begin_asked();
    desk.type({"0", "3", "7"});
    desk.see(desk.shown(0));
    desk.type({"8"});
    desk.leave();
}

TEST(a_walk, goes_by_hand) {
    walk desk("By hand");
    desk.begin_asked();
    desk.type({"0", "3"});
    desk.type_factor("0.5");
    desk.type({"7"});
    desk.type_factor("0.25");
    desk.type({"8"});
    desk.see_after({"2"}, {"Scaling Factor: 0.25"});
    desk.leave();
    desk.converse(desk.shown(0));
    desk.begin_asked();
    desk.type({"0"});
    desk.see_after({"2"}, {"Scaling Factor: 0.50"});
    desk.converse(desk.shown(1));
    desk.see_after({"2"}, no_device);
    desk.converse(desk.shown(2));
    desk.see_after({"2"}, {"Scaling Factor: 0.50"});
    desk.converse(desk.shown(3));
    desk.leave();
}

} // namespace
} // namespace orvanta_tests
