// File names on systems where the bytes of the separators are part of no other character.
#include "vantu/orvanta/common/platform.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

namespace vantu::orvanta::platform {

std::string file_name_of(const std::string& path) {
    if (path.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw std::system_error(std::make_error_code(std::errc::value_too_large));
    }
    const auto separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

} // namespace vantu::orvanta::platform
