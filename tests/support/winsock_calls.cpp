// A program calls a DLL's function X through the pointer __imp_X; the linker turns that into
// __wrap___imp_X here, and __real___imp_X is the system's own.
#include "support/winsock_calls.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <process.h>
#include <utility>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace orvanta_tests {
namespace {

struct call_script {
    int made{0};
    int first{0};
    int times{0};
    int error{0};
    std::map<int, std::function<void()>> actions;
};

struct script {
    bool active{false};
    bool resolves_to_nothing{false};
    std::vector<std::string> hosts;
    resolver_hints hints;
    std::string message;
    std::vector<std::uint32_t> result_limits;
    std::uintptr_t last_closed{0};
    std::array<call_script, winsock_call_count> calls;
};

// Both are there for calls that are made before main, and leaked: threads of the system may still make some
// when the program ends.
std::mutex& script_mutex() {
    static std::mutex& made = *new std::mutex; // NOLINT(cppcoreguidelines-owning-memory)
    return made;
}
script& current() {
    static script& made = *new script; // NOLINT(cppcoreguidelines-owning-memory)
    return made;
}

call_script& script_of(winsock_call call) {
    return current().calls.at(static_cast<std::size_t>(call));
}

// Counts a call. True when it is to fail; the error is set then.
bool is_to_fail(winsock_call call) {
    // Calls made before the script exists, and by the lock itself, go to the system.
    thread_local bool inside = false;
    if (inside) {
        return false;
    }
    inside = true;
    std::function<void()> action;
    bool fails = false;
    int error = 0;
    {
        const std::lock_guard lock(script_mutex());
        if (current().active) {
            call_script& calls = script_of(call);
            ++calls.made;
            if (const auto found = calls.actions.find(calls.made); found != calls.actions.end()) {
                action = found->second;
            }
            fails = calls.made >= calls.first && calls.made < calls.first + calls.times;
            error = calls.error;
        }
    }
    inside = false;
    if (action) {
        action();
    }
    if (fails) {
        WSASetLastError(error);
    }
    return fails;
}

// The function that stands in front of the system's, which is called through Real; Failure is what the
// system returns when it fails.
template <winsock_call Call, auto& Real, auto Failure, typename Function> struct stand_in;
template <winsock_call Call, auto& Real, auto Failure, typename Result, typename... Arguments>
struct stand_in<Call, Real, Failure, Result(Arguments...)> {
    static Result call(Arguments... arguments) {
        if (is_to_fail(Call)) {
            if constexpr (std::is_void_v<Result>) {
                return;
            } else {
                return static_cast<Result>(Failure);
            }
        }
        return Real(arguments...);
    }
};

} // namespace

scripted_winsock::scripted_winsock() {
    const std::lock_guard lock(script_mutex());
    current() = script{};
    current().active = true;
}

scripted_winsock::~scripted_winsock() {
    const std::lock_guard lock(script_mutex());
    current() = script{};
}

scripted_winsock& scripted_winsock::fail(winsock_call call, int error, int first, int times) {
    const std::lock_guard lock(script_mutex());
    call_script& calls = script_of(call);
    calls.first = calls.made + first;
    calls.times = times;
    calls.error = error;
    return *this;
}

scripted_winsock& scripted_winsock::resolve_to_nothing() {
    const std::lock_guard lock(script_mutex());
    current().resolves_to_nothing = true;
    return *this;
}

scripted_winsock& scripted_winsock::resolve_to(std::vector<std::string> hosts) {
    const std::lock_guard lock(script_mutex());
    current().hosts = std::move(hosts);
    return *this;
}

scripted_winsock& scripted_winsock::format_as(std::string text) {
    const std::lock_guard lock(script_mutex());
    current().message = std::move(text);
    return *this;
}

scripted_winsock& scripted_winsock::before(winsock_call call, int nth, std::function<void()> action) {
    const std::lock_guard lock(script_mutex());
    call_script& calls = script_of(call);
    calls.actions[calls.made + nth] = std::move(action);
    return *this;
}

resolver_hints scripted_winsock::hints() const {
    const std::lock_guard lock(script_mutex());
    return current().hints;
}

int scripted_winsock::count(winsock_call call) const {
    const std::lock_guard lock(script_mutex());
    return script_of(call).made;
}

std::vector<std::uint32_t> scripted_winsock::result_limits() const {
    const std::lock_guard lock(script_mutex());
    return current().result_limits;
}

std::uintptr_t scripted_winsock::last_closed() const {
    const std::lock_guard lock(script_mutex());
    return current().last_closed;
}

} // namespace orvanta_tests

