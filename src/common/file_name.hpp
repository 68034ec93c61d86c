// The file name at the end of a source path, by the rules of the platform's paths.
#pragma once

#include <string>

namespace vantu::orvanta {

// The part after the last "/" or "\"; all of a path that has neither. Throws std::system_error for a path
// longer than the largest 32-bit signed number, and where the platform cannot convert the path.
[[nodiscard]] std::string file_name_of(const std::string& path);

} // namespace vantu::orvanta
