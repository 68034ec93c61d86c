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
#include <vector>

namespace vantu::orvanta {

class service_simulator {
  public:
    // Where a client hears of the devices: in the datagram of its acceptance, before it, or after it.
    enum class announce : std::uint8_t { before, after };

    // A setting that is left empty, as it is here, is that of the scenario. Where the scenario leaves it out
    // too, the value after "else" counts.
    struct settings {
        std::optional<std::string> port; // decimal, "0" takes a free one; else "0"
        // 0 to 256 devices of a type; else 1. Refused beside a scenario that names its devices.
        std::optional<std::size_t> orvanta3_count;
        std::optional<std::size_t> palmetron_count;
        std::optional<double> rate_hz;     // states of each opened device a second, 0 to 10000; else 100
        std::optional<std::uint64_t> seed; // else one by chance
        std::string state_path;            // file of saved configurations; else they are kept until the end
        std::string scenario_path;         // file of a scenario, which begins at time 0; empty: none
        std::optional<announce> devices;   // else before
        std::optional<bool> single_client; // else false
        // Faults from the start on, in their order, as in "drop 0.05" or "truncate 17@op=66", before those of
        // the scenario, which act as well. One that would happen at once waits for the first datagram that it
        // fits.
        std::vector<std::string> faults;
        // With it nothing moves but by advance and serve_waiting; without it by a thread of its own, between
        // start and stop.
        bool manual_clock{false};
        std::string capture_path; // pcap file of all that the sockets receive and send; else none
        // Told in lines what the service does, what has failed (a configuration that could not be saved), and
        // what verbs of the scenario show. Called with the simulator's lock held, on its thread or the
        // caller's: they must not call the simulator. Each may be empty. `trace` and `verbose` of a scenario,
        // for which these stand, are for the program.
        std::function<void(std::string_view line)> narrate;
        std::function<void(std::string_view line)> warn;
        std::function<void(std::string_view text)> show;
        // Told a line for each datagram that a socket has received or sent:
        //     0.012300 out 127.0.0.1:54321 42 'my program': device_opened tag=1 device_id=1
        // the seconds since the start, the way, the client's address, id and name ("-" before the service
        // knows it), the operations. A line that ends in "<- " and a rule is of a datagram to which that
        // fault happens, as it was before; a lost one has no other line.
        std::function<void(std::string_view line)> trace;
    };

    // The way of a datagram, as dir=in and dir=out of a fault.
    enum class direction : std::uint8_t { in, out };
    enum class device_type : std::uint8_t { orvanta3 = 1, palmetron = 2 };

    // As vantu_orvanta_config_... of the client library set it; a Palmetron has none.
    struct configuration {
        bool gravity_compensation{false};
        float scaling_factor{0};
        bool torque_scaling{false};
        bool left_handed{false};
    };

    struct device {
        std::uint32_t id{0};
        device_type type{device_type::orvanta3};
        std::uint16_t short_id{0};
        std::string uuid; // 32 hexadecimal digits
        configuration configured;
        std::size_t opened_by{0};  // clients that have it open
        std::uint64_t requests{0}; // that have reached the service for it
        std::uint64_t states{0};   // sent, to all clients together
    };

    struct client {
        std::uint64_t id{0};
        // Its address and port in the order of the first datagrams, from 1: what client=N of a fault and of
        // `send` means.
        std::uint64_t number{0};
        std::string name;
        std::string address;                   // "127.0.0.1:54321"
        std::vector<std::uint32_t> opened;     // devices, in the order of opening
        std::chrono::nanoseconds keep_alive{}; // it is forgotten after a longer silence; 0: never
        std::chrono::nanoseconds silent_for{};
    };

    struct rule {
        std::uint64_t number{0}; // of all rules since the start, from 1
        std::string name;        // empty: none
        std::string text;        // as "drop 0.3"
        std::uint64_t fitted{0};
        std::uint64_t happened{0};
    };

    struct counters {
        std::uint64_t received{0}; // datagrams from clients
        std::uint64_t sent{0};     // datagrams to clients
        std::uint64_t restarts{0};
        std::size_t clients{0}; // connected now
        std::size_t devices{0}; // plugged in now
    };

    // Opens the port. Throws std::invalid_argument for settings out of range, and std::runtime_error with
    // one line for a port that cannot be had, a file that is wrong and a capture that cannot be written.
    explicit service_simulator(const settings& wanted);
    // Ends as stop does.
    ~service_simulator();
    service_simulator(const service_simulator&) = delete;
    service_simulator& operator=(const service_simulator&) = delete;

