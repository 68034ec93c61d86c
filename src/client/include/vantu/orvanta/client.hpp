/// @file
/// The client class: a context, its callbacks and the handlers that wait for an answer each. C++17.
#pragma once

#include "vantu/orvanta/export.h"
#include "vantu/orvanta/orvanta.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>

/// The C++ side of the library.
namespace vantu::orvanta {

/// The codes of the flat API by name, and those of the service that reach the program as they are: as the
/// error of a reply, or from a connect.
enum class error_code : std::int32_t {
    success = vantu_orvanta_success,                   ///< the call did what it was asked to do
    unexpected_error = vantu_orvanta_unexpected_error, ///< the system refused, or memory ran out
    invalid_argument = vantu_orvanta_invalid_argument, ///< an argument cannot be used
    invalid_connection_state =
        vantu_orvanta_invalid_connection_state,            ///< not connected, or already connected
    timed_out = vantu_orvanta_timed_out,                   ///< no answer came in time
    socket_bind_failed = vantu_orvanta_socket_bind_failed, ///< no local port, or no address of the service
    protocol_parse_failed = vantu_orvanta_protocol_parse_failed, ///< bytes of the service are not understood
    no_matching_device = vantu_orvanta_no_matching_device,       ///< not listed, or listed with another type
    disconnected_from_service =
        vantu_orvanta_disconnected_from_service,               ///< its port is closed, or it said goodbye
    buffer_full_or_empty = vantu_orvanta_buffer_full_or_empty, ///< a buffer or an array is too small
    request_queue_empty = vantu_orvanta_request_queue_empty,   ///< the service has no request to answer
    request_queue_full = vantu_orvanta_request_queue_full,     ///< no request tag is free
    invalid_version = vantu_orvanta_invalid_version,           ///< the service's "invalid version"
    invalid_operation = vantu_orvanta_invalid_operation,       ///< the service's "invalid operation"
    invalid_body = vantu_orvanta_invalid_body,                 ///< the service's "invalid body"
    invalid_request_argument = vantu_orvanta_invalid_request_argument, ///< the service's "invalid argument"
    client_not_connected = vantu_orvanta_client_not_connected, ///< the service does not know this client
    device_not_opened = vantu_orvanta_device_not_opened,       ///< the device was not opened
    another_client_connected =
        vantu_orvanta_another_client_connected,              ///< the service serves another client only
    invalid_device_id = vantu_orvanta_invalid_device_id,     ///< the service's "invalid device identifier"
    invalid_device_type = vantu_orvanta_invalid_device_type, ///< the service's "invalid device type"
    unsupported_device_model =
        vantu_orvanta_unsupported_device_model, ///< the service does not support the device's model
    unparsable_device_pointer =
        vantu_orvanta_unparsable_device_pointer, ///< the service cannot parse the device pointer
    device_communication_error =
        vantu_orvanta_device_communication_error,        ///< the service cannot talk to the device
    unknown_client_id = vantu_orvanta_unknown_client_id, ///< the client id does not exist
    os_socket_error = vantu_orvanta_os_socket_error,     ///< the system has no room to send now
};

/// The text of a code: a literal, never null, never freed. "unknown" for a code without one, "nil"
/// for 0. Any thread.
[[nodiscard]] VANTU_ORVANTA_API const char* error_message(std::int32_t code) noexcept;

/// A failed call, for programs that prefer exceptions to codes. The library itself throws none.
class VANTU_ORVANTA_API exception : public std::exception {
  public:
    /// what() is the text of the code.
    explicit exception(std::uint32_t code);
    /// what() is "label: " and the text of the code.
    exception(std::uint32_t code, std::string label);
    /// what() is the message as it stands.
    [[nodiscard]] static exception with_message(std::uint32_t code, std::string message);
    ///@{
    /// Copies share nothing.
    exception(const exception& other);
    exception& operator=(const exception& other);
    ~exception() override;
    ///@}

    /// The text; valid as long as the exception.
    [[nodiscard]] const char* what() const noexcept override;
    /// The code that it was made with.
    [[nodiscard]] std::uint32_t code() const noexcept { return code_; }

  private:
    struct whole {};
    exception(std::uint32_t code, std::string message, whole);

    std::uint32_t code_;
    std::string message_;
};

/// Throws exception(code, label) unless the code is 0.
VANTU_ORVANTA_API void check_result(std::int32_t code, std::string label);

class client;

/// The end of a request.
enum class outcome : std::uint8_t {
    replied,      ///< with its record
    acknowledged, ///< the service took it and sends no record
    failed,       ///< see error
    timed_out,    ///< no end came before the deadline of its request: error 4
};

/// The argument of a one-shot handler; valid until the handler returns.
template <typename Record> struct reply {
    outcome result;                   ///< how the request ended
    unsigned device_id;               ///< of the answer; 0 where none ended the request
    const Record* record;             ///< null unless replied
    const vantu_orvanta_error* error; ///< null unless failed or timed out
};

/// The reply to opening or closing a device carries no record.
template <> struct reply<void> {
    outcome result;                   ///< how the request ended
    unsigned device_id;               ///< of the answer; 0 where none ended the request
    const vantu_orvanta_error* error; ///< null unless failed or timed out
};

/// Called once with the end of its request.
template <typename Record> using reply_handler = std::function<void(client&, const reply<Record>&)>;

/// Names one request of one client, for its cancel; a new ticket names none. Copies name the same request.
class request_ticket {
  public:
    /// Whether both name the same request.
    friend bool operator==(const request_ticket& a, const request_ticket& b) noexcept {
        return a.serial_ == b.serial_;
    }
    /// Whether they name different requests.
    friend bool operator!=(const request_ticket& a, const request_ticket& b) noexcept { return !(a == b); }

