// Open handles.
#include "support/open_handles.hpp"

#include <cstdint>
#include <windows.h>

namespace orvanta_tests {

// By asking for each: Wine does not count them.
std::size_t open_handles() {
    constexpr std::uintptr_t step = 4;
    constexpr std::uintptr_t highest = 0x2000;
    std::size_t count = 0;
    for (std::uintptr_t value = step; value < highest; value += step) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0 ? 1U : 0U;
    }
    return count;
}

} // namespace orvanta_tests
