// The findings of a run as text for people, as JSON and as JUnit's XML.
#pragma once

#include "conformance/run.hpp"

#include <string>

namespace vantu::orvanta::conformance {

// "ok", "FAIL", "stop", "skip".
[[nodiscard]] std::string_view word_of(outcome how);

// "ok   NAME" or "FAIL NAME: text", with a line feed.
[[nodiscard]] std::string line_of(const finding& what);

// "69 rules: 67 ok, 1 failed, 0 stopped, 1 skipped", with a line feed.
[[nodiscard]] std::string summary_of(std::span<const finding> findings);

// {"rules": [{"name", "outcome", "text", "seconds"}], "ok", "failed", "stopped", "skipped"} on one line.
[[nodiscard]] std::string json_of(std::span<const finding> findings);

// One test suite with a test case for each rule.
[[nodiscard]] std::string junit_of(std::span<const finding> findings);

// A line for each rule: its name and what it says.
[[nodiscard]] std::string list_of_rules();

} // namespace vantu::orvanta::conformance
