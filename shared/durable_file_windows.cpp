// Replacing a file's content on Windows: write, flush, move over the old file and wait for the disk.
#include "shared/durable_file.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <windows.h>

namespace vantu::orvanta {
namespace {

std::string failure(std::string_view step, const std::string& path, DWORD error) {
    std::string reason = std::system_category().message(static_cast<int>(error));
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r')) {
        reason.pop_back();
    }
    return formatted("cannot {} {}: {}", step, path, reason);
}

bool write_all(HANDLE file, std::string_view content) {
    constexpr std::size_t most_at_once = 1U << 20U;
    while (!content.empty()) {
        DWORD written = 0;
        const auto length = static_cast<DWORD>(std::min(content.size(), most_at_once));
        if (WriteFile(file, content.data(), length, &written, nullptr) == 0) {
            return false;
        }
        content.remove_prefix(written);
    }
    return true;
}

} // namespace

std::string replace_file(const std::string& path, const std::string& content) {
    const std::string temporary = path + ".new";
    auto* const file = CreateFileA(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return failure("create", temporary, GetLastError());
    }
    const bool written = write_all(file, content) && FlushFileBuffers(file) != 0;
    const DWORD write_error = GetLastError();
    CloseHandle(file);
    if (!written) {
        DeleteFileA(temporary.c_str());
        return failure("write", temporary, write_error);
    }
    if (MoveFileExA(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) ==
        0) {
        const DWORD move_error = GetLastError();
        DeleteFileA(temporary.c_str());
        return failure("replace", path, move_error);
    }
    return {};
}

} // namespace vantu::orvanta
