// The configurations that devices have saved, in a file of JSON text or in memory.
#pragma once

#include "simulator/service/device.hpp"

#include <map>
#include <span>
#include <string>

namespace vantu::orvanta::simulator {

class saved_state {
  public:
    // Without a file: they last as long as this does.
    saved_state() = default;
    // Reads the file; one that is not there holds no configurations. Throws std::runtime_error with one
    // line, which begins with the path, when it is wrong in any way or could not be written later.
    explicit saved_state(std::string path);

    // Gives each device its saved configuration; the others keep theirs.
    void apply_to(std::span<device> devices) const;

    // Saves the device's configuration and leaves those of all other devices in the file as they are.
    // Returns an empty text, or what failed in one line; then the file is as it was.
    [[nodiscard]] std::string keep(const device& which);

  private:
    std::string path_;
    std::map<std::string, configuration> kept_; // by the device's uuid_text
};

// The file's text for the given configurations, and back. The reader throws located_error. What a
// configuration lacks is as it leaves the factory.
[[nodiscard]] std::string state_text_of(const std::map<std::string, configuration>& kept);
[[nodiscard]] std::map<std::string, configuration> read_state_text(const std::string& text);

} // namespace vantu::orvanta::simulator
