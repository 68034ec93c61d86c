// The UDP socket layer: moves the bytes of a byte buffer and reports small status values. It knows
// nothing of the protocol and keeps no state beyond the records it is given. It takes no lock, except that
// sends on Windows take turns.
// One source file a platform implements it (socket_posix.cpp).
//
// A failure of the system is logged at level warning as "message: {} with code: {}" before os_error
// is returned; would_block, timeout and connection_reset are ordinary results and never logged.
#pragma once

#include "vantu/orvanta/common/byte_buffer.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vantu::orvanta {

enum class socket_status : std::int8_t {
    ok = 0,
    os_error = -2,         // the system call failed; a warning was logged
    timeout = 16,          // an overlapped receive did not complete in time
    unavailable = 17,      // no address could be bound, or the destination's family or address is refused
    would_block = 18,      // nothing to receive now, or no room to send
    connection_reset = 19, // an earlier datagram met a closed port
};

// The system's socket value, whatever its type there.
using socket_handle = std::uintptr_t;
inline constexpr socket_handle invalid_socket = ~socket_handle{0};

// Room for the system's socket address of any family.
struct alignas(8) socket_address {
    std::byte bytes[128]{};
};

struct endpoint {
    std::int32_t length{0}; // bytes used in address
    socket_address address;
};

// The record that a receive fills. The last four members belong to the overlapped receive and have the layout
// of the Windows records of these names; elsewhere they are used as far as they make sense.
struct receive_record {
    explicit receive_record(byte_buffer& filled) : buffer(filled) {}

    std::int32_t from_length{0};
    socket_address from; // the sender of the datagram
    byte_buffer& buffer; // outlives the record

    // The datagram that the last receive dropped, as it is larger than the room: its first bytes stand in the
    // room, and the sender in from.
    struct {
        std::uint32_t length{0}; // of those bytes; 0: nothing was dropped
        std::uint32_t whole{0};  // of the datagram; 0 where the system does not tell
    } dropped;

    std::uint32_t received{0};
    struct {
        std::uint32_t length{0};
        std::byte* data{nullptr};
    } wsabuf;
    std::uint32_t flags{0};
    struct {
        std::uintptr_t internal{0};
        std::uintptr_t internal_high{0};
        std::uint64_t offset{0};
        void* event{nullptr};
    } overlapped;
};

struct resolved_endpoint {
    endpoint address;
    socket_status status{socket_status::ok};
};

struct opened_socket {
    socket_handle socket{invalid_socket};
    socket_status status{socket_status::ok};
};

// Starts the system's socket layer; once per process, before anything else here. A failure is logged
// at level error and ends the process.
void socket_startup();

// The first address of host:port (port as decimal text). os_error, with a warning, when there is
// none. May block on the system's resolver.
[[nodiscard]] resolved_endpoint resolve_address(const std::string& host, const std::string& port);

// A non-blocking UDP socket bound to the first address of host:port that can be bound; not inherited
// by child processes. The socket asks for a receive buffer of 1 MiB and takes what it gets.
// unavailable when no address could be bound, os_error otherwise. Release it with close_socket.
[[nodiscard]] opened_socket open_bound_socket(const std::string& host, const std::string& port);

struct send_result {
    socket_status status{socket_status::ok};
    std::uint32_t system_error{0}; // of an os_error: the system's number
};

// Sends the bytes as one datagram and logs nothing, for callers that hold something while they send. Never
// waits for room. On Windows the threads that send on one socket take turns, each for one system call.
//   ok            the datagram went out, also when the system still held an error of an earlier one
//   would_block   the system has no room for it now
//   unavailable   the destination's address family or address is refused
//   os_error      anything else: to be logged with log_send_failure
[[nodiscard]] send_result try_send(socket_handle socket, std::span<const std::byte> bytes,
                                   const endpoint& to);

// Logs the os_error of a try_send.
void log_send_failure(std::uint32_t system_error);

// The same with an os_error logged at once.
[[nodiscard]] socket_status send_bytes(socket_handle socket, std::span<const std::byte> bytes,
                                       const endpoint& to);

// The same with the unread bytes of a buffer, which it consumes after they went out.
[[nodiscard]] socket_status send_packet(socket_handle socket, byte_buffer& buffer, const endpoint& to);

struct receive_result {
    socket_status status{socket_status::ok};
    std::uint32_t system_error{0}; // of an os_error: the system's number
};

// Takes one waiting datagram into the record's buffer, after what is unread there. Never blocks; logs
// nothing, for callers that hold something while they receive.
//   ok               its bytes were appended (none, for an empty datagram)
//   would_block      nothing is waiting
//   connection_reset an earlier datagram met a closed port
//   os_error         anything else; also a datagram larger than the room left, which is dropped: to be
//                    logged with log_receive_failure
[[nodiscard]] receive_result try_receive(socket_handle socket, receive_record& record);

// Logs the os_error of a try_receive.
void log_receive_failure(std::uint32_t system_error);

// The same as try_receive with an os_error logged at once.
[[nodiscard]] socket_status recv_packet(socket_handle socket, receive_record& record);

// Starts one overlapped receive into the record, which must stay in place until
// get_overlapped_result has returned anything but would_block. ok, connection_reset or os_error.
[[nodiscard]] socket_status recv_packet_overlapped(socket_handle socket, receive_record& record);

// Waits for the receive that recv_packet_overlapped started, for the whole milliseconds in
// timeout_ns: 0 ns waits without limit, less than a millisecond looks once.
//   ok           the datagram's bytes were appended to the record's buffer
//   timeout      the milliseconds have passed
//   would_block  nothing was there on a single look
//   os_error     anything else
// A closed port that an earlier datagram met neither ends nor shortens the wait.
[[nodiscard]] socket_status get_overlapped_result(socket_handle socket, receive_record& record,
                                                  std::int64_t timeout_ns);

// "address:port" in the system's form, followed by one zero character that counts as part of the
// text; empty, after a warning, when there is no such text.
[[nodiscard]] std::string stringify_addr(const endpoint& address);

// The same for the local address of a socket.
[[nodiscard]] std::string stringify_socket(socket_handle socket);

// The port on which the device service listens, as text.
[[nodiscard]] std::string default_port();

// Sleeps until a datagram or an error waits on one of the sockets, or the steady clock reaches the
// deadline. True when there is something to receive. Invalid handles are passed over. A signal that
// the calling thread handles ends the wait early with false.
[[nodiscard]] bool wait_for_packets(std::span<const socket_handle> sockets, std::int64_t deadline_ns);

// Closes a socket and stores invalid_socket; a handle that is invalid or 0 is only overwritten.
void close_socket(socket_handle& socket);

} // namespace vantu::orvanta
