// A client of the kit's own: sends what it is given, damaged or not, and keeps all that comes.
#pragma once

#include "conformance/datagrams.hpp"
#include "conformance/surroundings.hpp"
#include "vantu/orvanta/communication/bodies.hpp"

#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta::conformance {

// The body of the kit's connect.
[[nodiscard]] communication::proto::connect_body introduction(std::uint64_t keep_alive_ns = 5'000'000'000);

// Whether the answer to a connect says that the service serves other clients already.
[[nodiscard]] bool has_no_room(const std::optional<seen_operation>& answer);

struct listed_device {
    std::uint32_t id{0};
    std::uint8_t type{0};
};

class visitor {
  public:
    // Not connected yet. Throws std::runtime_error when no socket can be had.
    explicit visitor(surroundings& around);
    // Says goodbye where it was accepted, and waits for the answer.
    ~visitor();
    visitor(const visitor&) = delete;
    visitor& operator=(const visitor&) = delete;

    // Throws std::runtime_error when the system refuses.
    void send(std::span<const std::byte> datagram);

    // Takes all that comes within a time.
    void listen(std::int64_t for_ns);

    // The next of these operations that has not been looked at yet, and waits for it; what comes before it
    // counts as looked at.
    [[nodiscard]] std::optional<seen_operation> await(std::initializer_list<std::uint8_t> codes);

    // Passes over what has come, sends a request and waits for the answer of its row or a refusal, whatever
    // tag and device that names.
    [[nodiscard]] std::optional<seen_operation> ask(std::span<const std::byte> request);

    // The same for a connect: true when it is accepted.
    bool try_connect(const communication::proto::connect_body& with = introduction());
    [[nodiscard]] const std::optional<seen_operation>& answer_to_connect() const { return handshake_; }
    // Stops the rule when it is not.
    void connect(const communication::proto::connect_body& with = introduction());

    // Says goodbye; stops the rule when that is not answered.
    void disconnect();

    // Passes over what has come; and what has come since.
    void forget();
    [[nodiscard]] std::span<const seen_operation> news() const;

    // The first listed device of a type (1, 2; 0 for any); waits for it. Nothing where none is.
    [[nodiscard]] std::optional<listed_device> find_device(std::uint8_t type);

    // Since the beginning.
    [[nodiscard]] const std::vector<seen_operation>& operations() const { return operations_; }
    [[nodiscard]] const std::vector<found_damage>& damages() const { return damages_; }
    [[nodiscard]] std::size_t datagrams() const { return datagrams_; }
    // Datagrams that are larger than a client's buffer, or that the system refuses to hand out.
    [[nodiscard]] std::size_t refused_datagrams() const { return refused_; }

    [[nodiscard]] surroundings& around() const { return around_; }

  private:
    // Takes what waits; false where nothing does.
    bool take();

    surroundings& around_;
    socket_handle socket_;
    bool connected_{false};
    std::optional<seen_operation> handshake_;
    std::vector<seen_operation> operations_;
    std::size_t looked_at_{0};
    std::vector<found_damage> damages_;
    std::size_t datagrams_{0};
    std::size_t refused_{0};
};

} // namespace vantu::orvanta::conformance
