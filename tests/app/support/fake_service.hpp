// The scripted service as the tool's tests use it: answers by code and remembers what it was asked.
#pragma once

#include "app/support/wire.hpp"
#include "support/scripted_service.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace orvanta_tests {

using datagrams = std::vector<bytes>;

inline constexpr std::uint16_t service_port = 54320;

class fake_service {
  public:
    // Listens on 127.0.0.1 and ::1; port 0 lets the system choose.
    explicit fake_service(std::uint16_t port = 0);
    fake_service(const fake_service&) = delete;
    fake_service& operator=(const fake_service&) = delete;

    [[nodiscard]] std::string port_text() const { return service_.port(); }

    // Sends this datagram whenever an operation of this code arrives.
    void answer(std::uint8_t code, bytes datagram);

    // Accepts clients, in one datagram after the given operations, and confirms goodbyes.
    void accept_with(const std::string& operations = {});

    // Sends a datagram to the client that was heard last.
    void send(const bytes& datagram) { service_.push(datagram); }

    // The next datagram with this code that nobody has asked for yet; waits for it. Throws
    // std::runtime_error after a minute.
    [[nodiscard]] bytes next(std::uint8_t code);

    // Waits for `count` datagrams in all, as they came; keep-alives are left out. Throws
    // std::runtime_error after a minute.
    [[nodiscard]] datagrams first_requests(std::size_t count);

    // All datagrams that came so far, keep-alives left out.
    [[nodiscard]] datagrams requests();

  private:
    [[nodiscard]] datagrams take(const bytes& datagram);

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::map<std::uint8_t, bytes> answers_;
    datagrams requests_;
    std::map<std::uint8_t, std::deque<bytes>> waiting_;

    scripted_service service_; // its thread ends before the rest goes
};

} // namespace orvanta_tests
