// The bodies that follow an operation record, as packed records. Most are a device id and a record.
#pragma once

#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/communication/records.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace vantu::orvanta::communication::proto {

#pragma pack(push, 1)

// A body that names a device and carries one record about it.
template <typename Record> struct addressed {
    std::uint32_t device_id;
    Record record;
};
static_assert(offsetof(addressed<vantu_orvanta_error>, device_id) == 0);
static_assert(offsetof(addressed<vantu_orvanta_error>, record) == 4);

// A body that only names a device.
struct device_body {
    std::uint32_t device_id;
};
static_assert(sizeof(device_body) == 4 && alignof(device_body) == 1);

struct connect_body {
    std::uint16_t value_a;
    std::uint16_t value_b;
    std::uint64_t keep_alive_ns;
    std::uint32_t process_id;
    char client_name[32];  // zero-padded, ends in a zero
    char version_text[64]; // zero-padded, ends in a zero
};
static_assert(sizeof(connect_body) == 112 && alignof(connect_body) == 1);
static_assert(offsetof(connect_body, value_a) == 0);
static_assert(offsetof(connect_body, value_b) == 2);
static_assert(offsetof(connect_body, keep_alive_ns) == 4);
static_assert(offsetof(connect_body, process_id) == 12);
static_assert(offsetof(connect_body, client_name) == 16);
static_assert(offsetof(connect_body, version_text) == 48);

struct connected_body {
    std::uint64_t client_id;
};
static_assert(sizeof(connected_body) == 8 && alignof(connected_body) == 1);

struct open_argument {
    std::uint16_t value;
};
static_assert(sizeof(open_argument) == 2);

// The listing of a device: bytes 8 to 27 of vantu_orvanta_device.
struct device_description {
    std::uint8_t device_type;
    std::uint8_t second_byte;
    std::uint16_t short_id;
    std::uint8_t uuid[16];
};
static_assert(sizeof(device_description) == 20 && alignof(device_description) == 1);
static_assert(offsetof(device_description, device_type) == 0);
static_assert(offsetof(device_description, second_byte) == 1);
static_assert(offsetof(device_description, short_id) == 2);
static_assert(offsetof(device_description, uuid) == 4);

// The part of a grip's state before its tail.
struct palmetron_head {
    std::uint8_t first;
    std::uint8_t block[16];
    std::uint8_t tail_count; // bytes that follow
};
static_assert(sizeof(palmetron_head) == 18 && alignof(palmetron_head) == 1);
static_assert(offsetof(palmetron_head, block) == 1);
static_assert(offsetof(palmetron_head, tail_count) == 17);

struct status_byte {
    std::uint8_t status; // a service status
};
static_assert(sizeof(status_byte) == 1);

#pragma pack(pop)

// A body that is nothing at all.
struct empty_body {};

