// The one-shot handlers that wait for an answer, by request tag.
#pragma once

#include "reply_handlers.hpp"

#include <array>
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
    // so that a late reply meets a later request as rarely as can be.
    template <typename Record>
    [[nodiscard]] place enter(std::uint32_t event_type, reply_handler<Record>&& handler) {
        const std::lock_guard lock(mutex_);
        const place taken = take_tag(event_type);
        if (taken.tag != 0) {
            entries_[taken.tag].handler.template emplace<reply_handler<Record>>(std::move(handler));
        }
        return taken;
    }

    // Removes a request that was not sent after all. False when it was already answered.
    bool withdraw(place entered);

    // Takes out the handler that an event under a tag completes, and frees the tag: all that waited
    // for the same answer is gone with it. monostate when none waits for this event.
    [[nodiscard]] any_reply_handler take(std::uint32_t event_type, std::uint8_t tag);

    // The serial of the request that was entered last.
    [[nodiscard]] std::uint64_t newest();

    // Takes out what waits under a tag, and frees it, unless it was entered after the newest.
    [[nodiscard]] any_reply_handler take_entered_until(std::uint64_t newest, std::uint8_t tag);

  private:
    struct entry {
        std::uint32_t event_type{vantu_orvanta_event_none}; // none: the tag is free
        std::uint64_t serial{0};
        any_reply_handler handler;
    };

    // Both need the mutex.
    [[nodiscard]] place take_tag(std::uint32_t event_type);
    [[nodiscard]] any_reply_handler release(std::uint8_t tag);

    std::mutex mutex_;
    std::array<entry, tag_count + 1> entries_;      // by tag; 0 is never used
    std::array<std::uint8_t, tag_count> free_tags_; // a ring, the longest free first
    std::size_t first_free_{0};
    std::size_t free_count_{tag_count};
    std::uint64_t last_serial_{0};
};

// Enters the handler, calls send(tag) and takes the handler out again when that fails. A failed send whose
// handler was called meanwhile counts as sent: something came under its tag.
template <typename Record, typename Send>
std::int32_t send_with_handler(pending_requests& pending, std::uint32_t event_type,
                               reply_handler<Record>&& handler, Send send) {
    const pending_requests::place place = pending.enter(event_type, std::move(handler));
    if (place.tag == 0) {
        return vantu_orvanta_request_queue_full;
    }
    const std::int32_t code = send(place.tag);
    const bool is_over = code != vantu_orvanta_success && !pending.withdraw(place);
    return is_over ? std::int32_t{vantu_orvanta_success} : code;
}

} // namespace vantu::orvanta
