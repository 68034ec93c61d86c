// What a client holds, shared by its requests (client.cpp) and its dispatch (dispatch.cpp).
#pragma once

#include "runtime/pending_requests.hpp"
#include "vantu/orvanta/client.hpp"

#include <memory>
#include <utility>

namespace vantu::orvanta {

struct context_deleter {
    void operator()(vantu_orvanta_context* context) const { vantu_orvanta_disconnect(context); }
};

struct client::implementation {
    explicit implementation(config callbacks);

    config callbacks;
    pending_requests pending;
    std::unique_ptr<vantu_orvanta_context, context_deleter> context;

    // Enters the handler, then calls send(tag), and takes the handler out again if that fails.
    template <typename Record, typename Send>
    std::int32_t request(std::uint32_t event_type, reply_handler<Record>&& handler, Send send) {
        const pending_requests::place place = pending.enter(event_type, std::move(handler));
        if (place.tag == 0) {
            return vantu_orvanta_request_queue_full;
        }
        const std::int32_t code = send(place.tag);
        if (code != vantu_orvanta_success && !pending.withdraw(place)) {
            // Something was received under the tag meanwhile and the handler has been called with it.
            return vantu_orvanta_success;
        }
        return code;
    }
};

} // namespace vantu::orvanta
