// Finds the texts that sources hand to the log and to users, and compares them with those of a document.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orvanta_tests {

[[nodiscard]] inline std::string text_of_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

[[nodiscard]] inline std::vector<std::filesystem::path> sources_in(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const auto extension = entry.path().extension();
        if (extension == ".cpp" || extension == ".hpp") {
            found.push_back(entry.path());
        }
    }
    return found;
}

// The string literals in a piece of source; neighbours with only white space between them are one.
[[nodiscard]] inline std::vector<std::string> literals_in(const std::string& source) {
    static const std::regex literal(R"re("((?:[^"\\]|\\.)*)")re");
    std::vector<std::string> found;
    std::size_t end_of_last = std::string::npos;
    for (std::sregex_iterator at(source.begin(), source.end(), literal), end; at != end; ++at) {
        const auto begin = static_cast<std::size_t>(at->position());
        const bool goes_on =
            end_of_last != std::string::npos && source.find_first_not_of(" \n", end_of_last) == begin;
        if (goes_on) {
            found.back() += (*at)[1].str();
        } else {
            found.push_back((*at)[1].str());
        }
        end_of_last = begin + static_cast<std::size_t>(at->length());
    }
    return found;
}

// What stands in the parentheses of each call of a function or macro, its definition left out.
[[nodiscard]] inline std::vector<std::string> calls_of(const std::string& name, const std::string& source) {
    std::vector<std::string> found;
    for (std::size_t at = source.find(name + '('); at != std::string::npos;
         at = source.find(name + '(', at + 1)) {
        const std::string before = source.substr(at < 8 ? 0 : at - 8, std::min<std::size_t>(at, 8));
        const std::size_t begin = at + name.size() + 1;
        std::size_t end = begin;
        for (int depth = 1; depth > 0 && end < source.size(); ++end) {
            depth += source[end] == '(' ? 1 : source[end] == ')' ? -1 : 0;
        }
        if (!before.ends_with("void ") && !before.ends_with("#define ")) {
            found.push_back(source.substr(begin, end - begin - 1));
        }
    }
    return found;
}

// A text of the code with "{}" in the place of each replacement field.
[[nodiscard]] inline std::string without_formats(const std::string& text) {
    static const std::regex field(R"(\{[^}]*\})");
    return std::regex_replace(text, field, "{}");
}

} // namespace orvanta_tests
