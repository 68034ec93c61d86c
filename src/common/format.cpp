// The one place where fmt's code is compiled.
#define FMT_HEADER_ONLY 1

#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta {

std::string formatted_arguments(fmt::string_view text, fmt::format_args arguments) {
    return fmt::vformat(text, arguments);
}

} // namespace vantu::orvanta
