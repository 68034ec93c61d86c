// The file of a picture, made sure of before a long measurement.
#pragma once

#include <string>

namespace vantu::orvanta::ctl {

// Throws failure_with_status (refused) where no file can be made beside the path, or what is there is no
// regular file: it would be replaced. Leaves nothing behind.
void check_writable(const std::string& path);

// Replaces the file whole or not at all. Throws failure_with_status (refused).
void write_whole(const std::string& path, const std::string& content);

} // namespace vantu::orvanta::ctl
