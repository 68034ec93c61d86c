// The wire as a table: one row an operation and direction. The parser, the simulator, the tests and
// docs/protocol.md all go by it.
#pragma once

#include "vantu/orvanta/communication/records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vantu::orvanta::communication {

namespace op_code {
inline constexpr std::uint8_t none = 0; // no operation
inline constexpr std::uint8_t keep_alive = 1;
inline constexpr std::uint8_t ack = 2;
inline constexpr std::uint8_t connect = 3;
inline constexpr std::uint8_t connected = 4;
inline constexpr std::uint8_t disconnect = 5;
inline constexpr std::uint8_t disconnected = 6;
inline constexpr std::uint8_t device_added = 16;
inline constexpr std::uint8_t device_removed = 17;
inline constexpr std::uint8_t device_open = 18;
inline constexpr std::uint8_t device_opened = 19;
inline constexpr std::uint8_t device_close = 20;
inline constexpr std::uint8_t device_closed = 21;
inline constexpr std::uint8_t device_block_reply = 22;
inline constexpr std::uint8_t device_info_orvanta3 = 23;
inline constexpr std::uint8_t device_info_palmetron = 24;
inline constexpr std::uint8_t cursor_state = 33;
inline constexpr std::uint8_t cursor_state_b = 37;
inline constexpr std::uint8_t palmetron_state = 40;
inline constexpr std::uint8_t orientation_get = 47;
inline constexpr std::uint8_t config_save = 64;
inline constexpr std::uint8_t config_gravity_compensation_get = 66;
inline constexpr std::uint8_t config_gravity_compensation_set = 67;
inline constexpr std::uint8_t config_torque_scaling_get = 68;
inline constexpr std::uint8_t config_torque_scaling_set = 69;
inline constexpr std::uint8_t config_handedness = 70;
inline constexpr std::uint8_t config_handedness_set = 71;
inline constexpr std::uint8_t status_motor_current = 80;
inline constexpr std::uint8_t status_power_supply = 81;
inline constexpr std::uint8_t table_block_128 = 96;
inline constexpr std::uint8_t table_block_301 = 97;
inline constexpr std::uint8_t service_stream_a = 224;
inline constexpr std::uint8_t service_stream_b = 225;
inline constexpr std::uint8_t service_error = 240;
} // namespace op_code

enum class direction : std::uint8_t {
    to_service, // from client to service
    to_client,  // from service to client
};

enum class body_rule : std::uint8_t {
    fixed,   // the body has exactly body_size bytes
    minimum, // the body has body_size bytes and a tail that it counts itself
};

// How the client's event comes by its tag.
enum class tag_rule : std::uint8_t {
    ignored,
    copied,
};

// One operation in one direction. event_type is 0 where the operation yields no event.
struct operation {
    std::uint8_t code;
    std::string_view name;
    direction way;
    std::uint16_t body_size;
    body_rule rule;
    std::uint32_t event_type;
    tag_rule tag;
    std::uint8_t answered_by; // the operation that answers a request; none for the rest
};

