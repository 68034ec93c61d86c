/// @file
/// The outcome of a request of a session: a value, or an error code with a message. C++17.
#pragma once

#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace vantu::orvanta {

/// A failure is a code, and a sentence that names the request, the code's text and, where there is one,
/// what to do about it.
struct failure {
    error_code code;     ///< never error_code::success
    std::string message; ///< one line
};

/// Throws an exception with the failure's code and message.
[[noreturn]] VANTU_ORVANTA_API void throw_failure(const failure& why);

/// A value, or why there is none. Ignoring one is a warning: what it says is said nowhere else.
template <typename Value> class [[nodiscard]] result {
  public:
    /// A result with a value.
    result(Value value) : value_(std::move(value)) {} // NOLINT(google-explicit-constructor)
    /// A result without one.
    result(failure why) : failure_(std::move(why)) {} // NOLINT(google-explicit-constructor)

    /// Whether there is a value.
    [[nodiscard]] bool has_value() const noexcept { return value_.has_value(); }
    /// Whether there is a value.
    [[nodiscard]] explicit operator bool() const noexcept { return value_.has_value(); }

    /// The value. Throws vantu::orvanta::exception, whose what() is message(), when there is none.
    const Value& value() const& { return checked(); }
    /// The same for a result that is not used any more.
    Value value() && {
        checked();
        return *std::move(value_);
    }

    /// A member of the value. Throws as value() does.
    const Value* operator->() const { return &checked(); }
    /// The value. Throws as value() does.
    const Value& operator*() const { return checked(); }

    /// The code: error_code::success when there is a value.
    [[nodiscard]] error_code error() const noexcept { return value_ ? error_code::success : failure_.code; }
    /// The failure's sentence, in one line; empty when there is a value.
    [[nodiscard]] const std::string& message() const noexcept { return failure_.message; }

  private:
    const Value& checked() const {
        if (!value_) {
            throw_failure(failure_);
        }
        return *value_;
    }

    std::optional<Value> value_;
    failure failure_{};
};

/// The outcome of a request whose answer has no value.
template <> class [[nodiscard]] result<void> {
  public:
    /// Success.
    result() = default;
    /// A failure.
    result(failure why) : failure_(std::move(why)) {} // NOLINT(google-explicit-constructor)

    /// Whether the request succeeded.
    [[nodiscard]] bool has_value() const noexcept { return failure_.code == error_code::success; }
    /// Whether the request succeeded.
    [[nodiscard]] explicit operator bool() const noexcept { return has_value(); }

    /// Throws vantu::orvanta::exception, whose what() is message(), unless the request succeeded.
    void value() const {
        if (!has_value()) {
            throw_failure(failure_);
        }
    }

    /// The code: error_code::success when the request succeeded.
    [[nodiscard]] error_code error() const noexcept { return failure_.code; }
    /// The failure's sentence, in one line; empty when there is none.
    [[nodiscard]] const std::string& message() const noexcept { return failure_.message; }

  private:
    failure failure_{};
};

} // namespace vantu::orvanta
