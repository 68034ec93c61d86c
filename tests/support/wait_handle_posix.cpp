// The handle on Linux.
#include "support/wait_handle.hpp"

#include <poll.h>

namespace orvanta_tests {

bool is_signalled(std::intptr_t handle, int limit_ms) {
    pollfd entry{static_cast<int>(handle), POLLIN, 0};
    return poll(&entry, 1, limit_ms) == 1 && entry.revents == POLLIN;
}

} // namespace orvanta_tests
