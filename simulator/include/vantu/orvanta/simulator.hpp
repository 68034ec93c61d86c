// A simulated device service inside your own program: for tests of programs that use the client library,
// with every failure that a service can have, repeatable by a seed and at a time moved by hand.
//
// The service listens on loopback alone. A test lets its program connect to port() with
// vantu_orvanta_connect_ports and then makes things happen:
//
//     vantu::orvanta::service_simulator service({});
//     service.start();
//     // ... connect a client to service.port() ...
//     service.command("drop 0.3");     // lose three datagrams in ten
//     service.command("unplug 1");     // take the first device away
//     service.command("restart");      // forget all clients, as after a crash
//
// Links statically and needs nothing but the system.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantu::orvanta {

class service_simulator {
  public:
    // Where a client hears of the devices: in the datagram of its acceptance, before it, or after it.
    enum class announce : std::uint8_t { before, after };

    struct settings {
        std::string port{"0"}; // decimal; "0" takes a free one
        std::size_t orvanta3_count{1};
        std::size_t palmetron_count{1};
        double rate_hz{100};               // states of each opened device a second, 0 to 10000
        std::optional<std::uint64_t> seed; // empty: that of the scenario, else one by chance
        std::string state_path;            // file of saved configurations; empty: kept until the end
        std::string scenario_path;         // file of a scenario, which begins at time 0; empty: none
        announce devices{announce::before};
        bool single_client{false};
        // With it nothing moves but by advance and serve_waiting; without it by a thread of its own, between
        // start and stop.
        bool manual_clock{false};
        // Told in lines what the service does and what verbs of the scenario show. Called with the
        // simulator's lock held, on its thread or the caller's: it must not call the simulator. May be empty.
        std::function<void(std::string_view text)> narrate;
    };

    struct counters {
        std::uint64_t received{0}; // datagrams from clients
        std::uint64_t sent{0};     // datagrams to clients
        std::uint64_t restarts{0};
        std::size_t clients{0}; // connected now
        std::size_t devices{0}; // plugged in now
    };

    // Opens the port. Throws std::invalid_argument for settings out of range, and std::runtime_error with
    // one line for a port that cannot be had and a file that is wrong.
    explicit service_simulator(settings wanted);
    // Ends as stop does.
    ~service_simulator();
    service_simulator(const service_simulator&) = delete;
    service_simulator& operator=(const service_simulator&) = delete;

    // All functions below may be called from any thread, but start and stop from one at a time; a call
    // waits while another is under way.

    [[nodiscard]] const std::string& port() const noexcept;

    // The same seed, settings and datagrams at the same times give the same bytes.
    [[nodiscard]] std::uint64_t seed() const noexcept;

    // Does at once what a line of the control console says ("help" lists the verbs) and returns what it
    // shows: nothing, or lines that end in line feeds. Throws std::invalid_argument with one line that says
    // what is wrong and what would be right. "wait" is for scripts and does nothing here.
    std::string command(std::string_view line);

    // Clients, devices, faults and counters as lines of text; what the verb "status" shows.
    [[nodiscard]] std::string status() const;

    [[nodiscard]] counters count() const;

    // How many datagrams have suffered the fault of that name, as in "drop". Throws std::invalid_argument
    // for a name that is no fault.
    [[nodiscard]] std::uint64_t happened(std::string_view fault) const;

    // The simulation's time since its start, in whole ticks of 100 us.
    [[nodiscard]] std::chrono::nanoseconds now() const;

    // Whether the verb "quit", typed or in a scenario, has ended the service: it has said goodbye, and
    // neither hears nor sends.
    [[nodiscard]] bool has_quit() const;

    // Serves on a thread of its own, at the pace of the steady clock; time goes on where it stood. Does
    // nothing while it serves already. Throws std::logic_error with a manual clock, std::system_error
    // without a thread.
    void start();

    // Ends the thread, if there is one, and says goodbye to all clients. The port stays open until the
    // destructor, so that start can follow. "silence 1000" before it makes a service that dies without a
    // word.
    void stop();

    // Moves the time on and sends what becomes due on the way, each at its time, however long the way is.
    // Datagrams that wait are not looked at. Throws std::logic_error without a manual clock, and
    // std::invalid_argument for a negative time.
    void advance(std::chrono::nanoseconds by);

    // Takes the datagrams that are there now and sends the answers; returns how many they were. Never
    // sleeps, and time does not move. Throws std::logic_error without a manual clock.
    std::size_t serve_waiting();

  private:
    class implementation;
    std::unique_ptr<implementation> implementation_;
};

} // namespace vantu::orvanta
