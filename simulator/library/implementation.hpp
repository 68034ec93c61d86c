// The simulator behind service_simulator: a simulation with its scenario and its sockets, a lock around them,
// and the loop that serves.
#pragma once

#include "simulator/control/scenario_runner.hpp"
#include "simulator/library/prepared_settings.hpp"
#include "simulator/library/traffic_record.hpp"
#include "simulator/sockets/listeners.hpp"
#include "simulator/sockets/server.hpp"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace vantu::orvanta {

class service_simulator::implementation {
  public:
    explicit implementation(const settings& wanted);
    ~implementation() { stop(); }
    implementation(const implementation&) = delete;
    implementation& operator=(const implementation&) = delete;

    [[nodiscard]] const std::string& port() const noexcept { return sockets_.port(); }
    [[nodiscard]] std::uint64_t seed() const noexcept { return simulated_.seed(); }
    [[nodiscard]] const std::string& about() const noexcept { return prepared_.script.about; }
    [[nodiscard]] std::size_t failed_steps() const {
        const std::scoped_lock lock(mutex_);
        return runner_.failures();
    }

    // Calls the function with the simulation, and with the lock held.
    template <typename Function> auto look(Function function) const {
        const std::scoped_lock lock(mutex_);
        return function(simulated_);
    }

    // Sleeps until the condition holds, asked with the lock held whenever something has happened, for as long
    // as given at most.
    [[nodiscard]] bool wait_until(const std::function<bool(const simulator::simulation&)>& holds,
                                  std::chrono::nanoseconds longest) const;

    std::string command(std::string_view line);
    [[nodiscard]] bool has_quit() const;

    void serve(const std::function<bool()>& ends, std::chrono::nanoseconds longest_sleep);
    void start();
    void stop();
    void advance(std::chrono::nanoseconds by);
    std::size_t serve_waiting();

  private:
    [[nodiscard]] simulator::record_times times();
    [[nodiscard]] std::int64_t time_ns() const;

    void begin();
    void serve_until(const std::function<bool()>& ends, std::int64_t longest_ns);
    // Serves once; returns when there is more to do, empty at the end.
    [[nodiscard]] std::optional<std::int64_t> turn();
    void end();

    void notice_quit();
    void say_goodbye();
    // After datagrams have come or gone.
    void tell_all();

    bool manual_clock_;
    simulator::prepared_settings prepared_;
    simulator::simulation simulated_;
    simulator::listeners sockets_;
    simulator::traffic_record record_;
    simulator::scenario_runner runner_;
    simulator::server server_;
    mutable std::mutex mutex_; // guards all above and below but the thread
    mutable std::condition_variable happened_;
    simulator::clock_function clock_; // while somebody serves
    std::int64_t manual_ns_{0};
    bool serving_{false};
    bool stopping_{false};
    std::thread thread_;
};

} // namespace vantu::orvanta
