// The simulator's control socket as a port that a file tells with a token.
#include "simulator/fixtures/running_simulator.hpp"
#include "support/control_client.hpp"
#include "support/scratch_folder.hpp"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace orvanta_tests {
namespace {

std::string content_of(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

TEST(the_file_of_the_control_port, has_port_and_token_on_a_line_and_no_two_tokens_are_equal) {
    const scratch_folder folder;
    std::string last;
    for (int i = 0; i < 2; ++i) {
        const std::string path = folder.file("control");
        running_simulator tested({"--port", "0", "--control", path});
        EXPECT_NE(tested.port(), "");
        const std::string line = content_of(path);
        EXPECT_TRUE(std::regex_match(line, std::regex("[0-9]+ [0-9a-f]{32}\n"))) << line;
        const std::string token = line.substr(line.find(' '));
        EXPECT_NE(token, last);
        last = token;
        control_client script(path);
        EXPECT_TRUE(script.send("quit\n"));
        EXPECT_EQ(script.line(), "ok\n");
        EXPECT_EQ(tested.wait_for_end().status, 0);
    }
}

TEST(the_control_port, does_nothing_for_a_script_without_the_token) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    running_simulator tested({"--port", "0", "--control", path});
    EXPECT_NE(tested.port(), "");
    const std::string token = content_of(path).substr(content_of(path).find(' ') + 1, 32);
    for (const std::string& greeting :
         {std::string("plug orvanta3\n"), std::string("\n"), token + "0\nplug orvanta3\n",
          token.substr(1) + "\nplug orvanta3\n", "plug orvanta3\n" + token + "\n"}) {
        control_client stranger(path, greeting);
        EXPECT_EQ(stranger.rest(), "") << greeting;
    }
    control_client script(path);
    EXPECT_TRUE(script.send("expect devices = 2\nquit\n"));
    EXPECT_EQ(script.line(), "ok\n");
    EXPECT_EQ(script.line(), "ok\n");
    EXPECT_EQ(tested.wait_for_end().status, 0);
}

} // namespace
} // namespace orvanta_tests
