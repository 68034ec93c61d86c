// Waiting on several sockets at once, on Linux.
#include "network/socket_wait.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <vector>

namespace vantu::orvanta {

bool wait_for_packets(std::span<const socket_handle> sockets, std::int64_t deadline_ns) {
    std::vector<pollfd> entries;
    entries.reserve(sockets.size());
    for (const socket_handle socket : sockets) {
        // The invalid handle becomes a negative descriptor, which the system passes over.
        entries.push_back({static_cast<int>(socket), POLLIN, 0});
    }
    const std::int64_t now = platform::steady_now_ns();
    const std::int64_t left = deadline_ns > now ? deadline_ns - now : 0;
    const timespec limit{static_cast<time_t>(left / ns_per_second), static_cast<long>(left % ns_per_second)};
    const int ready = ppoll(entries.data(), entries.size(), &limit, nullptr);
    if (ready < 0 && errno != EINTR) {
        const std::string reason = socket_shared::one_line_of(strerrordesc_np(errno));
        log_here(log_level::warning, socket_shared::failure_text("unable to wait for packets", reason));
    }
    return ready > 0;
}

} // namespace vantu::orvanta
