#include "pending_requests.hpp"

#include <utility>

namespace vantu::orvanta {

pending_requests::pending_requests() {
    for (std::size_t i = 0; i < tag_count; ++i) {
        free_tags_[i] = static_cast<std::uint8_t>(i + 1);
    }
}

pending_requests::place pending_requests::take_tag(std::uint32_t event_type) {
    if (free_count_ == 0) {
        return {0, 0};
    }
    const std::uint8_t tag = free_tags_[first_free_];
    first_free_ = (first_free_ + 1) % tag_count;
    --free_count_;
    entry& waiting = entries_[tag];
    waiting.event_type = event_type;
    waiting.serial = ++last_serial_;
    return {tag, waiting.serial};
}

bool pending_requests::withdraw(place entered) {
    any_reply_handler dropped; // destroyed after the lock: a handler may own anything
    const std::lock_guard lock(mutex_);
    const entry& waiting = entries_[entered.tag];
    if (waiting.event_type == vantu_orvanta_event_none || waiting.serial != entered.serial) {
        return false;
    }
    dropped = release(entered.tag);
    return true;
}

any_reply_handler pending_requests::take(std::uint32_t event_type, std::uint8_t tag) {
    const std::lock_guard lock(mutex_);
    const std::uint32_t expected = entries_[tag].event_type;
    const bool completes = event_type == expected || event_type == vantu_orvanta_event_ack ||
                           event_type == vantu_orvanta_event_error;
    if (expected == vantu_orvanta_event_none || !completes) {
        return {};
    }
    return release(tag);
}

std::uint64_t pending_requests::newest() {
    const std::lock_guard lock(mutex_);
    return last_serial_;
}

any_reply_handler pending_requests::take_entered_until(std::uint64_t newest, std::uint8_t tag) {
    const std::lock_guard lock(mutex_);
    const entry& waiting = entries_[tag];
    if (waiting.event_type == vantu_orvanta_event_none || waiting.serial > newest) {
        return {};
    }
    return release(tag);
}

any_reply_handler pending_requests::release(std::uint8_t tag) {
    entry& waiting = entries_[tag];
    waiting.event_type = vantu_orvanta_event_none;
    free_tags_[(first_free_ + free_count_) % tag_count] = tag;
    ++free_count_;
    return std::exchange(waiting.handler, {});
}

} // namespace vantu::orvanta
