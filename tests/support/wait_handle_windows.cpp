// The handle on Windows.
#include "support/wait_handle.hpp"

#include <windows.h>

namespace orvanta_tests {

bool is_signalled(std::intptr_t handle, int limit_ms) {
    return WaitForSingleObject(reinterpret_cast<HANDLE>(handle), static_cast<DWORD>(limit_ms)) ==
           WAIT_OBJECT_0;
}

} // namespace orvanta_tests
