// A capture file as lines, and lines as a capture file.
#pragma once

#include "shared/capture_file.hpp"
#include "support/bytes.hpp"

#include <string>
#include <vector>

namespace orvanta_tests {

[[nodiscard]] inline std::vector<vantu::orvanta::captured_datagram> datagrams_of(const std::string& path) {
    std::vector<vantu::orvanta::captured_datagram> all;
    vantu::orvanta::capture_reader file(path);
    while (auto one = file.next()) {
        all.push_back(*one);
    }
    return all;
}

[[nodiscard]] inline bytes content_of(const vantu::orvanta::captured_datagram& one) {
    bytes content;
    for (const std::byte byte : one.bytes) {
        content.push_back(static_cast<std::uint8_t>(byte));
    }
    return content;
}

// "54321>54320 E9 9E ..." for each.
[[nodiscard]] inline std::vector<std::string> lines_of_capture(const std::string& path) {
    std::vector<std::string> lines;
    for (const auto& one : datagrams_of(path)) {
        lines.push_back(std::to_string(one.from.port) + ">" + std::to_string(one.to.port) + " " +
                        hex(content_of(one)));
    }
    return lines;
}

} // namespace orvanta_tests
