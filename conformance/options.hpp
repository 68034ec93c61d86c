// The command line of orvanta-conformance.
#pragma once

#include "conformance/rules.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace vantu::orvanta::conformance {

struct options {
    std::string port{"54320"};
    std::vector<const rule*> rules; // in the order of the table
    std::int64_t answer_time_ns{0};
    bool may_save{false};
    bool in_json{false};
    std::string junit_path; // empty: none is written
};

enum class parse_verdict : std::uint8_t {
    run,
    show,  // print the text on standard output and end with status 0
    wrong, // print the text, one line, on standard error and end with the status of wrong usage
};

struct parse_outcome {
    parse_verdict verdict{parse_verdict::run};
    options chosen;
    std::string text;
};

[[nodiscard]] parse_outcome parse_options(int argument_count, const char* const* arguments);

} // namespace vantu::orvanta::conformance
