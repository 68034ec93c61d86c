// The byte buffer used as it should be.
#include "vantu/orvanta/common/byte_buffer.hpp"

#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace orvanta_tests {
namespace {

using testing::Each;
using testing::ElementsAre;
using vantu::orvanta::byte_buffer;
using vantu::orvanta::constants::mode_read;
using vantu::orvanta::constants::mode_write;

#pragma pack(push, 1)
struct five_bytes {
    std::uint32_t number;
    std::uint8_t last;
};
#pragma pack(pop)
static_assert(sizeof(five_bytes) == 5 && alignof(five_bytes) == 1);

template <std::size_t N> using block = std::array<std::uint8_t, N>;

std::vector<int> bytes_of(const byte_buffer& buffer, std::size_t count) {
    std::vector<int> bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(std::to_integer<int>(buffer.bytes[i]));
    }
    return bytes;
}

TEST(byte_buffer, begins_empty_and_zeroed) {
    const byte_buffer buffer(mode_write);
    EXPECT_EQ(buffer.mode, 2U);
    EXPECT_EQ(buffer.read_position, 0U);
    EXPECT_EQ(buffer.write_position, 0U);
    EXPECT_EQ(buffer.read_len(), 0U);
    EXPECT_EQ(buffer.write_len(), 2048U);
    EXPECT_THAT(bytes_of(buffer, 2048), Each(0));
}

TEST(byte_buffer, has_the_mode_values_1_and_2) {
    EXPECT_EQ(mode_read, 1U);
    EXPECT_EQ(mode_write, 2U);
}

TEST(byte_buffer, writes_values_packed_in_little_endian_order) {
    byte_buffer buffer(mode_write);
    buffer.write(five_bytes{0x01020304, 0x05}).write(std::uint16_t{0x0607}).write(1.0F);
    EXPECT_EQ(buffer.write_position, 11U);
    EXPECT_THAT(bytes_of(buffer, 12), ElementsAre(4, 3, 2, 1, 5, 7, 6, 0, 0, 0x80, 0x3F, 0));
}

TEST(byte_buffer, reads_what_was_written_in_order) {
    byte_buffer buffer(mode_read | mode_write);
    buffer.write(std::uint8_t{9}).write(std::uint32_t{0xA1B2C3D4}).write(five_bytes{7, 8}).write(-2.5F);
    EXPECT_EQ(buffer.read<std::uint8_t>(), 9);
    EXPECT_EQ(buffer.read<std::uint32_t>(), 0xA1B2C3D4U);
    const five_bytes& view = buffer.read<five_bytes>();
    EXPECT_EQ(std::uint32_t{view.number}, 7U);
    EXPECT_EQ(view.last, 8);
    EXPECT_EQ(buffer.read<float>(), -2.5F);
    EXPECT_EQ(buffer.read_len(), 0U);
}

TEST(byte_buffer, hands_out_a_packed_record_in_place) {
    byte_buffer buffer(mode_read | mode_write);
    buffer.write(std::uint8_t{1}).write(five_bytes{2, 3});
    buffer.skip_read(1);
    const five_bytes& view = buffer.read<five_bytes>();
    EXPECT_EQ(reinterpret_cast<const std::byte*>(&view), buffer.bytes + 1);
}

TEST(byte_buffer, takes_a_write_that_ends_at_its_last_byte) {
    byte_buffer buffer(mode_write);
    buffer.skip_write(2048 - 5);
    EXPECT_TRUE(buffer.can_write<five_bytes>());
    buffer.write(five_bytes{0x11111111, 0x22});
    EXPECT_EQ(buffer.write_len(), 0U);
    EXPECT_EQ(buffer.bytes[2047], std::byte{0x22});
    EXPECT_FALSE(buffer.can_write<std::uint8_t>());
}

TEST(byte_buffer, takes_2048_bytes_at_once) {
    byte_buffer buffer(mode_read | mode_write);
    block<2048> bytes{};
    bytes.front() = 1;
    bytes.back() = 2;
    buffer.write(bytes);
    EXPECT_EQ(buffer.write_len(), 0U);
    EXPECT_EQ((buffer.read<block<2048>>()), bytes);
}

TEST(byte_buffer, can_read_exactly_what_is_unread) {
    byte_buffer buffer(mode_read);
    buffer.skip_write(6);
    EXPECT_TRUE(buffer.can_read<block<6>>());
    EXPECT_FALSE(buffer.can_read<block<7>>());
    (void)buffer.read<block<6>>();
    EXPECT_EQ(buffer.read_len(), 0U);
    EXPECT_FALSE(buffer.can_read<std::uint8_t>());
}

TEST(byte_buffer, skips_nothing_at_any_time) {
    byte_buffer buffer(mode_read | mode_write);
    buffer.skip_read(0);
    buffer.skip_write(0);
    EXPECT_EQ(buffer.write_position, 0U);
    buffer.skip_write(2048);
    buffer.skip_read(2048);
    buffer.skip_read(0);
    buffer.skip_write(0);
    EXPECT_EQ(buffer.read_position, 2048U);
    EXPECT_EQ(buffer.write_position, 2048U);
}

TEST(byte_buffer, has_no_mode_check_on_skips) {
    byte_buffer buffer(0);
    buffer.skip_write(4);
    buffer.skip_read(4);
    EXPECT_EQ(buffer.read_len(), 0U);
}

TEST(byte_buffer, is_empty_after_a_reset) {
    byte_buffer buffer(mode_read);
    buffer.skip_write(30);
    buffer.skip_read(10);
    buffer.reset();
    EXPECT_EQ(buffer.read_position, 0U);
    EXPECT_EQ(buffer.write_position, 0U);
    EXPECT_EQ(buffer.mode, mode_read);
}

TEST(byte_buffer, compacts_30_written_and_10_read_to_20) {
    byte_buffer buffer(mode_read);
    for (std::size_t i = 0; i < 30; ++i) {
        buffer.bytes[i] = static_cast<std::byte>(i);
    }
    buffer.skip_write(30);
    buffer.skip_read(10);
    buffer.compact();
    EXPECT_EQ(buffer.read_position, 0U);
    EXPECT_EQ(buffer.write_position, 20U);
    EXPECT_EQ(buffer.write_len(), 2028U);
    EXPECT_THAT(bytes_of(buffer, 20),
                ElementsAre(10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29));
}

TEST(byte_buffer, compacts_what_is_all_read_to_nothing) {
    byte_buffer buffer(mode_read);
    buffer.skip_write(2048);
    buffer.skip_read(2048);
    buffer.compact();
    EXPECT_EQ(buffer.read_len(), 0U);
    EXPECT_EQ(buffer.write_len(), 2048U);
}

TEST(byte_buffer, stays_as_it_is_when_there_is_nothing_to_compact) {
    byte_buffer buffer(mode_read);
    buffer.skip_write(7);
    buffer.compact();
    EXPECT_EQ(buffer.read_position, 0U);
    EXPECT_EQ(buffer.write_position, 7U);
}

} // namespace
} // namespace orvanta_tests
