// The streams of the recording console: the C library hands on what is flushed.
#include "app/support/recording_console.hpp"

#include <stdexcept>

namespace orvanta_tests {

std::FILE* recording_console::stream_into(recorder& target) {
    cookie_io_functions_t functions{};
    functions.write = [](void* cookie, const char* data, std::size_t size) {
        static_cast<recorder*>(cookie)->take({data, size});
        return static_cast<ssize_t>(size);
    };
    std::FILE* stream = fopencookie(&target, "w", functions);
    if (stream == nullptr) {
        throw std::runtime_error("no stream to record with");
    }
    return stream;
}

void recording_console::close(std::FILE* stream) {
    std::fclose(stream);
}

} // namespace orvanta_tests