// clang-format off
inline constexpr std::array operations{
    operation{op_code::keep_alive,                      "keep_alive",                      direction::to_service,   0, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::none},
    operation{op_code::ack,                             "ack",                             direction::to_client,    0, body_rule::fixed,   vantu_orvanta_event_ack,                         tag_rule::copied,  op_code::none},
    operation{op_code::connect,                         "connect",                         direction::to_service, 112, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::connected},
    operation{op_code::connected,                       "connected",                       direction::to_client,    8, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::none},
    operation{op_code::disconnect,                      "disconnect",                      direction::to_service,   0, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::disconnected},
    operation{op_code::disconnected,                    "disconnected",                    direction::to_client,    0, body_rule::fixed,   vantu_orvanta_event_disconnected,                tag_rule::ignored, op_code::none},
    operation{op_code::device_added,                    "device_added",                    direction::to_client,   24, body_rule::fixed,   vantu_orvanta_event_device_added,                tag_rule::ignored, op_code::none},
    operation{op_code::device_removed,                  "device_removed",                  direction::to_client,    4, body_rule::fixed,   vantu_orvanta_event_device_removed,              tag_rule::ignored, op_code::none},
    operation{op_code::device_open,                     "device_open",                     direction::to_service,   6, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::device_opened},
    operation{op_code::device_opened,                   "device_opened",                   direction::to_client,    4, body_rule::fixed,   vantu_orvanta_event_device_opened,               tag_rule::copied,  op_code::none},
    operation{op_code::device_close,                    "device_close",                    direction::to_service,   4, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::device_closed},
    operation{op_code::device_closed,                   "device_closed",                   direction::to_client,    4, body_rule::fixed,   vantu_orvanta_event_device_closed,               tag_rule::copied,  op_code::none},
    operation{op_code::device_block_reply,              "device_block_reply",              direction::to_client,   20, body_rule::fixed,   vantu_orvanta_event_device_block,                tag_rule::copied,  op_code::none},
    operation{op_code::device_info_orvanta3,            "device_info_orvanta3",            direction::to_client,   13, body_rule::fixed,   vantu_orvanta_event_orvanta3_info,               tag_rule::ignored, op_code::none},
    operation{op_code::device_info_palmetron,           "device_info_palmetron",           direction::to_client,   12, body_rule::fixed,   vantu_orvanta_event_palmetron_info,              tag_rule::ignored, op_code::none},
    operation{op_code::cursor_state,                    "cursor_state",                    direction::to_client,   28, body_rule::fixed,   vantu_orvanta_event_cursor_state,                tag_rule::ignored, op_code::none},
    operation{op_code::cursor_state_b,                  "cursor_state_b",                  direction::to_client,   28, body_rule::fixed,   vantu_orvanta_event_cursor_state_b,              tag_rule::ignored, op_code::none},
    operation{op_code::palmetron_state,                 "palmetron_state",                 direction::to_client,   22, body_rule::minimum, vantu_orvanta_event_palmetron_state,             tag_rule::ignored, op_code::none},
    operation{op_code::orientation_get,                 "orientation_get",                 direction::to_service,   4, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::orientation_get},
    operation{op_code::orientation_get,                 "orientation_get",                 direction::to_client,   20, body_rule::fixed,   vantu_orvanta_event_orientation,                 tag_rule::copied,  op_code::none},
    operation{op_code::config_save,                     "config_save",                     direction::to_service,   4, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_save},
    operation{op_code::config_save,                     "config_save",                     direction::to_client,    5, body_rule::fixed,   vantu_orvanta_event_config_save,                 tag_rule::copied,  op_code::none},
    operation{op_code::config_gravity_compensation_get, "config_gravity_compensation_get", direction::to_service,   4, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_gravity_compensation_get},
    operation{op_code::config_gravity_compensation_get, "config_gravity_compensation_get", direction::to_client,    9, body_rule::fixed,   vantu_orvanta_event_config_gravity_compensation, tag_rule::copied,  op_code::none},
    operation{op_code::config_gravity_compensation_set, "config_gravity_compensation_set", direction::to_service,   9, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_gravity_compensation_get},
    operation{op_code::config_torque_scaling_get,       "config_torque_scaling_get",       direction::to_service,   4, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_torque_scaling_get},
    operation{op_code::config_torque_scaling_get,       "config_torque_scaling_get",       direction::to_client,    5, body_rule::fixed,   vantu_orvanta_event_config_torque_scaling,       tag_rule::copied,  op_code::none},
    operation{op_code::config_torque_scaling_set,       "config_torque_scaling_set",       direction::to_service,   5, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_torque_scaling_get},
    operation{op_code::config_handedness,               "config_handedness",               direction::to_client,    5, body_rule::fixed,   vantu_orvanta_event_config_handedness,           tag_rule::copied,  op_code::none},
    operation{op_code::config_handedness_set,           "config_handedness_set",           direction::to_service,   5, body_rule::fixed,   vantu_orvanta_event_none,                        tag_rule::ignored, op_code::config_handedness},
    operation{op_code::status_motor_current,            "status_motor_current",            direction::to_client,   16, body_rule::fixed,   vantu_orvanta_event_status_motor_current,        tag_rule::copied,  op_code::none},
    operation{op_code::status_power_supply,             "status_power_supply",             direction::to_client,    5, body_rule::fixed,   vantu_orvanta_event_status_power_supply,         tag_rule::copied,  op_code::none},
    operation{op_code::table_block_128,                 "table_block_128",                 direction::to_client,  128, body_rule::fixed,   vantu_orvanta_event_table_block_128,             tag_rule::copied,  op_code::none},
    operation{op_code::table_block_301,                 "table_block_301",                 direction::to_client,  301, body_rule::fixed,   vantu_orvanta_event_table_block_301,             tag_rule::copied,  op_code::none},
    operation{op_code::service_stream_a,                "service_stream_a",                direction::to_client,   12, body_rule::fixed,   vantu_orvanta_event_service_stream_a,            tag_rule::ignored, op_code::none},
    operation{op_code::service_stream_b,                "service_stream_b",                direction::to_client,   52, body_rule::fixed,   vantu_orvanta_event_service_stream_b,            tag_rule::ignored, op_code::none},
    operation{op_code::service_error,                   "service_error",                   direction::to_client,    5, body_rule::fixed,   vantu_orvanta_event_error,                       tag_rule::copied,  op_code::none},
};
// clang-format on

