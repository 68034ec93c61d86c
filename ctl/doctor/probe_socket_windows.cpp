// The doctor's sockets on Windows.
#include "ctl/doctor/probe_socket.hpp"

#include "ctl/report/interruption.hpp"

#include <algorithm>
#include <memory>
#include <system_error>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t largest_datagram = 65536;
constexpr int look_for_interruption_ms = 20;

using address_list = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::system_category(), what);
}

// For the whole process, before the first use of a socket.
void start_winsock() {
    static const int refusal = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (refusal != 0) {
        fail(refusal, "WSAStartup");
    }
}

address_list address_of(const std::string& address, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* list = nullptr;
    if (const int error = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &list);
        error != 0) {
        fail(error, address);
    }
    return {list, &::freeaddrinfo};
}

std::string text_of(const addrinfo& entry) {
    char host[NI_MAXHOST]{};
    getnameinfo(entry.ai_addr, static_cast<socklen_t>(entry.ai_addrlen), host, sizeof host, nullptr, 0,
                NI_NUMERICHOST);
    return host;
}

} // namespace

resolution resolve(const std::string& name) {
    start_winsock();
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (const int error = getaddrinfo(name.c_str(), nullptr, &hints, &list); error != 0) {
        return {{}, std::system_category().message(error)};
    }
    const address_list owned(list, &::freeaddrinfo);
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
    start_winsock();
    const address_list at = address_of(address, port);
    const SOCKET socket = WSASocketA(at->ai_family, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (socket == INVALID_SOCKET) {
        fail(WSAGetLastError(), address);
    }
    u_long on = 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
    // As the library binds: a port of another program is not shared.
    const BOOL exclusive = TRUE;
    setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
               sizeof exclusive);
    if (bind(socket, at->ai_addr, static_cast<int>(at->ai_addrlen)) != 0) {
        const int error = WSAGetLastError();
        closesocket(socket);
        fail(error, address);
    }
    handle_ = socket;
}

probe_socket::~probe_socket() {
    closesocket(handle_);
}

std::uint16_t probe_socket::port() const {
    sockaddr_storage own{};
    int length = sizeof own;
    if (getsockname(handle_, reinterpret_cast<sockaddr*>(&own), &length) != 0) {
        fail(WSAGetLastError(), "getsockname");
    }
    // The port stands at the same place in both kinds of addresses.
    return ntohs(reinterpret_cast<const sockaddr_in*>(&own)->sin_port);
}

void probe_socket::connect(const std::string& address, std::uint16_t port) {
    const address_list to = address_of(address, port);
    if (::connect(handle_, to->ai_addr, static_cast<int>(to->ai_addrlen)) != 0) {
        fail(WSAGetLastError(), address);
    }
}

void probe_socket::send(std::span<const std::byte> bytes) {
    if (::send(handle_, reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), 0) < 0) {
        fail(WSAGetLastError(), "send");
    }
}

reception probe_socket::receive(time_point until) {
    std::vector<std::byte> room(largest_datagram);
    for (;;) {
        // The clock is read before the look, so that the last look comes after the time is up.
        const bool expired = std::chrono::steady_clock::now() >= until;
        const int size =
            recv(handle_, reinterpret_cast<char*>(room.data()), static_cast<int>(room.size()), 0);
        if (size >= 0) {
            room.resize(static_cast<std::size_t>(size));
            return {reception_kind::datagram, std::move(room)};
        }
        const int error = WSAGetLastError();
        if (error == WSAECONNRESET) {
            return {reception_kind::closed_port};
        }
        if (error != WSAEWOULDBLOCK) {
            return {reception_kind::refused, {}, std::system_category().message(error)};
        }
        if (expired) {
            return {reception_kind::silence};
        }
        end_when_interrupted();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        WSAPOLLFD entry{handle_, POLLRDNORM, 0};
        WSAPoll(&entry, 1,
                static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, look_for_interruption_ms)));
    }
}

} // namespace vantu::orvanta::ctl
