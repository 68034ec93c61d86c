#include "ctl/watch/plot_file.hpp"

#include "ctl/report/exit_status.hpp"
#include "ctl/report/regular_file.hpp"
#include "shared/durable_file.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace vantu::orvanta::ctl {

void check_writable(const std::string& path) {
    expect_regular_file(path);
    const std::string temporary = path + ".new";
    errno = 0;
    if (!std::ofstream(temporary, std::ios::binary | std::ios::app)) {
        const std::error_code why(errno, std::generic_category());
        throw failure_with_status(exit_status::refused,
                                  formatted("cannot create {}: {}", temporary, why.message()));
    }
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
}

void write_whole(const std::string& path, const std::string& content) {
    if (const std::string failed = replace_file(path, content); !failed.empty()) {
        throw failure_with_status(exit_status::refused, failed);
    }
}

} // namespace vantu::orvanta::ctl
