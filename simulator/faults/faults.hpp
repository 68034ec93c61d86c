// The faults that the simulator can produce, as tables: options, console verbs, scenarios, help, manual page
// and documentation all go by them. And the rules that say when one of them happens.
#pragma once

#include "vantu/orvanta/communication/operations.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

enum class fault_kind : std::uint8_t {
    drop,
    duplicate,
    reorder,
    delay,
    truncate,
    extend,
    flip,
    patch,
    cut,
    insert,
    flood,
    stale,
    silence,
    error,
    goodbye,
    restart,
    unplug,
    plug,
    inject,
};

// The argument, which stands before the selectors of a rule.
enum class fault_argument : std::uint8_t {
    none,
    count,
    size,
    milliseconds,
    field,
    hexadecimal,
    status,
    device,
    device_type,
};

struct argument_row {
    fault_argument argument;
    std::string_view form; // as a line of help writes it; brackets around what may be left out
    std::string_view meaning;
};

// clang-format off
inline constexpr std::array fault_arguments{
    argument_row{fault_argument::none,         "[P]",          "none; a probability can stand in its place"},
    argument_row{fault_argument::count,        "N",            "a whole number from 1 to 100000"},
    argument_row{fault_argument::size,         "BYTES",        "a number of bytes from 0 to 65507"},
    argument_row{fault_argument::milliseconds, "MS[-MS]",      "milliseconds, or two for a time between them"},
    argument_row{fault_argument::field,        "FIELD=VALUE",  "a field and its value, or 'other' for any but the true one"},
    argument_row{fault_argument::hexadecimal,  "HEX",          "hexadecimal digits, two a byte"},
    argument_row{fault_argument::status,       "STATUS[:TAG]", "a service status from 0 to 255, and a tag other than the request's"},
    argument_row{fault_argument::device,       "[ID]",         "a device id"},
    argument_row{fault_argument::device_type,  "TYPE",         "orvanta3 or palmetron"},
};

struct selector_row {
    std::string_view key;
    std::string_view form; // the value
    std::string_view meaning;
};

inline constexpr std::array fault_selectors{
    selector_row{"op",     "OPERATION", "datagrams with an operation of this code or name"},
    selector_row{"dir",    "WAY",       "in (from clients), out (to clients) or answer (to requests)"},
    selector_row{"device", "ID",        "with an operation of this device"},
    selector_row{"client", "N",         "of the Nth client, by their first datagrams"},
    selector_row{"p",      "P",         "each with this probability from 0 to 1"},
    selector_row{"burst",  "N",         "with p=, in bursts of N on average"},
    selector_row{"nth",    "N",         "the Nth that fits, once"},
    selector_row{"every",  "N",         "every Nth that fits"},
    selector_row{"as",     "NAME",      "names the rule; the next of that name takes its place"},
};
// clang-format on

// How a fault acts.
enum class fault_act : std::uint8_t {
    change,      // on the bytes of a datagram
    loss,        // the datagram ends here
    copies,      // others follow it
    delay,       // it waits for a time
    overtaking,  // it waits for later ones to pass
    stale_reply, // an earlier session's reply goes out before it
    silence,     // nothing passes for a time
    refusal,     // the fault answers in the service's place
    action,      // the simulation is asked for something that no datagram shows
    forgery,     // datagrams of another sender follow it
};

struct fault_row {
    fault_kind kind;
    std::string_view name; // the verb; "--" and it is the option
    fault_act act;
    fault_argument argument;
    bool to_service; // whether it can happen to datagrams from clients
    bool to_client;  // whether it can happen to datagrams of the service
    bool at_once;    // whether it can be asked for without waiting for a datagram
    std::string_view effect;
    std::string_view did;     // before the datagram's text: "lost" and the datagram
    std::string_view example; // an option's value, or the text after the verb
};

