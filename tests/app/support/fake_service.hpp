// A service in the test process: answers as it is told and remembers what it was asked.
#pragma once

#include "app/support/wire.hpp"
#include "support/udp_socket.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orvanta_tests {

inline constexpr std::uint16_t service_port = 54320;

class fake_service {
  public:
    // Listens on 127.0.0.1 and ::1; port 0 lets the system choose. Throws std::runtime_error when it
    // cannot have the port.
    explicit fake_service(std::uint16_t port = 0);
    ~fake_service();
    fake_service(const fake_service&) = delete;
    fake_service& operator=(const fake_service&) = delete;

    [[nodiscard]] std::string port_text() const { return sockets_.front().port(); }

    // Sends this datagram whenever an operation of this code arrives.
    void answer(std::uint8_t code, bytes datagram);

    // Accepts clients, ahead of that in the same datagram the given operations, and confirms goodbyes.
    void accept_with(const std::string& operations = {});

    // Sends a datagram to the client that was heard last.
    void send(const bytes& datagram);

    // The next datagram with this code that nobody has asked for yet; waits for it. Throws
    // std::runtime_error after a minute.
    [[nodiscard]] bytes next(std::uint8_t code);

    // Waits for `count` datagrams in all, as they came; keep-alives are left out. Throws
    // std::runtime_error after a minute.
    [[nodiscard]] datagrams first_requests(std::size_t count);

    // All datagrams that came so far, keep-alives left out.
    [[nodiscard]] datagrams requests();

  private:
    struct peer {
        const udp_socket* socket{nullptr};
        udp_address address;
    };

    void serve();
    void take(const udp_socket& socket);
    void send_locked(const bytes& datagram);

    std::vector<udp_socket> sockets_;
    udp_socket wake_; // a datagram to itself ends the thread

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::map<std::uint8_t, bytes> answers_;
    datagrams requests_;
    std::map<std::uint8_t, std::deque<bytes>> waiting_;
    peer client_;

    std::thread thread_;
};

} // namespace orvanta_tests
