// The datagrams that the service core has for its clients, in order, until the caller takes them.
#pragma once

#include "simulator/service/peer.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantu::orvanta::simulator {

struct outgoing_datagram {
    peer to;
    byte_buffer bytes{constants::mode_read | constants::mode_write};
};

class outbox {
  public:
    template <std::uint8_t code>
    using body = communication::proto::body<code, communication::direction::to_client>;

    // The bytes that one operation takes in a datagram.
    template <std::uint8_t code> static constexpr std::size_t size_of() {
        return sizeof(communication::proto::op) +
               communication::body_size_of(code, communication::direction::to_client);
    }

    // One operation in a datagram of its own.
    template <std::uint8_t code> void send(const peer& to, std::uint8_t tag, const body<code>& content) {
        seal();
        pack<code>(to, tag, content);
        seal();
    }

    // One operation after those packed for the same peer since the last seal, where it fits.
    template <std::uint8_t code> void pack(const peer& to, std::uint8_t tag, const body<code>& content) {
        communication::append_operation<code, communication::direction::to_client>(
            datagram_with_room(to, size_of<code>()), tag, content);
    }

    // The same for the one operation whose body ends in bytes that it counts itself.
    void pack_palmetron_state(const peer& to, const body<communication::op_code::palmetron_state>& head,
                              std::span<const std::byte> tail);

    // The room for further operations to this peer before a new datagram begins; that of a new one where
    // none is open for it.
    [[nodiscard]] std::size_t room_for(const peer& to) const {
        return is_open_for(to) ? waiting_.back().bytes.write_len()
                               : constants::buffer_capacity - sizeof(communication::proto::header);
    }

    // Begins a new datagram unless that many bytes fit into the open one.
    void keep_together(const peer& to, std::size_t size) { (void)datagram_with_room(to, size); }

    // Closes the open datagram: what is packed next begins a new one.
    void seal() { open_ = false; }

    // All datagrams in the order in which they are to go out; none stays. One with nothing but its
    // header is never among them.
    [[nodiscard]] std::vector<outgoing_datagram> take();

  private:
    [[nodiscard]] byte_buffer& datagram_with_room(const peer& to, std::size_t size);
    [[nodiscard]] bool is_open_for(const peer& to) const {
        return open_ && !waiting_.empty() && same_peer(waiting_.back().to, to);
    }

    std::vector<outgoing_datagram> waiting_;
    bool open_{false};
};

} // namespace vantu::orvanta::simulator