// clang-format off
inline constexpr std::array faults{
    fault_row{fault_kind::drop,      "drop",      fault_act::loss,        fault_argument::none,         true,  true,  false, "the datagram is lost",                                               "lost",                      "0.05"},
    fault_row{fault_kind::duplicate, "duplicate", fault_act::copies,      fault_argument::count,        true,  true,  false, "so many copies follow it",                                           "copied",                    "1@p=0.1"},
    fault_row{fault_kind::reorder,   "reorder",   fault_act::overtaking,  fault_argument::count,        true,  true,  false, "it waits until so many later ones have passed it, 100 ms at most",   "held back",                 "3@p=0.2"},
    fault_row{fault_kind::delay,     "delay",     fault_act::delay,       fault_argument::milliseconds, true,  true,  false, "it comes so many milliseconds later",                                "delayed",                   "20-80@dir=answer"},
    fault_row{fault_kind::truncate,  "truncate",  fault_act::change,      fault_argument::size,         true,  true,  false, "it is cut to so many bytes, 0 included",                             "truncated",                 "17@op=66"},
    fault_row{fault_kind::extend,    "extend",    fault_act::change,      fault_argument::size,         true,  true,  false, "so many random bytes follow its end, up to 65507 in all",            "extended",                  "9@nth=2"},
    fault_row{fault_kind::flip,      "flip",      fault_act::change,      fault_argument::count,        true,  true,  false, "so many of its bits are inverted",                                   "inverted bits of",          "1@p=0.02"},
    fault_row{fault_kind::patch,     "patch",     fault_act::change,      fault_argument::field,        true,  true,  false, "a field has this value; the first operation that has it is meant",   "patched",                   "values[2]=nan@op=cursor_state"},
    fault_row{fault_kind::cut,       "cut",       fault_act::change,      fault_argument::count,        true,  true,  false, "an operation's body lacks its last bytes, the length says so",       "cut a body of",             "1@op=66"},
    fault_row{fault_kind::insert,    "insert",    fault_act::change,      fault_argument::hexadecimal,  true,  true,  false, "these bytes stand before an operation",                              "inserted bytes into",       "ff57000000@op=device_info_orvanta3"},
    fault_row{fault_kind::flood,     "flood",     fault_act::copies,      fault_argument::count,        false, true,  true,  "so many tiny ones (ack, tag 0) follow it, beyond a client's buffer", "flooded after",             "5000@nth=10"},
    fault_row{fault_kind::stale,     "stale",     fault_act::stale_reply, fault_argument::none,         false, true,  false, "an answer of the client's earlier session goes before an answer",    "sent an old answer before", "@op=19"},
    fault_row{fault_kind::silence,   "silence",   fault_act::silence,     fault_argument::milliseconds, true,  true,  true,  "from it on the service neither hears nor speaks for so long",        "fell silent at",            "7000@nth=20"},
    fault_row{fault_kind::error,     "error",     fault_act::refusal,     fault_argument::status,       true,  false, true,  "a request for a device is refused, with op=connect a connect",       "refused",                   "0xD0@op=64"},
    fault_row{fault_kind::goodbye,   "goodbye",   fault_act::action,      fault_argument::none,         false, true,  true,  "the service says goodbye right after it and forgets the client",     "said goodbye after",        "@op=4"},
    fault_row{fault_kind::restart,   "restart",   fault_act::action,      fault_argument::none,         true,  true,  true,  "the service starts anew: no clients, saved configurations",          "restarted after",           "@nth=50"},
    fault_row{fault_kind::unplug,    "unplug",    fault_act::action,      fault_argument::device,       true,  true,  true,  "this device is taken away, the first one where none is named",       "unplugged a device after",  "1@op=67"},
    fault_row{fault_kind::plug,      "plug",      fault_act::action,      fault_argument::device_type,  true,  true,  true,  "a device of this type is plugged in",                                "plugged in a device after", "orvanta3@nth=9"},
    fault_row{fault_kind::inject,    "inject",    fault_act::forgery,     fault_argument::count,        false, true,  true,  "so many forged datagrams come from another sender",                  "forged datagrams after",    "3@op=4"},
};
// clang-format on

