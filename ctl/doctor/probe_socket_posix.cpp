// The doctor's sockets on Linux.
#include "ctl/doctor/probe_socket.hpp"

#include "ctl/report/interruption.hpp"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t largest_datagram = 65536;
constexpr int look_for_interruption_ms = 20;

using address_list = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::system_category(), what);
}

int descriptor_of(std::uintptr_t handle) {
    return static_cast<int>(handle);
}

address_list address_of(const std::string& address, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* list = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &list) != 0) {
        fail(EADDRNOTAVAIL, address);
    }
    return {list, &freeaddrinfo};
}

std::string text_of(const addrinfo& entry) {
    char host[NI_MAXHOST]{};
    getnameinfo(entry.ai_addr, entry.ai_addrlen, host, sizeof host, nullptr, 0, NI_NUMERICHOST);
    return host;
}

} // namespace

resolution resolve(const std::string& name) {
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (const int error = getaddrinfo(name.c_str(), nullptr, &hints, &list); error != 0) {
        return {{}, gai_strerror(error)};
    }
    const address_list owned(list, &freeaddrinfo);
    resolution found;
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        std::string text = text_of(*entry);
        if (std::find(found.addresses.begin(), found.addresses.end(), text) == found.addresses.end()) {
            found.addresses.push_back(std::move(text));
        }
    }
    return found;
}

probe_socket::probe_socket(const std::string& address, std::uint16_t port) {
    const address_list at = address_of(address, port);
    const int descriptor = ::socket(at->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_UDP);
    if (descriptor < 0) {
        fail(errno, address);
    }
    if (bind(descriptor, at->ai_addr, at->ai_addrlen) != 0) {
        const int error = errno;
        close(descriptor);
        fail(error, address);
    }
    handle_ = static_cast<std::uintptr_t>(descriptor);
}

probe_socket::~probe_socket() {
    close(descriptor_of(handle_));
}

std::uint16_t probe_socket::port() const {
    sockaddr_storage own{};
    socklen_t length = sizeof own;
    if (getsockname(descriptor_of(handle_), reinterpret_cast<sockaddr*>(&own), &length) != 0) {
        fail(errno, "getsockname");
    }
    // The port stands at the same place in both kinds of addresses.
    return ntohs(reinterpret_cast<const sockaddr_in*>(&own)->sin_port);
}

void probe_socket::connect(const std::string& address, std::uint16_t port) {
    const address_list to = address_of(address, port);
    if (::connect(descriptor_of(handle_), to->ai_addr, to->ai_addrlen) != 0) {
        fail(errno, address);
    }
}

void probe_socket::send(std::span<const std::byte> bytes) {
    if (::send(descriptor_of(handle_), bytes.data(), bytes.size(), 0) < 0) {
        fail(errno, "send");
    }
}

reception probe_socket::receive(time_point until) {
    std::vector<std::byte> room(largest_datagram);
    for (;;) {
        // The clock is read before the look, so that the last look comes after the time is up.
        const bool expired = std::chrono::steady_clock::now() >= until;
        const ssize_t size = recv(descriptor_of(handle_), room.data(), room.size(), 0);
        if (size >= 0) {
            room.resize(static_cast<std::size_t>(size));
            return {reception_kind::datagram, std::move(room)};
        }
        if (errno == ECONNREFUSED) {
            return {reception_kind::closed_port};
        }
        if (errno != EAGAIN && errno != EINTR) {
            return {reception_kind::refused, {}, std::system_category().message(errno)};
        }
        if (expired) {
            return {reception_kind::silence};
        }
        end_when_interrupted();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        pollfd entry{descriptor_of(handle_), POLLIN, 0};
        poll(&entry, 1,
             static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, look_for_interruption_ms)));
    }
}

} // namespace vantu::orvanta::ctl
