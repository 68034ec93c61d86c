// The client's side of one connection, without socket, clock, thread or lock: bytes and times go in;
// events, bytes and the next due time come out. A poll is these steps:
//
//     if (now >= connection.due_ns()) send a keep_alive operation, then note_send(now)
//     if (!connection.has_operation()) fill receive_buffer(), then begin_datagram()
//     decode(event), then apply(event)
#pragma once

#include "core/device_table.hpp"
#include "core/handshake.hpp"
#include "core/rejection.hpp"
#include "core/timing.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/records.h"

#include <atomic>
#include <cstdint>

namespace vantu::orvanta {

// All but note_send and due_ns are for one thread at a time; devices() may be read by others under a
// lock of the caller's that also guards accept and apply.
class connection {
  public:
    // Takes over what a handshake told: its client id, and its devices in place of earlier ones.
    // is_over() is false from here until the service says goodbye.
    void accept(handshake_reply&& reply, std::int64_t now_ns) noexcept;

    [[nodiscard]] std::uint64_t client_id() const { return client_id_; }
    [[nodiscard]] bool is_over() const { return is_over_; }

    // Notes that a datagram went out. Any thread.
    void note_send(std::int64_t now_ns) { last_send_ns_.store(now_ns, std::memory_order_relaxed); }

    // When a keep-alive is due, unless something else is sent before. Any thread.
    [[nodiscard]] std::int64_t due_ns() const {
        return keep_alive_due_ns(last_send_ns_.load(std::memory_order_relaxed));
    }

    // The bytes of the datagram that is being read; stays at its place for the connection's life.
    [[nodiscard]] byte_buffer& receive_buffer() { return buffer_; }

    // True while an operation of the last datagram is left.
    [[nodiscard]] bool has_operation() const { return buffer_.can_read<communication::proto::op>(); }

    // Checks the header of a datagram that has just been put into the empty receive buffer. Returns:
    //   vantu_orvanta_success                an operation can be decoded
    //   vantu_orvanta_protocol_parse_failed  the datagram is dropped; rejected says why
    [[nodiscard]] std::int32_t begin_datagram(rejection& rejected);

    // Decodes the next operation into the event, which must be zeroed; has_operation() must be true.
    // Returns what decode_operation returns, and vantu_orvanta_protocol_parse_failed for an operation's
    // magic that differs: rejected says so, and the rest of the datagram is dropped.
    [[nodiscard]] std::int32_t decode(vantu_orvanta_event& event, rejection& rejected);

    // Takes a decoded event over into the device table: to be called after every successful decode.
    // Returns what device_table::apply returns; after a failure the rest of the datagram is dropped.
    // Throws std::bad_alloc.
    [[nodiscard]] std::int32_t apply(const vantu_orvanta_event& event);

    [[nodiscard]] const device_table& devices() const { return devices_; }

  private:
    std::int32_t reject(reject_reason reason, rejection& rejected);

    byte_buffer buffer_{constants::mode_read};
    device_table devices_;
    std::uint64_t client_id_{0};
    bool is_over_{false};
    alignas(64) std::atomic<std::int64_t> last_send_ns_{0}; // on a line of its own: every sender writes it
};

} // namespace vantu::orvanta