namespace fault_checks {

// Each row stands at its kind's number, and each argument at its own.
consteval bool rows_stand_by_kind() {
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (static_cast<std::size_t>(faults[i].kind) != i || !(faults[i].to_service || faults[i].to_client)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < fault_arguments.size(); ++i) {
        if (static_cast<std::size_t>(fault_arguments[i].argument) != i) {
            return false;
        }
    }
    return true;
}

} // namespace fault_checks
static_assert(fault_checks::rows_stand_by_kind());

[[nodiscard]] constexpr const fault_row& row_of(fault_kind kind) {
    return faults[static_cast<std::size_t>(kind)];
}

[[nodiscard]] constexpr const argument_row& row_of(fault_argument argument) {
    return fault_arguments[static_cast<std::size_t>(argument)];
}

// When a fault happens, to which datagrams, and with which argument.
//
// A rule fits a datagram that goes its way and holds an operation of its code and of its device. Faults of
// one operation act on the first such operation. Beyond that
//   stale fits answers to what the client asked, connect and disconnect included; error fits requests for a
//   device, with op=connect connects; patch fits datagrams that have the field; goodbye fits none that is a
//   goodbye already.
//   reorder holds one datagram of a client and a way at a time, so that the next ones pass it.
//   silence, goodbye, restart, unplug and plug begin right after the datagram; silence swallows it too.
//   The datagrams that a rule adds (copies, answers) meet the later rules; forged ones meet none, and of a
//   copy no further copies are made.
struct fault_rule {
    fault_kind kind{fault_kind::drop};
    std::optional<communication::direction> way; // empty: each way that the fault can go
    bool answers{false};                         // of those to clients, the answers to requests alone
    std::optional<std::uint8_t> code;            // empty: all datagrams; else those with such an operation
    std::optional<std::uint32_t> device;         // empty: all; else those with an operation of this device
    std::uint64_t client{0};                     // 0: all; else the client of this number, from 1
    double probability{1};
    std::uint64_t burst{0};             // 0: each by itself; else so many in a row on average
    std::uint64_t nth{0};               // 0: as probable; else the nth datagram that the rule fits, once
    std::uint64_t every{0};             // 0: as probable; else one in so many that the rule fits
    std::optional<std::uint32_t> first; // the argument, or the lower end of a span
    std::optional<std::uint32_t> last;  // the upper end of a span; the tag of a refusal
    std::string text;                   // the argument of patch and insert
    std::string name;                   // empty: none
    bool now{false};                    // asked for at once: a row that can be, without any selector

    bool operator==(const fault_rule&) const = default;
};

inline constexpr std::uint32_t most_copies = 100'000;
inline constexpr std::uint32_t greatest_datagram = 65'507;

// Reads "ARGUMENT@SELECTOR,...", as in "17@op=66,dir=out,p=0.5" or "0.05" or "@nth=3"; blanks around the
// parts are passed over. A probability in the argument's place is a selector as well. Refused is what no
// datagram can fit by the table of operations, too. Throws std::invalid_argument with one line: what is
// wrong, and in quotes a line that would be right.
[[nodiscard]] fault_rule parse_fault(fault_kind kind, std::string_view text);

// Reads a rule that stands from the start on, name and all, as in "drop 0.05". There is no client yet: a
// fault that would be asked for at once waits for the first datagram that it fits. Throws as parse_fault.
[[nodiscard]] fault_rule initial_fault(std::string_view text);

// The row of that name, or null.
[[nodiscard]] const fault_row* find_fault(std::string_view name) noexcept;

// The row of that name. Throws std::invalid_argument with one line where there is none.
[[nodiscard]] const fault_row& fault_named(std::string_view text);

// The rule as parse_fault reads it, after its name: "truncate 17@op=66".
[[nodiscard]] std::string text_of(const fault_rule& rule);

} // namespace vantu::orvanta::simulator
