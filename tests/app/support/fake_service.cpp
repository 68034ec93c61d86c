// A service in the test process.
#include "app/support/fake_service.hpp"

#include <arpa/inet.h>
#include <chrono>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace orvanta_test {
namespace {

constexpr std::uint8_t keep_alive_code = 1;
constexpr std::uint8_t connect_code = 3;
constexpr std::uint8_t disconnect_code = 5;
constexpr std::size_t code_offset = 7;
constexpr auto patience = std::chrono::minutes(1);

int bound_socket(const sockaddr* address, socklen_t length) {
    const int descriptor = socket(address->sa_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return -1;
    }
    const int only = 1;
    if (address->sa_family == AF_INET6) {
        setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &only, sizeof(only));
    }
    if (bind(descriptor, address, length) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

int bound_v4(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return bound_socket(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

int bound_v6(std::uint16_t port) {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    address.sin6_addr = in6addr_loopback;
    return bound_socket(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

bool has_v6() {
    const int probe = bound_v6(0);
    if (probe < 0) {
        return false;
    }
    close(probe);
    return true;
}

std::uint16_t port_of(int descriptor) {
    sockaddr_in address{};
    socklen_t length = sizeof(address);
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

// One socket a family on the same port; none when the port is taken in either.
std::vector<int> bound_pair(std::uint16_t port) {
    const int first = bound_v4(port);
    if (first < 0) {
        return {};
    }
    if (!has_v6()) {
        return {first};
    }
    const int second = bound_v6(port_of(first));
    if (second < 0) {
        close(first);
        return {};
    }
    return {first, second};
}

} // namespace

fake_service::fake_service(std::uint16_t port) {
    const int attempts = port == 0 ? 100 : 1;
    for (int i = 0; i < attempts && sockets_.empty(); ++i) {
        sockets_ = bound_pair(port);
    }
    if (sockets_.empty() || pipe(wake_.data()) != 0) {
        throw std::runtime_error("the service's port is taken: " + std::to_string(port));
    }
    port_ = port_of(sockets_.front());
    thread_ = std::thread([this] { serve(); });
}

fake_service::~fake_service() {
    close(wake_[1]);
    thread_.join();
    close(wake_[0]);
    for (const int descriptor : sockets_) {
        close(descriptor);
    }
}

void fake_service::answer(std::uint8_t code, bytes datagram) {
    const std::lock_guard lock(mutex_);
    answers_[code] = std::move(datagram);
}

void fake_service::accept_with(const std::string& operations) {
    answer(connect_code, datagram(operations + accepted));
    answer(disconnect_code, datagram(disconnected));
}

void fake_service::send(const bytes& datagram) {
    const std::lock_guard lock(mutex_);
    send_locked(datagram);
}

bytes fake_service::next(std::uint8_t code) {
    std::unique_lock lock(mutex_);
    std::deque<bytes>& queue = waiting_[code];
    if (!arrived_.wait_for(lock, patience, [&] { return !queue.empty(); })) {
        throw std::runtime_error("no datagram with code " + std::to_string(code));
    }
    bytes result = std::move(queue.front());
    queue.pop_front();
    return result;
}

datagrams fake_service::first_requests(std::size_t count) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, patience, [&] { return requests_.size() >= count; })) {
        throw std::runtime_error("only " + std::to_string(requests_.size()) + " datagrams came");
    }
    return requests_;
}

datagrams fake_service::requests() {
    return first_requests(0);
}

void fake_service::serve() {
    std::vector<pollfd> watched{{wake_[0], POLLIN, 0}};
    for (const int descriptor : sockets_) {
        watched.push_back({descriptor, POLLIN, 0});
    }
    for (;;) {
        poll(watched.data(), watched.size(), -1);
        if (watched.front().revents != 0) {
            return;
        }
        for (const pollfd& entry : watched) {
            if ((entry.revents & POLLIN) != 0) {
                take(entry.fd);
            }
        }
    }
}

void fake_service::take(int socket) {
    peer sender{socket, {}, sizeof(sockaddr_storage)};
    bytes content(2048);
    const ssize_t size = recvfrom(socket, content.data(), content.size(), 0,
                                  reinterpret_cast<sockaddr*>(&sender.address), &sender.length);
    if (size < 0) {
        return;
    }
    content.resize(static_cast<std::size_t>(size));
    const std::uint8_t code = content.size() > code_offset ? content[code_offset] : std::uint8_t{0};
    const std::lock_guard lock(mutex_);
    client_ = sender;
    if (code != keep_alive_code) {
        requests_.push_back(content);
    }
    waiting_[code].push_back(std::move(content));
    if (const auto found = answers_.find(code); found != answers_.end()) {
        send_locked(found->second);
    }
    arrived_.notify_all();
}

void fake_service::send_locked(const bytes& datagram) {
    const ssize_t sent = sendto(client_.socket, datagram.data(), datagram.size(), 0,
                                reinterpret_cast<const sockaddr*>(&client_.address), client_.length);
    if (sent != static_cast<ssize_t>(datagram.size())) {
        throw std::runtime_error("the service cannot send");
    }
}

} // namespace orvanta_test
