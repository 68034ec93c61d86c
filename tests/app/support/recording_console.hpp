// A console that is typed at from a text and keeps what it prints.
#pragma once

#include "app/console.hpp"

#include <cstdio>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

namespace orvanta_tests {

class recording_console {
  public:
    explicit recording_console(const std::string& input = {}) : input_(input) {}
    ~recording_console() {
        close(output_.stream);
        close(errors_.stream);
    }
    recording_console(const recording_console&) = delete;
    recording_console& operator=(const recording_console&) = delete;

    [[nodiscard]] vantu::orvanta::app::console& terminal() { return terminal_; }
    [[nodiscard]] const std::string& output() const { return output_.text; }
    [[nodiscard]] const std::string& errors() const { return errors_.text; }
    // Both, in the order in which they reached their streams.
    [[nodiscard]] const std::string& transcript() const { return transcript_; }

    // Called for every piece of output as it reaches its stream.
    std::function<void(std::string_view)> on_output;

  private:
    struct recorder {
        recording_console* owner;
        std::string text;
        std::FILE* stream;

        void take(std::string_view piece) {
            text.append(piece);
            owner->transcript_.append(piece);
            if (this == &owner->output_ && owner->on_output) {
                owner->on_output(piece);
            }
        }
    };
    // The recorder takes all that reaches the stream; one source file a platform.
    static std::FILE* stream_into(recorder& target);
    static void close(std::FILE* stream);

    std::istringstream input_;
    recorder output_{this, {}, stream_into(output_)};
    recorder errors_{this, {}, stream_into(errors_)};
    std::string transcript_;
    vantu::orvanta::app::console terminal_{input_, output_.stream, errors_.stream};
};

} // namespace orvanta_tests