  private:
    friend class pending_requests;
    std::uint64_t serial_{0};
    std::uint8_t tag_{0};
};

/// How a request with a handler waits.
struct request_options {
    /// From the call until the handler is given outcome::timed_out; max() waits without limit, and 0 or less
    /// until the next expire_requests.
    std::chrono::nanoseconds timeout{std::chrono::nanoseconds::max()};
    /// Null, or receives the request's ticket: before it is sent and before its handler can run. It names no
    /// request after a return of 11.
    request_ticket* ticket{nullptr};
};

/// One connection with callbacks. Not copyable, not movable: callbacks are given a reference to it.
///
/// Callbacks and handlers run on the thread that calls dispatch (the polling thread, as a rule), one
/// at a time, with no lock of the library held. They may send requests and read the device table;
/// they must not stop the polling thread nor destroy the client. What they throw leaves dispatch; on
/// a polling thread that ends the process.
///
/// Good to know:
/// - The service may list devices while it accepts the connection. on_device is not called for these: they
///   are in the device table after the connect, see vantu_orvanta_device_ids.
/// - A failed poll ends the polling thread without a callback; vantu_orvanta_poll_thread_result has its code.
/// - An exception between the start and the stop of the polling thread destroys the client under the thread:
///   let a guard stop it.
class VANTU_ORVANTA_API client {
  public:
    /// Called for an event that names no device.
    using signal_callback = std::function<void(client&)>;
    /// Called for an event about a device, without a record.
    using device_callback = std::function<void(client&, unsigned device_id)>;
    /// Called for an event with a record, which is valid until the callback returns.
    template <typename Record>
    using record_callback = std::function<void(client&, unsigned device_id, const Record&)>;

    /// The callbacks, each empty when its event is not wanted. Those marked "route" are the default of
    /// a reply: they get every reply for which no one-shot handler waits.
    struct config {
        device_callback on_ack;                          ///< route
        signal_callback on_disconnected;                 ///< the service said goodbye
        record_callback<vantu_orvanta_device> on_device; ///< listed: its description, the rest zero
        device_callback on_device_removed;               ///< the device is gone
        device_callback on_device_opened;                ///< route
        device_callback on_device_closed;                ///< route
        record_callback<vantu_orvanta_orvanta3_info> on_orvanta3_info;   ///< details of an Orvanta3
        record_callback<vantu_orvanta_palmetron_info> on_palmetron_info; ///< details of a Palmetron
        record_callback<vantu_orvanta_device_block> on_device_block;     ///< route
        record_callback<vantu_orvanta_cursor_state> on_cursor_state;   ///< the first stream of cursor states
        record_callback<vantu_orvanta_cursor_state> on_cursor_state_b; ///< the second stream
        record_callback<vantu_orvanta_palmetron_state> on_palmetron_state; ///< the stream of grip states
        record_callback<vantu_orvanta_orientation> on_orientation;         ///< route
        record_callback<vantu_orvanta_config_save> on_config_save;         ///< route
        record_callback<vantu_orvanta_config_gravity_compensation> on_config_gravity_compensation; ///< route
        record_callback<vantu_orvanta_config_torque_scaling> on_config_torque_scaling;             ///< route
        record_callback<vantu_orvanta_config_handedness> on_config_handedness;                     ///< route
        record_callback<vantu_orvanta_status_motor_current> on_status_motor_current;               ///< route
        record_callback<vantu_orvanta_status_power_supply> on_status_power_supply;                 ///< route
        std::function<void(client&, const vantu_orvanta_service_stream_a&)>
            on_service_stream_a; ///< a stream of the service itself
        record_callback<vantu_orvanta_service_stream_b>
            on_service_stream_b; ///< a stream of the service, by device
        record_callback<vantu_orvanta_table_block_128> on_table_block_128; ///< route; device id 0
        record_callback<vantu_orvanta_table_block_301> on_table_block_301; ///< route; device id 0
        record_callback<vantu_orvanta_error> on_error;                     ///< route
    };

    /// Takes the callbacks and creates a context that is not connected. Throws std::bad_alloc.
    explicit client(config callbacks);

    /// Disconnects from the service, which may take 100 ms, and frees the context. Stop the polling
    /// thread first. Handlers that still wait are dropped without a call; fail_requests calls them.
    ~client();

