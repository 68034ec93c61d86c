// The simulator's program as a child process at pipes.
#include "simulator/running_simulator.hpp"

#include <exception>
#include <gtest/gtest.h>
#include <string_view>

namespace simulator_tests {
namespace {

std::vector<std::string> command(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{SIMULATOR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

// What follows the beginning of the next line; empty, and the test fails, for another line or none.
std::string read_value(orvanta_test::child_process& program, std::string_view begin) {
    try {
        const std::string line = program.read_until("\n");
        if (line.starts_with(begin)) {
            return line.substr(begin.size(), line.size() - begin.size() - 1);
        }
        ADD_FAILURE() << "unexpected line: " << line;
    } catch (const std::exception& failure) {
        ADD_FAILURE() << failure.what();
    }
    return {};
}

} // namespace

running_simulator::running_simulator(const std::vector<std::string>& arguments)
    : program_(command(arguments), orvanta_test::attachment::pipes) {}

std::string running_simulator::port() {
    read_start();
    return port_;
}

std::string running_simulator::seed() {
    read_start();
    return seed_;
}

void running_simulator::read_start() {
    if (port_.empty()) {
        port_ = read_value(program_, "listening on port ");
        seed_ = read_value(program_, "seed ");
    }
}

running_simulator::ending running_simulator::wait_for_end() {
    const int status = program_.wait().code;
    return {status, program_.rest(), program_.rest_of_errors()};
}

} // namespace simulator_tests
