// A matcher for regular expressions: GoogleTest's own knows but a few of them where the system has none.
#pragma once

#include <gmock/gmock.h>
#include <regex>
#include <string>

namespace simulator_tests {

MATCHER_P(contains_regex, pattern, "contains the regular expression " + std::string(pattern)) {
    return std::regex_search(arg, std::regex(pattern, std::regex::extended));
}

} // namespace simulator_tests
