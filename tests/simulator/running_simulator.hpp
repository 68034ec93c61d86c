// The simulator's program as a child process of the test.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace simulator_tests {

class running_simulator {
  public:
    explicit running_simulator(const std::vector<std::string>& arguments);
    // Kills what still runs.
    ~running_simulator();
    running_simulator(const running_simulator&) = delete;
    running_simulator& operator=(const running_simulator&) = delete;

    // Waits for the lines that tell port and seed; empty when the program ends without
    // it.
    [[nodiscard]] std::string port();

    // The seed of the same lines.
    [[nodiscard]] std::string seed();

    void send_signal(int number) const;

    struct ending {
        int status;         // the exit status; -1 after a signal that was not handled
        std::string output; // what has not been read yet
        std::string errors;
    };
    // Waits for the end.
    ending wait_for_end();

  private:
    void read_start();

    std::string port_;
    std::string seed_;
    pid_t process_{-1};
    int output_{-1};
    int errors_{-1};
};

} // namespace simulator_tests
