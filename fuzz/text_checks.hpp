// The demands of each harness of a reader of text on the messages that it gets.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvanta_fuzz {

inline void require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw std::runtime_error(otherwise);
    }
}

// Without control characters, which a terminal would act on: U+0000 to U+001F and U+007F to U+009F.
inline void require_one_line(std::string_view text) {
    bool is_plain = true;
    std::uint8_t before = 0;
    for (const char letter : text) {
        const auto value = static_cast<std::uint8_t>(letter);
        const bool is_second_of_control = before == 0xC2 && value >= 0x80 && value < 0xA0;
        is_plain = is_plain && value >= ' ' && value != 0x7F && !is_second_of_control;
        before = value;
    }
    require(!text.empty() && is_plain, "a message is not one line of plain text");
}

} // namespace orvanta_fuzz
