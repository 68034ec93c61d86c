// A whole simulation on the test bench.
#include "simulator/simulation_bench.hpp"

#include <cstring>
#include <utility>

namespace simulator_tests {

using namespace vantu::orvanta::simulator;

bytes request_of(std::uint8_t code, std::uint8_t tag, std::uint32_t device_id, const bytes& more) {
    const auto length = static_cast<std::uint8_t>(4 + more.size());
    return datagram({join({{0xFF, code, length, 0x00, tag}, u32(device_id), more})});
}

bytes open_request(std::uint8_t tag, std::uint32_t device_id) {
    return request_of(0x12, tag, device_id, {0x00, 0x00});
}

simulation_bench::simulation_bench(simulation_settings settings)
    : tested([&] {
          settings.narrate = [this](std::string_view line) { lines.emplace_back(line); };
          settings.warn = [this](std::string_view line) { warnings.emplace_back(line); };
          if (settings.devices.empty()) {
              settings.devices = make_devices(1, 1);
          }
          return std::move(settings);
      }()) {}

sent_list simulation_bench::take() {
    sent_list list;
    for (const departure& one : tested.take_outgoing()) {
        unsigned number = 0;
        std::memcpy(&number, one.to.address.address.bytes, sizeof number);
        const auto* begin = reinterpret_cast<const std::uint8_t*>(one.bytes.data());
        list.push_back({number, bytes(begin, begin + one.bytes.size())});
    }
    return list;
}

sent_list simulation_bench::send(unsigned from, const bytes& content) {
    // A copy of exactly the size, so that a read past the end is seen.
    const std::vector<std::uint8_t> exact(content);
    tested.receive(peer_of(from), std::as_bytes(std::span(exact)));
    return take();
}

sent_list simulation_bench::wait(std::int64_t nanoseconds) {
    tested.advance_to(tested.now_ns() + nanoseconds);
    return take();
}

void simulation_bench::enter(unsigned from, std::initializer_list<std::uint32_t> opened,
                             std::uint64_t keep_alive_ns) {
    send(from, datagram({connect_operation(0, keep_alive_ns)}));
    for (const std::uint32_t id : opened) {
        send(from, open_request(0, id));
    }
    wait(tick_ns);
    lines.clear();
}

} // namespace simulator_tests
