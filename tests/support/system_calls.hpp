// Lets a test make the system calls of the socket layer fail. The test program is linked so that the
// calls pass through here (-Wl,--wrap in tests/network/CMakeLists.txt).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace orvanta_tests {

enum class system_call : std::size_t {
    getaddrinfo,
    freeaddrinfo,
    socket,
    fcntl,
    ioctl,
    setsockopt,
    bind,
    close,
    sendto,
    recvfrom,
    recvmsg,
    ppoll,
    getsockname,
    getnameinfo,
    epoll_create1,
    epoll_ctl,
    eventfd,
};
inline constexpr std::size_t system_call_count = 17;

// The members of the same names of addrinfo.
struct resolver_hints {
    int flags{0};
    int family{0};
    int type{0};
    int protocol{0};
    bool operator==(const resolver_hints&) const = default;
};

// While one lives, the calls are counted from its beginning and fail as scripted; with its end they
// are the system's own again. One at a time.
class scripted_calls {
  public:
    static constexpr int always = 1'000'000;

    scripted_calls();
    ~scripted_calls();
    scripted_calls(const scripted_calls&) = delete;
    scripted_calls& operator=(const scripted_calls&) = delete;

    // The calls from the first-th (1: the next one) on fail with this errno, as many as times says.
    scripted_calls& fail(system_call call, int error, int first = 1, int times = 1);
    // The next call returns this result; errno is set for EAI_SYSTEM's sake.
    scripted_calls& end_with(system_call call, int result, int error = 0);
    // getaddrinfo succeeds and finds nothing.
    scripted_calls& resolve_to_nothing();
    // getaddrinfo finds these addresses, in this order, whatever the host that it is asked for.
    scripted_calls& resolve_to(std::vector<std::string> hosts);
    // Runs before the nth call (1: the next one).
    scripted_calls& before(system_call call, int nth, std::function<void()> action);

    // The hints of the last getaddrinfo.
    [[nodiscard]] resolver_hints hints() const;

    [[nodiscard]] int count(system_call call) const;

    // The time-out of each ppoll in nanoseconds, -1 for none.
    [[nodiscard]] std::vector<std::int64_t> poll_limits() const;
};

// The descriptors that this process has open.
[[nodiscard]] std::set<int> open_descriptors();

} // namespace orvanta_tests
