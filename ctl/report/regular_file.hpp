// The paths of files that a command writes.
#pragma once

#include <string>

namespace vantu::orvanta::ctl {

// Throws failure_with_status (refused) where something stands there that is no regular file, a link included.
void expect_regular_file(const std::string& path);

} // namespace vantu::orvanta::ctl
