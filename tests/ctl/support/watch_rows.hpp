// The rows of watch, taken apart.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace orvanta_tests {

// The last piece too when it does not end with a newline.
inline std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream from(text);
    for (std::string line; std::getline(from, line);) {
        lines.push_back(line);
    }
    return lines;
}

inline std::vector<std::string> cells_of(const std::string& row) {
    std::vector<std::string> cells;
    std::size_t begin = 0;
    for (std::size_t end = row.find(','); end != std::string::npos; end = row.find(',', begin)) {
        cells.push_back(row.substr(begin, end - begin));
        begin = end + 1;
    }
    cells.push_back(row.substr(begin));
    return cells;
}

inline std::uint64_t number_of(const std::string& csv_row) {
    return std::stoull(cells_of(csv_row).at(1));
}

} // namespace orvanta_tests
