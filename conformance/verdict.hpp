// How the look at a rule ends, where it does not hold or cannot be judged.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace vantu::orvanta::conformance {

enum class outcome : std::uint8_t {
    holds,
    fails,   // the service breaks the rule
    stopped, // the service broke another rule before this one could be judged, or the system refused
    skipped, // the service has no part that the rule is about, or the user has not allowed the look
};

// Thrown by a rule's function; one that returns holds.
class verdict : public std::exception {
  public:
    verdict(outcome how, std::string text) : how_(how), text_(std::move(text)) {}
    [[nodiscard]] outcome how() const noexcept { return how_; }
    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

  private:
    outcome how_;
    std::string text_;
};

[[noreturn]] inline void fail(const std::string& seen, const std::string& expected) {
    throw verdict(outcome::fails, seen + "; expected " + expected);
}

// The rule that the service broke, and what was seen of it.
[[noreturn]] inline void stop(const std::string& broken_rule, const std::string& seen) {
    throw verdict(outcome::stopped, broken_rule + ": " + seen);
}

[[noreturn]] inline void skip(const std::string& why) {
    throw verdict(outcome::skipped, why);
}

} // namespace vantu::orvanta::conformance
