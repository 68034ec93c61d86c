// The socket layer on Linux. An unconnected socket is told of a closed port through its error queue;
// every function here that meets such an error also empties the queue, so that no wait spins on it.
#include "network/socket.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantu::orvanta {
namespace {

using namespace socket_shared;

// One reading of the error queue takes every held-back error; more attempts than two only serve errors
// that arrive in between.
constexpr int send_attempts = 8;
constexpr int first_ordinary_descriptor = 3;

int descriptor_of(socket_handle socket) {
    return static_cast<int>(socket);
}

std::string resolver_text(int result, int error) {
    return result == EAI_SYSTEM ? error_text(error) : one_line_of(gai_strerror(result));
}

bool is_port_closed(int error) {
    return error == ECONNREFUSED || error == ECONNRESET;
}

// Takes everything off the error queue, and with it the error that the next call would report.
// Returns how many errors there were, or nothing, with errno set, when the queue cannot be read.
std::optional<int> drain_error_queue(int descriptor) {
    for (int drained = 0;;) {
        msghdr nothing{};
        if (recvmsg(descriptor, &nothing, MSG_ERRQUEUE | MSG_DONTWAIT) >= 0) {
            ++drained;
        } else if (errno == EAGAIN) {
            return drained;
        } else if (errno != EINTR) {
            return std::nullopt;
        }
    }
}

// One non-blocking receive into the room after the unread bytes: 0, or the error's number.
int receive_once(int descriptor, receive_record& record) {
    for (;;) {
        socklen_t from_length = address_room;
        const std::size_t room = record.buffer.write_len();
        const ssize_t length = recvfrom(descriptor, record.buffer.unwritten(), room, MSG_TRUNC | MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr*>(record.from.bytes), &from_length);
        if (length < 0 && errno == EINTR) {
            continue;
        }
        if (length < 0) {
            return errno;
        }
        record.from_length = static_cast<std::int32_t>(from_length);
        if (static_cast<std::size_t>(length) > room) {
            record.dropped = {static_cast<std::uint32_t>(room), static_cast<std::uint32_t>(length)};
            return EMSGSIZE;
        }
        record.buffer.skip_write(static_cast<std::uint64_t>(length));
        return 0;
    }
}

// Sleeps until something is to be received or the deadline is reached: 0, or the error's number.
int sleep_on_socket(int descriptor, const wait_limit& limit) {
    const std::int64_t left_ns = time_left_ns(platform::steady_now_ns(), limit.deadline_ns);
    const timespec left{static_cast<time_t>(left_ns / ns_per_second),
                        static_cast<long>(left_ns % ns_per_second)};
    pollfd entry{descriptor, POLLIN, 0};
    if (ppoll(&entry, 1, limit.without_end ? nullptr : &left, nullptr) < 0) {
        return errno == EINTR ? 0 : errno;
    }
    if ((entry.revents & POLLERR) != 0 && !drain_error_queue(descriptor)) {
        return errno;
    }
    return 0;
}

// A new datagram socket, or -1. It is never one of the standard streams' numbers: a program may have
// closed those, and 0 is a handle that close_socket leaves alone.
int new_descriptor(const addrinfo& entry) {
    const int descriptor = ::socket(entry.ai_family, entry.ai_socktype | SOCK_CLOEXEC, entry.ai_protocol);
    if (descriptor < 0 || descriptor >= first_ordinary_descriptor) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, first_ordinary_descriptor);
    ::close(descriptor);
    return moved;
}

// Each of these improves the socket. The socket works without them, so a refusal is no failure.
void set_options(int descriptor) {
    const int on = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &receive_buffer_bytes, sizeof receive_buffer_bytes);
    setsockopt(descriptor, IPPROTO_IP, IP_RECVERR, &on, sizeof on);
    setsockopt(descriptor, IPPROTO_IPV6, IPV6_RECVERR, &on, sizeof on);
}

struct address_text {
    std::string text;
    std::string failure; // why there is none
};

address_text text_of_address(const endpoint& address) {
    sockaddr generic{};
    std::memcpy(&generic, address.address.bytes, sizeof generic);
    if (address.length < 0 || address.length > address_room) {
        return {"", error_text(EINVAL)};
    }
    if (generic.sa_family != AF_INET && generic.sa_family != AF_INET6) {
        return {"", error_text(EAFNOSUPPORT)};
    }
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    const int result = getnameinfo(reinterpret_cast<const sockaddr*>(address.address.bytes),
                                   static_cast<socklen_t>(address.length), host, sizeof host, port,
                                   sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
    if (result != 0) {
        return {"", resolver_text(result, errno)};
    }
    std::string text =
        generic.sa_family == AF_INET6 ? formatted("[{}]:{}", host, port) : formatted("{}:{}", host, port);
    text.push_back('\0');
    return {std::move(text), ""};
}

} // namespace

std::string socket_shared::error_text(std::int64_t error) {
    return one_line_of(strerrordesc_np(static_cast<int>(error)));
}

// Linux has its sockets ready from the start.
void socket_startup() {}

