// The command line, read: which command is asked for, and with which options.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct command_row;
class traffic_recorder;

enum class watch_format : std::uint8_t { live, lines, csv, json };

// Each option that was not given has its default.
struct request {
    const command_row* command{nullptr};
    std::vector<std::string> words; // that follow the command
    std::string device;             // empty: the only one
    bool save{false};
    bool dry_run{false};
    bool other_device{false};
    std::optional<std::chrono::nanoseconds> duration; // empty: without end
    std::optional<double> rate_hz;
    std::optional<watch_format> format;
    std::string plot;                           // the path of a picture; empty: none
    std::string capture;                        // the path of a capture; empty: none
    std::shared_ptr<traffic_recorder> recorder; // of that capture; null: none, or not begun
    std::chrono::nanoseconds timeout{std::chrono::seconds(2)};
    bool json{false};
    bool verbose{false};
};

} // namespace vantu::orvanta::ctl
