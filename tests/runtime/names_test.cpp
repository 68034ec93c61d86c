// The names of enumerators and the text of a uuid. The compiler holds the names' switches complete.
#include "vantu/orvanta/orvanta.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace orvanta_tests {
namespace {

using names = std::map<std::int64_t, std::string>;

// Every number of a wide circle has its name, or "unknown" if it is nobody's.
template <typename Number> void expect_names(const char* (*name_of)(Number), const names& wanted) {
    for (std::int64_t number = -300; number <= 70'000; ++number) {
        const auto asked = static_cast<Number>(number);
        const auto found = wanted.find(std::int64_t{asked});
        ASSERT_EQ(name_of(asked), found == wanted.end() ? "unknown" : found->second) << std::int64_t{asked};
    }
}

TEST(names, of_error_codes_are_those_of_the_enumerators) {
    expect_names(vantu_orvanta_error_name,
                 {{vantu_orvanta_success, "success"},
                  {vantu_orvanta_unexpected_error, "unexpected_error"},
                  {vantu_orvanta_invalid_argument, "invalid_argument"},
                  {vantu_orvanta_invalid_connection_state, "invalid_connection_state"},
                  {vantu_orvanta_timed_out, "timed_out"},
                  {vantu_orvanta_socket_bind_failed, "socket_bind_failed"},
                  {vantu_orvanta_protocol_parse_failed, "protocol_parse_failed"},
                  {vantu_orvanta_no_matching_device, "no_matching_device"},
                  {vantu_orvanta_disconnected_from_service, "disconnected_from_service"},
                  {vantu_orvanta_buffer_full_or_empty, "buffer_full_or_empty"},
                  {vantu_orvanta_request_queue_empty, "request_queue_empty"},
                  {vantu_orvanta_request_queue_full, "request_queue_full"},
                  {vantu_orvanta_invalid_version, "invalid_version"},
                  {vantu_orvanta_invalid_operation, "invalid_operation"},
                  {vantu_orvanta_invalid_body, "invalid_body"},
                  {vantu_orvanta_invalid_request_argument, "invalid_request_argument"},
                  {vantu_orvanta_client_not_connected, "client_not_connected"},
                  {vantu_orvanta_device_not_opened, "device_not_opened"},
                  {vantu_orvanta_invalid_device_id, "invalid_device_id"},
                  {vantu_orvanta_invalid_device_type, "invalid_device_type"},
                  {vantu_orvanta_unsupported_device_model, "unsupported_device_model"},
                  {vantu_orvanta_unparsable_device_pointer, "unparsable_device_pointer"},
                  {vantu_orvanta_device_communication_error, "device_communication_error"},
                  {vantu_orvanta_unknown_client_id, "unknown_client_id"},
                  {vantu_orvanta_another_client_connected, "another_client_connected"},
                  {vantu_orvanta_os_socket_error, "os_socket_error"}});
}

TEST(names, of_event_types_are_those_of_the_enumerators) {
    expect_names(vantu_orvanta_event_type_name,
                 {{vantu_orvanta_event_none, "none"},
                  {vantu_orvanta_event_ack, "ack"},
                  {vantu_orvanta_event_disconnected, "disconnected"},
                  {vantu_orvanta_event_device_added, "device_added"},
                  {vantu_orvanta_event_device_removed, "device_removed"},
                  {vantu_orvanta_event_device_opened, "device_opened"},
                  {vantu_orvanta_event_device_closed, "device_closed"},
                  {vantu_orvanta_event_orvanta3_info, "orvanta3_info"},
                  {vantu_orvanta_event_palmetron_info, "palmetron_info"},
                  {vantu_orvanta_event_device_block, "device_block"},
                  {vantu_orvanta_event_cursor_state, "cursor_state"},
                  {vantu_orvanta_event_cursor_state_b, "cursor_state_b"},
                  {vantu_orvanta_event_palmetron_state, "palmetron_state"},
                  {vantu_orvanta_event_orientation, "orientation"},
                  {vantu_orvanta_event_config_save, "config_save"},
                  {vantu_orvanta_event_config_gravity_compensation, "config_gravity_compensation"},
                  {vantu_orvanta_event_config_torque_scaling, "config_torque_scaling"},
                  {vantu_orvanta_event_config_handedness, "config_handedness"},
                  {vantu_orvanta_event_status_motor_current, "status_motor_current"},
                  {vantu_orvanta_event_status_power_supply, "status_power_supply"},
                  {vantu_orvanta_event_service_stream_a, "service_stream_a"},
                  {vantu_orvanta_event_service_stream_b, "service_stream_b"},
                  {vantu_orvanta_event_table_block_128, "table_block_128"},
                  {vantu_orvanta_event_table_block_301, "table_block_301"},
                  {vantu_orvanta_event_error, "error"}});
}

TEST(names, of_devices_are_those_of_the_enumerators) {
    expect_names(vantu_orvanta_device_type_name, {{vantu_orvanta_device_type_none, "none"},
                                                  {vantu_orvanta_device_type_orvanta3, "orvanta3"},
                                                  {vantu_orvanta_device_type_palmetron, "palmetron"}});
    expect_names(vantu_orvanta_handedness_name, {{vantu_orvanta_handedness_none, "none"},
                                                 {vantu_orvanta_handedness_right, "right"},
                                                 {vantu_orvanta_handedness_left, "left"}});
}

TEST(names, of_log_levels_are_those_of_the_enumerators) {
    expect_names(vantu_orvanta_log_level_name, {{vantu_orvanta_log_debug, "debug"},
                                                {vantu_orvanta_log_info, "info"},
                                                {vantu_orvanta_log_warning, "warning"},
                                                {vantu_orvanta_log_error, "error"}});
}

TEST(uuid_text, has_five_groups_of_lower_case_digits_in_wire_order) {
    const std::array<std::uint8_t, 16> uuid{0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                                            0xF8, 0xE9, 0xDA, 0xCB, 0xBC, 0xAD, 0x9E, 0x8F};
    std::array<char, VANTU_ORVANTA_UUID_TEXT_SIZE + 1> text{};
    text.fill('?');
    vantu_orvanta_uuid_text(uuid.data(), text.data());
    EXPECT_STREQ(text.data(), "00010203-0405-0607-f8e9-dacbbcad9e8f");
    EXPECT_EQ(text[VANTU_ORVANTA_UUID_TEXT_SIZE - 1], '\0');
    EXPECT_EQ(text[VANTU_ORVANTA_UUID_TEXT_SIZE], '?');
}

TEST(uuid_text, is_not_written_for_a_null) {
    const std::array<std::uint8_t, 16> uuid{};
    std::array<char, VANTU_ORVANTA_UUID_TEXT_SIZE> text{'a'};
    vantu_orvanta_uuid_text(nullptr, text.data());
    vantu_orvanta_uuid_text(uuid.data(), nullptr);
    EXPECT_STREQ(text.data(), "a");
}

TEST(version, is_the_same_in_headers_and_library) {
    EXPECT_STREQ(vantu_orvanta_version(), VANTU_ORVANTA_VERSION);
    EXPECT_EQ(vantu_orvanta_version_number(), std::uint32_t{VANTU_ORVANTA_VERSION_NUMBER});
}

TEST(version, has_its_three_parts_in_the_number) {
    EXPECT_EQ(vantu_orvanta_version_number(), 0x020000U);
    EXPECT_STREQ(vantu_orvanta_version(), "2.0.0");
}

} // namespace
} // namespace orvanta_tests
