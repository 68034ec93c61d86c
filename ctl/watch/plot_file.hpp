// The file of a picture: written beside its place first and renamed then, so that it is never there in part.
#pragma once

#include <string>

namespace vantu::orvanta::ctl {

// Both throw failure_with_status (refused). The first is for before a long measurement; it leaves nothing
// behind.
void check_writable(const std::string& path);
void write_whole(const std::string& path, const std::string& content);

} // namespace vantu::orvanta::ctl
