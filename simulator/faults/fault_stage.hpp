// The stage between the service and its sockets, where datagrams suffer faults. It has no socket and no
// clock, and draws all its chances from one seed: the same rules and datagrams give the same bytes.
#pragma once

#include "simulator/faults/faults.hpp"
#include "simulator/service/outbox.hpp"
#include "simulator/service/peer.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// A datagram on its way from a client to the service.
struct arrival {
    peer from;
    std::vector<std::byte> bytes;
};

// A datagram on its way to a client, of any size that UDP carries.
struct departure {
    peer to;
    std::vector<std::byte> bytes;
    bool forged{false}; // to be sent from a socket of its own, as another program would
};

// What a fault asks of the service's owner, beyond datagrams.
struct requested_action {
    fault_kind kind{fault_kind::restart}; // goodbye, restart, unplug or plug
    std::optional<std::uint32_t> argument;
    std::optional<peer> client; // goodbye: to whom; empty: to all
};

struct rule_state {
    fault_rule rule;
    std::uint64_t fitted{0};   // datagrams that the rule fits
    std::uint64_t happened{0}; // those that suffered the fault
};

class fault_stage {
  public:
    explicit fault_stage(std::uint64_t seed);
    ~fault_stage();
    fault_stage(fault_stage&&) noexcept;
    fault_stage& operator=(fault_stage&&) noexcept;
    fault_stage(const fault_stage&) = delete;
    fault_stage& operator=(const fault_stage&) = delete;

    // Rules act in the order in which they were added, each on what the one before it left. A rule that is
    // asked for at once acts on the clients named here and is not kept, but counted.
    void add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns);

    // Takes all rules away, or those of one kind; what they hold back is due at once. Counts stay.
    void heal();
    void heal(fault_kind kind);

    // The rules that act now, in their order.
    [[nodiscard]] std::vector<rule_state> rules() const;

    // How often a fault has happened since the beginning, rules that are gone included.
    [[nodiscard]] std::uint64_t happened(fault_kind kind) const noexcept;

    // Gives the stage a datagram that a socket received, or that the service sends.
    void from_socket(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns);
    void from_service(const outgoing_datagram& datagram, std::int64_t now_ns);

    // Lets go what is due; next_due_ns says when that is, never_ns where nothing is held back.
    void tick(std::int64_t now_ns);
    [[nodiscard]] std::int64_t next_due_ns() const noexcept;

    // What the service is to receive, what the sockets are to send, and what else is to be done, in order,
    // each handed out once.
    [[nodiscard]] std::vector<arrival> take_arrivals();
    [[nodiscard]] std::vector<departure> take_departures();
    [[nodiscard]] std::vector<requested_action> take_actions();

    // While an action is carried out, the rules that ask for actions fit none of the datagrams that it sets
    // off: two such rules could chase each other for ever, faster each time.
    void begin_action() noexcept;
    void end_action() noexcept;

  private:
    class implementation;
    std::unique_ptr<implementation> implementation_;
};

} // namespace vantu::orvanta::simulator
