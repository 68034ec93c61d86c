// The callbacks that the tool registers with its client. They run on the polling thread.
#pragma once

#include "app/console.hpp"
#include "app/state.hpp"

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

// All callbacks. They refer to the state and the console, which must outlive the client. The one for a
// listed device opens the chosen device again and throws exception, labelled "client.device_open", when that
// request cannot be sent.
[[nodiscard]] client::config make_callbacks(application_state& state, console& terminal);

} // namespace vantu::orvanta::app
