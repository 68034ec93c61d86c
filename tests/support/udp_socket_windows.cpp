// The tests' UDP socket on Windows.
#include "support/udp_socket.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace orvanta_tests {
namespace {

sockaddr* system_address(udp_address& address) {
    return reinterpret_cast<sockaddr*>(address.storage.data());
}

const sockaddr* system_address(const udp_address& address) {
    return reinterpret_cast<const sockaddr*>(address.storage.data());
}

void set_option(SOCKET socket, int level, int option, int value) {
    setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof(value));
}

// For the whole process, at the first socket.
void start_winsock() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    static_cast<void>(started);
}

} // namespace

std::string text_of_address(const udp_address& address) {
    char text[INET6_ADDRSTRLEN + 1]{};
    if (system_address(address)->sa_family == AF_INET6) {
        sockaddr_in6 six{};
        std::memcpy(&six, address.storage.data(), sizeof(six));
        inet_ntop(AF_INET6, &six.sin6_addr, text, sizeof(text));
        return std::string("[").append(text).append("]:").append(std::to_string(ntohs(six.sin6_port)));
    }
    sockaddr_in four{};
    std::memcpy(&four, address.storage.data(), sizeof(four));
    inet_ntop(AF_INET, &four.sin_addr, text, sizeof(text));
    return std::string(text) + ":" + std::to_string(ntohs(four.sin_port));
}

std::optional<udp_socket> udp_socket::bound_to(const std::string& host, const std::string& port) {
    start_winsock();
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &list) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned_list(list, &::freeaddrinfo);
    const SOCKET descriptor = WSASocketA(list->ai_family, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                         WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (descriptor == INVALID_SOCKET) {
        return std::nullopt;
    }
    udp_socket result;
    result.handle_ = descriptor;
    u_long on = 1;
    ioctlsocket(descriptor, static_cast<long>(FIONBIO), &on);
    constexpr int room = 4 << 20;
    set_option(descriptor, SOL_SOCKET, SO_RCVBUF, room);
    set_option(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 1);
    result.address_.length = sizeof(result.address_.storage);
    if (bind(descriptor, list->ai_addr, static_cast<int>(list->ai_addrlen)) != 0 ||
        getsockname(descriptor, system_address(result.address_), &result.address_.length) != 0) {
        return std::nullopt;
    }
    return result;
}

udp_socket::udp_socket(udp_socket&& other) noexcept
    : handle_(std::exchange(other.handle_, no_handle)), address_(other.address_) {}

udp_socket::~udp_socket() {
    if (handle_ != no_handle) {
        closesocket(handle_);
    }
}

std::string udp_socket::port() const {
    const std::string text = text_of_address(address_);
    return text.substr(text.rfind(':') + 1);
}

bool udp_socket::send(const bytes& content, const udp_address& to) const {
    return sendto(handle_, reinterpret_cast<const char*>(content.data()), static_cast<int>(content.size()), 0,
                  system_address(to), to.length) == static_cast<int>(content.size());
}

std::optional<udp_datagram> udp_socket::receive() const {
    udp_datagram datagram{bytes(65536), {}};
    datagram.from.length = sizeof(datagram.from.storage);
    const int size = recvfrom(handle_, reinterpret_cast<char*>(datagram.content.data()),
                              static_cast<int>(datagram.content.size()), 0, system_address(datagram.from),
                              &datagram.from.length);
    if (size < 0) {
        return std::nullopt;
    }
    datagram.content.resize(static_cast<std::size_t>(size));
    return datagram;
}

std::vector<bool> udp_socket::wait(const std::vector<const udp_socket*>& sockets) {
    std::vector<WSAPOLLFD> entries;
    for (const udp_socket* socket : sockets) {
        entries.push_back({socket->handle_, POLLIN, 0});
    }
    WSAPoll(entries.data(), static_cast<ULONG>(entries.size()), -1);
    std::vector<bool> ready;
    std::transform(entries.begin(), entries.end(), std::back_inserter(ready),
                   [](const WSAPOLLFD& entry) { return entry.revents != 0; });
    return ready;
}

} // namespace orvanta_tests