// The row of an operation, or null where the code does not travel that way.
[[nodiscard]] constexpr const operation* find_operation(std::uint8_t code, direction way) {
    for (const operation& row : operations) {
        if (row.code == code && row.way == way) {
            return &row;
        }
    }
    return nullptr;
}

// The row of an operation that is known to be in the table: any other does not compile in a constant.
// No null pointer is compared here: under -fsanitize=undefined g++ takes that for no constant expression.
[[nodiscard]] constexpr const operation& row_of(std::uint8_t code, direction way) {
    for (const operation& row : operations) {
        if (row.code == code && row.way == way) {
            return row;
        }
    }
    throw "no such operation";
}

[[nodiscard]] constexpr std::uint16_t body_size_of(std::uint8_t code, direction way) {
    return row_of(code, way).body_size;
}

// The event type with which a request of the table is answered; 0 where nothing answers it.
[[nodiscard]] constexpr std::uint32_t answer_event_of(std::uint8_t request) {
    const std::uint8_t answer = row_of(request, direction::to_service).answered_by;
    return answer == op_code::none ? std::uint32_t{vantu_orvanta_event_none}
                                   : row_of(answer, direction::to_client).event_type;
}

namespace checks {

// By rising code; a code that travels both ways lists the request first.
consteval bool operations_are_in_order() {
    for (std::size_t i = 1; i < operations.size(); ++i) {
        const operation& before = operations[i - 1];
        const operation& row = operations[i];
        if (before.code > row.code || (before.code == row.code && before.way >= row.way)) {
            return false;
        }
    }
    return true;
}

consteval bool events_and_tags_belong_to_the_client() {
    for (const operation& row : operations) {
        const bool silent = row.event_type == vantu_orvanta_event_none;
        if (silent && row.tag == tag_rule::copied) {
            return false;
        }
        if (row.way == direction::to_service && !silent) {
            return false;
        }
        if (row.way == direction::to_client && silent && row.code != op_code::connected) {
            return false;
        }
    }
    return true;
}

// A request's answer is an operation that the client receives; only a request has one. An answer with an
// event copies the tag, but for the goodbye's, which has none.
consteval bool answers_are_operations_of_the_client() {
    for (const operation& row : operations) {
        if (row.answered_by == op_code::none) {
            continue;
        }
        bool received = false;
        for (const operation& answer : operations) {
            const bool is_answer = answer.code == row.answered_by && answer.way == direction::to_client;
            const bool carries_tag = answer.tag == tag_rule::copied ||
                                     answer.event_type == vantu_orvanta_event_none ||
                                     answer.event_type == vantu_orvanta_event_disconnected;
            received = received || (is_answer && carries_tag);
        }
        if (row.way != direction::to_service || !received) {
            return false;
        }
    }
    return true;
}

} // namespace checks

static_assert(checks::operations_are_in_order());
static_assert(checks::events_and_tags_belong_to_the_client());
static_assert(checks::answers_are_operations_of_the_client());

} // namespace vantu::orvanta::communication
