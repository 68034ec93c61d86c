#include "ctl/replay/rejection_text.hpp"

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/error_codes.h"

namespace vantu::orvanta::ctl {

using namespace communication;

std::string text_of(const rejection& rejected) {
    switch (rejected.reason) {
    case reject_reason::none:
        return "";
    case reject_reason::header_length:
        return "it is shorter than a header";
    case reject_reason::header_magic:
        return "the header's magic differs";
    case reject_reason::header_version:
        return "the header's version differs";
    case reject_reason::operation_length:
        return "no operation follows the header";
    case reject_reason::operation_magic:
        return "an operation's magic differs";
    case reject_reason::handshake_operation:
        return formatted("operation {} has no place in the answer to a connect", rejected.op_code);
    }
    return "";
}

std::string text_of_refused_answer(std::int32_t code, const rejection& rejected) {
    if (rejected.reason != reject_reason::none) {
        return text_of(rejected);
    }
    switch (code) {
    case vantu_orvanta_another_client_connected:
        return "the service serves another client only";
    case vantu_orvanta_buffer_full_or_empty:
        return "the service has no room for one more client";
    case vantu_orvanta_no_matching_device:
        return "a device is not listed with the type of its details";
    default:
        return "the answer to the connect is not understood";
    }
}

std::string text_of_refused_operation(const proto::op& op, std::size_t body_size) {
    const operation* const row = find_operation(op.code, direction::to_client);
    if (row == nullptr || op.code == op_code::connected) {
        return formatted("operation {} is none that a connected client receives", op.code);
    }
    if (body_size < row->body_size) {
        return formatted("{} is cut short: {} of {} bytes", row->name, body_size, row->body_size);
    }
    if (op.code == op_code::config_handedness) {
        return formatted("{} has no hand", row->name);
    }
    return formatted("{} is cut short in its tail", row->name);
}

} // namespace vantu::orvanta::ctl
