// The socket layer on Windows. The system reports a closed port to the receive that is pending or comes next.
// A wait for an answer goes on after such a report, and while it waits the record belongs to the system.
#include "network/socket.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/assume.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/waitable_timer_windows.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace vantu::orvanta {
namespace {

using namespace socket_shared;

// The record's last members stand for the system's own.
using buffer_descriptor = decltype(receive_record::wsabuf);
using overlapped_state = decltype(receive_record::overlapped);
static_assert(sizeof(socket_handle) == sizeof(SOCKET) && invalid_socket == INVALID_SOCKET);
static_assert(sizeof(socket_address) == sizeof(sockaddr_storage) &&
              alignof(socket_address) == alignof(sockaddr_storage));
static_assert(sizeof(buffer_descriptor) == sizeof(WSABUF) &&
              offsetof(buffer_descriptor, data) == offsetof(WSABUF, buf));
static_assert(sizeof(overlapped_state) == sizeof(OVERLAPPED) &&
              offsetof(overlapped_state, internal_high) == offsetof(OVERLAPPED, InternalHigh) &&
              offsetof(overlapped_state, offset) == offsetof(OVERLAPPED, Offset) &&
              offsetof(overlapped_state, event) == offsetof(OVERLAPPED, hEvent));
static_assert(sizeof(std::uint32_t) == sizeof(DWORD) && sizeof(std::int32_t) == sizeof(INT));

// One report of a closed port is taken by one call; more attempts than two only serve reports that
// arrive in between.
constexpr int attempts_past_closed_ports = 8;
constexpr WORD winsock_version = 0x0202;

std::uint32_t last_error() {
    return static_cast<std::uint32_t>(WSAGetLastError());
}

// Needs no start and no end, unlike std::mutex here: a thread may send while the program ends.
class turn {
  public:
    void lock() { AcquireSRWLockExclusive(&lock_); }
    void unlock() { ReleaseSRWLockExclusive(&lock_); }

  private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

// A socket's senders share one. Two sockets may share it as well, and then wait for each other.
turn& turn_of(socket_handle socket) {
    static constinit std::array<turn, 16> turns;
    constexpr socket_handle step_of_handles = 4;
    return turns[socket / step_of_handles % turns.size()];
}

// One call of the system: 0, or the error's number. Wine refuses a send for want of room while another
// thread sends on the socket; in turn, such a refusal always means that there is no room.
DWORD send_in_turn(socket_handle socket, std::span<const std::byte> bytes, const endpoint& to) {
    const std::lock_guard in_turn(turn_of(socket));
    const int sent =
        sendto(socket, reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), 0,
               reinterpret_cast<const sockaddr*>(to.address.bytes), to.length);
    return sent >= 0 ? 0 : static_cast<DWORD>(WSAGetLastError());
}

// A closed port has one name at Winsock and others where a receive's result is collected.
bool is_port_closed(DWORD error) {
    switch (error) {
    case WSAECONNRESET:
    case ERROR_PORT_UNREACHABLE:
    case ERROR_NETNAME_DELETED:
    case ERROR_CONNECTION_REFUSED:
        return true;
    default:
        return false;
    }
}

HANDLE handle_of(socket_handle socket) {
    return reinterpret_cast<HANDLE>(socket);
}

OVERLAPPED* overlapped_of(receive_record& record) {
    return reinterpret_cast<OVERLAPPED*>(&record.overlapped);
}

// The record's buffer descriptor points into the buffer for as long as the system may write there.
bool is_armed(const receive_record& record) {
    return record.wsabuf.data != nullptr;
}

void disarm(receive_record& record) {
    record.wsabuf = {};
}

// The datagram was larger than the room, which is full.
void note_dropped(receive_record& record) {
    record.dropped = {static_cast<std::uint32_t>(record.buffer.write_len()), 0};
}

// Starts a receive: 0, or the error's number.
DWORD arm(socket_handle socket, receive_record& record) {
    DWORD error = 0;
    for (int attempt = 0; attempt < attempts_past_closed_ports; ++attempt) {
        prepare_overlapped_receive(record);
        if (WSARecvFrom(socket, reinterpret_cast<WSABUF*>(&record.wsabuf), 1,
                        reinterpret_cast<DWORD*>(&record.received), reinterpret_cast<DWORD*>(&record.flags),
                        reinterpret_cast<sockaddr*>(record.from.bytes),
                        reinterpret_cast<INT*>(&record.from_length), overlapped_of(record), nullptr) == 0) {
            return 0;
        }
        error = static_cast<DWORD>(WSAGetLastError());
        if (error == WSA_IO_PENDING) {
            return 0;
        }
        if (!is_port_closed(error)) {
            break;
        }
    }
    disarm(record);
    if (error == WSAEMSGSIZE) {
        note_dropped(record);
    }
    return error;
}

struct collected {
    DWORD error; // 0: a datagram came
    DWORD length;
};

collected collect(socket_handle socket, receive_record& record, DWORD milliseconds) {
    DWORD length = 0;
    if (GetOverlappedResultEx(handle_of(socket), overlapped_of(record), &length, milliseconds, FALSE) != 0) {
        return {0, length};
    }
    return {GetLastError(), 0};
}

// Takes the record back from the system, which has let go of it when this returns. A datagram that came
// before the cancellation is the result.
collected take_back(socket_handle socket, receive_record& record) {
    CancelIoEx(handle_of(socket), overlapped_of(record));
    const collected result = collect(socket, record, INFINITE);
    disarm(record);
    return result;
}

socket_status commit(receive_record& record, DWORD length) {
    disarm(record);
    record.received = length;
    record.buffer.skip_write(length);
    return socket_status::ok;
}

DWORD milliseconds_left(const wait_limit& limit) {
    return limit.without_end ? INFINITE : platform::milliseconds_until(limit.deadline_ns);
}

// Each of these improves the socket. The socket works without them, so a refusal is no failure. Without the
// second, another program could take the port as well.
void set_options(SOCKET socket) {
    const int on = 1;
    const int room = receive_buffer_bytes;
    setsockopt(socket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&room), sizeof room);
    setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof on);
}

