// Fixed-size text fields, as the wire records hold them.
#pragma once

#include "vantu/orvanta/common/assume.hpp"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace vantu::orvanta {

// Fills a field with a text and zeros after it. The field always ends in a zero: a text that leaves
// no room for one fails the check "size < N".
template <std::size_t N> void assign_text(char (&field)[N], std::string_view text) {
    const std::size_t size = text.size();
    assume_at(locations::text_size, size < N);
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), size);
}

// The text of a field that another program filled: up to its first zero, or all of it.
template <std::size_t N> [[nodiscard]] std::string_view text_of(const char (&field)[N]) {
    const void* end = std::memchr(field, 0, N);
    return {field, end == nullptr ? N : static_cast<std::size_t>(static_cast<const char*>(end) - field)};
}

} // namespace vantu::orvanta
