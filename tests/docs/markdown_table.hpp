// Reads the tables of a markdown document.
#pragma once

#include <string>
#include <vector>

using table_row = std::vector<std::string>; // the cells, without the spaces around them

// The rows of the first table under a heading ("## Operation table"), without its head and the line
// below that; empty when there is no such heading or no table under it.
[[nodiscard]] std::vector<table_row> table_under(const std::string& path, const std::string& heading);
