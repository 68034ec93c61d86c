// The linker sends each call of X in the program to __wrap_X here; __real_X is the system's own.
#include "support/system_calls.hpp"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <map>
#include <mutex>
#include <netdb.h>
#include <optional>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <utility>

namespace orvanta_tests {
namespace {

struct call_script {
    int made{0};
    int first{0};
    int times{0};
    int error{0};
    int result{-1};
    std::map<int, std::function<void()>> actions;
};

struct script {
    bool active{false};
    bool resolves_to_nothing{false};
    std::vector<std::string> hosts;
    resolver_hints hints;
    std::vector<std::int64_t> poll_limits;
    std::array<call_script, system_call_count> calls;
};

std::mutex script_mutex;
script current;

call_script& script_of(system_call call) {
    return current.calls.at(static_cast<std::size_t>(call));
}

// Counts a call. The result that it is to have instead of the system's, if any; errno is set then.
std::optional<int> scripted_result(system_call call) {
    std::function<void()> action;
    std::optional<int> result;
    int error = 0;
    {
        const std::lock_guard lock(script_mutex);
        if (!current.active) {
            return std::nullopt;
        }
        call_script& calls = script_of(call);
        ++calls.made;
        if (const auto found = calls.actions.find(calls.made); found != calls.actions.end()) {
            action = found->second;
        }
        if (calls.made >= calls.first && calls.made < calls.first + calls.times) {
            result = calls.result;
            error = calls.error;
        }
    }
    if (action) {
        action();
    }
    if (result) {
        errno = error;
    }
    return result;
}

} // namespace

scripted_calls::scripted_calls() {
    const std::lock_guard lock(script_mutex);
    current = script{};
    current.poll_limits.reserve(100); // so that a counted call rarely allocates here
    current.active = true;
}

scripted_calls::~scripted_calls() {
    const std::lock_guard lock(script_mutex);
    current = script{};
}

scripted_calls& scripted_calls::fail(system_call call, int error, int first, int times) {
    const std::lock_guard lock(script_mutex);
    call_script& calls = script_of(call);
    calls.first = calls.made + first;
    calls.times = times;
    calls.error = error;
    calls.result = -1;
    return *this;
}

scripted_calls& scripted_calls::end_with(system_call call, int result, int error) {
    fail(call, error);
    const std::lock_guard lock(script_mutex);
    script_of(call).result = result;
    return *this;
}

scripted_calls& scripted_calls::resolve_to_nothing() {
    const std::lock_guard lock(script_mutex);
    current.resolves_to_nothing = true;
    return *this;
}

scripted_calls& scripted_calls::resolve_to(std::vector<std::string> hosts) {
    const std::lock_guard lock(script_mutex);
    current.hosts = std::move(hosts);
    return *this;
}

scripted_calls& scripted_calls::before(system_call call, int nth, std::function<void()> action) {
    const std::lock_guard lock(script_mutex);
    call_script& calls = script_of(call);
    calls.actions[calls.made + nth] = std::move(action);
    return *this;
}

resolver_hints scripted_calls::hints() const {
    const std::lock_guard lock(script_mutex);
    return current.hints;
}

int scripted_calls::count(system_call call) const {
    const std::lock_guard lock(script_mutex);
    return script_of(call).made;
}

std::vector<std::int64_t> scripted_calls::poll_limits() const {
    const std::lock_guard lock(script_mutex);
    return current.poll_limits;
}

std::set<int> open_descriptors() {
    std::set<int> descriptors;
    DIR* folder = opendir("/proc/self/fd");
    if (folder == nullptr) {
        return descriptors;
    }
    while (const dirent* entry = readdir(folder)) {
        if (entry->d_name[0] != '.') {
            descriptors.insert(std::stoi(entry->d_name));
        }
    }
    descriptors.erase(dirfd(folder));
    closedir(folder);
    return descriptors;
}

} // namespace orvanta_tests

using orvanta_tests::current;
using orvanta_tests::scripted_result;
using orvanta_tests::system_call;

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

int __real_getaddrinfo(const char* host, const char* port, const addrinfo* hints, addrinfo** list);
void __real_freeaddrinfo(addrinfo* list);
int __real_socket(int family, int type, int protocol);
int __real_fcntl(int descriptor, int command, ...);
int __real_ioctl(int descriptor, unsigned long request, ...);
int __real_setsockopt(int descriptor, int level, int option, const void* value, socklen_t length);
int __real_bind(int descriptor, const sockaddr* address, socklen_t length);
int __real_close(int descriptor);
ssize_t __real_sendto(int descriptor, const void* data, size_t size, int flags, const sockaddr* to,
                      socklen_t length);
ssize_t __real_recvfrom(int descriptor, void* data, size_t size, int flags, sockaddr* from,
                        socklen_t* length);
