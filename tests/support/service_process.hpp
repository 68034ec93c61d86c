// The simulator at the service's own port, told lines of its console, and a program's run beside it.
#pragma once

#include "app/support/child_process.hpp"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace orvanta_tests {

// The simulator at its own port, told lines of its console. With --verbose a test has to read its standard
// error, which would fill otherwise and stop it.
class service_process {
  public:
    explicit service_process(const std::vector<std::string>& options = {})
        : program_(command(options), attachment::pipes) {
        program_.read_until("listening on port 54320\n");
    }
    // Not killed: see kill().
    ~service_process() {
        if (!has_ended_) {
            EXPECT_NO_THROW(EXPECT_EQ(end(), succeeded));
        }
    }
    service_process(const service_process&) = delete;
    service_process& operator=(const service_process&) = delete;

    void tell(const std::string& line) { program_.type(line + "\n"); }
    // Tells it a line and waits until it is done.
    void have_done(const std::string& line) {
        tell(line);
        program_.read_until("ok\n");
    }
    // Waits until the service, with --verbose, tells of something on standard error.
    void await(const std::string& text) { program_.read_errors_until(text); }

    // Has it end, with a goodbye.
    ending end() {
        has_ended_ = true;
        tell("quit");
        return program_.wait();
    }
    // Ends it without a word, after a moment in which it comes to rest: Wine's server keeps the port of a
    // program that was killed while it received or sent. A service to be killed streams at 50 Hz or less.
    void kill() {
        has_ended_ = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        program_.kill();
        EXPECT_EQ(program_.wait(), killed);
    }

  private:
    static std::vector<std::string> command(const std::vector<std::string>& options) {
        std::vector<std::string> all{ORVANTA_SIMULATOR_PATH, "--interactive", "--seed", "1"};
        all.insert(all.end(), options.begin(), options.end());
        return all;
    }

    child_process program_;
    bool has_ended_{false};
};

struct run_of_a_program {
    ending end;
    std::string output;
    std::string errors;
};

inline run_of_a_program ended(child_process& program) {
    const ending end = program.wait();
    return {end, program.rest(), program.rest_of_errors()};
}

} // namespace orvanta_tests
