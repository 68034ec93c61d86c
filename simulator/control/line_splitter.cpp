#include "simulator/control/line_splitter.hpp"

#include <utility>

namespace vantu::orvanta::simulator {
namespace {

std::string without_return(std::string line) {
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
}

} // namespace

std::vector<std::string> line_splitter::take(std::string_view bytes) {
    std::vector<std::string> lines;
    for (const char letter : bytes) {
        if (letter == '\n' || begun_.size() == longest_line) {
            lines.push_back(without_return(std::exchange(begun_, {})));
        }
        if (letter != '\n') {
            begun_ += letter;
        }
    }
    return lines;
}

std::vector<std::string> line_splitter::end() {
    if (begun_.empty()) {
        return {};
    }
    return {without_return(std::exchange(begun_, {}))};
}

} // namespace vantu::orvanta::simulator
