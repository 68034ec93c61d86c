// Every operation that goes to the client, as the bytes of its datagram.
#include "support/buffer_bytes.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

template <std::uint8_t code> using reply = proto::body<code, direction::to_client>;
template <std::uint8_t code> bytes composed_reply(std::uint8_t tag, const reply<code>& body) {
    return composed<code, direction::to_client>(tag, body);
}

// The datagram of an operation whose record and body are these bytes.
bytes datagram(const bytes& operation) {
    return join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00}, operation});
}

// 1.0, -2.0, 0.5 and so on, and their bytes.
const bytes one{0x00, 0x00, 0x80, 0x3F};
const bytes minus_two{0x00, 0x00, 0x00, 0xC0};
const bytes one_half{0x00, 0x00, 0x00, 0x3F};
const bytes three{0x00, 0x00, 0x40, 0x40};

TEST(reply_bytes, of_ack) {
    EXPECT_EQ(composed_reply<2>(9, {}), datagram({0xFF, 2, 0, 0, 9}));
}

TEST(reply_bytes, of_connected) {
    EXPECT_EQ(composed_reply<4>(0, {0x0807060504030201}),
              datagram({0xFF, 4, 8, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(reply_bytes, of_disconnected) {
    EXPECT_EQ(composed_reply<6>(0, {}), datagram({0xFF, 6, 0, 0, 0}));
}

TEST(reply_bytes, of_device_added) {
    reply<16> body{7, {1, 0xAA, 0x1234, {}}};
    fill_rising(body.record.uuid, 0x10);
    EXPECT_EQ(composed_reply<16>(0, body),
              datagram(join({{0xFF, 16, 24, 0, 0, 7, 0, 0, 0, 1, 0xAA, 0x34, 0x12}, counting(0x10, 16)})));
}

TEST(reply_bytes, of_device_removed) {
    EXPECT_EQ(composed_reply<17>(0, {0x01020304}), datagram({0xFF, 17, 4, 0, 0, 4, 3, 2, 1}));
}

TEST(reply_bytes, of_device_opened) {
    EXPECT_EQ(composed_reply<19>(8, {7}), datagram({0xFF, 19, 4, 0, 8, 7, 0, 0, 0}));
}

TEST(reply_bytes, of_device_closed) {
    EXPECT_EQ(composed_reply<21>(8, {7}), datagram({0xFF, 21, 4, 0, 8, 7, 0, 0, 0}));
}

TEST(reply_bytes, of_device_block_reply) {
    reply<22> body{7, {}};
    fill_rising(body.record.bytes, 0xF8);
    EXPECT_EQ(composed_reply<22>(8, body),
              datagram(join({{0xFF, 22, 20, 0, 8, 7, 0, 0, 0}, counting(0xF8, 16)})));
}

TEST(reply_bytes, of_device_info_orvanta3) {
    EXPECT_EQ(composed_reply<23>(0, {7, {{1, 2, 3, 4, 5, 6, 7, 8}, 2}}),
              datagram({0xFF, 23, 13, 0, 0, 7, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 2}));
}

TEST(reply_bytes, of_device_info_palmetron) {
    EXPECT_EQ(composed_reply<24>(0, {7, {{1, 2, 3, 4, 5, 6, 7, 8}}}),
              datagram({0xFF, 24, 12, 0, 0, 7, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(reply_bytes, of_cursor_state) {
    EXPECT_EQ(
        composed_reply<33>(0, {7, {{1.0F, -2.0F, 0.5F, 3.0F, 1.0F, -2.0F}}}),
        datagram(join({{0xFF, 33, 28, 0, 0, 7, 0, 0, 0}, one, minus_two, one_half, three, one, minus_two})));
}

TEST(reply_bytes, of_cursor_state_b) {
    EXPECT_EQ(
        composed_reply<37>(0, {7, {{3.0F, 0.5F, -2.0F, 1.0F, 0.5F, 3.0F}}}),
        datagram(join({{0xFF, 37, 28, 0, 0, 7, 0, 0, 0}, three, one_half, minus_two, one, one_half, three})));
}

TEST(reply_bytes, of_palmetron_state_without_a_tail) {
    reply<40> body{7, {0x55, {}, 0}};
    fill_rising(body.record.block, 0x20);
    EXPECT_EQ(composed_reply<40>(0, body),
              datagram(join({{0xFF, 40, 22, 0, 0, 7, 0, 0, 0, 0x55}, counting(0x20, 16), {0}})));
}

TEST(reply_bytes, of_orientation) {
    EXPECT_EQ(composed_reply<47>(8, {7, {1.0F, -2.0F, 0.5F, 3.0F}}),
              datagram(join({{0xFF, 47, 20, 0, 8, 7, 0, 0, 0}, one, minus_two, one_half, three})));
}

TEST(reply_bytes, of_config_save) {
    EXPECT_EQ(composed_reply<64>(8, {7, {1}}), datagram({0xFF, 64, 5, 0, 8, 7, 0, 0, 0, 1}));
}

TEST(reply_bytes, of_config_gravity_compensation) {
    EXPECT_EQ(composed_reply<66>(8, {7, {1, 0.5F}}),
              datagram({0xFF, 66, 9, 0, 8, 7, 0, 0, 0, 1, 0x00, 0x00, 0x00, 0x3F}));
}

TEST(reply_bytes, of_config_torque_scaling) {
    EXPECT_EQ(composed_reply<68>(8, {7, {1}}), datagram({0xFF, 68, 5, 0, 8, 7, 0, 0, 0, 1}));
}

TEST(reply_bytes, of_config_handedness) {
    EXPECT_EQ(composed_reply<70>(8, {7, {2}}), datagram({0xFF, 70, 5, 0, 8, 7, 0, 0, 0, 2}));
}

TEST(reply_bytes, of_status_motor_current) {
    EXPECT_EQ(composed_reply<80>(8, {7, {{0.5F, 1.0F, -2.0F}}}),
              datagram(join({{0xFF, 80, 16, 0, 8, 7, 0, 0, 0}, one_half, one, minus_two})));
}

TEST(reply_bytes, of_status_power_supply) {
    EXPECT_EQ(composed_reply<81>(8, {7, {3}}), datagram({0xFF, 81, 5, 0, 8, 7, 0, 0, 0, 3}));
}

TEST(reply_bytes, of_table_block_128) {
    reply<96> body{};
    fill_rising(body.bytes, 1);
    EXPECT_EQ(composed_reply<96>(8, body), datagram(join({{0xFF, 96, 128, 0, 8}, counting(1, 128)})));
}

TEST(reply_bytes, of_table_block_301) {
    reply<97> body{};
    fill_rising(body.bytes, 1);
    EXPECT_EQ(composed_reply<97>(8, body), datagram(join({{0xFF, 97, 0x2D, 0x01, 8}, counting(1, 301)})));
}

TEST(reply_bytes, of_service_stream_a) {
    reply<224> body{};
    fill_rising(body.bytes, 1);
    EXPECT_EQ(composed_reply<224>(0, body), datagram(join({{0xFF, 224, 12, 0, 0}, counting(1, 12)})));
}

TEST(reply_bytes, of_service_stream_b) {
    reply<225> body{7, {}};
    fill_rising(body.record.bytes, 1);
    EXPECT_EQ(composed_reply<225>(0, body),
              datagram(join({{0xFF, 225, 52, 0, 0, 7, 0, 0, 0}, counting(1, 48)})));
}

TEST(reply_bytes, of_service_error) {
    EXPECT_EQ(composed_reply<240>(8, {7, {0xB2}}), datagram({0xFF, 240, 5, 0, 8, 7, 0, 0, 0, 0xB2}));
}

} // namespace
} // namespace orvanta_tests
