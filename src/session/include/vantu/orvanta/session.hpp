/// @file
/// A connection that looks after itself: it starts the socket layer, connects, runs its thread, keeps the
/// list of devices, and ends in its destructor. C++17.
#pragma once

#include "vantu/orvanta/device.hpp"
#include "vantu/orvanta/export.h"
#include "vantu/orvanta/log.h"
#include "vantu/orvanta/result.hpp"
#include "vantu/orvanta/traffic.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantu::orvanta {

/// One connection to the device service, and its thread. Not copyable, not movable: callbacks are given a
/// reference to it.
///
/// Every request has two forms. The waiting form returns the answer, or the failure: at the latest when its
/// time is up. The form with a handler returns at once, and the handler is called exactly once, with the
/// answer, a time-out, the loss of the connection, or the end of the session.
///
/// Callbacks and handlers run on the session's thread, one at a time and with no lock held. They may call
/// everything but the destructor; a waiting form that is called there returns a failure at once. What they
/// throw ends the process, and so does a lack of memory on that thread. All functions may be called from any
/// thread.
///
/// A session prints nothing on standard output, and warnings on standard error: see options::log.
class VANTU_ORVANTA_API session {
  public:
    /// How a connection came to its end.
    struct loss {
        /// disconnected_from_service: the service said goodbye, or its port is closed.
        /// client_not_connected, unknown_client_id: the service was started anew and does not know this
        /// client. timed_out: the service has not answered for three times options::probe_interval. Any
        /// other: the system refused to receive, again and again.
        error_code code;
        std::string message; ///< one line
    };

    /// Told of what happens, each empty when it is not wanted.
    struct callbacks {
        /// A device is there: once for each, those that were there before the session included. Its details
        /// are known, unless the service took more than 100 ms to send them.
        std::function<void(session&, const device&)> on_arrival;
        /// A device that has arrived was unplugged.
        std::function<void(session&, const device&)> on_removal;
        /// A cursor state of a device that is open.
        std::function<void(session&, const cursor_sample&)> on_cursor;
        /// Currents of a device's motors.
        std::function<void(session&, const motor_current&)> on_motor_current;
        /// The state of a device's power supply.
        std::function<void(session&, const power_supply&)> on_power_supply;
        /// The connection has ended: once for each, whatever ended it but the destructor. Waiting requests
        /// have got their failure before.
        std::function<void(session&, const loss&)> on_lost;
        /// options::reconnect has succeeded: devices arrive anew.
        std::function<void(session&)> on_reconnected;
        /// Every event as the flat API has it, before anything else is made of it.
        std::function<void(session&, const vantu_orvanta_event&)> on_event;
    };

    /// Settings of a session. All have a default that will do but the name.
    struct options {
        /// The program's name, for the service; what is beyond 31 characters is cut off.
        std::string name;
        /// Told of what happens.
        session::callbacks callbacks{};
        /// For how long the constructor tries to connect, in whole milliseconds and at least 16 of them: a
        /// sixteenth for each local port.
        std::chrono::nanoseconds connect_timeout{std::chrono::seconds(2)};
        /// For how long a request waits for its answer when its call does not say.
        std::chrono::nanoseconds request_timeout{std::chrono::seconds(1)};
        /// For how long the service keeps this client without a sign of life. The session gives one a second.
        std::chrono::nanoseconds keep_alive{std::chrono::seconds(5)};
        /// After how long a silence of the service it is asked for a device's orientation, to see whether it
        /// is still there and knows this client; 0: never. An answer of any kind will do.
        std::chrono::nanoseconds probe_interval{std::chrono::seconds(1)};
        /// Whether a session that has lost its connection connects again, trying every second until it
        /// succeeds.
        bool reconnect{false};
        /// The port of the service; empty: the one that services have.
        std::string service_port{};
        /// Receives the log lines of this session, all of them, in place of everything else. Without it they
        /// go to the program's sink (vantu_orvanta_log_sink_set); without that too, warnings and errors to
        /// standard error, and the rest nowhere unless vantu_orvanta_log_level_set asks for it. Runs on the
        /// thread that logs, under the logger's lock: it must not call this library.
        std::function<void(vantu_orvanta_log_level level, const char* message)> log{};
        /// Told of each datagram of this session as vantu_orvanta_traffic_sink_set says, from the first
        /// connect to the answer to the goodbye: on several threads, and on some at once. It must not call
        /// this session.
        std::function<void(const vantu_orvanta_traffic& told)> traffic{};
    };

    /// The time of a waiting form or a handler; empty: options::request_timeout.
    using timeout = std::optional<std::chrono::nanoseconds>;
    /// Called exactly once with the outcome of a request.
    template <typename Value> using handler = std::function<void(session&, const result<Value>&)>;

    /// Connects, and waits until the devices that are there have been listed: at once if the service lists
    /// them as it accepts the connection, else for up to 150 ms. Blocks for up to options::connect_timeout
    /// besides.
    ///
    /// Throws vantu::orvanta::exception, whose code() is one that vantu_orvanta_connect returns and whose
    /// what() says what to do; std::bad_alloc; std::system_error when the system starts no thread.
    explicit session(options wanted);

    /// Says goodbye to the service and ends the thread, after the callback that runs; handlers that wait get
    /// error_code::disconnected_from_service, and so do those of requests that such a handler sends: one that
    /// asks again whatever it is told keeps the destructor from ending, unless it looks at is_connected
    /// first. Blocks for up to 100 ms, for 200 ms while it reconnects, and for that callback. Not to be
    /// called from a callback, nor while another thread uses the session.
    ~session();

