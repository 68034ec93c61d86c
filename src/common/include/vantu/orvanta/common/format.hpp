// Text out of a format string and its arguments, in the notation of fmt, checked when compiled. fmt's whole
// header costs a compiler seconds, so that only one source file reads it (log.cpp, whose line is formatted on
// every log call); all others read its small core.
#pragma once

#include <string>

// fmt has a function of the name of our check.
#pragma push_macro("assume")
#undef assume
#include <fmt/core.h>
#pragma pop_macro("assume")

namespace vantu::orvanta {

// The arguments put into the text. Allocates; throws std::bad_alloc when there is no memory.
[[nodiscard]] std::string formatted_arguments(fmt::string_view text, fmt::format_args arguments);

template <typename... Arguments>
[[nodiscard]] std::string formatted(fmt::format_string<Arguments...> text, const Arguments&... arguments) {
    return formatted_arguments(text, fmt::make_format_args(arguments...));
}

} // namespace vantu::orvanta
