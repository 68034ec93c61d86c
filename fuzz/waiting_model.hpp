// The waiting requests of class client, modelled in another way: by tag, the event that answers, the deadline
// and the handler; and the tags that are free, the longest free first.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>

namespace orvanta_fuzz {

class waiting_model {
  public:
    static constexpr std::int64_t never_ns = std::numeric_limits<std::int64_t>::max();

    struct entry {
        std::uint32_t answer{0}; // the type of the event that answers; 0: the tag is free
        std::uint64_t serial{0}; // of the request; counted from 1
        bool has_handler{false};
        std::int64_t deadline_ns{never_ns};
    };

    waiting_model() {
        for (int tag = 1; tag <= 255; ++tag) {
            free_.push_back(static_cast<std::uint8_t>(tag));
        }
    }

    [[nodiscard]] bool is_full() const { return free_.empty(); }

    std::uint8_t enter(std::uint32_t answer, std::uint64_t serial, bool has_handler,
                       std::int64_t deadline_ns) {
        const std::uint8_t tag = free_.front();
        free_.pop_front();
        entries_[tag] = {answer, serial, has_handler, deadline_ns};
        return tag;
    }

    // Frees the tag, if that request still waits under it.
    bool withdraw(std::uint8_t tag, std::uint64_t serial) {
        const bool waits = entries_[tag].answer != 0 && entries_[tag].serial == serial;
        if (waits) {
            (void)release(tag);
        }
        return waits;
    }

    // The request that an event ends: one that waits for it, or any for an acknowledgement or an error.
    std::optional<entry> take(std::uint32_t event_type, std::uint8_t tag) {
        const std::uint32_t answer = entries_[tag].answer;
        if (answer == 0 || (event_type != answer && event_type != 1 && event_type != 255)) {
            return std::nullopt;
        }
        return release(tag);
    }

    // The next request after a tag that is not newer than this one, as an end of the connection takes them.
    std::optional<entry> take_next(std::uint8_t& tag, std::uint64_t newest) {
        while (tag < 255) {
            ++tag;
            if (entries_[tag].answer != 0 && entries_[tag].serial <= newest) {
                return release(tag);
            }
        }
        return std::nullopt;
    }

    // The request with the earliest deadline of those that are not newer than this one, if it has passed; of
    // equal ones that with the lowest tag.
    std::optional<entry> take_expired(std::int64_t time_ns, std::uint64_t newest) {
        std::uint8_t found = 0;
        for (const entry& one : entries_) {
            if (one.answer != 0 && one.serial <= newest && one.deadline_ns <= time_ns &&
                (found == 0 || one.deadline_ns < entries_[found].deadline_ns)) {
                found = static_cast<std::uint8_t>(&one - entries_.data());
            }
        }
        return found == 0 ? std::nullopt : std::optional(release(found));
    }

    [[nodiscard]] std::int64_t next_deadline_ns() const {
        std::int64_t next_ns = never_ns;
        for (const entry& one : entries_) {
            next_ns = one.answer != 0 && one.deadline_ns < next_ns ? one.deadline_ns : next_ns;
        }
        return next_ns;
    }

  private:
    entry release(std::uint8_t tag) {
        const entry taken = entries_[tag];
        entries_[tag] = {};
        free_.push_back(tag);
        return taken;
    }

    std::array<entry, 256> entries_{};
    std::deque<std::uint8_t> free_;
};

} // namespace orvanta_fuzz
