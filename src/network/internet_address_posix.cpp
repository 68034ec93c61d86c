// Addresses as numbers, of the sockets of Linux.
#include "internet_address_numbers.hpp"

#include <netinet/in.h>
#include <sys/socket.h>

namespace vantu::orvanta {

internet_address internet_address_of(const socket_address& address, std::int32_t length) noexcept {
    return numbers_in<sockaddr_in, sockaddr_in6>(address, length, {AF_INET, AF_INET6});
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
