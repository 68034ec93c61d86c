// A client's callbacks, waiting requests and context, for its requests (client.cpp) and its dispatch
// (dispatch.cpp).
#pragma once

#include "pending_requests.hpp"
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/communication/bodies.hpp"

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace vantu::orvanta {

struct context_deleter {
    void operator()(vantu_orvanta_context* context) const { vantu_orvanta_disconnect(context); }
};

// The record that a handler of a body's event is given: void for one that only names a device.
template <typename Body> struct record_of_body;
template <> struct record_of_body<communication::proto::device_body> { using type = void; };
template <typename Record> struct record_of_body<communication::proto::addressed<Record>> {
    using type = Record;
};

// The record with which a request is answered.
template <std::uint8_t code>
using answer_record = typename record_of_body<
    communication::proto::body<communication::row_of(code, communication::direction::to_service).answered_by,
                               communication::direction::to_client>>::type;

struct client::implementation {
    explicit implementation(config callbacks);

    config callbacks;
    pending_requests pending;
    std::unique_ptr<vantu_orvanta_context, context_deleter> context;

    // Sends a request whose handler waits for the answer that the operation table names.
    template <std::uint8_t operation, typename Record, typename Send>
    std::int32_t request(reply_handler<Record>&& handler, Send send) {
        static_assert(std::is_same_v<answer_record<operation>, Record>, "the record of the request's answer");
        constexpr std::uint32_t event_type = communication::answer_event_of(operation);
        return send_with_handler(pending, event_type, std::move(handler), std::move(send));
    }
};

} // namespace vantu::orvanta
