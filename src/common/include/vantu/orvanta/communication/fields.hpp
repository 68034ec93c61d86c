// The fields of each operation's body as a table: what captures, traces, the dissector and tools that read
// and write single fields go by.
#pragma once

#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vantu::orvanta::communication {

enum class field_type : std::uint8_t {
    u8,
    u16,
    u32,
    u64,
    f32,
    bytes,
    text, // ends at the first zero
    tail, // as many bytes as the u8 before it says
};

struct field {
    std::string_view name;
    field_type type{field_type::u8};
    std::uint16_t count{1}; // values, bytes of bytes and text; 0 for a tail
};

// The bytes of one value.
[[nodiscard]] constexpr std::size_t value_size_of(field_type type) {
    switch (type) {
    case field_type::u8:
    case field_type::bytes:
    case field_type::text:
    case field_type::tail:
        return 1;
    case field_type::u16:
        return 2;
    case field_type::u32:
    case field_type::f32:
        return 4;
    case field_type::u64:
        return 8;
    }
    return 0;
}

// The bytes of a field, a tail being empty.
[[nodiscard]] constexpr std::size_t size_of(const field& one) {
    return value_size_of(one.type) * one.count;
}

namespace body_fields {

using enum field_type;

inline constexpr field device_id{"device_id", u32, 1};

inline constexpr std::array<field, 0> empty{};
inline constexpr std::array device{device_id};
inline constexpr std::array connect{field{"value_a", u16, 1},       field{"value_b", u16, 1},
                                    field{"keep_alive_ns", u64, 1}, field{"process_id", u32, 1},
                                    field{"client_name", text, 32}, field{"version_text", text, 64}};
inline constexpr std::array connected{field{"client_id", u64, 1}};
inline constexpr std::array description{device_id, field{"device_type", u8, 1}, field{"second_byte", u8, 1},
                                        field{"short_id", u16, 1}, field{"uuid", bytes, 16}};
inline constexpr std::array open{device_id, field{"value", u16, 1}};
inline constexpr std::array device_block{device_id, field{"bytes", bytes, 16}};
inline constexpr std::array orvanta3_info{device_id, field{"information", bytes, 8},
                                          field{"handedness", u8, 1}};
inline constexpr std::array palmetron_info{device_id, field{"information", bytes, 8}};
inline constexpr std::array cursor_state{device_id, field{"values", f32, 6}};
inline constexpr std::array palmetron_state{device_id, field{"first", u8, 1}, field{"block", bytes, 16},
                                            field{"tail_count", u8, 1}, field{"tail", tail, 0}};
inline constexpr std::array orientation{device_id, field{"r", f32, 1}, field{"x", f32, 1}, field{"y", f32, 1},
                                        field{"z", f32, 1}};
inline constexpr std::array save{device_id, field{"saved", u8, 1}};
inline constexpr std::array gravity{device_id, field{"enabled", u8, 1}, field{"scaling_factor", f32, 1}};
inline constexpr std::array torque{device_id, field{"enabled", u8, 1}};
inline constexpr std::array hand{device_id, field{"handedness", u8, 1}};
inline constexpr std::array motor_current{device_id, field{"values", f32, 3}};
inline constexpr std::array power_supply{device_id, field{"state", u8, 1}};
inline constexpr std::array block_128{field{"bytes", bytes, 128}};
inline constexpr std::array block_301{field{"bytes", bytes, 301}};
inline constexpr std::array stream_a{field{"bytes", bytes, 12}};
inline constexpr std::array stream_b{device_id, field{"bytes", bytes, 48}};
inline constexpr std::array error{device_id, field{"status", u8, 1}};

} // namespace body_fields

struct body_layout {
    std::uint8_t code;
    direction way;
    std::span<const field> fields; // one after the other from the body's first byte
};

