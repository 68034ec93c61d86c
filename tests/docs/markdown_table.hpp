// Reads the tables of a markdown document.
#pragma once

#include <fstream>
#include <string>
#include <vector>

namespace orvanta_tests {

using table_row = std::vector<std::string>; // the cells, without the spaces around them

[[nodiscard]] inline std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

[[nodiscard]] inline table_row cells_of(const std::string& line) {
    table_row cells;
    std::size_t start = 1;
    for (auto end = line.find('|', start); end != std::string::npos; end = line.find('|', start)) {
        cells.push_back(trimmed(line.substr(start, end - start)));
        start = end + 1;
    }
    return cells;
}

// The rows of the first table under a heading ("## Operation table"), without its head and the line
// below that; empty when there is no such heading or no table under it.
[[nodiscard]] inline std::vector<table_row> table_under(const std::string& path, const std::string& heading) {
    std::ifstream document(path);
    std::vector<table_row> rows;
    bool under_heading = false;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with('#')) {
            under_heading = line == heading;
        } else if (under_heading && line.starts_with('|')) {
            rows.push_back(cells_of(line));
        } else if (!rows.empty()) {
            break;
        }
    }
    rows.erase(rows.begin(), rows.begin() + (rows.size() < 2 ? 0 : 2));
    return rows;
}

} // namespace orvanta_tests
