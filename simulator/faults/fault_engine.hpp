// The inside of the stage of faults: its rules, what they hold back, and the way of a datagram past them.
#pragma once

#include "simulator/faults/fault_conversations.hpp"
#include "simulator/faults/fault_mutations.hpp"
#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/fault_stage.hpp"
#include "simulator/service/clients.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta::simulator {

class fault_stage::implementation {
  public:
    explicit implementation(std::uint64_t seed) : seed_(seed) {}

    void add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns);
    void heal(std::optional<fault_kind> kind);
    void from_client(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns);
    void to_client(const peer& to, std::span<const std::byte> bytes, std::int64_t now_ns);
    void tick(std::int64_t now_ns);
    [[nodiscard]] std::int64_t next_due_ns() const noexcept;
    [[nodiscard]] std::vector<rule_state> rules() const;
    [[nodiscard]] std::uint64_t happened(fault_kind kind) const noexcept {
        return happened_[static_cast<std::size_t>(kind)];
    }

    std::vector<arrival> arrivals;
    std::vector<departure> departures;
    std::vector<requested_action> actions;
    bool in_action{false};

  private:
    // A datagram between the service and its socket.
    struct traveller {
        communication::direction way{communication::direction::to_client};
        peer with;
        datagram_bytes bytes;
        std::optional<std::uint8_t> answer; // the operation in it that answers a request
    };

    struct live_rule {
        rule_state state;
        std::uint64_t ordinal;
        fault_random chance;
    };

    struct held_datagram {
        traveller what;
        std::uint64_t by; // the ordinal of the rule that holds it
        std::int64_t due_ns;
        std::optional<std::uint32_t> to_pass; // datagrams that are still to pass it
    };

    void travel(traveller what, std::size_t next_rule);
    void leave(traveller&& what);
    [[nodiscard]] bool fits(const fault_rule& rule, const traveller& what) const;
    [[nodiscard]] static bool is_its_turn(live_rule& rule);
    void count(live_rule& rule);
    [[nodiscard]] bool is_holding_one_of(const live_rule& rule, const traveller& what) const;

    // What a rule does to a datagram; it goes on behind the rule by itself if at all.
    void suffer(live_rule& rule, traveller what, std::size_t next_rule);
    void hold(live_rule& rule, traveller&& what, std::int64_t for_ns, std::optional<std::uint32_t> to_pass);
    void hold_for_a_while(live_rule& rule, traveller&& what, std::size_t next_rule);
    void send_changed(live_rule& rule, traveller&& what, std::size_t next_rule);
    void send_with_copies(live_rule& rule, const traveller& what, std::size_t next_rule);
    void send_behind_stale_answer(live_rule& rule, traveller&& what, std::size_t next_rule);
    void refuse_operation(live_rule& rule, traveller&& what, std::size_t next_rule);
    void send_with_action(live_rule& rule, traveller&& what, std::size_t next_rule);
    void send_with_forgeries(live_rule& rule, traveller&& what, std::size_t next_rule);
    void fall_silent(const fault_rule& rule, fault_random& chance);
    void forge(const peer& to, std::uint32_t how_many);
    void let_one_pass(const live_rule& rule, communication::direction way, const peer& with,
                      std::size_t next_rule);
    void act_now(const fault_rule& rule, std::span<const peer> clients);
    void act_now_on(const fault_rule& rule, const peer& client);

    [[nodiscard]] std::size_t rule_behind(std::uint64_t ordinal) const;
    [[nodiscard]] bool is_silent() const noexcept { return now_ns_ < silent_until_ns_; }

    std::uint64_t seed_;
    std::uint64_t ordinals_{0};
    std::int64_t now_ns_{0};
    std::int64_t silent_until_ns_{std::numeric_limits<std::int64_t>::min()};
    std::vector<live_rule> rules_;
    std::vector<held_datagram> held_; // in the order of being held
    conversations conversations_;
    std::array<std::uint64_t, simulator::faults.size()> happened_{};
};

} // namespace vantu::orvanta::simulator
