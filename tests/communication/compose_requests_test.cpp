// Every operation that goes to the service, as the bytes of its datagram.
#include "communication/composed_datagram.hpp"
#include "vantu/orvanta/common/text_field.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;
using vantu::orvanta::assign_text;
using vantu::orvanta::byte_buffer;
using vantu::orvanta::constants::mode_write;

template <std::uint8_t code> using request = proto::body<code, direction::to_service>;
template <std::uint8_t code> bytes composed_request(std::uint8_t tag, const request<code>& body) {
    return composed<code, direction::to_service>(tag, body);
}

TEST(request_bytes, of_keep_alive) {
    EXPECT_EQ(composed_request<1>(0, {}), (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 1, 0, 0, 0}));
}

TEST(request_bytes, of_connect) {
    request<3> body{0x0102, 0x0304, 0x0000000077359400, 0x01020304, {}, {}};
    assign_text(body.client_name, "tool");
    assign_text(body.version_text, "2.0.0|2.0.0");
    EXPECT_EQ(composed_request<3>(0, body), join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 3, 112, 0, 0},
                                                  {0x02, 0x01, 0x04, 0x03},
                                                  {0x00, 0x94, 0x35, 0x77, 0x00, 0x00, 0x00, 0x00},
                                                  {0x04, 0x03, 0x02, 0x01},
                                                  {'t', 'o', 'o', 'l'},
                                                  bytes(28, 0),
                                                  {'2', '.', '0', '.', '0', '|', '2', '.', '0', '.', '0'},
                                                  bytes(53, 0)}));
}

TEST(request_bytes, of_disconnect) {
    EXPECT_EQ(composed_request<5>(0, {}), (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 5, 0, 0, 0}));
}

TEST(request_bytes, of_device_open) {
    EXPECT_EQ(composed_request<18>(9, {0x01020304, {0x0A0B}}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 18, 6, 0, 9, 4, 3, 2, 1, 0x0B, 0x0A}));
}

TEST(request_bytes, of_device_close) {
    EXPECT_EQ(composed_request<20>(255, {0x01020304}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 20, 4, 0, 255, 4, 3, 2, 1}));
}

TEST(request_bytes, of_orientation_get) {
    EXPECT_EQ(composed_request<47>(1, {0xFFFFFFFE}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 47, 4, 0, 1, 0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(request_bytes, of_config_save) {
    EXPECT_EQ(composed_request<64>(2, {7}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 64, 4, 0, 2, 7, 0, 0, 0}));
}

TEST(request_bytes, of_config_gravity_compensation_get) {
    EXPECT_EQ(composed_request<66>(3, {7}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 66, 4, 0, 3, 7, 0, 0, 0}));
}

TEST(request_bytes, of_config_gravity_compensation_set) {
    // 0.75 is 0x3F400000.
    EXPECT_EQ(composed_request<67>(0, {7, {1, 0.75F}}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 67,   9,    0,
                     0,    7,    0,    0,    0,    1,    0x00, 0x00, 0x40, 0x3F}));
}

TEST(request_bytes, of_config_torque_scaling_get) {
    EXPECT_EQ(composed_request<68>(4, {7}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 68, 4, 0, 4, 7, 0, 0, 0}));
}

TEST(request_bytes, of_config_torque_scaling_set) {
    EXPECT_EQ(composed_request<69>(5, {7, {1}}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 69, 5, 0, 5, 7, 0, 0, 0, 1}));
}

TEST(request_bytes, of_config_handedness_set) {
    EXPECT_EQ(composed_request<71>(6, {7, {2}}),
              (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 71, 5, 0, 6, 7, 0, 0, 0, 2}));
}

TEST(request_bytes, of_two_operations_share_one_header) {
    byte_buffer buffer(mode_write);
    compose_datagram<20, direction::to_service>(buffer, 1, {2});
    append_operation<69, direction::to_service>(buffer, 3, {4, {0}});
    EXPECT_EQ(written_bytes(buffer), (bytes{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 20, 4, 0, 1, 2, 0,
                                            0,    0,    0xFF, 69,   5,    0,    3,    4,  0, 0, 0, 0}));
}

} // namespace
} // namespace orvanta_tests
