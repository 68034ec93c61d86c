// The common part of the socket layer's platform files: the texts of its log lines and the
// preparation of a receive. Not for users of the layer.
#pragma once

#include "network/socket.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace vantu::orvanta::socket_shared {

inline constexpr std::int32_t address_room = sizeof(socket_address::bytes);
inline constexpr int receive_buffer_bytes = 1024 * 1024;

// "message: {operation} with code: {system_text}": what the log says of every failure of the system.
[[nodiscard]] std::string failure_text(std::string_view operation, std::string_view system_text);

// The system's own text for an error as one line: without one trailing line feed; "unknown" for null
// and for an empty text.
[[nodiscard]] std::string one_line_of(const char* system_text);

// The same for an error's number. On Windows the errors of sockets have a text of our own where the system
// has none.
[[nodiscard]] std::string error_text(std::int64_t error);

[[nodiscard]] std::string unable_to_resolve(const std::string& host, const std::string& port);
[[nodiscard]] std::string no_valid_address(const std::string& host, const std::string& port);
[[nodiscard]] std::string no_valid_interface(const std::string& host, const std::string& port);

inline constexpr std::string_view unable_to_startup = "unable to startup winsock";
inline constexpr std::string_view unable_to_set_non_blocking = "unable to ioctl non-block the socket";
inline constexpr std::string_view unable_to_send = "unable to send packet";
inline constexpr std::string_view unable_to_receive = "unable to recv packet";
inline constexpr std::string_view unable_to_get_result = "unable to get overlapped IO result";
inline constexpr std::string_view unable_to_wait = "unable to wait for packets";
inline constexpr std::string_view unable_to_stringify_address = "unable to stringify the addr";
inline constexpr std::string_view unable_to_stringify_socket = "unable to stringify the handle/socket";

// Makes all the room in the record's buffer that there can be, and all the room for the sender.
void prepare_receive(receive_record& record);

// The same, and describes that room in the members of the overlapped receive, the rest of them zero.
void prepare_overlapped_receive(receive_record& record);

// The wait of get_overlapped_result: the whole milliseconds of its time-out.
struct wait_limit {
    bool without_end;
    bool single_look;
    std::int64_t deadline_ns; // the end of time for a wait without end
};
[[nodiscard]] wait_limit wait_limit_of(std::int64_t timeout_ns, std::int64_t now_ns);

} // namespace vantu::orvanta::socket_shared
