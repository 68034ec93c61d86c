#include "rejection_log.hpp"

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"

namespace vantu::orvanta {
namespace {

void log_poll(const source_location& where, const char* message) {
    log_or_drop(log_level::info, where, [message] { return std::string(message); });
}

} // namespace

void log_rejection(const rejection& rejected) {
    switch (rejected.reason) {
    case reject_reason::none:
        return;
    case reject_reason::header_length:
        return log_poll(locations::poll_header_length, "vantu_orvanta_poll: Cannot read header");
    case reject_reason::header_magic:
        return log_poll(locations::poll_header_magic, "vantu_orvanta_poll: Header magic mismatch");
    case reject_reason::header_version:
        return log_poll(locations::poll_header_version, "vantu_orvanta_poll: Header version mismatch");
    case reject_reason::operation_length:
        return log_poll(locations::poll_operation_length,
                        "vantu_orvanta_poll: Cannot read communication::proto::op");
    case reject_reason::operation_magic:
        return log_poll(locations::poll_operation_magic,
                        "vantu_orvanta_poll: communication::proto::op magic mismatch");
    case reject_reason::handshake_operation:
        return log_or_drop(log_level::warning, locations::handshake_operation, [&] {
            return formatted("vantu_orvanta_connect_ports cannot handle op [{:#x}]", rejected.op_code);
        });
    }
}

} // namespace vantu::orvanta
