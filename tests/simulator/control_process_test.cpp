// The simulator as a program with scripts at its control socket.
#include "simulator/fixtures/running_simulator.hpp"
#include "support/control_client.hpp"
#include "support/scratch_folder.hpp"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class the_control_socket : public testing::Test {
  protected:
    [[nodiscard]] std::vector<std::string> with_socket(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"--port", "0", "--rate", "0", "--control", path};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    running_simulator& start(const std::vector<std::string>& more = {}) {
        tested = std::make_unique<running_simulator>(with_socket(more));
        EXPECT_NE(tested->port(), "");
        return *tested;
    }
    void quit_and_expect(int status) {
        control_client last(path);
        EXPECT_TRUE(last.send("quit\n"));
        EXPECT_EQ(last.line(), "ok\n");
        const auto end = tested->wait_for_end();
        EXPECT_EQ(end.status, status) << end.errors;
        EXPECT_FALSE(std::filesystem::exists(path));
    }

    const scratch_folder folder;
    const std::string path = folder.file("control");
    std::unique_ptr<running_simulator> tested;
};

TEST_F(the_control_socket, does_the_lines_of_each_script_in_their_order_with_their_own_waits) {
    start();
    control_client one(path);
    control_client other(path);
    EXPECT_TRUE(
        one.send("plug orvanta3\nwait 60000 happened restart\n# a remark\n\nplug orvanta3\r\nnonsense\n"));
    EXPECT_EQ(one.line(), "plugged in 2\n");
    EXPECT_TRUE(other.send("expect devices = 3\nrestart\n"));
    EXPECT_EQ(other.line(), "ok\n");
    EXPECT_EQ(other.line(), "ok\n");
    EXPECT_EQ(one.line(), "ok\n");
    EXPECT_EQ(one.line(), "plugged in 3\n");
    EXPECT_THAT(one.line(), StartsWith("error: there is no verb 'nonsense'"));
    quit_and_expect(0);
}

TEST_F(the_control_socket, tells_a_wait_that_was_in_vain) {
    start();
    control_client script(path);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(script.send("wait 200 in config_save\nexpect clients = 0\n"));
    EXPECT_EQ(script.line(), "error: waited 200 ms for in config_save >= 1; it is 0\n");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(190));
    EXPECT_EQ(script.line(), "ok\n");
    quit_and_expect(0);
}

TEST_F(the_control_socket, answers_all_lines_of_a_script_that_sends_no_more) {
    start();
    control_client script(path);
    EXPECT_TRUE(script.send("drop 0\nwait 50\nexpect clients\nheal"));
    script.end_sending();
    EXPECT_EQ(script.rest(), "ok\nok\nerror: expected clients >= 1; it is 0\nok\n");
    quit_and_expect(0);
}

