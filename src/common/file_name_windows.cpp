// File names on Windows. In some of its code pages the byte of "\" is also half of another character, so
// the path is looked at as wide characters.
#include "vantu/orvanta/common/platform.hpp"

#include <climits>
#include <string_view>
#include <system_error>
#include <windows.h>

namespace vantu::orvanta::platform {
namespace {

[[noreturn]] void fail() {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
}

std::wstring wide_text_of(const std::string& narrow) {
    const int length = static_cast<int>(narrow.size());
    const int needed = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, narrow.data(), length, nullptr, 0);
    if (needed == 0) {
        fail();
    }
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    if (MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, narrow.data(), length, wide.data(), needed) == 0) {
        fail();
    }
    return wide;
}

std::string narrow_text_of(std::wstring_view wide) {
    const int length = static_cast<int>(wide.size());
    const int needed = WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed == 0) {
        fail();
    }
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    if (WideCharToMultiByte(CP_ACP, 0, wide.data(), length, narrow.data(), needed, nullptr, nullptr) == 0) {
        fail();
    }
    return narrow;
}

} // namespace

std::string file_name_of(const std::string& path) {
    if (path.size() > static_cast<std::size_t>(INT_MAX)) {
        throw std::system_error(std::make_error_code(std::errc::value_too_large));
    }
    // The system's conversions take an empty text for a mistake.
    if (path.empty()) {
        return {};
    }
    const std::wstring wide = wide_text_of(path);
    const auto separator = wide.find_last_of(L"/\\");
    if (separator == std::wstring::npos) {
        return path;
    }
    const auto name = std::wstring_view(wide).substr(separator + 1);
    return name.empty() ? std::string() : narrow_text_of(name);
}

} // namespace vantu::orvanta::platform
