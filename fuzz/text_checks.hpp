// The demands of each harness of a reader of text on the messages that it gets.
#pragma once

#include <algorithm>
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
    bool is_plain = std::none_of(text.begin(), text.end(), [](char letter) {
        return (letter >= 0 && letter < ' ') || letter == '\x7F';
    });
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        const auto follower = static_cast<unsigned char>(text[i + 1]);
        is_plain = is_plain && !(text[i] == '\xC2' && follower >= 0x80 && follower < 0xA0);
    }
    require(!text.empty() && is_plain, "a message is not one line of plain text");
}

} // namespace orvanta_fuzz
