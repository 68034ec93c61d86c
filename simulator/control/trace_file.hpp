// The file, or standard output, that the lines of a trace go to.
#pragma once

#include "shared/capture_file.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

class trace_file {
  public:
    // "-" is standard output. Told is whoever hears, once, that a line could not be written. Throws
    // std::runtime_error with one line for a file that cannot be written.
    trace_file(std::string path, std::function<void(std::string_view line)> told);

    // Writes the line at once; nothing after a failure.
    void write(std::string_view line);

  private:
    std::string path_;
    std::function<void(std::string_view line)> told_;
    file_handle own_; // null: standard output
    bool failed_{false};
};

} // namespace vantu::orvanta::simulator
