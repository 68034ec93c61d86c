#include "shared/capture_frames.hpp"

#include <algorithm>

namespace vantu::orvanta {
namespace {

constexpr std::size_t ipv4_header_size = 20;
constexpr std::size_t ipv6_header_size = 40;
constexpr std::size_t udp_header_size = 8;
constexpr std::size_t ipv4_address_size = 4;
constexpr std::size_t ipv4_checksum_place = 10;
constexpr std::size_t udp_checksum_place = 6;
constexpr std::byte protocol_udp{17};
constexpr std::byte hop_limit{64};

// Fills a frame from its first byte on.
class frame_filler {
  public:
    explicit frame_filler(std::span<std::byte> frame) : rest_(frame) {}

    void put_16(std::size_t value) {
        rest_[0] = static_cast<std::byte>(value >> 8U);
        rest_[1] = static_cast<std::byte>(value);
        rest_ = rest_.subspan(2);
    }
    void put(std::span<const std::byte> bytes) {
        std::copy(bytes.begin(), bytes.end(), rest_.begin());
        rest_ = rest_.subspan(bytes.size());
    }
    void skip(std::size_t zeros) { rest_ = rest_.subspan(zeros); }

  private:
    std::span<std::byte> rest_;
};

std::span<const std::byte> address_of(const socket_place& place) {
    return std::span(place.address).first(place.is_ipv6 ? place.address.size() : ipv4_address_size);
}

std::uint32_t read_16(std::span<const std::byte> bytes, std::size_t at) {
    return std::to_integer<std::uint32_t>(bytes[at]) << 8U | std::to_integer<std::uint32_t>(bytes[at + 1]);
}

std::uint64_t sum_of(std::span<const std::byte> bytes) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        sum += std::to_integer<std::uint64_t>(bytes[i]) << (i % 2 == 0 ? 8U : 0U);
    }
    return sum;
}

std::uint16_t checksum_of(std::uint64_t sum) {
    while (sum > 0xFFFF) {
        sum = (sum & 0xFFFFU) + (sum >> 16U);
    }
    return static_cast<std::uint16_t>(~sum);
}

void put_ip_header(std::span<std::byte> header, const captured_datagram& what, std::size_t udp_size) {
    frame_filler filler(header);
    if (what.to.is_ipv6) {
        filler.put_16(0x6000);
        filler.skip(2);
        filler.put_16(udp_size);
        filler.put(std::array{protocol_udp, hop_limit});
    } else {
        filler.put_16(0x4500);
        filler.put_16(ipv4_header_size + udp_size);
        filler.skip(4);
        filler.put(std::array{hop_limit, protocol_udp});
        filler.skip(2);
    }
    filler.put(address_of(what.from));
    filler.put(address_of(what.to));
    if (!what.to.is_ipv6) {
        frame_filler(header.subspan(ipv4_checksum_place)).put_16(checksum_of(sum_of(header)));
    }
}

// The checksum also covers the addresses, the protocol and the size once more.
void put_udp(std::span<std::byte> udp, const captured_datagram& what) {
    frame_filler filler(udp);
    filler.put_16(what.from.port);
    filler.put_16(what.to.port);
    filler.put_16(udp.size());
    filler.skip(2);
    filler.put(what.bytes);
    const std::uint16_t checksum =
        checksum_of(sum_of(address_of(what.from)) + sum_of(address_of(what.to)) +
                    std::to_integer<std::uint64_t>(protocol_udp) + udp.size() + sum_of(udp));
    // 0 would say that there is none.
    frame_filler(udp.subspan(udp_checksum_place)).put_16(checksum == 0 ? 0xFFFF : checksum);
}

std::optional<captured_datagram> datagram_of_udp(std::span<const std::byte> udp, captured_datagram found) {
    if (udp.size() < udp_header_size) {
        return std::nullopt;
    }
    const std::size_t size = read_16(udp, 4);
    if (size < udp_header_size || size > udp.size()) {
        return std::nullopt;
    }
    found.from.port = static_cast<std::uint16_t>(read_16(udp, 0));
    found.to.port = static_cast<std::uint16_t>(read_16(udp, 2));
    const auto bytes = udp.subspan(udp_header_size, size - udp_header_size);
    found.bytes.assign(bytes.begin(), bytes.end());
    return found;
}

socket_place place_at(std::span<const std::byte> address) {
    socket_place place;
    place.is_ipv6 = address.size() > ipv4_address_size;
    std::copy(address.begin(), address.end(), place.address.begin());
    return place;
}

std::optional<captured_datagram> datagram_of_ip(std::span<const std::byte> packet) {
    if (packet.size() < ipv4_header_size) {
        return std::nullopt;
    }
    const auto first = std::to_integer<unsigned>(packet.front());
    if (first >> 4U == 6 && packet.size() >= ipv6_header_size && packet[6] == protocol_udp) {
        return datagram_of_udp(packet.subspan(ipv6_header_size),
                               {0, place_at(packet.subspan(8, 16)), place_at(packet.subspan(24, 16)), {}});
    }
    const std::size_t header_size = std::size_t{4} * (first & 0xFU);
    const bool is_fragment = (read_16(packet, 6) & 0x3FFFU) != 0;
    if (first >> 4U != 4 || header_size < ipv4_header_size || header_size > packet.size() || is_fragment ||
        packet[9] != protocol_udp) {
        return std::nullopt;
    }
    return datagram_of_udp(packet.subspan(header_size), {0,
                                                         place_at(packet.subspan(12, ipv4_address_size)),
                                                         place_at(packet.subspan(16, ipv4_address_size)),
                                                         {}});
}

struct link_row {
    std::uint32_t link;
    std::size_t header_size; // before the IP header
};
constexpr std::array links{
    link_row{link_type::null, 4}, link_row{link_type::ethernet, 14},    link_row{link_type::raw, 0},
    link_row{link_type::loop, 4}, link_row{link_type::linux_any, 16},   link_row{link_type::ipv4, 0},
    link_row{link_type::ipv6, 0}, link_row{link_type::linux_any_2, 20},
};

const link_row* find_link(std::uint32_t link) {
    const auto* const found =
        std::find_if(links.begin(), links.end(), [link](const link_row& row) { return row.link == link; });
    return found != links.end() ? found : nullptr;
}

} // namespace

bool is_known_link_type(std::uint32_t link) noexcept {
    return find_link(link) != nullptr;
}

std::vector<std::byte> raw_frame(const captured_datagram& what) {
    const std::size_t ip_size = what.to.is_ipv6 ? ipv6_header_size : ipv4_header_size;
    const std::size_t udp_size = udp_header_size + what.bytes.size();
    std::vector<std::byte> frame(ip_size + udp_size);
    put_ip_header(std::span(frame).first(ip_size), what, udp_size);
    put_udp(std::span(frame).subspan(ip_size), what);
    return frame;
}

std::optional<captured_datagram> datagram_of(std::span<const std::byte> frame, std::uint32_t link) {
    const link_row* const row = find_link(link);
    return row != nullptr && frame.size() >= row->header_size
               ? datagram_of_ip(frame.subspan(row->header_size))
               : std::nullopt;
}

} // namespace vantu::orvanta
