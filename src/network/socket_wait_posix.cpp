// Waiting on several sockets at once, on Linux.
#include "network/socket.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <poll.h>

namespace vantu::orvanta {
namespace {

using namespace socket_shared;

bool fail(std::int64_t error) {
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(error)));
    return false;
}

} // namespace

bool wait_for_packets(std::span<const socket_handle> sockets, std::int64_t deadline_ns) {
    const std::unique_ptr<pollfd[]> entries(new (std::nothrow) pollfd[sockets.size()]);
    if (entries == nullptr) {
        return fail(ENOMEM);
    }
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        // The invalid handle becomes a negative descriptor, which the system passes over.
        entries[i] = {static_cast<int>(sockets[i]), POLLIN, 0};
    }
    const std::int64_t left = time_left_ns(platform::steady_now_ns(), deadline_ns);
    const timespec limit{static_cast<time_t>(left / ns_per_second), static_cast<long>(left % ns_per_second)};
    const int ready = ppoll(entries.get(), sockets.size(), &limit, nullptr);
    if (ready < 0 && errno != EINTR) {
        return fail(errno);
    }
    return ready > 0;
}

} // namespace vantu::orvanta