    ///@{
    /// Not copyable, not movable.
    client(const client&) = delete;
    client& operator=(const client&) = delete;
    client(client&&) = delete;
    client& operator=(client&&) = delete;
    ///@}

    /// The context, for the flat API; it lives as long as the client. Never null.
    [[nodiscard]] vantu_orvanta_context* context() const noexcept;

    /// Hands one event to the one-shot handler that waits for it or to its callback. False when the
    /// event is empty (type 0), true otherwise, also for a type it does not know; calls expire_requests
    /// afterwards in both cases. One thread at a time. A goodbye calls fail_requests(8) before
    /// on_disconnected.
    bool dispatch(const vantu_orvanta_event& event);

    /// A vantu_orvanta_event_handler whose user pointer is the client: dispatches the event to it. A polling
    /// thread with that user pointer also calls expire_requests while no event comes.
    static void dispatch_event(void* user, const vantu_orvanta_event* event);

    /// Calls every handler that waits with this code as its error and device id 0, and frees its tag. For the
    /// thread that dispatches, or for any after the polling thread was stopped: when polling ended with a
    /// code and the answers cannot come any more, or when they took too long. An answer that comes all the
    /// same goes to the default callback of its event. A request sent by one of these handlers is not among
    /// them: it waits for an answer of its own. What a handler throws leaves the call; those not called yet
    /// wait on.
    void fail_requests(std::int32_t code);

    /// Calls every handler whose deadline has passed, the earliest first, with outcome::timed_out, error 4
    /// and device id 0, and frees its tag. Nearly free while nothing is due. For the thread that dispatches,
    /// and only needed by an event loop that does not dispatch at the next deadline. Handlers may send, and
    /// throw, as for fail_requests.
    void expire_requests();

    /// The earliest deadline of a waiting request, in nanoseconds of std::chrono::steady_clock since its
    /// epoch; the largest number when none has a deadline. Any thread.
    [[nodiscard]] std::int64_t next_deadline_ns() const;

    /// Ends the wait of a request without a call, and frees its tag. True: its handler has not been called,
    /// never will be, and is destroyed. False: it was called, is about to be or runs now, or the ticket names
    /// no request that was sent. Any thread, handlers and callbacks included. The request itself is not taken
    /// back.
    bool cancel(const request_ticket& ticket);

    ///@{
    /// Requests with a one-shot handler. Each picks a free tag, sends and returns the code of the send; 11
    /// when all 255 tags are waiting, and nothing is sent. After a return of 0 the handler is called exactly
    /// once, unless cancel returns true, by the first of
    /// - dispatch, given the answer: its record, an acknowledgement, or the error of the service;
    /// - dispatch, given the service's goodbye: error 8;
    /// - fail_requests: the code given to it;
    /// - expire_requests, when the deadline of its options has passed: outcome::timed_out.
    /// Nothing else ends the wait: no code that a poll returns does. A destroyed client drops the handlers
    /// that wait. After any other return the handler is never called. Any thread, handlers and callbacks
    /// included. An empty handler is allowed.
    ///
    /// An answer that comes after its request timed out, was cancelled or failed goes to the default callback
    /// of its event. Its tag is used again after all the others that are free: an answer that is later still,
    /// and fits the request that has the tag by then, is taken for that request's.
    [[nodiscard]] std::int32_t device_open(unsigned device_id, std::uint16_t value,
                                           reply_handler<void> handler, const request_options& options = {});
    [[nodiscard]] std::int32_t device_close(unsigned device_id, reply_handler<void> handler,
                                            const request_options& options = {});
    [[nodiscard]] std::int32_t orientation_get(unsigned device_id,
                                               reply_handler<vantu_orvanta_orientation> handler,
                                               const request_options& options = {});
    [[nodiscard]] std::int32_t config_save(unsigned device_id,
                                           reply_handler<vantu_orvanta_config_save> handler,
                                           const request_options& options = {});
    [[nodiscard]] std::int32_t config_gravity_compensation_get(
        unsigned device_id, reply_handler<vantu_orvanta_config_gravity_compensation> handler,
        const request_options& options = {});
    [[nodiscard]] std::int32_t config_gravity_compensation_set(
        unsigned device_id, const vantu_orvanta_config_gravity_compensation& value,
        reply_handler<vantu_orvanta_config_gravity_compensation> handler,
        const request_options& options = {});
    [[nodiscard]] std::int32_t config_torque_scaling_get(
        unsigned device_id, reply_handler<vantu_orvanta_config_torque_scaling> handler,
        const request_options& options = {});
    [[nodiscard]] std::int32_t config_torque_scaling_set(
        unsigned device_id, const vantu_orvanta_config_torque_scaling& value,
        reply_handler<vantu_orvanta_config_torque_scaling> handler, const request_options& options = {});
    [[nodiscard]] std::int32_t config_handedness_set(unsigned device_id, std::uint8_t handedness,
                                                     reply_handler<vantu_orvanta_config_handedness> handler,
                                                     const request_options& options = {});
    ///@}

  private:
    struct implementation;
    std::unique_ptr<implementation> self_;
};

} // namespace vantu::orvanta
