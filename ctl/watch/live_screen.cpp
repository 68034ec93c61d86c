#include "ctl/watch/live_screen.hpp"

#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta::ctl {

std::string live_screen::redraw(const std::vector<std::string>& block, std::size_t columns,
                                std::size_t lines) {
    std::string text;
    if (drawn_ > 0) {
        const bool same_size = columns == columns_ && lines == lines_;
        text = same_size ? formatted("\r\x1b[{}A", drawn_) : "\x1b[H\x1b[J";
    }
    for (const std::string& line : block) {
        text += line + "\x1b[K\n";
    }
    text += "\x1b[J";
    drawn_ = block.size();
    columns_ = columns;
    lines_ = lines;
    return text;
}

} // namespace vantu::orvanta::ctl
