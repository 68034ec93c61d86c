// The numbers in a system's socket address. The system's records have the same members on all platforms;
// their types and the numbers of their families are given by the platform's source file.
#pragma once

#include "network/internet_address.hpp"

#include <cstring>

namespace vantu::orvanta {

struct address_families {
    int four;
    int six;
};

template <typename Record> [[nodiscard]] Record record_in(const socket_address& address) noexcept {
    Record record{};
    static_assert(sizeof record <= sizeof address.bytes);
    std::memcpy(&record, address.bytes, sizeof record);
    return record;
}

template <typename Host>
[[nodiscard]] internet_address numbers_of(std::uint8_t version, const Host& host,
                                          std::uint16_t port) noexcept {
    internet_address numbers;
    static_assert(sizeof host <= sizeof numbers.bytes);
    numbers.version = version;
    std::memcpy(numbers.bytes.data(), &host, sizeof host);
    std::uint8_t digits[sizeof port]{}; // the greater one first
    std::memcpy(digits, &port, sizeof port);
    numbers.port = static_cast<std::uint16_t>(digits[0] << 8U | digits[1]);
    return numbers;
}

template <typename Four, typename Six>
[[nodiscard]] internet_address numbers_in(const socket_address& address, std::int32_t length,
                                          address_families families) noexcept {
    const auto room = static_cast<std::size_t>(length < 0 ? 0 : length);
    const auto four = record_in<Four>(address);
    if (room >= sizeof(Four) && four.sin_family == families.four) {
        return numbers_of(4, four.sin_addr, four.sin_port);
    }
    if (room >= sizeof(Six) && four.sin_family == families.six) {
        const auto six = record_in<Six>(address);
        return numbers_of(6, six.sin6_addr, six.sin6_port);
    }
    return {};
}

} // namespace vantu::orvanta
