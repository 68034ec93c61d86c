// Scenarios: files of JSON text that say which devices a simulation begins with and what happens to it when.
#pragma once

#include "simulator/faults/faults.hpp"
#include "simulator/service/device.hpp"
#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta {
struct located_value;
} // namespace vantu::orvanta

namespace vantu::orvanta::simulator {

// The events that a step can wait for, each by an operation that the simulation has received or sent.
enum class scenario_event : std::uint8_t { connect, open, close, save, goodbye, request };

struct scenario_event_row {
    scenario_event event;
    std::string_view name;
    communication::direction way;
    std::uint8_t code; // 0: any request, keep-alives, connects and goodbyes being none
    std::string_view meaning;
};

// clang-format off
inline constexpr std::array scenario_events{
    scenario_event_row{scenario_event::connect, "connect", communication::direction::to_client,  communication::op_code::connected,     "a client has been accepted"},
    scenario_event_row{scenario_event::open,    "open",    communication::direction::to_client,  communication::op_code::device_opened, "a device has been opened"},
    scenario_event_row{scenario_event::close,   "close",   communication::direction::to_client,  communication::op_code::device_closed, "a device has been closed"},
    scenario_event_row{scenario_event::save,    "save",    communication::direction::to_client,  communication::op_code::config_save,   "a configuration has been saved"},
    scenario_event_row{scenario_event::goodbye, "goodbye", communication::direction::to_service, communication::op_code::disconnect,    "a client has said goodbye"},
    scenario_event_row{scenario_event::request, "request", communication::direction::to_service, 0,                                     "a request has come, with \"op\" one of that operation"},
};
// clang-format on

// The members that the objects of a scenario can have. From "port" on those of the scenario are options of
// the program, with underscores in the place of dashes.
namespace scenario_members {
inline constexpr std::array<std::string_view, 17> scenario{
    "version",  "about",     "devices",  "for_each_client", "steps",  "port",
    "orvanta3", "palmetron", "announce", "single_client",   "rate",   "state",
    "capture",  "faults",    "seed",     "trace",           "verbose"};
inline constexpr std::array<std::string_view, 5> device{"type", "id", "short_id", "uuid", "configuration"};
inline constexpr std::array<std::string_view, 7> step{"at", "after", "delay", "each", "every", "times", "do"};
inline constexpr std::array<std::string_view, 3> event{"event", "op", "n"};
} // namespace scenario_members

struct scenario_trigger {
    scenario_event event{scenario_event::connect};
    std::uint8_t code{0}; // the request's; 0: any
    std::uint64_t nth{1}; // counted from the simulation's start, or from the client's acceptance
    bool each{false};     // that event and each after it; else that one alone
};

struct scenario_step {
    std::optional<scenario_trigger> after; // empty: at due_ns
    std::int64_t due_ns{0};                // since the start, or since the event
    std::vector<std::string> verbs;
    std::int64_t every_ns{0}; // the time from one repeat to the next; 0: none
    std::uint64_t times{0};   // how often with all repeats; 0: without an end
};

struct scenario {
    std::string about;                          // the subject that it shows; may be empty
    std::optional<std::vector<device>> devices; // by rising id; empty: the settings count them
    bool for_each_client{false};                // the steps begin anew with each acceptance of a client
    std::vector<scenario_step> steps;
    service_simulator::settings settings; // what it leaves out is left out here
    std::string trace_path;               // for the program; empty: none
    bool verbose{false};                  // for the program
};

// Reads a scenario from a text. Throws located_error.
[[nodiscard]] scenario read_scenario_text(const std::string& text);

// Reads a scenario from a file. Throws std::runtime_error with one line: "PATH:LINE: what is wrong; what
// would be right".
[[nodiscard]] scenario read_scenario(const std::string& path);

// Reads the array of devices of a scenario. Throws located_error. The devices stand by rising id; no two
// share an id, a short id or a uuid.
[[nodiscard]] std::vector<device> read_scenario_devices(const located_value& list);

// Reads the array of steps of a scenario. Throws located_error.
[[nodiscard]] std::vector<scenario_step> read_scenario_steps(const located_value& list, bool for_each_client);

// A verb of steps that are played for a client: with its number in the place of `this`, which may stand after
// "client=" and at the end of a name, as in "drop 0.3@client=this,as=loss-this" and "heal loss-this".
[[nodiscard]] std::string verb_for_client(std::string verb, std::uint64_t number);

} // namespace vantu::orvanta::simulator
