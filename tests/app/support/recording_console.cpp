// A console that keeps what it prints.
#include "app/support/recording_console.hpp"

#include <stdexcept>

namespace orvanta_test {

recording_console::recording_console(const std::string& input) : input_(input) {}

recording_console::~recording_console() {
    std::fclose(output_.stream);
    std::fclose(errors_.stream);
}

ssize_t recording_console::write(void* cookie, const char* data, std::size_t size) {
    auto& target = *static_cast<recorder*>(cookie);
    target.text.append(data, size);
    target.owner->transcript_.append(data, size);
    if (&target == &target.owner->output_ && target.owner->on_output) {
        target.owner->on_output({data, size});
    }
    return static_cast<ssize_t>(size);
}

std::FILE* recording_console::stream_into(recorder& target) {
    cookie_io_functions_t functions{};
    functions.write = &recording_console::write;
    std::FILE* stream = fopencookie(&target, "w", functions);
    if (stream == nullptr) {
        throw std::runtime_error("no stream to record with");
    }
    return stream;
}

} // namespace orvanta_test
