// The session's connection: how it is made, lost and made again.
#include "session_implementation.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/text_field.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace vantu::orvanta {
namespace {

constexpr std::size_t longest_name = 31;
constexpr const char* usual_service_port = "54320";
constexpr int first_local_port = 54321;
constexpr int local_ports = 16;
constexpr std::int64_t reconnection_interval_ns = ns_per_second;

// For so long an attempt to reconnect may keep the destructor waiting, and what the thread has to tell.
constexpr std::uint64_t longest_attempt_ns = 100 * ns_per_millisecond;

// Devices that come with the acceptance, or directly after it, have arrived within this time, also those that
// come without their details.
constexpr auto longest_settling = std::chrono::milliseconds(150);
constexpr auto quiet_when_settled = std::chrono::milliseconds(5);

std::uint64_t unsigned_ns(std::chrono::nanoseconds time) {
    return static_cast<std::uint64_t>(std::max(time, std::chrono::nanoseconds(0)).count());
}

log_sink sink_of(const session::options& wanted) {
    if (!wanted.log) {
        return {};
    }
    return [sink = wanted.log](std::uint64_t, log_level level, const std::string&, std::uint64_t,
                               const std::string& message) {
        sink(static_cast<vantu_orvanta_log_level>(level), message.c_str());
    };
}

// The time of one local port, of the time for all of them.
std::uint64_t attempt_ns(const session::options& wanted) {
    return std::max<std::uint64_t>(unsigned_ns(wanted.connect_timeout) / local_ports, ns_per_millisecond);
}

std::string name_for_the_service(const session::options& wanted) {
    return wanted.name.substr(0, longest_name);
}

} // namespace

session::implementation::implementation(session& owner, options wanted)
    : owner_(owner), options_(std::move(wanted)), log_(sink_of(options_)),
      liveness_(options_.probe_interval.count(), 0) {
    const log_scope scope(log_);
    vantu_orvanta_init();
    std::shared_ptr<client> fresh = new_client();
    const std::string name = name_for_the_service(options_);
    const std::uint64_t keep_alive_ns = unsigned_ns(options_.keep_alive);
    const std::int32_t code =
        options_.service_port.empty()
            ? vantu_orvanta_connect(fresh->context(), name.c_str(), 0, 0, keep_alive_ns, attempt_ns(options_))
            : vantu_orvanta_connect_ports(fresh->context(), "0", options_.service_port.c_str(), name.c_str(),
                                          0, 0, keep_alive_ns, attempt_ns(options_) * local_ports);
    if (code != vantu_orvanta_success) {
        throw_failure(connect_failure(code, options_.service_port));
    }
    adopt(std::move(fresh));
}

session::implementation::~implementation() {
    stop();
}

void session::implementation::stop() {
    if (!thread_.attached) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake();
    join_thread(thread_);
    const log_scope scope(log_);
    client_.reset();
}

void session::implementation::start() {
    start_thread(thread_, run, this);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return has_looked_; }); // however late a busy machine runs the thread
    const auto end = std::chrono::steady_clock::now() + longest_settling;
    changed_.wait_until(lock, end,
                        [this] { return (!arrived_.empty() && all_have_arrived_) || client_ == nullptr; });
    lock.unlock();
    for (std::uint64_t before = ~std::uint64_t{0};
         before != events_.load(std::memory_order_relaxed) && std::chrono::steady_clock::now() < end;) {
        before = events_.load(std::memory_order_relaxed);
        std::this_thread::sleep_for(quiet_when_settled);
    }
}

void session::implementation::tell_traffic(void* self, const vantu_orvanta_traffic* told) {
    static_cast<const implementation*>(self)->options_.traffic(*told);
}

std::shared_ptr<client> session::implementation::new_client() {
    auto made = std::make_shared<client>(client::config{});
    if (options_.traffic) {
        (void)vantu_orvanta_traffic_sink_set(made->context(), tell_traffic, this);
    }
    return made;
}

void session::implementation::adopt(std::shared_ptr<client> connected) {
    const std::int64_t now_ns = platform::steady_now_ns();
    liveness_.heard(now_ns);
    failures_in_a_row_ = 0;
    list_devices(*connected, now_ns);
    const std::lock_guard lock(mutex_);
    client_ = std::move(connected);
    ++connections_;
}

void session::implementation::wake() {
    std::shared_ptr<client> with;
    {
        const std::lock_guard lock(mutex_);
        with = client_;
    }
    changed_.notify_all();
    if (with != nullptr) {
        (void)vantu_orvanta_wake(with->context());
    }
}

void session::implementation::note_loss(error_code code, const char* how) {
    loss_ = loss{code, formatted("connection lost: {}", how)};
    how_lost_ = how;
    {
        const std::lock_guard lock(mutex_);
        client_.reset(); // the thread still holds it
        arrived_.clear();
        confirmed_.clear();
        asked_.clear();
    }
    changed_.notify_all();
}

void session::implementation::lose() {
    const loss why = *std::exchange(loss_, std::nullopt);
    arrivals_.clear();
    samples_.clear();
    next_attempt_ns_ = time_after(platform::steady_now_ns(), reconnection_interval_ns);
    fail_entered(how_lost_);
    fail_posted();
    if (options_.callbacks.on_lost && !is_stopping()) {
        options_.callbacks.on_lost(owner_, why);
    }
}

void session::implementation::wait_for_reconnection() {
    fail_posted();
    {
        std::unique_lock lock(mutex_);
        const auto something_to_do = [this] { return stopping_ || !posted_.empty(); };
        if (!options_.reconnect) {
            changed_.wait(lock, something_to_do);
            return;
        }
        const std::int64_t left_ns = time_left_ns(platform::steady_now_ns(), next_attempt_ns_);
        if (changed_.wait_for(lock, std::chrono::nanoseconds(left_ns), something_to_do)) {
            return;
        }
    }
    const bool connected = try_to_reconnect();
    next_attempt_ns_ = time_after(platform::steady_now_ns(), reconnection_interval_ns);
    if (connected && options_.callbacks.on_reconnected && !is_stopping()) {
        options_.callbacks.on_reconnected(owner_);
    }
}

// As vantu_orvanta_connect, with a look between two ports at what else there is to do.
bool session::implementation::try_to_reconnect() {
    const bool usual = options_.service_port.empty();
    const std::string service_port = usual ? usual_service_port : options_.service_port;
    const std::string name = name_for_the_service(options_);
    const std::uint64_t timeout_ns = std::min(attempt_ns(options_), longest_attempt_ns);
    for (int i = 0; i < (usual ? local_ports : 1) && !is_stopping(); ++i) {
        const std::string local_port = usual ? std::to_string(first_local_port + i) : "0";
        std::shared_ptr<client> fresh = new_client();
        const std::int32_t code =
            vantu_orvanta_connect_ports(fresh->context(), local_port.c_str(), service_port.c_str(),
                                        name.c_str(), 0, 0, unsigned_ns(options_.keep_alive), timeout_ns);
        if (code == vantu_orvanta_success) {
            adopt(std::move(fresh));
            return true;
        }
        fail_posted();
        if (code != vantu_orvanta_timed_out && code != vantu_orvanta_socket_bind_failed) {
            return false;
        }
    }
    return false;
}

} // namespace vantu::orvanta
