#include "pending_requests.hpp"

#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta {

pending_requests::pending_requests() {
    for (std::size_t i = 0; i < tag_count; ++i) {
        free_tags_[i] = static_cast<std::uint8_t>(i + 1);
    }
    deadlines_ns_.fill(latest_ns);
}

pending_requests::place pending_requests::take_tag(std::uint32_t event_type, std::int64_t deadline_ns) {
    if (free_count_ == 0) {
        return {0, 0};
    }
    const std::uint8_t tag = free_tags_[first_free_];
    first_free_ = (first_free_ + 1) % tag_count;
    --free_count_;
    entry& waiting = entries_[tag];
    waiting.event_type = event_type;
    waiting.serial = ++last_serial_;
    deadlines_ns_[tag] = deadline_ns;
    if (deadline_ns < no_deadline_before_ns()) {
        no_deadline_before_ns_.store(deadline_ns, std::memory_order_relaxed);
    }
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

std::int64_t pending_requests::next_deadline_ns() const {
    const std::lock_guard lock(mutex_);
    return *std::min_element(deadlines_ns_.begin(), deadlines_ns_.end());
}

any_reply_handler pending_requests::take_expired(std::int64_t now_ns, std::uint64_t newest) {
    const std::lock_guard lock(mutex_);
    std::size_t earliest = 0;
    std::int64_t earliest_of_all_ns = latest_ns;
    for (std::size_t tag = 1; tag <= tag_count; ++tag) {
        earliest_of_all_ns = std::min(earliest_of_all_ns, deadlines_ns_[tag]);
        if (deadlines_ns_[tag] < deadlines_ns_[earliest] && entries_[tag].serial <= newest) {
            earliest = tag;
        }
    }
    if (deadlines_ns_[earliest] <= now_ns) {
        return release(static_cast<std::uint8_t>(earliest));
    }
    no_deadline_before_ns_.store(earliest_of_all_ns, std::memory_order_relaxed);
    return {};
}

any_reply_handler pending_requests::release(std::uint8_t tag) {
    entry& waiting = entries_[tag];
    waiting.event_type = vantu_orvanta_event_none;
    deadlines_ns_[tag] = latest_ns;
    free_tags_[(first_free_ + free_count_) % tag_count] = tag;
    ++free_count_;
    return std::exchange(waiting.handler, {});
}

std::int64_t deadline_from_now_ns(std::chrono::nanoseconds timeout) {
    if (timeout == std::chrono::nanoseconds::max()) {
        return latest_ns; // and no look at the clock
    }
    const auto wait_ns = std::max(timeout, std::chrono::nanoseconds::zero()).count();
    return time_after(platform::steady_now_ns(), static_cast<std::uint64_t>(wait_ns));
}

} // namespace vantu::orvanta
