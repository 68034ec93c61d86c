// A program run by a test, at pipes or at a pseudo-terminal.
#pragma once

#include "app/support/spawned_program.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

// Every wait throws std::runtime_error after a minute, or when the program ends before what is
// waited for came; the text says what did come.
class child_process {
  public:
    child_process(const std::vector<std::string>& command, attachment kind) : program_(command, kind) {}

    void type(std::string_view text) { program_.type(text); }
    void close_input() { program_.close_input(); }
    void close_output() { program_.close_output(); }
    void interrupt() { program_.interrupt(); }
    void terminate() { program_.terminate(); }
    void kill() { program_.kill(); }
    void suspend() { program_.suspend(); }

    // Everything printed since the last call, up to and with the first occurrence of the text.
    std::string read_until(std::string_view text);
    // Everything printed since the last call, once it is enough.
    std::string read_until(const std::function<bool(const std::string& printed)>& enough);
    // As the first, for the errors of a program at pipes.
    std::string read_errors_until(std::string_view text);

    [[nodiscard]] std::uint64_t id() const { return program_.id(); }

    // The program's threads, and waiting until there are just so many.
    [[nodiscard]] std::size_t threads() const { return program_.threads(); }
    void wait_for_threads(std::size_t count) const;

    // Waits for the program's end.
    ending wait();
    // The output that was not read yet; all that is left of it after wait().
    std::string rest() const { return printed_[0]; }
    std::string rest_of_errors() const { return printed_[1]; }

  private:
    std::string take_until(std::string& from, std::string_view text);
    // Takes what the program printed; throws when nothing came.
    void await(std::string_view what);

    spawned_program program_;
    std::array<std::string, 2> printed_;
};

} // namespace orvanta_tests