TEST_F(the_control_socket, answers_them_all_also_where_they_are_more_than_the_system_holds) {
    start();
    control_client script(path);
    std::string lines;
    constexpr int count = 700;
    for (int i = 0; i < count; ++i) {
        lines += "help\n";
    }
    EXPECT_TRUE(script.send(lines + "expect devices = 2"));
    script.end_sending();
    control_client other(path);
    EXPECT_TRUE(other.send("wait 100\nheal\n"));
    EXPECT_EQ(other.line(), "ok\n");
    EXPECT_EQ(other.line(), "ok\n") << "the script has not read a byte so far";
    const std::string answers = script.rest();
    EXPECT_GT(answers.size(), 500'000U);
    EXPECT_THAT(answers, testing::EndsWith("\nok\n"));
    quit_and_expect(0);
}

TEST_F(the_control_socket, does_the_lines_of_a_script_that_has_left_but_none_after_a_wait) {
    start();
    {
        control_client hasty(path);
        EXPECT_TRUE(hasty.send("status\nplug orvanta3\nwait 100\nplug palmetron\n"));
    }
    control_client script(path);
    EXPECT_TRUE(script.send("wait 60000 devices = 3\nwait 300\nexpect devices = 3\n"));
    EXPECT_EQ(script.line(), "ok\n");
    EXPECT_EQ(script.line(), "ok\n");
    EXPECT_EQ(script.line(), "ok\n");
    quit_and_expect(0);
}

TEST_F(the_control_socket, serves_sixteen_scripts_and_the_next_after_one_of_them) {
    start();
    std::vector<std::unique_ptr<control_client>> scripts;
    while (scripts.size() < 16) {
        scripts.push_back(std::make_unique<control_client>(path));
        EXPECT_TRUE(scripts.back()->send("heal\n"));
        EXPECT_EQ(scripts.back()->line(), "ok\n");
    }
    control_client late(path);
    EXPECT_TRUE(late.send("plug orvanta3\n"));
    EXPECT_TRUE(scripts[0]->send("wait 200\nexpect devices = 2\n"));
    EXPECT_EQ(scripts[0]->line(), "ok\n");
    EXPECT_EQ(scripts[0]->line(), "ok\n") << "the late script has had its turn";
    EXPECT_FALSE(late.has_more());
    scripts.pop_back();
    EXPECT_EQ(late.line(), "plugged in 2\n");
    scripts.clear();
    quit_and_expect(0);
}

TEST_F(the_control_socket, shuts_out_a_script_that_does_not_read_its_answers) {
    start();
    control_client deaf(path);
    std::string questions;
    for (int i = 0; i < 1000; ++i) {
        questions += "help\n";
    }
    std::size_t sent = 0;
    while (deaf.send(questions)) {
        sent += questions.size();
        ASSERT_LT(sent, 50'000'000U);
        control_client other(path);
        EXPECT_TRUE(other.send("heal\n"));
        EXPECT_EQ(other.line(), "ok\n");
    }
    quit_and_expect(0);
}

TEST_F(the_control_socket, survives_scripts_that_leave_in_the_midst_of_their_answers) {
    start();
    for (int i = 0; i < 50; ++i) {
        control_client script(path);
        EXPECT_TRUE(script.send("status\nhelp\nwait 5\nstatus\nhea"));
        if (i % 2 == 0) {
            EXPECT_THAT(script.line(), StartsWith("seed "));
        }
    }
    quit_and_expect(0);
}

TEST_F(the_control_socket, is_not_taken_from_a_simulator_that_runs) {
    start();
    running_simulator second(with_socket());
    const auto end = second.wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("orvanta-simulator: " + path + ": a program that runs "));
    EXPECT_THAT(end.errors, HasSubstr("; another name would be right\n"));
    quit_and_expect(0);
}

TEST_F(the_control_socket, takes_the_place_of_one_that_a_killed_simulator_left) {
    start().kill();
    (void)tested->wait_for_end();
    EXPECT_TRUE(std::filesystem::exists(path));
    start();
    quit_and_expect(0);
}

TEST_F(the_control_socket, leaves_a_file_alone_that_is_none_of_a_simulator) {
    std::ofstream(path) << "54320 miles\n";
    running_simulator refused(with_socket());
    const auto end = refused.wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.errors, StartsWith("orvanta-simulator: " + path + ": is there and no "));
    std::string content;
    std::getline(std::ifstream(path), content);
    EXPECT_EQ(content, "54320 miles");
}

TEST_F(the_control_socket, stands_beside_the_console) {
    start({"--interactive"});
    control_client script(path);
    EXPECT_TRUE(script.send("plug orvanta3\nnonsense\n"));
    EXPECT_EQ(script.line(), "plugged in 2\n");
    EXPECT_THAT(script.line(), StartsWith("error: "));
    tested->quit();
    const auto end = tested->wait_for_end();
    EXPECT_EQ(end.status, 0) << "a script's wrong line is the script's";
    EXPECT_EQ(end.output, "ok\n");
    EXPECT_EQ(script.rest(), "");
}

} // namespace
} // namespace orvanta_tests
