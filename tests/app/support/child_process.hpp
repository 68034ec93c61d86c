// A program run by a test, at pipes or at a pseudo-terminal.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace orvanta_test {

enum class attachment {
    pipes,           // output and errors in a pipe each
    one_pipe,        // both in one, in the order of the writes
    pseudo_terminal, // a controlling terminal of its own
};

// How a program ended: by itself with a code, or by a signal.
struct ending {
    int code{-1};
    int signal{0};
    friend bool operator==(const ending&, const ending&) = default;
};

// Every wait throws std::runtime_error after a minute, or when the program ends before what is
// waited for came; the text says what did come.
class child_process {
  public:
    child_process(std::vector<std::string> command, attachment kind);
    // Kills the program if it still runs.
    ~child_process();
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    void type(std::string_view text);
    void close_input();
    void close_output();
    void send_signal(int number);

    // Everything printed since the last call, up to and with the first occurrence of the text.
    std::string read_until(std::string_view text);
    // Everything printed since the last call, once it is enough.
    std::string read_until(const std::function<bool(const std::string& printed)>& enough);
    // As the first, for the errors of a program at pipes.
    std::string read_errors_until(std::string_view text);

    [[nodiscard]] pid_t id() const { return process_; }

    // The program's threads, and waiting until there are just so many.
    [[nodiscard]] std::size_t threads() const;
    void wait_for_threads(std::size_t count) const;

    // Waits for the program's end.
    ending wait();
    // What was printed and not read yet; the rest of it after wait().
    std::string rest() const { return streams_[0].text; }
    std::string rest_of_errors() const { return streams_[1].text; }

  private:
    struct stream {
        int descriptor{-1};
        std::string text;
    };

    void spawn(std::vector<std::string>& command, attachment kind);
    std::string take_until(stream& from, std::string_view text);
    // pump() that throws when nothing came.
    void await(std::string_view what);
    // Takes what the program printed; false once nothing more can come.
    bool pump();

    pid_t process_{-1};
    int input_{-1};
    std::array<stream, 2> streams_;
};

} // namespace orvanta_test
