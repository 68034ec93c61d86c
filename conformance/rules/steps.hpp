// The steps that rules are made of: a client with an opened device, settings that are put back, and answers
// that are held against what a rule expects.
#pragma once

#include "conformance/verdict.hpp"
#include "conformance/visitor.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <map>
#include <string_view>

namespace vantu::orvanta::conformance {

inline constexpr std::uint8_t any_type = 0;
inline constexpr std::uint8_t orvanta3_type = vantu_orvanta_device_type_orvanta3;
inline constexpr std::uint8_t palmetron_type = vantu_orvanta_device_type_palmetron;

// A device id that no service lists.
inline constexpr std::uint32_t unlisted_device = 0xFFFF'FFF0;

// Fails the rule unless the answer is this operation, or a refusal with this status.
void expect_operation(std::string_view request, const std::optional<seen_operation>& answer,
                      std::uint8_t code);
void expect_refusal(std::string_view request, const std::optional<seen_operation>& answer,
                    service_status status);

// Stops the rule unless the request is answered as its row says. The answer.
seen_operation need_answer(visitor& who, std::span<const std::byte> request);

// A connected client, and the first device of a type that the service lists; skips the rule where there is
// none.
class device_visitor : public visitor {
  public:
    explicit device_visitor(surroundings& around, std::uint8_t type = any_type);
    [[nodiscard]] std::uint32_t device() const { return device_.id; }
    [[nodiscard]] std::uint8_t type() const { return device_.type; }

  private:
    listed_device device_;
};

// The same with the device opened; stops the rule where that is refused.
class device_user : public device_visitor {
  public:
    explicit device_user(surroundings& around, std::uint8_t type = any_type);
};

// The settings of a user's Orvanta3 as they were, which it gets back at the end; what cannot be read is left
// alone.
class kept_settings {
  public:
    explicit kept_settings(device_user& owner);
    ~kept_settings();
    kept_settings(const kept_settings&) = delete;
    kept_settings& operator=(const kept_settings&) = delete;

    // Bytes after the device id with which a request changes nothing.
    [[nodiscard]] bytes argument_of(std::uint8_t code) const;

  private:
    device_user& owner_;
    std::map<std::uint8_t, bytes> arguments_; // of the requests that set
};

// The connected client is still served, and a new one is accepted, or refused as one too many; else the rule
// fails, after this bad input.
void expect_survival(device_user& who, std::string_view after);

// Fails the rule when an answer or a refusal has come.
void expect_no_answer(const visitor& who, std::string_view to);

} // namespace vantu::orvanta::conformance