resolved_endpoint resolve_address(const std::string& host, const std::string& port) {
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (const int result = getaddrinfo(host.c_str(), port.c_str(), &hints, &list); result != 0) {
        const int error = errno;
        log_here(log_level::warning,
                 failure_text(unable_to_resolve(host, port), resolver_text(result, error)));
        return {{}, socket_status::os_error};
    }
    if (list == nullptr) {
        log_here(log_level::warning, no_valid_address(host, port));
        return {{}, socket_status::os_error};
    }
    resolved_endpoint found;
    const auto length = std::min<socklen_t>(list->ai_addrlen, address_room);
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
    if (const int result = getaddrinfo(host.c_str(), port.c_str(), &hints, &list); result != 0) {
        const int error = errno;
        log_here(log_level::warning,
                 failure_text(unable_to_resolve(host, port), resolver_text(result, error)));
        return {invalid_socket, socket_status::os_error};
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned_list(list, &freeaddrinfo);
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        const int descriptor = new_descriptor(*entry);
        if (descriptor < 0) {
            continue;
        }
        int on = 1;
        if (ioctl(descriptor, FIONBIO, &on) != 0) {
            const int error = errno;
            log_here(log_level::warning, failure_text(unable_to_set_non_blocking, error_text(error)));
            // The socket stays open on purpose.
            return {invalid_socket, socket_status::os_error};
        }
        set_options(descriptor);
        if (bind(descriptor, entry->ai_addr, entry->ai_addrlen) == 0) {
            return {static_cast<socket_handle>(descriptor), socket_status::ok};
        }
        ::close(descriptor);
    }
    log_here(log_level::warning, no_valid_interface(host, port));
    return {invalid_socket, socket_status::unavailable};
}

send_result try_send(socket_handle socket, std::span<const std::byte> bytes, const endpoint& to) {
    const int descriptor = descriptor_of(socket);
    int error = 0;
    for (int attempt = 0; attempt < send_attempts; ++attempt) {
        const ssize_t sent =
            sendto(descriptor, bytes.data(), bytes.size(), 0,
                   reinterpret_cast<const sockaddr*>(to.address.bytes), static_cast<socklen_t>(to.length));
        if (sent >= 0) {
            return {socket_status::ok, 0};
        }
        error = errno;
        if (error == EAGAIN) {
            return {socket_status::would_block, 0};
        }
        if (error == EINTR) {
            continue;
        }
        // The error is an earlier datagram's, and this one is still to go, where the queue held it.
        const bool held_back = drain_error_queue(descriptor).value_or(0) > 0;
        if (!held_back && !is_port_closed(error)) {
            break;
        }
    }
    if (error == EAFNOSUPPORT || error == EADDRINUSE) {
        return {socket_status::unavailable, 0};
    }
    return {socket_status::os_error, static_cast<std::uint32_t>(error)};
}

void log_send_failure(std::uint32_t system_error) {
    log_here(log_level::warning, failure_text(unable_to_send, error_text(system_error)));
}

receive_result try_receive(socket_handle socket, receive_record& record) {
    prepare_receive(record);
    const int error = receive_once(descriptor_of(socket), record);
    if (error == 0) {
        return {socket_status::ok, 0};
    }
    if (error == EAGAIN) {
        return {socket_status::would_block, 0};
    }
    (void)drain_error_queue(descriptor_of(socket));
    if (is_port_closed(error)) {
        return {socket_status::connection_reset, 0};
    }
    return {socket_status::os_error, static_cast<std::uint32_t>(error)};
}

void log_receive_failure(std::uint32_t system_error) {
    log_here(log_level::warning, failure_text(unable_to_receive, error_text(system_error)));
}

socket_status recv_packet_overlapped(socket_handle socket, receive_record& record) {
    prepare_overlapped_receive(record);
    // The datagram waits in the socket until get_overlapped_result takes it; what is left to do here
    // is to drop errors of earlier datagrams, which also shows whether the socket can be used.
    if (!drain_error_queue(descriptor_of(socket))) {
        const int error = errno;
        log_here(log_level::warning, failure_text(unable_to_receive, error_text(error)));
        return socket_status::os_error;
    }
    return socket_status::ok;
}

socket_status get_overlapped_result(socket_handle socket, receive_record& record, std::int64_t timeout_ns) {
    const int descriptor = descriptor_of(socket);
    const wait_limit limit = wait_limit_of(timeout_ns, platform::steady_now_ns());
    for (;;) {
        // The clock is read before the look, so that the last look comes after the deadline.
        const bool expired = !limit.without_end && platform::steady_now_ns() >= limit.deadline_ns;
        const std::uint64_t before = record.buffer.write_position;
        int error = receive_once(descriptor, record);
        if (error == 0) {
            record.received = static_cast<std::uint32_t>(record.buffer.write_position - before);
            return socket_status::ok;
        }
        if (error == EAGAIN && expired) {
            return limit.single_look ? socket_status::would_block : socket_status::timeout;
        }
        if (error == EAGAIN) {
            error = sleep_on_socket(descriptor, limit);
        } else if (is_port_closed(error)) {
            error = drain_error_queue(descriptor) ? 0 : errno;
        }
        if (error != 0) {
            log_here(log_level::warning, failure_text(unable_to_get_result, error_text(error)));
            return socket_status::os_error;
        }
    }
}

std::string stringify_addr(const endpoint& address) {
    address_text converted = text_of_address(address);
    if (converted.text.empty()) {
        log_here(log_level::warning, failure_text(unable_to_stringify_address, converted.failure));
    }
    return std::move(converted.text);
}

std::string stringify_socket(socket_handle socket) {
    endpoint local;
    socklen_t length = address_room;
    address_text converted;
    if (getsockname(descriptor_of(socket), reinterpret_cast<sockaddr*>(local.address.bytes), &length) != 0) {
        converted.failure = error_text(errno);
    } else {
        local.length = static_cast<std::int32_t>(length);
        converted = text_of_address(local);
    }
    if (converted.text.empty()) {
        log_here(log_level::warning, failure_text(unable_to_stringify_socket, converted.failure));
    }
    return std::move(converted.text);
}

void close_socket(socket_handle& socket) {
    if (socket != invalid_socket && socket != 0) {
        ::close(descriptor_of(socket));
    }
    socket = invalid_socket;
}

} // namespace vantu::orvanta
