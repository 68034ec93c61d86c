// The scripted service on plain POSIX sockets.
#include "support/scripted_service.hpp"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::chrono::seconds patience{30};

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

const bytes& keep_alive() {
    static const bytes datagram{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00};
    return datagram;
}

bool is_connect_request(const bytes& datagram) {
    return datagram.size() > 7 && datagram[7] == 3;
}

bool same_address(const local_address& left, const sockaddr_storage& right, socklen_t length) {
    return left.length == length && std::memcmp(&left.storage, &right, length) == 0;
}

} // namespace

local_address localhost_address(const std::string& port) {
    addrinfo hints{};
    hints.ai_protocol = IPPROTO_UDP;
    addrinfo* list = nullptr;
    if (getaddrinfo("localhost", port.c_str(), &hints, &list) != 0 || list == nullptr) {
        throw std::runtime_error("localhost has no address");
    }
    local_address result;
    result.length = list->ai_addrlen;
    std::memcpy(&result.storage, list->ai_addr, list->ai_addrlen);
    freeaddrinfo(list);
    return result;
}

std::string text_of_address(const sockaddr_storage& address) {
    char text[INET6_ADDRSTRLEN]{};
    if (address.ss_family == AF_INET6) {
        sockaddr_in6 six{};
        std::memcpy(&six, &address, sizeof(six));
        inet_ntop(AF_INET6, &six.sin6_addr, text, sizeof(text));
        return std::string("[").append(text).append("]:").append(std::to_string(ntohs(six.sin6_port)));
    }
    sockaddr_in four{};
    std::memcpy(&four, &address, sizeof(four));
    inet_ntop(AF_INET, &four.sin_addr, text, sizeof(text));
    return std::string(text) + ":" + std::to_string(ntohs(four.sin_port));
}

scripted_service::scripted_service(const std::string& port) {
    local_address own = localhost_address(port);
    socket_ = socket(own.storage.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
    if (socket_ < 0 || pipe(wake_) != 0) {
        fail("socket");
    }
    const int room = 4 << 20;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &room, sizeof(room));
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&own.storage), own.length) != 0) {
        fail("bind");
    }
    own.length = sizeof(own.storage);
    if (getsockname(socket_, reinterpret_cast<sockaddr*>(&own.storage), &own.length) != 0) {
        fail("getsockname");
    }
    address_text_ = text_of_address(own.storage);
    port_ = address_text_.substr(address_text_.rfind(':') + 1);
    thread_ = std::thread([this] { serve(); });
}

scripted_service::~scripted_service() {
    await_script();
    close();
    ::close(wake_[0]);
    ::close(wake_[1]);
}

scripted_service& scripted_service::expect(bytes datagram) {
    const std::lock_guard lock(mutex_);
    script_.push_back({std::move(datagram), false, {}});
    return *this;
}

scripted_service& scripted_service::expect_any_tag(bytes datagram) {
    const std::lock_guard lock(mutex_);
    script_.push_back({std::move(datagram), true, {}});
    return *this;
}

scripted_service& scripted_service::answer(bytes datagram) {
    const std::lock_guard lock(mutex_);
    script_.at(script_.size() - 1).answers.push_back(std::move(datagram));
    return *this;
}

void scripted_service::respond_with(responder answers) {
    const std::lock_guard lock(mutex_);
    responder_ = std::move(answers);
}

void scripted_service::await_script() {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, patience, [this] { return script_.empty(); })) {
        ADD_FAILURE() << script_.size() << " scripted datagrams never came; the first is "
                      << hex(script_.front().expected);
        script_.clear();
    }
}

void scripted_service::push(const bytes& datagram) {
    const std::lock_guard lock(mutex_);
    if (!client_) {
        ADD_FAILURE() << "no client has connected";
        return;
    }
    const auto sent = sendto(socket_, datagram.data(), datagram.size(), 0,
                             reinterpret_cast<const sockaddr*>(&client_->storage), client_->length);
    EXPECT_EQ(sent, static_cast<ssize_t>(datagram.size())) << std::strerror(errno);
}

void scripted_service::close() {
    if (thread_.joinable()) {
        EXPECT_EQ(write(wake_[1], "", 1), 1);
        thread_.join();
    }
    const std::lock_guard lock(mutex_);
    if (socket_ >= 0) {
        ::close(socket_);
        socket_ = -1;
    }
}

bool scripted_service::closed() const {
    const std::lock_guard lock(mutex_);
    return socket_ < 0;
}

bytes scripted_service::last_datagram() const {
    const std::lock_guard lock(mutex_);
    return last_datagram_;
}

std::string scripted_service::last_sender() const {
    const std::lock_guard lock(mutex_);
    return last_sender_;
}

std::vector<std::chrono::steady_clock::time_point> scripted_service::keep_alives() const {
    const std::lock_guard lock(mutex_);
    return keep_alives_;
}

// Ends when woken, after it has taken everything that had come by then.
void scripted_service::serve() {
    std::array<pollfd, 2> watched{pollfd{socket_, POLLIN, 0}, pollfd{wake_[0], POLLIN, 0}};
    for (;;) {
        if (poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) {
            ADD_FAILURE() << "poll: " << std::strerror(errno);
            return;
        }
        if (watched[0].revents != 0) {
            receive_one();
        } else if (watched[1].revents != 0) {
            return;
        }
    }
}

void scripted_service::receive_one() {
    bytes datagram(65536);
    sockaddr_storage from{};
    socklen_t length = sizeof(from);
    const auto size = recvfrom(socket_, datagram.data(), datagram.size(), MSG_DONTWAIT,
                               reinterpret_cast<sockaddr*>(&from), &length);
    if (size < 0) {
        return;
    }
    datagram.resize(static_cast<std::size_t>(size));
    // Sent ahead of the notice that the step is done, so that who awaits it finds the answers there.
    const std::lock_guard lock(mutex_);
    for (const bytes& reply : take(datagram, from, length)) {
        EXPECT_EQ(
            sendto(socket_, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&from), length),
            static_cast<ssize_t>(reply.size()));
    }
    changed_.notify_all();
}

std::vector<bytes> scripted_service::take(const bytes& datagram, const sockaddr_storage& from,
                                          socklen_t length) {
    if (is_connect_request(datagram)) {
        client_ = local_address{from, length};
    } else if (!client_ || !same_address(*client_, from, length)) {
        ADD_FAILURE() << "a datagram came from a stranger, " << text_of_address(from) << ": "
                      << hex(datagram);
        return {};
    }
    bytes compared = datagram;
    if (!script_.empty() && script_.front().any_tag && datagram.size() > 10 &&
        script_.front().expected.size() > 10) {
        compared[10] = script_.front().expected[10];
    }
    if (!script_.empty() && compared == script_.front().expected) {
        last_datagram_ = datagram;
        last_sender_ = text_of_address(from);
        step met = std::move(script_.front());
        script_.pop_front();
        return met.answers;
    }
    if (datagram == keep_alive()) {
        keep_alives_.push_back(std::chrono::steady_clock::now());
        return {};
    }
    if (responder_) {
        last_datagram_ = datagram;
        return responder_(datagram);
    }
    ADD_FAILURE() << "an unexpected datagram came: " << hex(datagram)
                  << "\nexpected: " << (script_.empty() ? "none" : hex(script_.front().expected));
    return {};
}

} // namespace orvanta_tests
