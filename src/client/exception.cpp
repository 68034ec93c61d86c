// Errors of class client: their exception and their texts.
#include "vantu/orvanta/client.hpp"

#include <utility>

namespace vantu::orvanta {

const char* error_message(std::int32_t code) noexcept {
    return vantu_orvanta_error_message(code);
}

exception::exception(std::uint32_t code)
    : code_(code), message_(error_message(static_cast<std::int32_t>(code))) {}

exception::exception(std::uint32_t code, std::string label)
    : code_(code), message_(std::move(label) + ": " + error_message(static_cast<std::int32_t>(code))) {}

exception::exception(std::uint32_t code, std::string message, whole)
    : code_(code), message_(std::move(message)) {}

exception exception::with_message(std::uint32_t code, std::string message) {
    return {code, std::move(message), whole{}};
}

exception::exception(const exception& other) = default;
exception& exception::operator=(const exception& other) = default;
exception::~exception() = default;

const char* exception::what() const noexcept {
    return message_.c_str();
}

void check_result(std::int32_t code, std::string label) {
    if (code != vantu_orvanta_success) {
        throw exception(static_cast<std::uint32_t>(code), std::move(label));
    }
}

} // namespace vantu::orvanta
