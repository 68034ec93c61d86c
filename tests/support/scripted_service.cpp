// The scripted service.
#include "support/scripted_service.hpp"

#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::chrono::seconds patience{30};

const bytes order_to_end{0};
const bytes order_to_look{1};

const bytes& keep_alive() {
    static const bytes datagram{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00};
    return datagram;
}

bool is_connect_request(const bytes& datagram) {
    return datagram.size() > 7 && datagram[7] == 3;
}

// One socket a host on the same port; none when the port is taken for one of them.
std::vector<udp_socket> sockets_at(const std::string& port, const std::vector<std::string>& hosts) {
    std::vector<udp_socket> sockets;
    for (const std::string& host : hosts) {
        std::optional<udp_socket> socket =
            udp_socket::bound_to(host, sockets.empty() ? port : sockets.front().port());
        if (socket) {
            sockets.push_back(std::move(*socket));
        } else if (udp_socket::bound_to(host, "0")) {
            return {};
        }
    }
    return sockets;
}

std::vector<udp_socket> awaited_sockets(const std::string& port, const std::vector<std::string>& hosts) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
        std::vector<udp_socket> sockets = sockets_at(port, hosts);
        if (!sockets.empty()) {
            return sockets;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("port " + port + " cannot be had");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace

scripted_service::scripted_service(const std::string& port)
    : scripted_service(port, {"localhost"}, nullptr) {}

scripted_service::scripted_service(const std::string& port, const std::vector<std::string>& hosts,
                                   responder everybody)
    : sockets_(awaited_sockets(port, hosts)), wake_(std::move(awaited_sockets("0", {"localhost"}).front())),
      port_(sockets_.front().port()), address_text_(text_of_address(sockets_.front().address())),
      responder_(std::move(everybody)), to_everybody_(responder_ != nullptr) {
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

void scripted_service::await_room() {
    std::unique_lock lock(mutex_);
    has_room_ = false;
    EXPECT_TRUE(wake_.send(order_to_look, wake_.address()));
    EXPECT_TRUE(changed_.wait_for(lock, patience, [this] { return has_room_; }))
        << "datagrams that nobody takes";
}

void scripted_service::push(const bytes& datagram) {
    const std::lock_guard lock(mutex_);
    if (!client_) {
        ADD_FAILURE() << "no client has connected";
        return;
    }
    EXPECT_TRUE(!sockets_.empty() && client_->socket->send(datagram, client_->address));
}

void scripted_service::close() {
    if (thread_.joinable()) {
        EXPECT_TRUE(wake_.send(order_to_end, wake_.address()));
        thread_.join();
    }
    const std::lock_guard lock(mutex_);
    sockets_.clear();
}

bool scripted_service::closed() const {
    const std::lock_guard lock(mutex_);
    return sockets_.empty();
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

// Orders wait until everything that had come before them is taken.
void scripted_service::serve() {
    std::vector<const udp_socket*> watched;
    for (const udp_socket& socket : sockets_) {
        watched.push_back(&socket);
    }
    watched.push_back(&wake_);
    for (;;) {
        const std::vector<bool> ready = udp_socket::wait(watched);
        bool received = false;
        for (std::size_t i = 0; i + 1 < ready.size(); ++i) {
            if (ready[i]) {
                receive_one(*watched[i]);
                received = true;
            }
        }
        if (!received && ready.back()) {
            const std::optional<udp_datagram> order = wake_.receive();
            if (order && order->content == order_to_end) {
                return;
            }
            const std::lock_guard lock(mutex_);
            has_room_ = true;
            changed_.notify_all();
        }
    }
}

void scripted_service::receive_one(const udp_socket& socket) {
    const std::optional<udp_datagram> datagram = socket.receive();
    if (!datagram) {
        return;
    }
    // Sent before the notice that the step is done: the answers are there when a waiting test goes on.
    const std::lock_guard lock(mutex_);
    for (const bytes& reply : take(datagram->content, {&socket, datagram->from})) {
        EXPECT_TRUE(socket.send(reply, datagram->from));
    }
    changed_.notify_all();
}

std::vector<bytes> scripted_service::take(const bytes& datagram, const peer& from) {
    if (to_everybody_ || is_connect_request(datagram)) {
        client_ = from;
    } else if (!client_ || *client_ != from) {
        ADD_FAILURE() << "a datagram came from a stranger, " << text_of_address(from.address) << ": "
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
        last_sender_ = text_of_address(from.address);
        step met = std::move(script_.front());
        script_.pop_front();
        return met.answers;
    }
    if (datagram == keep_alive() && !to_everybody_) {
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
