// Lines out of bytes that come in pieces, as from a pipe or a socket.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta::simulator {

class line_splitter {
  public:
    // Longer lines come in pieces, so that bytes without line ends do not fill the memory.
    static constexpr std::size_t longest_line = 65536;

    // The lines that end in these bytes, without their ends, which are LF or CR LF.
    [[nodiscard]] std::vector<std::string> take(std::string_view bytes);

    // At the end of the bytes: the last line where it lacks an end, else nothing.
    [[nodiscard]] std::vector<std::string> end();

  private:
    std::string begun_;
};

} // namespace vantu::orvanta::simulator
