// Conditions on a simulation, as "in config_save >= 1": the verb expect, waits and the option --expect ask
// them.
#pragma once

#include "simulator/faults/faults.hpp"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

class simulation;

enum class condition_kind : std::uint8_t { in, out, happened, clients, devices };

struct condition_row {
    condition_kind kind;
    std::string_view name;
    std::string_view subject; // what stands after the name; empty: nothing
    std::string_view counted;
    std::string_view example;
};

// clang-format off
inline constexpr std::array conditions{
    condition_row{condition_kind::in,       "in",       "OPERATION", "operations that have reached the service",  "in config_save"},
    condition_row{condition_kind::out,      "out",      "OPERATION", "operations that have gone out to clients",  "out connected = 2"},
    condition_row{condition_kind::happened, "happened", "FAULT",     "datagrams that have suffered this fault",   "happened drop >= 3"},
    condition_row{condition_kind::clients,  "clients",  "",          "clients that are connected now",            "clients = 0"},
    condition_row{condition_kind::devices,  "devices",  "",          "devices that are plugged in now",           "devices <= 1"},
};
inline constexpr std::array<std::string_view, 3> comparisons{"=", ">=", "<="};
// clang-format on

struct condition {
    std::string text; // with its comparison, as "in config_save >= 1"
    std::function<std::uint64_t(const simulation& target)> count;
    std::function<bool(std::uint64_t counted)> holds;
};

// NAME [SUBJECT] [COMPARISON NUMBER]; without a comparison it is ">= 1". Throws std::invalid_argument with
// one line, which begins with who asks: what is wrong, what would be right.
[[nodiscard]] condition parse_condition(std::string_view asking, std::string_view text);

// The row of that name or code. Throws std::invalid_argument with one line, with the nearest name, where
// there is none.
[[nodiscard]] const communication::operation& operation_named(communication::direction way,
                                                              std::string_view text);

// Empty where it holds now, else "in config_save >= 1; it is 0".
[[nodiscard]] std::string unmet(const condition& wanted, const simulation& target);

} // namespace vantu::orvanta::simulator
