// Operations that go to the service, as the bytes of their datagrams: those of a connection, and a request of
// each shape. Each request of the flat API is held to its bytes in tests/runtime.
#include "support/buffer_bytes.hpp"
#include "vantu/orvanta/common/text_field.hpp"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;
using vantu::orvanta::assign_text;
using vantu::orvanta::byte_buffer;
using vantu::orvanta::constants::mode_write;

template <std::uint8_t code> using request = proto::body<code, direction::to_service>;

struct composed_row {
    std::uint8_t code;
    std::string name;
    bytes composed;
    bytes expected;
};

template <std::uint8_t code>
composed_row row(const std::string& name, std::uint8_t tag, const request<code>& body, bytes expected) {
    return {code, name, composed<code, direction::to_service>(tag, body), std::move(expected)};
}

request<3> connect_of_the_tool() {
    request<3> body{0x0102, 0x0304, 0x0000000077359400, 0x01020304, {}, {}};
    assign_text(body.client_name, "tool");
    assign_text(body.version_text, "2.0.0|2.0.0");
    return body;
}

const std::vector<composed_row>& rows() {
    static const std::vector<composed_row> all{
        row<1>("keep_alive", 0, {}, {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 1, 0, 0, 0}),
        row<3>("connect", 0, connect_of_the_tool(),
               join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 3, 112, 0, 0},
                     {0x02, 0x01, 0x04, 0x03},
                     {0x00, 0x94, 0x35, 0x77, 0x00, 0x00, 0x00, 0x00},
                     {0x04, 0x03, 0x02, 0x01},
                     {'t', 'o', 'o', 'l'},
                     bytes(28, 0),
                     {'2', '.', '0', '.', '0', '|', '2', '.', '0', '.', '0'},
                     bytes(53, 0)})),
        row<5>("disconnect", 0, {}, {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 5, 0, 0, 0}),
        row<18>("device_open", 9, {0x01020304, {0x0A0B}},
                {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 18, 6, 0, 9, 4, 3, 2, 1, 0x0B, 0x0A}),
        row<20>("device_close", 255, {0x01020304},
                {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 20, 4, 0, 255, 4, 3, 2, 1}),
        // 0.75 is 0x3F400000.
        row<67>(
            "config_gravity_compensation_set", 0, {7, {1, 0.75F}},
            {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 67, 9, 0, 0, 7, 0, 0, 0, 1, 0x00, 0x00, 0x40, 0x3F}),
    };
    return all;
}

class request_bytes_of : public testing::TestWithParam<composed_row> {};

TEST_P(request_bytes_of, are_those_of_the_protocol) {
    EXPECT_EQ(GetParam().composed, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(each, request_bytes_of, testing::ValuesIn(rows()),
                         [](const auto& row) { return row.param.name; });

TEST(request_bytes, have_a_row_for_every_operation_of_a_connection) {
    std::set<int> covered;
    for (const composed_row& row : rows()) {
        covered.insert(row.code);
    }
    for (const operation& operation : operations) {
        const bool is_request_of_a_device = operation.answered_by != op_code::none &&
                                            operation.code != op_code::connect &&
                                            operation.code != op_code::disconnect;
        EXPECT_TRUE(operation.way == direction::to_client || is_request_of_a_device ||
                    covered.count(operation.code) == 1)
            << "rows() has no row for " << operation.name;
    }
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
