// The records that frame every datagram, byte by byte.
#include "support/buffer_bytes.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using vantu::orvanta::byte_buffer;
using vantu::orvanta::constants::mode_read;
using vantu::orvanta::constants::mode_write;
namespace proto = vantu::orvanta::communication::proto;

TEST(datagram_header, is_e9_9e_01_00_and_two_zeros) {
    byte_buffer buffer(mode_write);
    buffer.write(proto::datagram_header);
    EXPECT_EQ(written_bytes(buffer), (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00}));
}

TEST(datagram_header, is_read_from_its_six_bytes) {
    byte_buffer buffer(mode_read | mode_write);
    for (const int byte : {0xE9, 0x9E, 0x02, 0x03, 0xAB, 0xCD}) {
        buffer.write(static_cast<std::uint8_t>(byte));
    }
    const auto& header = buffer.read<proto::header>();
    EXPECT_EQ(std::uint16_t{header.magic}, 0x9EE9);
    EXPECT_EQ(std::uint16_t{header.version}, 0x0302);
    EXPECT_EQ(std::uint16_t{header.reserved}, 0xCDAB);
    EXPECT_EQ(buffer.read_len(), 0U);
}

TEST(operation_record, of_op_67_is_ff_43_09_00_and_its_tag) {
    byte_buffer buffer(mode_write);
    buffer.write(proto::op{proto::op_magic, 67, 9, 0x7B});
    EXPECT_EQ(written_bytes(buffer), (bytes{0xFF, 0x43, 0x09, 0x00, 0x7B}));
}

TEST(operation_record, has_its_length_in_little_endian_order) {
    byte_buffer buffer(mode_write);
    buffer.write(proto::op{proto::op_magic, 97, 301, 1});
    EXPECT_EQ(written_bytes(buffer), (bytes{0xFF, 0x61, 0x2D, 0x01, 0x01}));
}

TEST(operation_record, is_read_from_its_five_bytes) {
    byte_buffer buffer(mode_read | mode_write);
    for (const int byte : {0xFE, 0xF0, 0x05, 0x01, 0xFF}) {
        buffer.write(static_cast<std::uint8_t>(byte));
    }
    const auto& record = buffer.read<proto::op>();
    EXPECT_EQ(record.magic, 0xFE);
    EXPECT_EQ(record.code, 240);
    EXPECT_EQ(std::uint16_t{record.length}, 0x0105);
    EXPECT_EQ(record.tag, 255);
}

} // namespace
} // namespace orvanta_tests
