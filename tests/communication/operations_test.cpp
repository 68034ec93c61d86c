// The operation table, compared with the protocol's table written out by hand.
#include "vantu/orvanta/communication/operations.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <string_view>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

struct expected_row {
    int code;
    std::string_view name;
    char way; // 's' to the service, 'c' to the client
    int body_size;
    bool has_tail;
    unsigned event_type;
    bool copies_tag;
    int answered_by; // 0: nothing
};

constexpr expected_row expected[] = {
    {1, "keep_alive", 's', 0, false, 0, false, 0},
    {2, "ack", 'c', 0, false, 1, true, 0},
    {3, "connect", 's', 112, false, 0, false, 4},
    {4, "connected", 'c', 8, false, 0, false, 0},
    {5, "disconnect", 's', 0, false, 0, false, 6},
    {6, "disconnected", 'c', 0, false, 2, false, 0},
    {16, "device_added", 'c', 24, false, 16, false, 0},
    {17, "device_removed", 'c', 4, false, 17, false, 0},
    {18, "device_open", 's', 6, false, 0, false, 19},
    {19, "device_opened", 'c', 4, false, 18, true, 0},
    {20, "device_close", 's', 4, false, 0, false, 21},
    {21, "device_closed", 'c', 4, false, 19, true, 0},
    {22, "device_block_reply", 'c', 20, false, 32, true, 0},
    {23, "device_info_orvanta3", 'c', 13, false, 20, false, 0},
    {24, "device_info_palmetron", 'c', 12, false, 21, false, 0},
    {33, "cursor_state", 'c', 28, false, 48, false, 0},
    {37, "cursor_state_b", 'c', 28, false, 49, false, 0},
    {40, "palmetron_state", 'c', 22, true, 50, false, 0},
    {47, "orientation_get", 's', 4, false, 0, false, 47},
    {47, "orientation_get", 'c', 20, false, 51, true, 0},
    {64, "config_save", 's', 4, false, 0, false, 64},
    {64, "config_save", 'c', 5, false, 64, true, 0},
    {66, "config_gravity_compensation_get", 's', 4, false, 0, false, 66},
    {66, "config_gravity_compensation_get", 'c', 9, false, 65, true, 0},
    {67, "config_gravity_compensation_set", 's', 9, false, 0, false, 66},
    {68, "config_torque_scaling_get", 's', 4, false, 0, false, 68},
    {68, "config_torque_scaling_get", 'c', 5, false, 66, true, 0},
    {69, "config_torque_scaling_set", 's', 5, false, 0, false, 68},
    {70, "config_handedness", 'c', 5, false, 67, true, 0},
    {71, "config_handedness_set", 's', 5, false, 0, false, 70},
    {80, "status_motor_current", 'c', 16, false, 80, true, 0},
    {81, "status_power_supply", 'c', 5, false, 81, true, 0},
    {96, "table_block_128", 'c', 128, false, 112, true, 0},
    {97, "table_block_301", 'c', 301, false, 113, true, 0},
    {224, "service_stream_a", 'c', 12, false, 96, false, 0},
    {225, "service_stream_b", 'c', 52, false, 97, false, 0},
    {240, "service_error", 'c', 5, false, 255, true, 0},
};

const expected_row* find_expected(int code, char way) {
    for (const expected_row& row : expected) {
        if (row.code == code && row.way == way) {
            return &row;
        }
    }
    return nullptr;
}

TEST(operation_table, has_every_row_of_the_protocol_in_order) {
    ASSERT_EQ(operations.size(), std::size(expected));
    for (std::size_t i = 0; i < operations.size(); ++i) {
        const operation& row = operations[i];
        const expected_row& wanted = expected[i];
        SCOPED_TRACE(wanted.name);
        EXPECT_EQ(row.code, wanted.code);
        EXPECT_EQ(row.name, wanted.name);
        EXPECT_EQ(row.way, wanted.way == 's' ? direction::to_service : direction::to_client);
        EXPECT_EQ(row.body_size, wanted.body_size);
        EXPECT_EQ(row.rule, wanted.has_tail ? body_rule::minimum : body_rule::fixed);
        EXPECT_EQ(row.event_type, wanted.event_type);
        EXPECT_EQ(row.tag, wanted.copies_tag ? tag_rule::copied : tag_rule::ignored);
        EXPECT_EQ(row.answered_by, wanted.answered_by);
    }
}

TEST(operation_table, finds_every_code_in_its_direction_and_no_other) {
    for (int code = 0; code <= 255; ++code) {
        for (const char way : {'s', 'c'}) {
            const operation* found = find_operation(
                static_cast<std::uint8_t>(code), way == 's' ? direction::to_service : direction::to_client);
            const expected_row* wanted = find_expected(code, way);
            ASSERT_EQ(found != nullptr, wanted != nullptr) << code << way;
            if (found != nullptr) {
                EXPECT_EQ(found->code, code);
                EXPECT_EQ(found->body_size, wanted->body_size);
            }
        }
    }
}

} // namespace
} // namespace orvanta_tests
