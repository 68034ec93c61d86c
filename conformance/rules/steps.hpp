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

// A request whose length field is this one, whatever follows.
[[nodiscard]] bytes with_length(bytes request, std::size_t length);

// Fails the rule unless the answer is this operation, or a refusal with this status.
void expect_operation(std::string_view request, const std::optional<seen_operation>& answer,
                      std::uint8_t code);
void expect_refusal(std::string_view request, const std::optional<seen_operation>& answer,
                    service_status status);

// Stops the rule unless the request is answered as its row says. The answer.
seen_operation need_answer(visitor& who, std::span<const std::byte> request);
// The same for a refusal, which this rule says.
seen_operation need_refusal(visitor& who, std::span<const std::byte> request, const std::string& rule);

class client : public visitor {
  public:
    explicit client(surroundings& around) : visitor(around) { connect(); }
};

// A client, and the first device of a type that the service lists; skips the rule where there is none.
class device_client : public client {
  public:
    explicit device_client(surroundings& around, std::uint8_t type = any_type);
    [[nodiscard]] std::uint32_t device() const { return device_.id; }
    [[nodiscard]] std::uint8_t type() const { return device_.type; }

    // A request for this device, with tag 1.
    [[nodiscard]] bytes request(std::uint8_t code, std::span<const std::byte> argument = {}) const;

    // Stop the rule where that is refused.
    void open();
    void close();

  private:
    listed_device device_;
};

// The same with the device opened.
class device_user : public device_client {
  public:
    explicit device_user(surroundings& around, std::uint8_t type = any_type) : device_client(around, type) {
        open();
    }
};

// The same with the device's settings as they were, which it gets back at the end; what cannot be read is
// left alone.
class device_owner : public device_user {
  public:
    explicit device_owner(surroundings& around, std::uint8_t type = orvanta3_type);
    ~device_owner();

    // A request for a device that changes nothing of this one.
    [[nodiscard]] bytes idle_request(std::uint8_t code, std::uint32_t device, std::uint8_t tag = 1) const;
    [[nodiscard]] bytes idle_request(std::uint8_t code) const { return idle_request(code, device()); }

  private:
    std::map<std::uint8_t, bytes> settings_; // by the requests that set them
};

// The connected client is still served, and a new one is accepted, or refused as one too many; else the rule
// fails, after this bad input.
void expect_survival(device_user& who, std::string_view after);

// Sends these, and fails the rule when an answer or a refusal comes.
void expect_ignored(visitor& who, std::string_view what, const std::vector<bytes>& datagrams);

} // namespace vantu::orvanta::conformance
