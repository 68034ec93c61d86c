#include "ctl/report/regular_file.hpp"

#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <filesystem>
#include <system_error>

namespace vantu::orvanta::ctl {

void expect_regular_file(const std::string& path) {
    std::error_code ignored;
    const auto kind = std::filesystem::symlink_status(path, ignored).type();
    if (kind != std::filesystem::file_type::regular && kind != std::filesystem::file_type::not_found) {
        throw failure_with_status(exit_status::refused, formatted("{}: this is no regular file", path));
    }
}

} // namespace vantu::orvanta::ctl
