// A program under test as the system sees it; one source file a platform.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

enum class attachment {
    pipes,           // output and errors in a pipe each
    one_pipe,        // both in one, in the order of the writes
    pseudo_terminal, // a controlling terminal of its own; not on Windows
};

// How a program ended: by itself with a code, or by a signal.
struct ending {
    int code{-1};
    int signal{0};
    friend bool operator==(const ending&, const ending&) = default;
};

inline constexpr ending succeeded{0, 0};
// After std::abort.
extern const ending aborted;
// After spawned_program::kill.
extern const ending killed;

inline constexpr int patience_ms = 60'000;

// Throws std::system_error where the system refuses.
class spawned_program {
  public:
    spawned_program(const std::vector<std::string>& command, attachment kind);
    // Kills the program if it still runs.
    ~spawned_program();
    spawned_program(const spawned_program&) = delete;
    spawned_program& operator=(const spawned_program&) = delete;

    void type(std::string_view text);
    void close_input();
    void close_output();

    // SIGINT and SIGTERM; Ctrl-Break for both on Windows, which takes a console.
    void interrupt();
    void terminate();
    void kill();
    // SIGSTOP; not on Windows.
    void suspend();

    // Waits until the program prints, and appends what it printed: output, errors. Line ends are LF; on
    // Windows, where they are CR LF, one that is not shows as such. False when nothing more can come, or
    // nothing came for a minute.
    [[nodiscard]] bool read(std::array<std::string, 2>& printed);
    // Whether more can come.
    [[nodiscard]] bool is_open() const;

    [[nodiscard]] std::uint64_t id() const;
    [[nodiscard]] std::size_t threads() const;
    [[nodiscard]] ending wait();

  private:
    struct system_side;
    std::unique_ptr<system_side> system_;
};

} // namespace orvanta_tests
