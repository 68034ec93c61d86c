// The core's connection as a client without socket, clock and thread, held to the reference reader at each
// step: code, every byte of the event, devices and their order, keep-alives, client id.
#pragma once

#include "core/connection.hpp"
#include "sessions/differences.hpp"
#include "sessions/reference_reader.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace orvanta_tests {

// The effect of a failed assumption in this program.
enum class assumptions : std::uint8_t {
    end_the_process, // what would bring one to fail is not tried
    throw_failed,    // one that fails throws failed_assumption
};

struct poll_result {
    int code{0};
    bool keep_alive{false};
    vantu_orvanta_event event{};
};

class checked_connection {
  public:
    explicit checked_connection(assumptions failing) : failing_(failing) {}

    // Reads the answer to a connect; the codes of read_handshake_reply. None where the answer ends a
    // process by design. After an acceptance a later one is a connection of its own.
    std::optional<int> connect(octets answer, std::int64_t now_ns);

    [[nodiscard]] bool wants_datagram() const;

    // One poll, with a datagram only if wants_datagram().
    poll_result poll(std::int64_t now_ns, const octets* taken);

    void note_send(std::int64_t now_ns);

    // Compares all devices; polls compare the one that may have changed.
    void check_devices() const;

    [[nodiscard]] bool is_connected() const { return expected_.is_connected(); }
    void disconnect() { expected_.disconnect(); }
    [[nodiscard]] std::int64_t keep_alive_due_ns() const { return expected_.keep_alive_due_ns(); }

  private:
    void fill_buffer(octets bytes);
    [[nodiscard]] std::int32_t poll_core(std::int64_t now_ns, const octets* taken, poll_result& result);
    void check_device(std::uint32_t id) const;

    assumptions failing_;
    vantu::orvanta::connection connection_;
    reference_reader expected_;
};

} // namespace orvanta_tests
