// Addresses as numbers, of the sockets of Linux.
#include "network/internet_address.hpp"

#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

namespace vantu::orvanta {
namespace {

template <typename Address> Address as(const socket_address& address) {
    Address system{};
    static_assert(sizeof system <= sizeof address.bytes);
    std::memcpy(&system, address.bytes, sizeof system);
    return system;
}

template <typename Address> bool fills(std::int32_t length) {
    return length >= static_cast<std::int32_t>(sizeof(Address));
}

} // namespace

internet_address internet_address_of(const socket_address& address, std::int32_t length) noexcept {
    internet_address numbers;
    if (!fills<sockaddr_in>(length)) {
        return numbers;
    }
    if (const auto four = as<sockaddr_in>(address); four.sin_family == AF_INET) {
        numbers.version = 4;
        std::memcpy(numbers.bytes.data(), &four.sin_addr, sizeof four.sin_addr);
        numbers.port = ntohs(four.sin_port);
    } else if (four.sin_family == AF_INET6 && fills<sockaddr_in6>(length)) {
        const auto six = as<sockaddr_in6>(address);
        numbers.version = 6;
        std::memcpy(numbers.bytes.data(), &six.sin6_addr, sizeof six.sin6_addr);
        numbers.port = ntohs(six.sin6_port);
    }
    return numbers;
}

internet_address local_address_of(socket_handle socket) noexcept {
    socket_address local;
    socklen_t length = sizeof local.bytes;
    if (getsockname(static_cast<int>(socket), reinterpret_cast<sockaddr*>(local.bytes), &length) != 0) {
        return {};
    }
    return internet_address_of(local, static_cast<std::int32_t>(length));
}

} // namespace vantu::orvanta