using namespace orvanta_tests;

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
#define STAND_IN(which, function, failure)                                                                   \
    extern decltype(&function) __real___imp_##function;                                                      \
    decltype(&function) __wrap___imp_##function =                                                            \
        &stand_in<winsock_call::which, __real___imp_##function, failure, decltype(function)>::call;

extern "C" {

STAND_IN(startup, WSAStartup, WSASYSNOTREADY)
STAND_IN(freeaddrinfo, freeaddrinfo, 0)
STAND_IN(open, WSASocketA, INVALID_SOCKET)
STAND_IN(ioctl, ioctlsocket, SOCKET_ERROR)
STAND_IN(setsockopt, setsockopt, SOCKET_ERROR)
STAND_IN(bind, bind, SOCKET_ERROR)
STAND_IN(sendto, sendto, SOCKET_ERROR)
STAND_IN(recvfrom, recvfrom, SOCKET_ERROR)
STAND_IN(start_receive, WSARecvFrom, SOCKET_ERROR)
STAND_IN(cancel, CancelIoEx, FALSE)
STAND_IN(getsockname, getsockname, SOCKET_ERROR)
STAND_IN(address_to_text, WSAAddressToStringA, SOCKET_ERROR)
STAND_IN(event_select, WSAEventSelect, SOCKET_ERROR)
STAND_IN(create_event, CreateEventExA, nullptr)
STAND_IN(wait, WaitForMultipleObjects, WAIT_FAILED)
STAND_IN(start_thread, _beginthreadex, 0)

extern decltype(&getaddrinfo) __real___imp_getaddrinfo;
extern decltype(&closesocket) __real___imp_closesocket;
extern decltype(&GetOverlappedResultEx) __real___imp_GetOverlappedResultEx;
extern decltype(&FormatMessageA) __real___imp_FormatMessageA;

static int WSAAPI scripted_getaddrinfo(const char* host, const char* port, const addrinfo* hints,
                                       addrinfo** list) {
    {
        const std::lock_guard lock(script_mutex());
        current().hints = {hints->ai_flags, hints->ai_family, hints->ai_socktype, hints->ai_protocol};
    }
    if (is_to_fail(winsock_call::getaddrinfo)) {
        return WSAGetLastError();
    }
    if (current().resolves_to_nothing) {
        *list = nullptr;
        return 0;
    }
    if (current().hosts.empty()) {
        return __real___imp_getaddrinfo(host, port, hints, list);
    }
    addrinfo** end = list;
    for (const std::string& scripted_host : current().hosts) {
        if (const int result = __real___imp_getaddrinfo(scripted_host.c_str(), port, hints, end);
            result != 0) {
            return result;
        }
        while (*end != nullptr) {
            end = &(*end)->ai_next;
        }
    }
    return 0;
}

static int WSAAPI scripted_closesocket(SOCKET socket) {
    if (is_to_fail(winsock_call::close)) {
        return SOCKET_ERROR;
    }
    {
        const std::lock_guard lock(script_mutex());
        current().last_closed = socket;
    }
    return __real___imp_closesocket(socket);
}

static BOOL WINAPI scripted_get_result(HANDLE handle, OVERLAPPED* overlapped, DWORD* length, DWORD limit,
                                       BOOL alertable) {
    const bool fails = is_to_fail(winsock_call::get_result);
    const DWORD error = GetLastError();
    {
        const std::lock_guard lock(script_mutex());
        if (current().active) {
            current().result_limits.push_back(limit);
        }
    }
    SetLastError(error);
    return fails ? FALSE : __real___imp_GetOverlappedResultEx(handle, overlapped, length, limit, alertable);
}

static DWORD WINAPI scripted_format_message(DWORD flags, const void* source, DWORD message, DWORD language,
                                            char* text, DWORD size, va_list* arguments) {
    if (is_to_fail(winsock_call::format_message)) {
        return 0;
    }
    if (!current().message.empty()) {
        const std::size_t length = std::min<std::size_t>(current().message.size(), size - 1);
        text[current().message.copy(text, length)] = '\0';
        return static_cast<DWORD>(length);
    }
    return __real___imp_FormatMessageA(flags, source, message, language, text, size, arguments);
}

decltype(&getaddrinfo) __wrap___imp_getaddrinfo = &scripted_getaddrinfo;
decltype(&closesocket) __wrap___imp_closesocket = &scripted_closesocket;
decltype(&GetOverlappedResultEx) __wrap___imp_GetOverlappedResultEx = &scripted_get_result;
decltype(&FormatMessageA) __wrap___imp_FormatMessageA = &scripted_format_message;
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