    ///@{
    /// Not copyable, not movable.
    session(const session&) = delete;
    session& operator=(const session&) = delete;
    session(session&&) = delete;
    session& operator=(session&&) = delete;
    ///@}

    /// Whether the connection stands, and the destructor has not begun. A handler that a loss has failed
    /// finds it ended.
    [[nodiscard]] bool is_connected() const;

    /// The devices that are there, in the order of their arrival; none without a connection.
    [[nodiscard]] std::vector<device> devices() const;

    /// Waits for a device that has arrived and that the predicate likes; an empty one likes every Orvanta3.
    /// The predicate is called on the caller's thread.
    ///   timed_out                  there was none in time
    ///   disconnected_from_service  the connection is lost, and options::reconnect off
    ///   invalid_argument           called from a callback
    [[nodiscard]] result<device> wait_for_device(std::chrono::nanoseconds time,
                                                 const std::function<bool(const device&)>& wanted = {});

    /// Opens a device, so that its states come and its configuration can be read and changed. From then on,
    /// until close, the session opens it again by itself whenever it is plugged in or the connection comes
    /// back.
    ///
    /// This and all requests below fail with
    ///   timed_out                  there was no answer in time
    ///   disconnected_from_service  the connection is lost or was lost meanwhile, or the session ended
    ///   invalid_argument           device id 0; or a waiting form was called from a callback
    ///   request_queue_full         255 requests are waiting
    ///   and the codes with which the service refuses: device_not_opened, invalid_device_id, ...
    [[nodiscard]] result<void> open(std::uint32_t device_id, timeout time = {});
    /// The form with a handler.
    void open(std::uint32_t device_id, handler<void> done, timeout time = {});

    /// Closes a device.
    [[nodiscard]] result<void> close(std::uint32_t device_id, timeout time = {});
    /// The form with a handler.
    void close(std::uint32_t device_id, handler<void> done, timeout time = {});

    /// Asks for the orientation of a device that is open, as is each device below.
    [[nodiscard]] result<orientation> get_orientation(std::uint32_t device_id, timeout time = {});
    /// The form with a handler.
    void get_orientation(std::uint32_t device_id, handler<orientation> done, timeout time = {});

    /// Asks for the gravity compensation.
    [[nodiscard]] result<gravity_compensation> get_gravity_compensation(std::uint32_t device_id,
                                                                        timeout time = {});
    /// The form with a handler.
    void get_gravity_compensation(std::uint32_t device_id, handler<gravity_compensation> done,
                                  timeout time = {});

    /// Sets the gravity compensation. The answer is what is in force now.
    [[nodiscard]] result<gravity_compensation> set_gravity_compensation(std::uint32_t device_id,
                                                                        const gravity_compensation& value,
                                                                        timeout time = {});
    /// The form with a handler.
    void set_gravity_compensation(std::uint32_t device_id, const gravity_compensation& value,
                                  handler<gravity_compensation> done, timeout time = {});

    /// Sets one field of the gravity compensation and keeps the other as the service last confirmed it; asks
    /// for that first when it is not known. Two such calls at once, on one device, may undo each other.
    [[nodiscard]] result<gravity_compensation> set_gravity_compensation_enabled(std::uint32_t device_id,
                                                                                bool enabled,
                                                                                timeout time = {});
    /// The form with a handler.
    void set_gravity_compensation_enabled(std::uint32_t device_id, bool enabled,
                                          handler<gravity_compensation> done, timeout time = {});

    /// The same for the other field.
    [[nodiscard]] result<gravity_compensation> set_scaling_factor(std::uint32_t device_id, float factor,
                                                                  timeout time = {});
    /// The form with a handler.
    void set_scaling_factor(std::uint32_t device_id, float factor, handler<gravity_compensation> done,
                            timeout time = {});

    /// Asks for the torque scaling.
    [[nodiscard]] result<torque_scaling> get_torque_scaling(std::uint32_t device_id, timeout time = {});
    /// The form with a handler.
    void get_torque_scaling(std::uint32_t device_id, handler<torque_scaling> done, timeout time = {});

    /// Sets the torque scaling. The answer is what is in force now.
    [[nodiscard]] result<torque_scaling> set_torque_scaling(std::uint32_t device_id, bool enabled,
                                                            timeout time = {});
    /// The form with a handler.
    void set_torque_scaling(std::uint32_t device_id, bool enabled, handler<torque_scaling> done,
                            timeout time = {});

    /// Sets the handedness, which device::handedness tells. The answer is what is in force now; none fails
    /// with invalid_argument.
    [[nodiscard]] result<handedness> set_handedness(std::uint32_t device_id, handedness hand,
                                                    timeout time = {});
    /// The form with a handler.
    void set_handedness(std::uint32_t device_id, handedness hand, handler<handedness> done,
                        timeout time = {});

    /// Saves the configuration on the device.
    [[nodiscard]] result<saved_configuration> save(std::uint32_t device_id, timeout time = {});
    /// The form with a handler.
    void save(std::uint32_t device_id, handler<saved_configuration> done, timeout time = {});

    /// Counters since the session began.
    struct statistics {
        std::uint64_t events{0};      ///< operations of the service that made sense
        std::uint64_t rejected{0};    ///< datagrams, or operations of them, that made none and were dropped
        std::uint64_t connections{0}; ///< 1, and one more with each reconnection
    };
    /// The counters, as they are now.
    [[nodiscard]] statistics count() const;

  private:
    class implementation;
    std::unique_ptr<implementation> self_;
};

} // namespace vantu::orvanta
