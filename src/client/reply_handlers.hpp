// The types of requests and their handlers, taken from the operation table.
#pragma once

#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/communication/bodies.hpp"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <variant>

namespace vantu::orvanta {

// The record that a handler of a body's event is given: void for a body that only names a device.
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

// Whether a row is a request of class client: the service answers it, and it is not of the connection.
consteval bool has_handler(const communication::operation& row) {
    using namespace communication;
    return row.way == direction::to_service && row.answered_by != op_code::none &&
           row.code != op_code::connect && row.code != op_code::disconnect;
}

template <std::size_t row, typename... Handlers> consteval auto handlers_from() {
    using communication::operations;
    if constexpr (row == operations.size()) {
        return std::type_identity<std::variant<std::monostate, Handlers...>>{};
    } else if constexpr (has_handler(operations[row])) {
        using handler = reply_handler<answer_record<operations[row].code>>;
        if constexpr ((std::is_same_v<handler, Handlers> || ...)) {
            return handlers_from<row + 1, Handlers...>();
        } else {
            return handlers_from<row + 1, Handlers..., handler>();
        }
    } else {
        return handlers_from<row + 1, Handlers...>();
    }
}

// A handler of any reply; monostate when there is none.
using any_reply_handler = decltype(handlers_from<0>())::type;

} // namespace vantu::orvanta
