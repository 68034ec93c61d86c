// Service and client of a long run.
#include "soak/streaming_session.hpp"

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using namespace std::chrono_literals;

service_simulator::settings settings_of(double rate_hz) {
    service_simulator::settings settings;
    settings.rate_hz = rate_hz;
    // After the acceptance, so that it is the polling thread that takes the listing.
    settings.devices = service_simulator::announce::after;
    settings.palmetron_count = 0;
    return settings;
}

template <typename Condition> void wait_for(Condition condition, const std::string& what) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("waited in vain for " + what);
        }
        std::this_thread::sleep_for(1ms);
    }
}

} // namespace

running_service::running_service(double rate_hz) : simulated_(settings_of(rate_hz)) {
    simulated_.start();
}

std::uint64_t running_service::states_sent() const {
    return simulated_.operations(service_simulator::direction::out, "cursor_state");
}

streaming_client::streaming_client(const std::string& port)
    : client_([this] {
          client::config callbacks;
          callbacks.on_device = [this](client&, unsigned device_id, const vantu_orvanta_device&) {
              listed(device_id);
          };
          callbacks.on_device_opened = [this](client&, unsigned) { open_ = true; };
          callbacks.on_device_closed = [this](client&, unsigned) { open_ = false; };
          callbacks.on_cursor_state = [this](client&, unsigned, const vantu_orvanta_cursor_state&) {
              ++states_received_;
          };
          return callbacks;
      }()) {
    check_result(vantu_orvanta_init(), "init");
    constexpr std::uint64_t keep_alive_ns = 5'000'000'000;
    constexpr std::uint64_t reply_timeout_ns = 10'000'000'000;
    check_result(vantu_orvanta_connect_ports(client_.context(), "0", port.c_str(), "soak", 0, 0,
                                             keep_alive_ns, reply_timeout_ns),
                 "connect");
    thread_ = vantu_orvanta_poll_thread_start(client_.context(), client::dispatch_event, &client_);
    try {
        wait_for([this] { return device_id_ != 0; }, "the device");
    } catch (...) {
        vantu_orvanta_poll_thread_stop(thread_);
        throw;
    }
}

streaming_client::~streaming_client() {
    vantu_orvanta_poll_thread_stop(thread_);
}

void streaming_client::listed(unsigned device_id) {
    meter_ = std::make_unique<thread_meter>();
    device_id_ = device_id;
}

void streaming_client::open_device() {
    check_result(vantu_orvanta_device_open(client_.context(), device_id_, 0, 0), "device_open");
    wait_for([this] { return open_ || polling_result() != 0; }, "the opening");
    check_polling();
}

void streaming_client::close_device() {
    check_result(vantu_orvanta_device_close(client_.context(), device_id_, 0), "device_close");
    wait_for([this] { return !open_ || polling_result() != 0; }, "the closing");
    check_polling();
}

void streaming_client::check_polling() const {
    check_result(static_cast<std::int32_t>(polling_result()), "the polling thread");
}

} // namespace orvanta_tests
