// The faults that the simulator can produce, as a table: options, console verbs, scenarios, help and
// documentation all go by it. And the rules that say when one of them happens.
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
    late,
    truncate,
    extend,
    oversize,
    empty,
    flip,
    bad_magic,
    bad_version,
    bad_operation,
    unknown_operation,
    lying_operation,
    short_body,
    bad_between,
    flood,
    retag,
    readdress,
    stale,
    silence,
    refuse,
    error,
    short_acceptance,
    goodbye,
    restart,
    unplug,
    plug,
    inject,
};

// The argument, which stands before the selector of a rule.
enum class fault_argument : std::uint8_t {
    none,           // a probability may stand there instead
    count,          // a whole number from 1 to most_copies
    bytes,          // a size from 0 to 65507; short-acceptance takes 0 to 7
    milliseconds,   // a whole number, or two with '-' between them for a uniform choice
    status,         // a service status, decimal or 0x hexadecimal, 0 to 255
    status_and_tag, // a service status, and after ':' the tag; else the request's, or 0 where there is none
    tag,            // 0 to 255; another one than the reply's where it is left out
    device,         // a device id; another one than the reply's where it is left out
    device_type,    // orvanta3 or palmetron
};

// How a fault acts.
enum class fault_act : std::uint8_t {
    datagram_change,  // on the bytes of a datagram
    operation_change, // on one operation in it
    loss,             // the datagram ends here
    copies,           // others follow it
    delay,            // it waits for a time
    overtaking,       // it waits for later ones to pass
    stale_reply,      // an earlier session's reply goes out before it
    silence,          // nothing passes for a time
    refusal,          // the fault answers in the service's place
    action,           // the simulation is asked for something that no datagram shows
    forgery,          // datagrams of another sender follow it
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
    std::string_view example; // an option's value, or the text after the verb
};

// clang-format off
inline constexpr std::array faults{
    fault_row{fault_kind::drop,              "drop",              fault_act::loss,              fault_argument::none,           true,  true,  false, "the datagram is lost",                                                      "0.05"},
    fault_row{fault_kind::duplicate,         "duplicate",         fault_act::copies,            fault_argument::count,          true,  true,  false, "so many copies follow it",                                                  "1@p=0.1"},
    fault_row{fault_kind::reorder,           "reorder",           fault_act::overtaking,        fault_argument::count,          true,  true,  false, "it waits until so many later ones have passed it, 100 ms at most",          "3@p=0.2"},
    fault_row{fault_kind::delay,             "delay",             fault_act::delay,             fault_argument::milliseconds,   true,  true,  false, "it comes so many milliseconds later",                                       "20-80"},
    fault_row{fault_kind::late,              "late",              fault_act::delay,             fault_argument::milliseconds,   false, true,  false, "a reply to a request comes so many milliseconds later",                     "250@op=66"},
    fault_row{fault_kind::truncate,          "truncate",          fault_act::datagram_change,   fault_argument::bytes,          true,  true,  false, "it is cut to so many bytes",                                                "17@op=66"},
    fault_row{fault_kind::extend,            "extend",            fault_act::datagram_change,   fault_argument::bytes,          true,  true,  false, "so many random bytes follow its end",                                       "9@n=2"},
    fault_row{fault_kind::oversize,          "oversize",          fault_act::datagram_change,   fault_argument::bytes,          true,  true,  false, "random bytes fill it up to this size",                                      "2049@op=33"},
    fault_row{fault_kind::empty,             "empty",             fault_act::datagram_change,   fault_argument::none,           true,  true,  true,  "it has no bytes at all",                                                    "0.01"},
    fault_row{fault_kind::flip,              "flip",              fault_act::datagram_change,   fault_argument::count,          true,  true,  false, "so many of its bits are inverted",                                          "1@p=0.02"},
    fault_row{fault_kind::bad_magic,         "bad-magic",         fault_act::datagram_change,   fault_argument::none,           true,  true,  false, "its header has a wrong magic",                                              "0.02"},
    fault_row{fault_kind::bad_version,       "bad-version",       fault_act::datagram_change,   fault_argument::none,           true,  true,  false, "its header has a wrong version",                                            "@n=5"},
    fault_row{fault_kind::bad_operation,     "bad-operation",     fault_act::operation_change,  fault_argument::none,           true,  true,  false, "an operation in it lacks its magic",                                        "0.02@op=33"},
    fault_row{fault_kind::unknown_operation, "unknown-operation", fault_act::operation_change,  fault_argument::none,           true,  true,  false, "an operation in it gets a code that nobody knows, its length right",        "0.02"},
    fault_row{fault_kind::lying_operation,   "lying-operation",   fault_act::operation_change,  fault_argument::none,           true,  true,  false, "an operation in it gets an unknown code and a length past the end",         "0.02"},
    fault_row{fault_kind::short_body,        "short-body",        fault_act::operation_change,  fault_argument::none,           true,  true,  false, "an operation's body lacks its last byte, the length says so",               "@op=66"},
    fault_row{fault_kind::bad_between,       "bad-between",       fault_act::operation_change,  fault_argument::none,           true,  true,  false, "an operation in it comes twice, an unknown one of 4 bytes between the two", "@n=3,dir=out"},
    fault_row{fault_kind::flood,             "flood",             fault_act::copies,            fault_argument::count,          false, true,  true,  "so many tiny ones (ack, tag 0) follow it, beyond a client's receive buffer", "5000@n=10"},
    fault_row{fault_kind::retag,             "retag",             fault_act::operation_change,  fault_argument::tag,            false, true,  false, "a reply carries another tag",                                               "9@op=66"},
    fault_row{fault_kind::readdress,         "readdress",         fault_act::operation_change,  fault_argument::device,         false, true,  false, "a reply names another device",                                              "77@op=66"},
    fault_row{fault_kind::stale,             "stale",             fault_act::stale_reply,       fault_argument::none,           false, true,  false, "a reply of the client's earlier session goes before it",                  "@op=19"},
    fault_row{fault_kind::silence,           "silence",           fault_act::silence,           fault_argument::milliseconds,   true,  true,  true,  "from it on the service neither hears nor speaks for so long",               "7000@n=20"},
    fault_row{fault_kind::refuse,            "refuse",            fault_act::refusal,           fault_argument::status,         true,  false, false, "a connect is refused with this status",                                     "0xB2"},
    fault_row{fault_kind::error,             "error",             fault_act::refusal,           fault_argument::status_and_tag, true,  false, true,  "a request is answered with this status instead of being carried out",       "0xD0@op=64"},
    fault_row{fault_kind::short_acceptance,  "short-acceptance",  fault_act::operation_change,  fault_argument::bytes,          false, true,  false, "the acceptance ends after so many bytes of its client id",                  "3"},
    fault_row{fault_kind::goodbye,           "goodbye",           fault_act::action,            fault_argument::none,           false, true,  true,  "the service says goodbye right after it and forgets the client",           "@op=4"},
    fault_row{fault_kind::restart,           "restart",           fault_act::action,            fault_argument::none,           true,  true,  true,  "the service starts anew: no clients, saved configurations",                 "@n=50"},
    fault_row{fault_kind::unplug,            "unplug",            fault_act::action,            fault_argument::device,         true,  true,  true,  "this device is taken away, the first one where none is named",              "1@op=67"},
    fault_row{fault_kind::plug,              "plug",              fault_act::action,            fault_argument::device_type,    true,  true,  true,  "a device of this type is plugged in",                                       "orvanta3@n=9"},
    fault_row{fault_kind::inject,            "inject",            fault_act::forgery,           fault_argument::count,          false, true,  true,  "so many forged datagrams come from another sender",                         "3@op=4"},
};
// clang-format on

