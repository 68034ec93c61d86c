// Sockets and handshake for the benchmarks.
#include "bench_service.hpp"

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vantu::orvanta::bench {
namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        std::perror(what);
        std::exit(1);
    }
}

// Answers one connect request with client id 1.
void accept_one(bare_socket& service, sockaddr_storage& from, socklen_t& from_length) {
    pollfd waiting{service.descriptor(), POLLIN, 0};
    require(::poll(&waiting, 1, 5000) == 1, "no connect request");
    std::uint8_t request[2048];
    from_length = sizeof(from);
    require(recvfrom(service.descriptor(), request, sizeof(request), 0, reinterpret_cast<sockaddr*>(&from),
                     &from_length) == 6 + 5 + 112,
            "connect request");
    service.send({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 4, 8, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}, from, from_length);
}

} // namespace

datagram cursor_states(int count) {
    datagram bytes{0xE9, 0x9E, 1, 0, 0, 0};
    for (int i = 0; i < count; ++i) {
        const std::uint8_t operation[] = {0xFF, 33, 28, 0, 0, 1, 0, 0, 0};
        bytes.insert(bytes.end(), std::begin(operation), std::end(operation));
        for (int value = 0; value < 24; ++value) {
            bytes.push_back(static_cast<std::uint8_t>(value));
        }
    }
    return bytes;
}

bare_socket::bare_socket() {
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    require(getaddrinfo("localhost", "0", &hints, &found) == 0, "localhost");
    descriptor_ = socket(found->ai_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    require(descriptor_ >= 0, "socket");
    require(bind(descriptor_, found->ai_addr, found->ai_addrlen) == 0, "bind");
    freeaddrinfo(found);
    const int size = 1 << 20;
    require(setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size)) == 0, "SO_RCVBUF");
    length_ = sizeof(address_);
    require(getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address_), &length_) == 0, "getsockname");
}

bare_socket::~bare_socket() {
    close(descriptor_);
}

std::string bare_socket::port() const {
    // The port stands at the same place in the addresses of both families.
    in_port_t port = 0;
    std::memcpy(&port, reinterpret_cast<const std::byte*>(&address_) + offsetof(sockaddr_in, sin_port),
                sizeof(port));
    return std::to_string(ntohs(port));
}

void bare_socket::send(const datagram& bytes, const sockaddr_storage& to, socklen_t to_length) const {
    require(sendto(descriptor_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to),
                   to_length) == static_cast<ssize_t>(bytes.size()),
            "sendto");
}

void bare_socket::drain() const {
    std::uint8_t bytes[2048];
    while (recv(descriptor_, bytes, sizeof(bytes), 0) >= 0) {
    }
}

connected_client::connected_client(client::config callbacks) : owner(std::move(callbacks)) {
    std::thread answering([this] { accept_one(service, client_address, client_address_length); });
    const std::int32_t code = vantu_orvanta_connect_ports(owner.context(), "0", service.port().c_str(),
                                                          "bench", 0, 0, 5'000'000'000, 1'000'000'000);
    answering.join();
    if (code != 0) {
        std::fprintf(stderr, "the benchmark's client does not connect: %s\n",
                     vantu_orvanta_error_message(code));
        std::exit(1);
    }
}

} // namespace vantu::orvanta::bench
