// The folder of the program on Windows.
#include "simulator/control/shipped_scenarios.hpp"

#include <string>
#include <windows.h>

namespace vantu::orvanta::simulator {

std::filesystem::path folder_of_program() {
    constexpr DWORD longest_path = 32'768;
    std::wstring path(longest_path, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), longest_path));
    return std::filesystem::path(path).parent_path();
}

} // namespace vantu::orvanta::simulator
