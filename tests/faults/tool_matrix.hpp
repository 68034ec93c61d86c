// The user of the tool under each fault, as a table that docs/faults.md shows.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// The user finds the device, which opens it and asks for orientation (47), gravity compensation (66) and
// torque scaling (68), looks at the configuration and leaves.
struct tool_row {
    std::string_view rule;    // a verb; after "later:" it is said once the device was found
    std::string_view start;   // "connects", or the last words of a tool that does not
    std::string_view listens; // "yes" to the end, or "no": its polling thread has ended on the way
    std::string_view shown;   // the configuration: gravity compensation, torque scaling, hand; "nothing"
    std::string_view printed; // messages on standard error and log lines but for those of a connection
};

// clang-format off
inline constexpr std::array tool_rows{
    tool_row{"drop @op=4,nth=1",                                                          "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"drop @op=66,dir=out",                                                       "connects", "yes", "Off 0.00, On, Right",  "-"},
    tool_row{"drop @op=66,dir=in",                                                        "connects", "yes", "Off 0.00, On, Right",  "-"},
    tool_row{"duplicate 1@op=66",                                                         "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"duplicate 1@op=4",                                                          "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"reorder 1@op=66,dir=out",                                                   "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"delay 20",                                                                  "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"delay 20@op=66,dir=answer",                                                 "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"truncate 12@op=66,dir=out",                                                 "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"extend 9@op=66,dir=out",                                                    "connects", "no",  "On 0.75, Off, Right",  "-"},
    tool_row{"extend 2029@op=66,dir=out",                                                 "connects", "no",  "Off 0.00, Off, Right", "message: unable to recv packet with code: Message too long"},
    tool_row{"extend 65507@op=66,dir=out",                                                "connects", "no",  "Off 0.00, Off, Right", "message: unable to recv packet with code: Message too long"},
    tool_row{"truncate 0@op=66,dir=out",                                                  "connects", "no",  "Off 0.00, Off, Right", "vantu_orvanta_poll: Cannot read header"},
    tool_row{"truncate 0@op=66,dir=in",                                                   "connects", "yes", "Off 0.00, On, Right",  "-"},
    tool_row{"flip 1@op=66,dir=out",                                                      "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"patch header.magic=other@op=66,dir=out",                                    "connects", "no",  "Off 0.00, Off, Right", "vantu_orvanta_poll: Header magic mismatch"},
    tool_row{"patch header.version=other@op=66,dir=out",                                  "connects", "no",  "Off 0.00, Off, Right", "vantu_orvanta_poll: Header version mismatch"},
    tool_row{"patch header.version=other@op=66,dir=in",                                   "connects", "yes", "Off 0.00, On, Right",  "Error from on_error: invalid version"},
    tool_row{"patch op.magic=other@op=66,dir=out",                                        "connects", "no",  "Off 0.00, Off, Right", "vantu_orvanta_poll: communication::proto::op magic mismatch"},
    tool_row{"patch op.code=other@op=66,dir=out",                                         "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"patch op.length=65535@op=66,dir=out",                                       "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"cut 1@op=66,dir=out",                                                       "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"cut 1@op=66,dir=in",                                                        "connects", "yes", "Off 0.00, On, Right",  "Error from on_error: invalid body"},
    tool_row{"insert ff5704000001020304@op=66,dir=out",                                   "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"flood 200@op=66",                                                           "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"patch tag=9@op=66,dir=answer",                                              "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"patch device=77@op=66,dir=answer",                                          "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"stale @op=66",                                                              "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"stale @op=4",                                                               "connects", "no",  "Off 0.00, Off, Right", "-"},
    tool_row{"silence 60000@op=66,dir=in",                                                "connects", "yes", "Off 0.00, Off, Right", "-"},
    tool_row{"error 0xB2@op=connect",                                                     "client.connect: another client is already connected",               "no", "nothing", "-"},
    tool_row{"error 0xB3@op=connect",                                                     "client.connect: an internal buffer is either full or empty",        "no", "nothing", "-"},
    tool_row{"error 0xA0@op=connect",                                                     "client.connect: unable to parse the service protocol",              "no", "nothing", "-"},
    tool_row{"error 0xD0@op=66",                                                          "connects", "yes", "Off 0.00, On, Right",  "Error from on_error: communication error with device"},
    tool_row{"cut 5@op=connected",                                                        "assumption failed: can_read<T>()",                                  "no", "nothing", "-"},
    tool_row{"later: goodbye",                                                            "connects", "no",  "nothing",              "No device connected - try using 'Find Orvanta3'"},
    tool_row{"restart @op=66,dir=in",                                                     "connects", "yes", "On 0.75, Off, Right",  "Error from on_error: client is not connected"},
    tool_row{"later: unplug 1",                                                           "connects", "yes", "nothing",              "No device connected - try using 'Find Orvanta3'"},
    tool_row{"plug orvanta3@op=66,dir=out",                                               "connects", "yes", "On 0.75, On, Right",   "-"},
    tool_row{"later: inject 3",                                                           "connects", "no",  "nothing",              "No device connected - try using 'Find Orvanta3'"},
};
// clang-format on

consteval bool has_every_fault(std::span<const tool_row> rows) {
    return std::all_of(faults.begin(), faults.end(), [&](const fault_row& fault) {
        return std::any_of(rows.begin(), rows.end(), [&](const tool_row& row) {
            constexpr std::string_view later = "later: ";
            const auto verb = row.rule.starts_with(later) ? row.rule.substr(later.size()) : row.rule;
            return verb.substr(0, verb.find(' ')) == fault.name;
        });
    });
}
static_assert(has_every_fault(tool_rows), "every fault has its row");

} // namespace orvanta_tests
