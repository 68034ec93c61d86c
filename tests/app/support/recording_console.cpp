// A console that keeps what it prints.
#include "app/support/recording_console.hpp"

namespace orvanta_test {

recording_console::recording_console(const std::string& input) : input_(input) {}

recording_console::~recording_console() {
    close(output_.stream);
    close(errors_.stream);
}

void recording_console::recorder::take(std::string_view piece) {
    text.append(piece);
    owner->transcript_.append(piece);
    if (this == &owner->output_ && owner->on_output) {
        owner->on_output(piece);
    }
}

} // namespace orvanta_test
