// The scripted service.
#include "support/scripted_service.hpp"

#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::chrono::seconds patience{30};

const bytes& keep_alive() {
    static const bytes datagram{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00};
    return datagram;
}

bool is_connect_request(const bytes& datagram) {
    return datagram.size() > 7 && datagram[7] == 3;
}

udp_socket socket_at(const std::string& port) {
    std::optional<udp_socket> socket = udp_socket::bound_to("localhost", port);
    if (!socket) {
        throw std::runtime_error("port " + port + " cannot be had");
    }
    return std::move(*socket);
}

} // namespace

scripted_service::scripted_service(const std::string& port)
    : socket_(socket_at(port)), wake_(socket_at("0")), port_(socket_->port()),
      address_text_(text_of_address(socket_->address())) {
    thread_ = std::thread([this] { serve(); });
}

scripted_service::~scripted_service() {
    await_script();
    close();
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
    EXPECT_TRUE(socket_ && socket_->send(datagram, *client_));
}

void scripted_service::close() {
    if (thread_.joinable()) {
        EXPECT_TRUE(wake_.send({0}, wake_.address()));
        thread_.join();
    }
    const std::lock_guard lock(mutex_);
    socket_.reset();
}

bool scripted_service::closed() const {
    const std::lock_guard lock(mutex_);
    return !socket_;
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
    for (;;) {
        const std::vector<bool> ready = udp_socket::wait({&*socket_, &wake_});
        if (ready[0]) {
            receive_one();
        } else if (ready[1]) {
            return;
        }
    }
}

void scripted_service::receive_one() {
    const std::optional<udp_datagram> datagram = socket_->receive();
    if (!datagram) {
        return;
    }
    // Sent before the notice that the step is done: the answers are there when a waiting test goes on.
    const std::lock_guard lock(mutex_);
    for (const bytes& reply : take(*datagram)) {
        EXPECT_TRUE(socket_->send(reply, datagram->from));
    }
    changed_.notify_all();
}

std::vector<bytes> scripted_service::take(const udp_datagram& received) {
    const bytes& datagram = received.content;
    if (is_connect_request(datagram)) {
        client_ = received.from;
    } else if (!client_ || *client_ != received.from) {
        ADD_FAILURE() << "a datagram came from a stranger, " << text_of_address(received.from) << ": "
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
        last_sender_ = text_of_address(received.from);
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