namespace fault_checks {

// The row of a kind stands at the kind's number.
consteval bool rows_stand_by_kind() {
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (static_cast<std::size_t>(faults[i].kind) != i || !(faults[i].to_service || faults[i].to_client)) {
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

// Whether the fault changes bytes of a datagram, as mutate() does.
[[nodiscard]] constexpr bool is_change(fault_kind kind) {
    const fault_act act = row_of(kind).act;
    return act == fault_act::datagram_change || act == fault_act::operation_change;
}

// When a fault happens, to which datagrams, and with which numbers.
//
// A rule fits a datagram that goes its way and holds an operation of its code. Faults of one operation act on
// the first of that code, or on the first of all. Beyond that
//   late, retag, readdress and stale fit datagrams with an answer to what the client asked, connect and
//   disconnect included; refuse fits those with a connect, error those with a request to a device,
//   short-acceptance those with an acceptance; goodbye fits none that is a goodbye already.
//   reorder holds one datagram of a client and a way at a time, so that the next ones pass it.
//   silence, goodbye, restart, unplug and plug begin right after the datagram; silence swallows it too.
//   The datagrams that a rule adds (copies, answers) meet the later rules; forged ones meet none, and of a
//   copy no further copies are made.
struct fault_rule {
    fault_kind kind{fault_kind::drop};
    std::optional<communication::direction> way; // empty: each way that the fault can go
    std::optional<std::uint8_t> code;            // empty: all datagrams; else those with such an operation
    double probability{1};
    std::uint64_t nth{0};               // 0: as probable; else the nth datagram that the rule fits, once
    std::optional<std::uint32_t> first; // the argument, or the lower end of a span
    std::optional<std::uint32_t> last;  // the upper end of a span; the tag of status_and_tag
    bool now{false};                    // asked for at once: a row that can be, without any selector

    bool operator==(const fault_rule&) const = default;
};

inline constexpr std::uint32_t most_copies = 100'000;
inline constexpr std::uint32_t greatest_datagram = 65'507;

// Reads "ARGUMENT@SELECTOR", as in "17@op=66,dir=out,p=0.5" or "0.05" or "@n=3"; blanks around the parts
// are passed over. Selectors: op (code, or name of the table of operations), dir (in: from clients, out),
// p (0 to 1), n (from 1). A probability in the argument's place is a selector as well. Throws
// std::invalid_argument with one line: what is wrong, what would be right.
[[nodiscard]] fault_rule parse_fault(fault_kind kind, std::string_view text);

// The same for a rule that stands from the start, where there is no client yet: a fault that
// would be asked for at once waits for the first datagram that it fits.
[[nodiscard]] fault_rule parse_initial_fault(fault_kind kind, std::string_view text);

// The row of that name, or null.
[[nodiscard]] const fault_row* find_fault(std::string_view name) noexcept;

// The rule as parse_fault reads it, after its name: "truncate 17@op=66".
[[nodiscard]] std::string text_of(const fault_rule& rule);

} // namespace vantu::orvanta::simulator
