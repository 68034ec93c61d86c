#include "ctl/watch/plot_file.hpp"

#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace vantu::orvanta::ctl {
namespace {

std::string temporary_for(const std::string& path) {
    return path + ".new";
}

void remove_quietly(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

[[noreturn]] void fail_to_write(const std::string& path, const std::error_code& why) {
    throw failure_with_status(exit_status::refused, formatted("cannot write '{}': {}", path, why.message()));
}

void write_file(const std::string& path, std::string_view content, const std::string& wanted) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        const std::error_code why(errno, std::generic_category());
        remove_quietly(path);
        fail_to_write(wanted, why);
    }
}

} // namespace

void check_writable(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        fail_to_write(path, std::make_error_code(std::errc::is_a_directory));
    }
    write_file(temporary_for(path), "", path);
    remove_quietly(temporary_for(path));
}

void write_whole(const std::string& path, const std::string& content) {
    const std::string temporary = temporary_for(path);
    write_file(temporary, content, path);
    std::error_code why;
    std::filesystem::rename(temporary, path, why);
    if (why) {
        remove_quietly(temporary);
        fail_to_write(path, why);
    }
}

} // namespace vantu::orvanta::ctl
