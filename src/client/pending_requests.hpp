// The one-shot handlers that wait for an answer, by request tag.
#pragma once

#include "reply_handlers.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>

namespace vantu::orvanta {

// One request waits under a tag, for its reply's event type, an acknowledgement or an error. All
// functions are safe on any thread; none allocates or calls a handler.
class pending_requests {
  public:
    static constexpr std::size_t tag_count = 255;

    // A place taken under a tag; tag 0 when all 255 are taken. The serial tells a request from an
    // earlier one under the same tag.
    struct place {
        std::uint8_t tag;
        std::uint64_t serial;
    };

    pending_requests();

    // Enters a handler for a reply of the given event type under the tag that has been free longest,
    // so that a late reply meets a later request as rarely as can be. The ticket, unless it is null, is
    // written before anything can take the handler out.
    template <typename Record>
    [[nodiscard]] place enter(std::uint32_t event_type, reply_handler<Record>&& handler,
                              std::int64_t deadline_ns = latest_ns, request_ticket* ticket = nullptr) {
        const std::lock_guard lock(mutex_);
        const place taken = take_tag(event_type, deadline_ns);
        if (ticket != nullptr) {
            ticket->tag_ = taken.tag;
            ticket->serial_ = taken.serial;
        }
        if (taken.tag != 0) {
            entries_[taken.tag].handler.template emplace<reply_handler<Record>>(std::move(handler));
        }
        return taken;
    }

    // Removes a request that was not sent after all, or is not wanted any more. False when it is over.
    bool withdraw(place entered);
    bool withdraw(const request_ticket& ticket) { return withdraw({ticket.tag_, ticket.serial_}); }

    // Takes out the handler that an event under a tag completes, and frees the tag: all that waited
    // for the same answer is gone with it. monostate when none waits for this event.
    [[nodiscard]] any_reply_handler take(std::uint32_t event_type, std::uint8_t tag);

    // The serial of the request that was entered last.
    [[nodiscard]] std::uint64_t newest();

    // Takes out what waits under a tag, and frees it, unless it was entered after the newest.
    [[nodiscard]] any_reply_handler take_entered_until(std::uint64_t newest, std::uint8_t tag);

    // A time before which no deadline of a waiting request passes: exact after an enter or a take_expired
    // that found none, earlier after an answer. Takes no lock.
    [[nodiscard]] std::int64_t no_deadline_before_ns() const {
        return no_deadline_before_ns_.load(std::memory_order_relaxed);
    }

    // The earliest deadline of what waits; latest_ns when nothing with one does.
    [[nodiscard]] std::int64_t next_deadline_ns() const;

    // Takes out the request whose deadline is the earliest, if it has passed at this time and was not entered
    // after the newest, and frees its tag.
    [[nodiscard]] any_reply_handler take_expired(std::int64_t now_ns, std::uint64_t newest);

  private:
    struct entry {
        std::uint32_t event_type{vantu_orvanta_event_none}; // none: the tag is free
        std::uint64_t serial{0};
        any_reply_handler handler;
    };

    // Both need the mutex.
    [[nodiscard]] place take_tag(std::uint32_t event_type, std::int64_t deadline_ns);
    [[nodiscard]] any_reply_handler release(std::uint8_t tag);

    // On a line of its own: read with each event, while others send.
    alignas(64) std::atomic<std::int64_t> no_deadline_before_ns_{latest_ns};
    alignas(64) mutable std::mutex mutex_;
    std::array<entry, tag_count + 1> entries_;             // by tag; 0 is never used
    std::array<std::int64_t, tag_count + 1> deadlines_ns_; // by tag; latest_ns: none
    std::array<std::uint8_t, tag_count> free_tags_;        // a ring, the longest free first
    std::size_t first_free_{0};
    std::size_t free_count_{tag_count};
    std::uint64_t last_serial_{0};
};

// When a request that is sent now times out; latest_ns: never.
[[nodiscard]] std::int64_t deadline_from_now_ns(std::chrono::nanoseconds timeout);

// Enters the handler, calls send(tag) and takes the handler out again when that fails. A failed send whose
// handler was called meanwhile counts as sent: something came under its tag.
template <typename Record, typename Send>
std::int32_t send_with_handler(pending_requests& pending, std::uint32_t event_type,
                               reply_handler<Record>&& handler, const request_options& options, Send send) {
    const pending_requests::place place =
        pending.enter(event_type, std::move(handler), deadline_from_now_ns(options.timeout), options.ticket);
    if (place.tag == 0) {
        return vantu_orvanta_request_queue_full;
    }
    const std::int32_t code = send(place.tag);
    const bool is_over = code != vantu_orvanta_success && !pending.withdraw(place);
    return is_over ? std::int32_t{vantu_orvanta_success} : code;
}

} // namespace vantu::orvanta
