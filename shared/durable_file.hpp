// Replacing a file's content so that a crash at any moment leaves the old content or the new, whole.
// One source file a platform implements it.
#pragma once

#include <string>

namespace vantu::orvanta {

// Writes a temporary file beside the path, flushes it to the disk and renames it to the path. Returns
// an empty text, or what failed in one line; then the file is as it was.
[[nodiscard]] std::string replace_file(const std::string& path, const std::string& content);

} // namespace vantu::orvanta
