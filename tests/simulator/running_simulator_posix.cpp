// The simulator's program as a child process, by posix_spawn and pipes.
#include "simulator/running_simulator.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace simulator_tests {
namespace {

std::string read_line(int descriptor) {
    std::string line;
    for (char letter = 0; letter != '\n';) {
        const ssize_t count = ::read(descriptor, &letter, 1);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        if (count == 1) {
            line += letter;
        }
    }
    return line;
}

std::string read_all(int descriptor) {
    std::string text;
    for (;;) {
        const std::string line = read_line(descriptor);
        if (line.empty()) {
            return text;
        }
        text += line;
    }
}

// What follows the beginning of the next line; empty, and the test fails, for another line.
std::string read_value(int descriptor, std::string_view begin) {
    const std::string line = read_line(descriptor);
    if (!line.starts_with(begin) || line.back() != '\n') {
        ADD_FAILURE() << "unexpected line: " << line;
        return {};
    }
    return line.substr(begin.size(), line.size() - begin.size() - 1);
}

} // namespace

running_simulator::running_simulator(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{SIMULATOR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    int output[2];
    int errors[2];
    EXPECT_EQ(pipe2(output, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(errors, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    EXPECT_EQ(posix_spawn(&process_, SIMULATOR_PROGRAM, &actions, nullptr, pointers.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    ::close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
}

running_simulator::~running_simulator() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    ::close(output_);
    ::close(errors_);
}

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
        port_ = read_value(output_, "listening on port ");
        seed_ = read_value(output_, "seed ");
    }
}

void running_simulator::send_signal(int number) const {
    EXPECT_EQ(::kill(process_, number), 0);
}

running_simulator::ending running_simulator::wait_for_end() {
    ending end;
    end.output = read_all(output_);
    end.errors = read_all(errors_);
    int status = 0;
    EXPECT_EQ(::waitpid(process_, &status, 0), process_);
    process_ = -1;
    end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return end;
}

} // namespace simulator_tests
