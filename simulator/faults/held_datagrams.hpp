// The datagrams that faults hold back: by the time when they are due, at a cost that does not grow with the
// number that is due later.
#pragma once

#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/waiting_line.hpp"
#include "simulator/service/clients.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

namespace vantu::orvanta::simulator {

// A datagram on its way through the pipeline.
struct piped_datagram {
    communication::direction way{communication::direction::to_client};
    peer with;
    datagram_bytes bytes;
    std::optional<std::uint8_t> answer; // the operation in it that answers a request
    bool is_copy{false};                // added by a fault that makes copies
};

class held_datagrams {
  public:
    struct entry {
        piped_datagram what;
        std::uint64_t by; // the ordinal of the rule that holds it
    };

    [[nodiscard]] bool is_full() const noexcept { return leaves_no_room(by_due_.size(), bytes_); }

    // Holds a datagram until its time comes or so many others have passed it. It is lost where no more are
    // held.
    void hold(entry&& one, std::int64_t due_ns, std::optional<std::uint32_t> to_pass);

    // Whether the rule holds one that waits to be passed by others of this client and way.
    [[nodiscard]] bool has_to_be_passed(std::uint64_t by, communication::direction way,
                                        const peer& with) const {
        return find(by, way, with) != overtaken_.end();
    }
    // Counts one that has passed it, and hands it out when that was the last.
    [[nodiscard]] std::optional<entry> let_one_pass(std::uint64_t by, communication::direction way,
                                                    const peer& with);

    // Makes those due at once whose rule is chosen.
    void release(const std::function<bool(std::uint64_t by)>& is_chosen);

    // Those that are due, by their times, and in the order of being held where these are the same.
    [[nodiscard]] std::vector<entry> take_due(std::int64_t now_ns);
    // never_ns where nothing is held.
    [[nodiscard]] std::int64_t next_due_ns() const noexcept {
        return by_due_.empty() ? never_ns : by_due_.begin()->first.due_ns;
    }

  private:
    struct place {
        std::int64_t due_ns;
        std::uint64_t number; // in the order of being held
        bool operator==(const place&) const = default;
        bool operator<(const place& other) const {
            return std::tie(due_ns, number) < std::tie(other.due_ns, other.number);
        }
    };
    struct overtaken {
        place where;
        std::uint64_t by;
        communication::direction way;
        peer with;
        std::uint32_t to_pass;
    };
    [[nodiscard]] std::vector<overtaken>::const_iterator find(std::uint64_t by, communication::direction way,
                                                              const peer& with) const;

    [[nodiscard]] entry taken(const place& where);

    std::map<place, entry> by_due_;
    std::size_t bytes_{0};
    std::vector<overtaken> overtaken_; // one a rule, client and way at most
    std::uint64_t numbers_{0};
};

} // namespace vantu::orvanta::simulator