    // All functions below may be called from any thread, but start and stop from one at a time; a call
    // waits while another is under way.

    [[nodiscard]] const std::string& port() const noexcept;

    // The same seed, settings and datagrams at the same times give the same bytes.
    [[nodiscard]] std::uint64_t seed() const noexcept;

    // The scenario's own word on its subject; empty without one.
    [[nodiscard]] const std::string& about() const noexcept;

    // Verbs of the scenario that could not be done so far; settings::show has been told a line that begins
    // with "error: " for each.
    [[nodiscard]] std::size_t failed_steps() const;

    // Does at once what a line of the control console says ("help" lists the verbs) and returns what it
    // shows: nothing, or lines that end in line feeds. Throws std::invalid_argument with one line that says
    // what is wrong and what would be right. "wait" is for scripts and does nothing here.
    std::string command(std::string_view line);

    // Clients, devices, faults and counters as lines of text; what the verb "status" shows.
    [[nodiscard]] std::string status() const;

    [[nodiscard]] counters count() const;

    // Clients, devices and rules as they are now, in the order of `status`.
    [[nodiscard]] std::vector<client> clients() const;
    [[nodiscard]] std::vector<device> devices() const;
    [[nodiscard]] std::vector<rule> rules() const;

    // How many operations of that name or code, as "config_save" or "64", have reached the service (in) or
    // gone out to clients (out) since the start. What a fault has lost, or made unreadable, counts in
    // neither. Throws std::invalid_argument for an operation that does not travel that way.
    [[nodiscard]] std::uint64_t operations(direction way, std::string_view operation) const;

    // Sleeps until operations() is `count` or more, for as long as given at most, and returns whether it is.
    // So a test that waits for what has happened already does not wait: to wait for one more, it asks for the
    // count first. Throws std::logic_error with a manual clock, where nothing comes of waiting, and
    // std::invalid_argument as operations.
    [[nodiscard]] bool wait_for(direction way, std::string_view operation, std::chrono::nanoseconds longest,
                                std::uint64_t count = 1) const;

    // How many datagrams have suffered the fault of that name, as in "drop". Throws std::invalid_argument
    // for a name that is no fault.
    [[nodiscard]] std::uint64_t happened(std::string_view fault) const;

    // The simulation's time since its start, in whole ticks of 100 us.
    [[nodiscard]] std::chrono::nanoseconds now() const;

    // Whether the verb "quit", typed or in a scenario, has ended the service: it has said goodbye, and
    // neither hears nor sends until it is started anew. With a manual clock it stays so.
    [[nodiscard]] bool has_quit() const;

    // Serves on a thread of its own, at the pace of the steady clock; time goes on where it stood, also after
    // stop and after "quit", and with it the scenario. Does nothing while such a thread serves already.
    // Throws std::logic_error with a manual clock and while serve serves, std::system_error without a thread.
    void start();

    // The same on the calling thread, until `ends` says so, stop is called or the service quits; then says
    // goodbye to all clients. `ends` is asked before each sleep, and may call the simulator; no sleep is
    // longer than the given one, and a signal that the thread handles ends it early. What a command of
    // another thread makes due waits for the end of a sleep.
    void serve(const std::function<bool()>& ends,
               std::chrono::nanoseconds longest_sleep = std::chrono::milliseconds(10));

    // Ends the serving, if there is any, and says goodbye to all clients. The port stays open until the
    // destructor, so that start can follow. "silence 1000" before it makes a service that dies without a
    // word.
    void stop();

    // Moves the time on and sends what becomes due on the way, each at its time. A time in which nothing is
    // due is passed over at once; each state on the way costs some microseconds, as it is sent. Datagrams
    // that wait are not looked at. Throws std::logic_error without a manual clock, and std::invalid_argument
    // for a negative time and one beyond longest_advance.
    void advance(std::chrono::nanoseconds by);
    static constexpr std::chrono::hours longest_advance{24};

    // Takes the datagrams that are there now and sends the answers; returns how many they were. Never
    // sleeps, and time does not move. Throws std::logic_error without a manual clock.
    std::size_t serve_waiting();

  private:
    class implementation;
    std::unique_ptr<implementation> implementation_;
};

} // namespace vantu::orvanta