// The body type of each operation; checked against the table below.
template <std::uint8_t code, direction way> struct body_of;
// clang-format off
template <> struct body_of<op_code::keep_alive, direction::to_service> { using type = empty_body; };
template <> struct body_of<op_code::ack, direction::to_client> { using type = empty_body; };
template <> struct body_of<op_code::connect, direction::to_service> { using type = connect_body; };
template <> struct body_of<op_code::connected, direction::to_client> { using type = connected_body; };
template <> struct body_of<op_code::disconnect, direction::to_service> { using type = empty_body; };
template <> struct body_of<op_code::disconnected, direction::to_client> { using type = empty_body; };
template <> struct body_of<op_code::device_added, direction::to_client> { using type = addressed<device_description>; };
template <> struct body_of<op_code::device_removed, direction::to_client> { using type = device_body; };
template <> struct body_of<op_code::device_open, direction::to_service> { using type = addressed<open_argument>; };
template <> struct body_of<op_code::device_opened, direction::to_client> { using type = device_body; };
template <> struct body_of<op_code::device_close, direction::to_service> { using type = device_body; };
template <> struct body_of<op_code::device_closed, direction::to_client> { using type = device_body; };
template <> struct body_of<op_code::device_block_reply, direction::to_client> { using type = addressed<vantu_orvanta_device_block>; };
template <> struct body_of<op_code::device_info_orvanta3, direction::to_client> { using type = addressed<vantu_orvanta_orvanta3_info>; };
template <> struct body_of<op_code::device_info_palmetron, direction::to_client> { using type = addressed<vantu_orvanta_palmetron_info>; };
template <> struct body_of<op_code::cursor_state, direction::to_client> { using type = addressed<vantu_orvanta_cursor_state>; };
template <> struct body_of<op_code::cursor_state_b, direction::to_client> { using type = addressed<vantu_orvanta_cursor_state>; };
template <> struct body_of<op_code::palmetron_state, direction::to_client> { using type = addressed<palmetron_head>; };
template <> struct body_of<op_code::orientation_get, direction::to_service> { using type = device_body; };
template <> struct body_of<op_code::orientation_get, direction::to_client> { using type = addressed<vantu_orvanta_orientation>; };
template <> struct body_of<op_code::config_save, direction::to_service> { using type = device_body; };
template <> struct body_of<op_code::config_save, direction::to_client> { using type = addressed<vantu_orvanta_config_save>; };
template <> struct body_of<op_code::config_gravity_compensation_get, direction::to_service> { using type = device_body; };
template <> struct body_of<op_code::config_gravity_compensation_get, direction::to_client> { using type = addressed<vantu_orvanta_config_gravity_compensation>; };
template <> struct body_of<op_code::config_gravity_compensation_set, direction::to_service> { using type = addressed<vantu_orvanta_config_gravity_compensation>; };
template <> struct body_of<op_code::config_torque_scaling_get, direction::to_service> { using type = device_body; };
template <> struct body_of<op_code::config_torque_scaling_get, direction::to_client> { using type = addressed<vantu_orvanta_config_torque_scaling>; };
template <> struct body_of<op_code::config_torque_scaling_set, direction::to_service> { using type = addressed<vantu_orvanta_config_torque_scaling>; };
template <> struct body_of<op_code::config_handedness, direction::to_client> { using type = addressed<vantu_orvanta_config_handedness>; };
template <> struct body_of<op_code::config_handedness_set, direction::to_service> { using type = addressed<vantu_orvanta_config_handedness>; };
template <> struct body_of<op_code::status_motor_current, direction::to_client> { using type = addressed<vantu_orvanta_status_motor_current>; };
template <> struct body_of<op_code::status_power_supply, direction::to_client> { using type = addressed<vantu_orvanta_status_power_supply>; };
template <> struct body_of<op_code::table_block_128, direction::to_client> { using type = vantu_orvanta_table_block_128; };
template <> struct body_of<op_code::table_block_301, direction::to_client> { using type = vantu_orvanta_table_block_301; };
template <> struct body_of<op_code::service_stream_a, direction::to_client> { using type = vantu_orvanta_service_stream_a; };
template <> struct body_of<op_code::service_stream_b, direction::to_client> { using type = addressed<vantu_orvanta_service_stream_b>; };
template <> struct body_of<op_code::service_error, direction::to_client> { using type = addressed<status_byte>; };
// clang-format on

// The type of an operation's body.
template <std::uint8_t code, direction way> using body = typename body_of<code, way>::type;

template <typename Body> inline constexpr std::size_t wire_size = sizeof(Body);
template <> inline constexpr std::size_t wire_size<empty_body> = 0;

namespace checks {

template <std::size_t... rows> consteval bool bodies_have_their_table_size(std::index_sequence<rows...>) {
    return ((wire_size<body<operations[rows].code, operations[rows].way>> == operations[rows].body_size) &&
            ...);
}

} // namespace checks

static_assert(checks::bodies_have_their_table_size(std::make_index_sequence<operations.size()>{}),
              "every operation has a body type of the size that its row states");

} // namespace vantu::orvanta::communication::proto
