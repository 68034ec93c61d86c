// A service core on the test bench.
#include "simulator/bench.hpp"

#include <cstring>
#include <ostream>
#include <utility>

namespace simulator_tests {

using namespace vantu::orvanta::simulator;

void PrintTo(const sent& value, std::ostream* out) {
    *out << "to " << value.to << ": " << hex(value.content);
}

peer peer_of(unsigned number) {
    peer made;
    made.address.length = 16;
    std::memcpy(made.address.address.bytes, &number, sizeof number);
    return made;
}

bench::bench(service_settings settings, std::size_t orvanta3_count, std::size_t palmetron_count)
    : core(
          [&] {
              settings.narrate = [this](std::string_view line) { lines.emplace_back(line); };
              settings.save = [this](const device& which) {
                  if (saving_works) {
                      saved.push_back(which.id);
                  }
                  return saving_works;
              };
              return std::move(settings);
          }(),
          make_devices(orvanta3_count, palmetron_count)) {}

sent_list bench::take() {
    sent_list list;
    for (const outgoing_datagram& one : core.take_outgoing()) {
        unsigned number = 0;
        std::memcpy(&number, one.to.address.address.bytes, sizeof number);
        const auto* begin = reinterpret_cast<const std::uint8_t*>(one.bytes.unread());
        list.push_back({number, bytes(begin, begin + one.bytes.read_len())});
    }
    return list;
}

sent_list bench::send(unsigned from, const bytes& content) {
    // A copy of exactly the size, so that a read past the end is seen.
    const std::vector<std::uint8_t> exact(content);
    core.receive(peer_of(from), std::as_bytes(std::span(exact)), now);
    return take();
}

sent_list bench::wait(std::int64_t nanoseconds) {
    now += nanoseconds;
    core.tick(now);
    return take();
}

void bench::enter(unsigned from, std::initializer_list<std::uint32_t> opened, std::uint64_t keep_alive_ns) {
    send(from, datagram({connect_operation(0, keep_alive_ns)}));
    for (const std::uint32_t id : opened) {
        send(from, datagram({join({{0xFF, 0x12, 0x06, 0x00, 0x00}, u32(id), {0x00, 0x00}})}));
    }
    lines.clear();
}

bytes refusal(std::uint8_t tag, std::uint32_t device_id, std::uint8_t status) {
    return datagram({join({{0xFF, 0xF0, 0x05, 0x00, tag}, u32(device_id), {status}})});
}

} // namespace simulator_tests
