// A device service inside the test program: it expects the datagrams of its script, one after the other, and
// answers as the script says. Sockets of its own; nothing of the code under test.
#pragma once

#include "support/bytes.hpp"
#include "support/udp_socket.hpp"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orvanta_tests {

// Every datagram must be the next one of the script and come from the client that connected last; anything
// else, and a script that is not played to its end, fails the test. Keep-alives outside the script are only
// counted: when they come depends on the machine.
class scripted_service {
  public:
    using responder = std::function<std::vector<bytes>(const bytes& request)>;

    // Listens on the first address of localhost; port "0": any. Waits for a port that a killed program still
    // gives back; throws std::runtime_error when it stays taken.
    explicit scripted_service(const std::string& port = "0");
    // The same on each of the hosts, on one port; those of a family that the machine lacks are left out.
    // Every datagram goes to the responder, keep-alives included, whoever sends it: the client is the one
    // heard last.
    scripted_service(const std::string& port, const std::vector<std::string>& hosts, responder everybody);
    ~scripted_service();
    scripted_service(const scripted_service&) = delete;
    scripted_service& operator=(const scripted_service&) = delete;

    [[nodiscard]] const std::string& port() const { return port_; }
    [[nodiscard]] const std::string& address_text() const { return address_text_; }

    // The next datagram to come. With any_tag, its request tag (byte 10) may be anything.
    scripted_service& expect(bytes datagram);
    scripted_service& expect_any_tag(bytes datagram);
    // Sent when the expectation made last is met, in order.
    scripted_service& answer(bytes datagram);
    // A datagram that is not in the script goes to the responder instead of failing the test.
    void respond_with(responder answers);

    // Waits until the script is played to its end; fails the test when that takes too long.
    void await_script();
    // Waits until everything that has come by now is taken: after a flood the socket's buffer, which drops
    // what does not fit, has room again. Fails the test when that takes too long.
    void await_room();
    // Sends a datagram to the client now.
    void push(const bytes& datagram);
    // Goes away without a word: the port is closed.
    void close();
    [[nodiscard]] bool closed() const;

    // The datagram that came last, and its sender as text.
    [[nodiscard]] bytes last_datagram() const;
    [[nodiscard]] std::string last_sender() const;
    // When each keep-alive outside the script came.
    [[nodiscard]] std::vector<std::chrono::steady_clock::time_point> keep_alives() const;

  private:
    struct step {
        bytes expected;
        bool any_tag{false};
        std::vector<bytes> answers;
    };
    struct peer {
        const udp_socket* socket;
        udp_address address;
        bool operator==(const peer&) const = default;
    };

    void serve();
    void receive_one(const udp_socket& socket);
    [[nodiscard]] std::vector<bytes> take(const bytes& datagram, const peer& from);

    std::vector<udp_socket> sockets_; // the thread's alone, but for push
    udp_socket wake_;                 // the thread's orders, from the service itself
    std::string port_;
    std::string address_text_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<step> script_;
    bool has_room_{true};
    responder responder_;
    const bool to_everybody_;
    std::optional<peer> client_;
    bytes last_datagram_;
    std::string last_sender_;
    std::vector<std::chrono::steady_clock::time_point> keep_alives_;

    std::thread thread_;
};

} // namespace orvanta_tests
