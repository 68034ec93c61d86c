// A service in the test process.
#include "app/support/fake_service.hpp"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::uint8_t keep_alive_code = 1;
constexpr std::uint8_t connect_code = 3;
constexpr std::uint8_t disconnect_code = 5;
constexpr std::size_t code_offset = 7;
constexpr auto patience = std::chrono::minutes(1);

// One socket a family on the same port; none when the port is taken in either.
std::vector<udp_socket> bound_pair(std::uint16_t port) {
    std::vector<udp_socket> pair;
    std::optional<udp_socket> first = udp_socket::bound_to("127.0.0.1", std::to_string(port));
    if (!first) {
        return pair;
    }
    if (udp_socket::bound_to("::1", "0")) {
        std::optional<udp_socket> second = udp_socket::bound_to("::1", first->port());
        if (!second) {
            return pair;
        }
        pair.push_back(std::move(*second));
    }
    pair.push_back(std::move(*first));
    return pair;
}

udp_socket any_socket() {
    std::optional<udp_socket> socket = udp_socket::bound_to("127.0.0.1", "0");
    if (!socket) {
        throw std::runtime_error("there is no socket to be had");
    }
    return std::move(*socket);
}

} // namespace

fake_service::fake_service(std::uint16_t port) : wake_(any_socket()) {
    // A program that was killed may still be giving the port back.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (sockets_ = bound_pair(port); sockets_.empty(); sockets_ = bound_pair(port)) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the service's port is taken: " + std::to_string(port));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    thread_ = std::thread([this] { serve(); });
}

fake_service::~fake_service() {
    while (!wake_.send({0}, wake_.address())) {
    }
    thread_.join();
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
    std::vector<const udp_socket*> watched{&wake_};
    for (const udp_socket& socket : sockets_) {
        watched.push_back(&socket);
    }
    for (;;) {
        const std::vector<bool> ready = udp_socket::wait(watched);
        if (ready.front()) {
            return;
        }
        for (std::size_t i = 1; i < ready.size(); ++i) {
            if (ready[i]) {
                take(*watched[i]);
            }
        }
    }
}

void fake_service::take(const udp_socket& socket) {
    std::optional<udp_datagram> received = socket.receive();
    if (!received) {
        return;
    }
    bytes& content = received->content;
    const std::uint8_t code = content.size() > code_offset ? content[code_offset] : std::uint8_t{0};
    const std::lock_guard lock(mutex_);
    client_ = {&socket, received->from};
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
    if (client_.socket == nullptr || !client_.socket->send(datagram, client_.address)) {
        throw std::runtime_error("the service cannot send");
    }
}

} // namespace orvanta_tests
