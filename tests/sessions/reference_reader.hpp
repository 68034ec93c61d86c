// What the client makes of the service's bytes, said a second time and by hand: the codes and events that
// its polls must yield, and the device table that must come of them. Nothing of the library is used here.
#pragma once

#include "sessions/virtual_world.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace session_tests {

// The result of one poll, as far as it can be told from the bytes.
struct expected_poll {
    int code{0};
    std::uint32_t event_type{0}; // 0 where nothing happened; not looked at where code is not 0
    std::uint32_t device_id{0};
    std::uint8_t tag{0};

    bool operator==(const expected_poll&) const = default;
};

struct expected_device {
    int type{0};
    std::uint64_t updates{0};

    bool operator==(const expected_device&) const = default;
};

// The handshake's outcome.
struct expected_handshake {
    int code{0};
    bool ends_the_process{false}; // a body that is cut short is read all the same
};

class reference_reader {
  public:
    // Reads the answer to a connect: none where no datagram came in time.
    [[nodiscard]] expected_handshake connect(const std::optional<delivery>& answer);

    // One poll that took this datagram from the socket: none where it took none.
    [[nodiscard]] expected_poll poll(const std::optional<delivery>& taken);

    [[nodiscard]] bool is_connected() const { return connected_; }
    void disconnect() { connected_ = false; }
    [[nodiscard]] const std::map<std::uint32_t, expected_device>& devices() const { return devices_; }

  private:
    [[nodiscard]] int open_datagram(const delivery& taken);
    [[nodiscard]] expected_poll take_operation();
    [[nodiscard]] int apply(std::uint8_t code, std::uint32_t device_id, std::size_t body);
    [[nodiscard]] std::size_t left() const { return bytes_.size() - at_; }
    [[nodiscard]] std::uint32_t number_at(std::size_t place, int size) const;
    void drop();

    datagram bytes_; // the datagram under way
    std::size_t at_{0};
    bool connected_{false};
    std::map<std::uint32_t, expected_device> devices_;
};

} // namespace session_tests
