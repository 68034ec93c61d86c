// Lets a test make the Windows calls of the library fail. The test program is linked so that these calls
// pass through here (orvanta_scripted_winsock in tests/CMakeLists.txt).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvanta_tests {

enum class winsock_call : std::size_t {
    startup,
    getaddrinfo,
    freeaddrinfo,
    open,
    ioctl,
    setsockopt,
    bind,
    close,
    sendto,
    recvfrom,
    start_receive, // WSARecvFrom
    get_result,    // GetOverlappedResultEx
    cancel,        // CancelIoEx
    getsockname,
    address_to_text,
    event_select,
    create_event,   // CreateEventExA
    wait,           // WaitForMultipleObjects
    format_message, // FormatMessageA
    start_thread,   // _beginthreadex
};
inline constexpr std::size_t winsock_call_count = 20;

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
class scripted_winsock {
  public:
    static constexpr int always = 1'000'000;
    static constexpr std::uint32_t no_limit = 0xFFFFFFFF;

    scripted_winsock();
    ~scripted_winsock();
    scripted_winsock(const scripted_winsock&) = delete;
    scripted_winsock& operator=(const scripted_winsock&) = delete;

    // The calls from the first-th (1: the next one) on fail with this error, as many as times says.
    scripted_winsock& fail(winsock_call call, int error, int first = 1, int times = 1);
    // getaddrinfo succeeds and finds nothing.
    scripted_winsock& resolve_to_nothing();
    // getaddrinfo finds these addresses, in this order, whatever the host that it is asked for.
    scripted_winsock& resolve_to(std::vector<std::string> hosts);
    // FormatMessageA gives this text.
    scripted_winsock& format_as(std::string text);
    // Runs before the nth call (1: the next one).
    scripted_winsock& before(winsock_call call, int nth, std::function<void()> action);

    // The hints of the last getaddrinfo.
    [[nodiscard]] resolver_hints hints() const;

    [[nodiscard]] int count(winsock_call call) const;

    // The time-out of each GetOverlappedResultEx in milliseconds.
    [[nodiscard]] std::vector<std::uint32_t> result_limits() const;

    // The socket that was closed last.
    [[nodiscard]] std::uintptr_t last_closed() const;
};

} // namespace orvanta_tests
