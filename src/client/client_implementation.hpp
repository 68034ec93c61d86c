// A client's callbacks, waiting requests and context, for its requests (client.cpp) and its dispatch
// (dispatch.cpp).
#pragma once

#include "pending_requests.hpp"
#include "runtime/idle_task.hpp"
#include "vantu/orvanta/client.hpp"

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace vantu::orvanta {

struct context_deleter {
    void operator()(vantu_orvanta_context* context) const { vantu_orvanta_disconnect(context); }
};

struct client::implementation {
    explicit implementation(config callbacks);

    config callbacks;
    pending_requests pending;
    idle_task when_idle{};
    std::unique_ptr<vantu_orvanta_context, context_deleter> context;

    // Sends a request whose handler waits for the answer that the operation table names.
    template <std::uint8_t operation, typename Record, typename Send>
    std::int32_t request(reply_handler<Record>&& handler, const request_options& options, Send send) {
        static_assert(has_handler(communication::row_of(operation, communication::direction::to_service)),
                      "the operation table names the answer of the request");
        static_assert(std::is_same_v<answer_record<operation>, Record>,
                      "a handler takes the record of the request's answer");
        constexpr std::uint32_t event_type = communication::answer_event_of(operation);
        return send_with_handler(pending, event_type, std::move(handler), options, std::move(send));
    }
};

} // namespace vantu::orvanta
