#include "ctl/service/captured_traffic.hpp"

#include <cstddef>
#include <cstring>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::uint8_t version_6 = 6;

socket_place place_of(const vantu_orvanta_traffic_address& told, bool is_ipv6) {
    socket_place place;
    static_assert(sizeof place.address == sizeof told.address);
    place.is_ipv6 = is_ipv6;
    std::memcpy(place.address.data(), told.address, sizeof told.address);
    place.port = told.port;
    return place;
}

} // namespace

captured_datagram captured(const vantu_orvanta_traffic& told) {
    const bool is_ipv6 = told.local.version == version_6 || told.peer.version == version_6;
    const socket_place local = place_of(told.local, is_ipv6);
    const socket_place peer = place_of(told.peer, is_ipv6);
    const bool is_sent = told.way == vantu_orvanta_traffic_sent;
    const auto* const first = reinterpret_cast<const std::byte*>(told.bytes);
    captured_datagram kept{static_cast<std::int64_t>(told.system_ns),
                           is_sent ? local : peer,
                           is_sent ? peer : local,
                           {first, first + told.length}};
    kept.bytes.resize(told.whole_length < told.length ? told.length + 1 : told.whole_length);
    return kept;
}

} // namespace vantu::orvanta::ctl
