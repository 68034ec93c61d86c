// Files of the tests of settings, and the simulator's first device as each document has it.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace orvanta_tests {

inline constexpr const char* first_device =
    R"({"id":1,"type":"orvanta3","short_id":"3001","uuid":"6e2b8410-5f3c-4d71-9a03-c53800000001"})";

[[nodiscard]] inline std::string content_of(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void write_file(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace orvanta_tests