ssize_t __real_recvmsg(int descriptor, msghdr* message, int flags);
int __real_ppoll(pollfd* entries, nfds_t count, const timespec* limit, const sigset_t* mask);
int __real_getsockname(int descriptor, sockaddr* address, socklen_t* length);
int __real_getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t host_size, char* port,
                       socklen_t port_size, int flags);
int __real_epoll_create1(int flags);
int __real_epoll_ctl(int set, int operation, int descriptor, epoll_event* event);
int __real_eventfd(unsigned value, int flags);

int __wrap_getaddrinfo(const char* host, const char* port, const addrinfo* hints, addrinfo** list) {
    {
        const std::lock_guard lock(orvanta_tests::script_mutex);
        current.hints = {hints->ai_flags, hints->ai_family, hints->ai_socktype, hints->ai_protocol};
    }
    if (const auto result = scripted_result(system_call::getaddrinfo)) {
        return *result;
    }
    if (current.resolves_to_nothing) {
        *list = nullptr;
        return 0;
    }
    if (current.hosts.empty()) {
        return __real_getaddrinfo(host, port, hints, list);
    }
    addrinfo** end = list;
    for (const std::string& scripted_host : current.hosts) {
        if (const int result = __real_getaddrinfo(scripted_host.c_str(), port, hints, end); result != 0) {
            return result;
        }
        while (*end != nullptr) {
            end = &(*end)->ai_next;
        }
    }
    return 0;
}

void __wrap_freeaddrinfo(addrinfo* list) {
    (void)scripted_result(system_call::freeaddrinfo);
    __real_freeaddrinfo(list);
}

int __wrap_socket(int family, int type, int protocol) {
    const auto result = scripted_result(system_call::socket);
    return result ? *result : __real_socket(family, type, protocol);
}

int __wrap_fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    const auto result = scripted_result(system_call::fcntl);
    return result ? *result : __real_fcntl(descriptor, command, argument);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    const auto result = scripted_result(system_call::ioctl);
    return result ? *result : __real_ioctl(descriptor, request, argument);
}

int __wrap_setsockopt(int descriptor, int level, int option, const void* value, socklen_t length) {
    const auto result = scripted_result(system_call::setsockopt);
    return result ? *result : __real_setsockopt(descriptor, level, option, value, length);
}

int __wrap_bind(int descriptor, const sockaddr* address, socklen_t length) {
    const auto result = scripted_result(system_call::bind);
    return result ? *result : __real_bind(descriptor, address, length);
}

int __wrap_close(int descriptor) {
    const auto result = scripted_result(system_call::close);
    return result ? *result : __real_close(descriptor);
}

ssize_t __wrap_sendto(int descriptor, const void* data, size_t size, int flags, const sockaddr* to,
                      socklen_t length) {
    const auto result = scripted_result(system_call::sendto);
    return result ? *result : __real_sendto(descriptor, data, size, flags, to, length);
}

ssize_t __wrap_recvfrom(int descriptor, void* data, size_t size, int flags, sockaddr* from,
                        socklen_t* length) {
    const auto result = scripted_result(system_call::recvfrom);
    return result ? *result : __real_recvfrom(descriptor, data, size, flags, from, length);
}

ssize_t __wrap_recvmsg(int descriptor, msghdr* message, int flags) {
    const auto result = scripted_result(system_call::recvmsg);
    return result ? *result : __real_recvmsg(descriptor, message, flags);
}

int __wrap_ppoll(pollfd* entries, nfds_t count, const timespec* limit, const sigset_t* mask) {
    const auto result = scripted_result(system_call::ppoll);
    {
        const std::lock_guard lock(orvanta_tests::script_mutex);
        current.poll_limits.push_back(limit == nullptr ? -1 : limit->tv_sec * 1'000'000'000 + limit->tv_nsec);
    }
    return result ? *result : __real_ppoll(entries, count, limit, mask);
}

int __wrap_getsockname(int descriptor, sockaddr* address, socklen_t* length) {
    const auto result = scripted_result(system_call::getsockname);
    return result ? *result : __real_getsockname(descriptor, address, length);
}

int __wrap_getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t host_size, char* port,
                       socklen_t port_size, int flags) {
    const auto result = scripted_result(system_call::getnameinfo);
    return result ? *result : __real_getnameinfo(address, length, host, host_size, port, port_size, flags);
}

int __wrap_epoll_create1(int flags) {
    const auto result = scripted_result(system_call::epoll_create1);
    return result ? *result : __real_epoll_create1(flags);
}

int __wrap_epoll_ctl(int set, int operation, int descriptor, epoll_event* event) {
    const auto result = scripted_result(system_call::epoll_ctl);
    return result ? *result : __real_epoll_ctl(set, operation, descriptor, event);
}

int __wrap_eventfd(unsigned value, int flags) {
    const auto result = scripted_result(system_call::eventfd);
    return result ? *result : __real_eventfd(value, flags);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