// Empty when there is none; Winsock then knows why.
std::string text_of_address(const endpoint& address) {
    std::array<char, 65> text{};
    auto length = static_cast<DWORD>(text.size());
    // The system takes the address as writable and leaves it as it is.
    endpoint copy = address;
    if (WSAAddressToStringA(reinterpret_cast<sockaddr*>(copy.address.bytes), static_cast<DWORD>(copy.length),
                            nullptr, text.data(), &length) != 0) {
        return {};
    }
    return {text.data(), std::min<std::size_t>(length, text.size())};
}

} // namespace

void socket_startup() {
    static WSADATA data;
    if (WSAStartup(winsock_version, &data) != 0) {
        const std::uint32_t error = last_error();
        log_here(log_level::error, failure_text(unable_to_startup, error_text(error)));
        assumption_failed();
    }
}

resolved_endpoint resolve_address(const std::string& host, const std::string& port) {
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &list) != 0) {
        const std::uint32_t error = last_error();
        log_here(log_level::warning, failure_text(unable_to_resolve(host, port), error_text(error)));
        return {{}, socket_status::os_error};
    }
    if (list == nullptr) {
        log_here(log_level::warning, no_valid_address(host, port));
        return {{}, socket_status::os_error};
    }
    resolved_endpoint found;
    const auto length = std::min<std::size_t>(list->ai_addrlen, address_room);
    found.address.length = static_cast<std::int32_t>(length);
    std::memcpy(found.address.address.bytes, list->ai_addr, length);
    // The list stays allocated on purpose: a few bytes, once a connect.
    return found;
}

opened_socket open_bound_socket(const std::string& host, const std::string& port) {
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE;
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &list) != 0) {
        const std::uint32_t error = last_error();
        log_here(log_level::warning, failure_text(unable_to_resolve(host, port), error_text(error)));
        return {invalid_socket, socket_status::os_error};
    }
    const auto release = [](addrinfo* owned) { freeaddrinfo(owned); };
    const std::unique_ptr<addrinfo, decltype(release)> owned_list(list, release);
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        const SOCKET socket = WSASocketA(entry->ai_family, entry->ai_socktype, entry->ai_protocol, nullptr, 0,
                                         WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
        if (socket == INVALID_SOCKET) {
            continue;
        }
        u_long on = 1;
        if (ioctlsocket(socket, static_cast<long>(FIONBIO), &on) != 0) {
            const std::uint32_t error = last_error();
            log_here(log_level::warning, failure_text(unable_to_set_non_blocking, error_text(error)));
            // The socket stays open on purpose.
            return {invalid_socket, socket_status::os_error};
        }
        set_options(socket);
        if (bind(socket, entry->ai_addr, static_cast<int>(entry->ai_addrlen)) == 0) {
            return {static_cast<socket_handle>(socket), socket_status::ok};
        }
        closesocket(socket);
    }
    log_here(log_level::warning, no_valid_interface(host, port));
    return {invalid_socket, socket_status::unavailable};
}

