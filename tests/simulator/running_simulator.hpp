// The simulator's program as a child process of the test.
#pragma once

#include "app/support/child_process.hpp"

#include <string>
#include <vector>

namespace simulator_tests {

class running_simulator {
  public:
    explicit running_simulator(const std::vector<std::string>& arguments);

    // Waits for the lines that tell port and seed; empty, and the test fails, when the program ends
    // without them.
    [[nodiscard]] std::string port();

    // The seed of the same lines.
    [[nodiscard]] std::string seed();

    // Has one with --interactive end.
    void quit() { program_.type("quit\n"); }
    void interrupt() { program_.interrupt(); }
    void terminate() { program_.terminate(); }
    void kill() { program_.kill(); }
    void suspend() { program_.suspend(); }

    struct ending {
        int status;         // the exit status, or that of orvanta_test::killed
        std::string output; // what has not been read yet
        std::string errors;
    };
    // Waits for the end.
    ending wait_for_end();

  private:
    void read_start();

    orvanta_test::child_process program_;
    std::string port_;
    std::string seed_;
};

} // namespace simulator_tests
