// The verbs that are no faults, as a table, and reading a line as a command.
#pragma once

#include "simulator/faults/faults.hpp"
#include "simulator/service/device.hpp"
#include "simulator/simulation/conditions.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vantu::orvanta::simulator {

struct verb_row {
    std::string_view name;
    std::string_view arguments;
    std::string_view effect;
    std::string_view example; // the text after the verb
};

// clang-format off
inline constexpr std::array verbs{
    verb_row{"set",    "DEVICE gravity on|off [FACTOR]", "changes a setting of a device",                        "1 gravity on 0.5"},
    verb_row{"heal",   "[FAULT|RULE]",                   "takes away all rules, a fault's, or one",               "drop"},
    verb_row{"send",   "OPERATION|HEX FIELD=VALUE...",   "sends it to all clients, or to client=N",              "device_block_reply device_id=1"},
    verb_row{"status", "",                               "shows clients, devices, faults and counters",          ""},
    verb_row{"expect", "CONDITION",                      "is an error unless the condition holds now",           "in config_save >= 1"},
    verb_row{"wait",   "MS [CONDITION]",                 "puts the next line off, at most so long",              "250"},
    verb_row{"help",   "[VERB]",                         "lists the verbs, or explains one",                     "truncate"},
    verb_row{"quit",   "",                               "says goodbye to all clients and ends",                 ""},
};
// clang-format on

inline constexpr std::uint64_t longest_wait_ms = 86'400'000;
inline constexpr std::size_t longest_sent_datagram = 2048;

// Members that are empty stay as they are.
struct set_command {
    std::uint32_t device_id{0};
    std::optional<bool> gravity_compensation;
    std::optional<float> scaling_factor;
    std::optional<bool> torque_scaling;
    std::optional<std::uint8_t> handedness;
};
struct heal_command {
    std::optional<fault_kind> kind; // empty: all, or the rule
    std::string rule;               // a name or a number; empty: all, or those of the kind
};
struct send_command {
    std::vector<std::byte> datagram;
    std::uint64_t client{0}; // 0: to all; else to that of this number
};
struct status_command {};
struct expect_command {
    condition wanted;
};
struct wait_command {
    std::uint64_t milliseconds{0};
    std::optional<condition> wanted; // ends the wait early
};
struct help_command {
    std::string_view verb; // empty: all; else one of verbs or faults
};
struct quit_command {};

// A fault stands for itself; monostate is a line that says nothing.
using command = std::variant<std::monostate, fault_rule, set_command, heal_command, send_command,
                             status_command, expect_command, wait_command, help_command, quit_command>;

// Throws std::invalid_argument with one line: what is wrong, what would be right.
[[nodiscard]] command parse_verb(std::string_view line);

// Reads what follows "send": "OPERATION FIELD=VALUE ..." or "HEX", with "tag=N" and "client=N" among the
// words where they are wanted; fields that are not named are 0, and a tail brings its count. Throws as
// parse_verb.
[[nodiscard]] send_command read_send(std::string_view rest);

// The row of that name, or null.
[[nodiscard]] const verb_row* find_verb(std::string_view name) noexcept;

} // namespace vantu::orvanta::simulator
