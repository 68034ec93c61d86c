// The pipeline of faults between the service and its sockets. It has no socket and no clock, and draws all
// its chances from one seed: the same rules and datagrams give the same bytes.
#pragma once

#include "simulator/faults/fault_chances.hpp"
#include "simulator/faults/fault_conversations.hpp"
#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/fault_mutations.hpp"
#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/faults/held_datagrams.hpp"
#include "simulator/faults/waiting_line.hpp"
#include "simulator/service/outbox.hpp"
#include "simulator/service/peer.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {

// A datagram on its way from a client to the service.
struct arrival {
    peer from;
    datagram_bytes bytes;
};

// A datagram on its way to a client, of any size that UDP carries.
struct departure {
    peer to;
    datagram_bytes bytes;
    bool forged{false}; // to be sent from a socket of its own, as another program would
};

// An action that a fault asks of the service's owner, beyond datagrams.
struct requested_action {
    fault_kind kind{fault_kind::restart}; // goodbye, restart, unplug or plug
    std::optional<std::uint32_t> argument;
    std::optional<peer> client; // goodbye: to whom; empty: to all
};

// A fault that has happened to a datagram.
struct fault_note {
    std::string_view rule; // its text, as in "truncate 17@op=66"
    fault_kind kind{fault_kind::drop};
    communication::direction way{communication::direction::to_client};
    peer with;
    std::span<const std::byte> bytes; // of the datagram before the fault
};

using note_function = std::function<void(const fault_note&)>;

struct rule_state {
    fault_rule rule;
    std::uint64_t number{0};   // of all rules since the beginning, from 1; a rule of the same name keeps it
    std::uint64_t fitted{0};   // datagrams that the rule fits
    std::uint64_t happened{0}; // those to which the fault happened
};

class fault_pipeline {
  public:
    explicit fault_pipeline(std::uint64_t seed) : seed_(seed), chances_(seed) {}

    // Adds one who is told of each fault that happens to a datagram, before it does, and must not call the
    // pipeline. Faults asked for at once have no datagram.
    void tell(note_function told) { told_.push_back(std::move(told)); }

    // Rules act in the order in which they were added, each on what the one before it left. A rule that is
    // asked for at once acts on the clients named here and is not kept, but counted. A rule takes the place
    // of one of its name.
    void add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns);

    // Takes all rules away, those of one kind, or that of a name or number; the datagrams that they hold are
    // due at once. Counts stay. The last returns whether there is one.
    void heal();
    void heal(fault_kind kind);
    [[nodiscard]] bool heal(std::string_view name_or_number);

    // The rules that act now, in their order.
    [[nodiscard]] std::vector<rule_state> rules() const;

    // How often a fault has happened since the beginning, rules that are gone included.
    [[nodiscard]] std::uint64_t happened(fault_kind kind) const noexcept {
        return happened_[static_cast<std::size_t>(kind)];
    }

    // A client's number in the order of the first datagrams, from 1; 0 for one that has sent none.
    [[nodiscard]] std::uint64_t number_of(const peer& client) const {
        return chances_.known_number_of(client);
    }

    // Takes a datagram that a socket received, or that the service sends.
    void from_socket(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns);
    void from_service(const outgoing_datagram& datagram, std::int64_t now_ns);

    // Sends on what is due; next_due_ns says when that is, never_ns where nothing is held.
    void tick(std::int64_t now_ns);
    [[nodiscard]] std::int64_t next_due_ns() const noexcept { return held_.next_due_ns(); }

    // Sends on all that is held; rules may hold some of it anew.
    void release(std::int64_t now_ns);

    // The datagrams that the service is to receive, those that the sockets are to send, and the actions to
    // carry out, in order, each handed out once.
    [[nodiscard]] std::vector<arrival> take_arrivals() { return arrivals_.take(); }
    [[nodiscard]] std::vector<departure> take_departures() { return departures_.take(); }
    [[nodiscard]] std::vector<requested_action> take_actions() { return std::exchange(actions_, {}); }

    // While an action is carried out, the rules that ask for actions fit none of the datagrams that it sets
    // off: two such rules could chase each other for ever, faster each time.
    void begin_action() noexcept { in_action_ = true; }
    void end_action() noexcept { in_action_ = false; }

  private:
    // Before all times: no silence.
    static constexpr std::int64_t long_over_ns = std::numeric_limits<std::int64_t>::min();

    struct live_rule {
        rule_state state;
        std::uint64_t ordinal;
        fault_chances::draw draw; // of the datagram that it fits now
    };

    void heal_rules(const std::function<bool(const live_rule&)>& is_healed);
    [[nodiscard]] std::size_t first_rule_after(std::uint64_t ordinal) const;
    void act_at_once(const fault_rule& rule, std::span<const peer> clients);
    void act_at_once_on(const fault_rule& rule, const peer& client);

    // Runs a datagram through the rules from next_rule on, and out of the pipeline.
    void run(piped_datagram what, std::size_t next_rule);
    void deliver(piped_datagram&& what);
    [[nodiscard]] bool fits(const fault_rule& rule, const piped_datagram& what);
    [[nodiscard]] static bool is_its_turn(live_rule& rule);
    // Before the fault changes the datagram.
    void count(live_rule& rule, const piped_datagram& what);

    // Does to a datagram what the rule's fault is. Each of these runs it through the later rules by itself,
    // if it goes on at all.
    void apply(live_rule& rule, piped_datagram what, std::size_t next_rule);
    void send_changed(live_rule& rule, piped_datagram&& what, std::size_t next_rule);
    void send_with_copies(live_rule& rule, const piped_datagram& what, std::size_t next_rule);
    void hold(live_rule& rule, piped_datagram&& what, std::int64_t for_ns,
              std::optional<std::uint32_t> to_pass);
    void hold_for_a_while(live_rule& rule, piped_datagram&& what, std::size_t next_rule);
    void send_after_stale_reply(live_rule& rule, piped_datagram&& what, std::size_t next_rule);
    void refuse_operation(live_rule& rule, piped_datagram&& what, std::size_t next_rule);
    void send_and_act(live_rule& rule, piped_datagram&& what, std::size_t next_rule);
    void fall_silent(const fault_rule& rule, fault_random& chance);
    void forge(const peer& to, std::uint32_t how_many);

    [[nodiscard]] bool has_room() const noexcept {
        return !arrivals_.is_full() && !departures_.is_full() && !held_.is_full();
    }
    [[nodiscard]] bool is_silent() const noexcept { return now_ns_ < silent_until_ns_; }

    std::uint64_t seed_;
    std::vector<note_function> told_;
    fault_chances chances_;
    std::uint64_t ordinals_{0};
    std::int64_t now_ns_{0};
    std::int64_t silent_until_ns_{long_over_ns};
    bool in_action_{false};
    std::vector<live_rule> rules_;
    held_datagrams held_;
    conversations conversations_;
    std::array<std::uint64_t, faults.size()> happened_{};
    waiting_line<arrival> arrivals_;
    waiting_line<departure> departures_;
    std::vector<requested_action> actions_;
};

} // namespace vantu::orvanta::simulator
