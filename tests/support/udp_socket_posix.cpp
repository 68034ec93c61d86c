// The tests' UDP socket on POSIX.
#include "support/udp_socket.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace orvanta_tests {
namespace {

sockaddr* system_address(udp_address& address) {
    return reinterpret_cast<sockaddr*>(address.storage.data());
}

const sockaddr* system_address(const udp_address& address) {
    return reinterpret_cast<const sockaddr*>(address.storage.data());
}

void set_option(int descriptor, int level, int option, int value) {
    setsockopt(descriptor, level, option, &value, sizeof(value));
}

} // namespace

std::string text_of_address(const udp_address& address) {
    char text[INET6_ADDRSTRLEN]{};
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
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &list) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned_list(list, &freeaddrinfo);
    const int descriptor = socket(list->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_UDP);
    if (descriptor < 0) {
        return std::nullopt;
    }
    udp_socket result;
    result.handle_ = static_cast<std::uintptr_t>(descriptor);
    constexpr int room = 4 << 20;
    set_option(descriptor, SOL_SOCKET, SO_RCVBUF, room);
    set_option(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 1);
    socklen_t length = sizeof(result.address_.storage);
    if (bind(descriptor, list->ai_addr, list->ai_addrlen) != 0 ||
        getsockname(descriptor, system_address(result.address_), &length) != 0) {
        return std::nullopt;
    }
    result.address_.length = static_cast<int>(length);
    return result;
}

udp_socket::udp_socket(udp_socket&& other) noexcept
    : handle_(std::exchange(other.handle_, no_handle)), address_(other.address_) {}

udp_socket::~udp_socket() {
    if (handle_ != no_handle) {
        close(static_cast<int>(handle_));
    }
}

std::string udp_socket::port() const {
    const std::string text = text_of_address(address_);
    return text.substr(text.rfind(':') + 1);
}

bool udp_socket::send(const bytes& content, const udp_address& to) const {
    return sendto(static_cast<int>(handle_), content.data(), content.size(), 0, system_address(to),
                  static_cast<socklen_t>(to.length)) == static_cast<ssize_t>(content.size());
}

std::optional<udp_datagram> udp_socket::receive() const {
    udp_datagram datagram{bytes(65536), {}};
    socklen_t length = sizeof(datagram.from.storage);
    const ssize_t size = recvfrom(static_cast<int>(handle_), datagram.content.data(), datagram.content.size(),
                                  0, system_address(datagram.from), &length);
    if (size < 0) {
        return std::nullopt;
    }
    datagram.content.resize(static_cast<std::size_t>(size));
    datagram.from.length = static_cast<int>(length);
    return datagram;
}

std::vector<bool> udp_socket::wait(const std::vector<const udp_socket*>& sockets) {
    std::vector<pollfd> entries;
    for (const udp_socket* socket : sockets) {
        entries.push_back({static_cast<int>(socket->handle_), POLLIN, 0});
    }
    while (poll(entries.data(), entries.size(), -1) < 0 && errno == EINTR) {
    }
    std::vector<bool> ready;
    std::transform(entries.begin(), entries.end(), std::back_inserter(ready),
                   [](const pollfd& entry) { return entry.revents != 0; });
    return ready;
}

} // namespace orvanta_tests