// A row for each row of the table of operations, in its order.
// clang-format off
inline constexpr std::array body_layouts{
    body_layout{op_code::keep_alive,                      direction::to_service, body_fields::empty},
    body_layout{op_code::ack,                             direction::to_client,  body_fields::empty},
    body_layout{op_code::connect,                         direction::to_service, body_fields::connect},
    body_layout{op_code::connected,                       direction::to_client,  body_fields::connected},
    body_layout{op_code::disconnect,                      direction::to_service, body_fields::empty},
    body_layout{op_code::disconnected,                    direction::to_client,  body_fields::empty},
    body_layout{op_code::device_added,                    direction::to_client,  body_fields::description},
    body_layout{op_code::device_removed,                  direction::to_client,  body_fields::device},
    body_layout{op_code::device_open,                     direction::to_service, body_fields::open},
    body_layout{op_code::device_opened,                   direction::to_client,  body_fields::device},
    body_layout{op_code::device_close,                    direction::to_service, body_fields::device},
    body_layout{op_code::device_closed,                   direction::to_client,  body_fields::device},
    body_layout{op_code::device_block_reply,              direction::to_client,  body_fields::device_block},
    body_layout{op_code::device_info_orvanta3,            direction::to_client,  body_fields::orvanta3_info},
    body_layout{op_code::device_info_palmetron,           direction::to_client,  body_fields::palmetron_info},
    body_layout{op_code::cursor_state,                    direction::to_client,  body_fields::cursor_state},
    body_layout{op_code::cursor_state_b,                  direction::to_client,  body_fields::cursor_state},
    body_layout{op_code::palmetron_state,                 direction::to_client,  body_fields::palmetron_state},
    body_layout{op_code::orientation_get,                 direction::to_service, body_fields::device},
    body_layout{op_code::orientation_get,                 direction::to_client,  body_fields::orientation},
    body_layout{op_code::config_save,                     direction::to_service, body_fields::device},
    body_layout{op_code::config_save,                     direction::to_client,  body_fields::save},
    body_layout{op_code::config_gravity_compensation_get, direction::to_service, body_fields::device},
    body_layout{op_code::config_gravity_compensation_get, direction::to_client,  body_fields::gravity},
    body_layout{op_code::config_gravity_compensation_set, direction::to_service, body_fields::gravity},
    body_layout{op_code::config_torque_scaling_get,       direction::to_service, body_fields::device},
    body_layout{op_code::config_torque_scaling_get,       direction::to_client,  body_fields::torque},
    body_layout{op_code::config_torque_scaling_set,       direction::to_service, body_fields::torque},
    body_layout{op_code::config_handedness,               direction::to_client,  body_fields::hand},
    body_layout{op_code::config_handedness_set,           direction::to_service, body_fields::hand},
    body_layout{op_code::status_motor_current,            direction::to_client,  body_fields::motor_current},
    body_layout{op_code::status_power_supply,             direction::to_client,  body_fields::power_supply},
    body_layout{op_code::table_block_128,                 direction::to_client,  body_fields::block_128},
    body_layout{op_code::table_block_301,                 direction::to_client,  body_fields::block_301},
    body_layout{op_code::service_stream_a,                direction::to_client,  body_fields::stream_a},
    body_layout{op_code::service_stream_b,                direction::to_client,  body_fields::stream_b},
    body_layout{op_code::service_error,                   direction::to_client,  body_fields::error},
};
// clang-format on

// The fields of a body; empty where the code does not travel that way.
[[nodiscard]] constexpr std::span<const field> fields_of(std::uint8_t code, direction way) {
    for (const body_layout& layout : body_layouts) {
        if (layout.code == code && layout.way == way) {
            return layout.fields;
        }
    }
    return {};
}

// A field and where it stands in its body.
struct placed_field {
    field what;
    std::size_t offset{0};
};

// The field of that name; empty where the body has none.
[[nodiscard]] constexpr std::optional<placed_field> find_field(std::span<const field> fields,
                                                               std::string_view name) {
    std::size_t offset = 0;
    for (const field& one : fields) {
        if (one.name == name) {
            return placed_field{one, offset};
        }
        offset += size_of(one);
    }
    return std::nullopt;
}

namespace checks {

// A layout's fields fill the body that its operation's row states.
consteval bool layouts_go_with_operations() {
    for (std::size_t i = 0; i < operations.size(); ++i) {
        std::size_t size = 0;
        for (const field& one : body_layouts[i].fields) {
            size += size_of(one);
        }
        if (body_layouts[i].code != operations[i].code || body_layouts[i].way != operations[i].way ||
            size != operations[i].body_size) {
            return false;
        }
    }
    return body_layouts.size() == operations.size();
}

} // namespace checks

static_assert(checks::layouts_go_with_operations());

} // namespace vantu::orvanta::communication
