// Draws a block of lines over the one before it. The cursor stays in the line below the block and the
// terminal's settings as they are, so that nothing is to be restored at any end.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

class live_screen {
  public:
    // The bytes for a terminal of this size. After a change of size, when the terminal may have broken or
    // joined the old lines, the visible screen is cleared.
    std::string redraw(const std::vector<std::string>& block, std::size_t columns, std::size_t lines);

  private:
    std::size_t drawn_{0};
    std::size_t columns_{0};
    std::size_t lines_{0};
};

} // namespace vantu::orvanta::ctl
