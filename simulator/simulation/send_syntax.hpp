// Reading what the verb "send" says: a datagram of the service, by an operation's fields or by its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vantu::orvanta::simulator {

struct send_command {
    std::vector<std::byte> datagram;
    std::uint64_t client{0}; // 0: to all; else to that of this number
};

inline constexpr std::size_t longest_sent_datagram = 2048;

// Reads "OPERATION FIELD=VALUE ..." or "HEX", with "tag=N" and "client=N" among the words where they are
// wanted; fields that are not named are 0, and a tail brings its count. Throws std::invalid_argument with one
// line: what is wrong, what would be right.
[[nodiscard]] send_command read_send(std::string_view rest);

} // namespace vantu::orvanta::simulator
