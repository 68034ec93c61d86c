// Reads the tables of a markdown document.

#include "docs/markdown_table.hpp"

#include <fstream>

namespace {

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

table_row cells_of(const std::string& line) {
    table_row cells;
    std::size_t start = 1;
    for (auto end = line.find('|', start); end != std::string::npos; end = line.find('|', start)) {
        cells.push_back(trimmed(line.substr(start, end - start)));
        start = end + 1;
    }
    return cells;
}

} // namespace

std::vector<table_row> table_under(const std::string& path, const std::string& heading) {
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
