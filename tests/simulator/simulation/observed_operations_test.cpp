// The walk over a datagram that counts and observers share, on datagrams written out by hand.
#include "simulator/simulation/observed_operations.hpp"

#include "simulator/fixtures/wire.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using vantu::orvanta::communication::direction;

// A header, then op 66 and op 81 of device 1.
const bytes two_operations{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00,                   //
                           0xFF, 0x42, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, //
                           0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01};

std::vector<unsigned> codes_in(const bytes& datagram) {
    std::vector<unsigned> codes;
    observe_operations(std::as_bytes(std::span(datagram)), direction::to_service, 3,
                       [&codes](const observed_operation& what) {
                           EXPECT_EQ(what.way, direction::to_service);
                           EXPECT_EQ(what.client, 3U);
                           codes.push_back(what.code);
                       });
    return codes;
}

std::vector<unsigned> codes_with(std::size_t place, std::uint8_t value) {
    bytes datagram = two_operations;
    datagram[place] = value;
    return codes_in(datagram);
}

using codes = std::vector<unsigned>;

TEST(observed_operations, are_told_in_order_with_their_bodies) {
    std::vector<bytes> bodies;
    observe_operations(std::as_bytes(std::span(two_operations)), direction::to_client, 1,
                       [&bodies](const observed_operation& what) {
                           const auto* begin = reinterpret_cast<const std::uint8_t*>(what.body.data());
                           bodies.emplace_back(begin, begin + what.body.size());
                       });
    EXPECT_EQ(codes_in(two_operations), (codes{66, 81}));
    EXPECT_EQ(bodies, (std::vector<bytes>{{1, 0, 0, 0}, {1, 0, 0, 0, 1}}));
}

TEST(observed_operations, end_before_a_record_without_its_magic) {
    EXPECT_EQ(codes_with(6, 0xFE), codes{});
    EXPECT_EQ(codes_with(15, 0xFE), codes{66});
}

TEST(observed_operations, end_before_one_that_is_cut_off) {
    for (std::size_t size = 0; size < two_operations.size(); ++size) {
        const bytes cut(two_operations.begin(), two_operations.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(codes_in(cut), size < 15 ? codes{} : codes{66}) << size;
    }
}

TEST(observed_operations, are_not_looked_for_after_a_header_with_another_magic_or_version) {
    EXPECT_EQ(codes_with(0, 0xE8), codes{});
    EXPECT_EQ(codes_with(1, 0x9F), codes{});
    EXPECT_EQ(codes_with(2, 0x02), codes{});
}

} // namespace
} // namespace orvanta_tests