send_result try_send(socket_handle socket, std::span<const std::byte> bytes, const endpoint& to) {
    DWORD error = 0;
    for (int attempt = 0; attempt < attempts_past_closed_ports; ++attempt) {
        error = send_in_turn(socket, bytes, to);
        if (!is_port_closed(error)) {
            break;
        }
    }
    switch (error) {
    case 0:
        return {socket_status::ok, 0};
    case WSAEWOULDBLOCK:
        return {socket_status::would_block, 0};
    case WSAEAFNOSUPPORT:
    case WSAEADDRINUSE:
        return {socket_status::unavailable, 0};
    default:
        return {socket_status::os_error, static_cast<std::uint32_t>(error)};
    }
}

void log_send_failure(std::uint32_t system_error) {
    log_here(log_level::warning, failure_text(unable_to_send, error_text(system_error)));
}

receive_result try_receive(socket_handle socket, receive_record& record) {
    prepare_receive(record);
    const int length =
        recvfrom(socket, reinterpret_cast<char*>(record.buffer.unwritten()),
                 static_cast<int>(record.buffer.write_len()), 0,
                 reinterpret_cast<sockaddr*>(record.from.bytes), reinterpret_cast<int*>(&record.from_length));
    if (length >= 0) {
        record.buffer.skip_write(static_cast<std::uint64_t>(length));
        return {socket_status::ok, 0};
    }
    const int error = WSAGetLastError();
    if (error == WSAEWOULDBLOCK) {
        return {socket_status::would_block, 0};
    }
    if (error == WSAECONNRESET) {
        return {socket_status::connection_reset, 0};
    }
    if (error == WSAEMSGSIZE) {
        note_dropped(record);
    }
    return {socket_status::os_error, static_cast<std::uint32_t>(error)};
}

void log_receive_failure(std::uint32_t system_error) {
    log_here(log_level::warning, failure_text(unable_to_receive, error_text(system_error)));
}

socket_status recv_packet_overlapped(socket_handle socket, receive_record& record) {
    const DWORD error = arm(socket, record);
    if (error == 0) {
        return socket_status::ok;
    }
    if (is_port_closed(error)) {
        return socket_status::connection_reset;
    }
    log_here(log_level::warning, failure_text(unable_to_receive, error_text(error)));
    return socket_status::os_error;
}

socket_status get_overlapped_result(socket_handle socket, receive_record& record, std::int64_t timeout_ns) {
    const wait_limit limit = wait_limit_of(timeout_ns, platform::steady_now_ns());
    for (;;) {
        collected result{0, 0};
        // Not armed after an earlier look, and after the news of a closed port.
        if (!is_armed(record)) {
            result.error = arm(socket, record);
        }
        if (result.error == 0) {
            const DWORD milliseconds = milliseconds_left(limit);
            result = collect(socket, record, milliseconds);
            if (result.error == 0) {
                return commit(record, result.length);
            }
            const bool in_time = limit.without_end || platform::steady_now_ns() < limit.deadline_ns;
            if (result.error == WAIT_TIMEOUT && in_time) {
                continue; // the system's longest wait, or its clock ran ahead
            }
            if (result.error == WAIT_TIMEOUT || result.error == ERROR_IO_INCOMPLETE) {
                const bool incomplete = limit.single_look || (result.error == ERROR_IO_INCOMPLETE && in_time);
                result = take_back(socket, record);
                if (!incomplete) {
                    return socket_status::timeout;
                }
                return result.error == 0 ? commit(record, result.length) : socket_status::would_block;
            }
            // A failed receive is over; a failed call may have left it under way.
            if (record.overlapped.internal == STATUS_PENDING) {
                (void)take_back(socket, record);
            }
            disarm(record);
        }
        if (result.error == ERROR_MORE_DATA) {
            note_dropped(record);
        }
        if (!is_port_closed(result.error)) {
            log_here(log_level::warning, failure_text(unable_to_get_result, error_text(result.error)));
            return socket_status::os_error;
        }
    }
}

std::string stringify_addr(const endpoint& address) {
    std::string text = text_of_address(address);
    if (text.empty()) {
        const std::uint32_t error = last_error();
        log_here(log_level::warning, failure_text(unable_to_stringify_address, error_text(error)));
    }
    return text;
}

std::string stringify_socket(socket_handle socket) {
    endpoint local;
    local.length = address_room;
    std::string text;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(local.address.bytes), &local.length) == 0) {
        text = text_of_address(local);
    }
    if (text.empty()) {
        const std::uint32_t error = last_error();
        log_here(log_level::warning, failure_text(unable_to_stringify_socket, error_text(error)));
    }
    return text;
}

void close_socket(socket_handle& socket) {
    if (socket != invalid_socket && socket != 0) {
        closesocket(socket);
    }
    socket = invalid_socket;
}

} // namespace vantu::orvanta
