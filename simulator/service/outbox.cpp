#include "simulator/service/outbox.hpp"

#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

byte_buffer& outbox::datagram_with_room(const peer& to, std::size_t size) {
    if (!is_open_for(to) || waiting_.back().bytes.write_len() < size) {
        waiting_.emplace_back().to = to;
        waiting_.back().bytes.write(proto::datagram_header);
        open_ = true;
    }
    return waiting_.back().bytes;
}

void outbox::pack_palmetron_state(const peer& to, const body<op_code::palmetron_state>& head,
                                  std::span<const std::byte> tail) {
    constexpr std::size_t head_size = sizeof head;
    byte_buffer& datagram = datagram_with_room(to, sizeof(proto::op) + head_size + tail.size());
    datagram.write(proto::op{proto::op_magic, op_code::palmetron_state,
                             static_cast<std::uint16_t>(head_size + tail.size()), 0});
    datagram.write(head);
    for (const std::byte value : tail) {
        datagram.write(value);
    }
}

std::vector<outgoing_datagram> outbox::take() {
    seal();
    std::erase_if(waiting_, [](const outgoing_datagram& datagram) {
        return datagram.bytes.write_position == sizeof(proto::header);
    });
    return std::exchange(waiting_, {});
}

} // namespace vantu::orvanta::simulator
