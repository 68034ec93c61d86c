// The capture of a command: the datagrams of all its sessions in one file.
#pragma once

#include "shared/capture_file.hpp"
#include "vantu/orvanta/traffic.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vantu::orvanta::ctl {

class traffic_recorder {
  public:
    // Begins the file anew. Throws failure_with_status (refused).
    explicit traffic_recorder(const std::string& path);

    // Keeps the datagram, and writes those that are a tenth of a second older: threads tell an answer before
    // its request at times, and the file has them by their times. After a failure it writes nothing more. Any
    // thread.
    void take(const vantu_orvanta_traffic& told) noexcept;

    // Writes the rest. Returns the first failure, one line.
    [[nodiscard]] std::optional<std::string> finish() noexcept;

  private:
    void write_until(std::int64_t time_ns) noexcept;

    std::mutex mutex_;
    capture_writer file_;
    std::multimap<std::int64_t, captured_datagram> kept_; // by time
    std::optional<std::string> failure_;
};

} // namespace vantu::orvanta::ctl
