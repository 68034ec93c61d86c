// Candidates for the last word of a command line: for the shells' completion.
#pragma once

#include "vantu/orvanta/device.hpp"

#include <functional>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct candidate {
    std::string word; // whole, as it would stand on the line
    std::string meaning;
};

struct candidates {
    std::vector<candidate> words;
    bool files{false}; // the shell adds the names of files
};

// For the words after the program's name; the last one is being typed, and may be empty. Devices are asked
// for only where one is to be named.
candidates candidates_for(const std::vector<std::string>& words,
                          const std::function<std::vector<device>()>& devices);

} // namespace vantu::orvanta::ctl
