// Turns an event slot into the callback that keeps it up to date.
#pragma once

#include "app/event_slot.hpp"

#include "vantu/orvanta/client.hpp"

#include <mutex>

namespace vantu::orvanta::app {

// A callback that stores every record it is given, whatever device it comes from, while it holds the
// mutex. The slot and the mutex must outlive it.
template <typename Record>
[[nodiscard]] client::record_callback<Record> event_fn(event_slot<Record>* slot, std::mutex& app_mutex) {
    return [slot, &app_mutex](client&, unsigned, const Record& record) {
        const std::lock_guard lock(app_mutex);
        slot->store(record);
    };
}

} // namespace vantu::orvanta::app
