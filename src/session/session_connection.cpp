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
constexpr int local_ports = 16;
constexpr auto reconnection_interval = std::chrono::seconds(1);

// What devices come with the acceptance, or directly after it, comes within this time.
constexpr auto longest_settling = std::chrono::milliseconds(100);
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

} // namespace

session::implementation::implementation(session& owner, options wanted)
    : owner_(owner), options_(std::move(wanted)), log_(sink_of(options_)),
      liveness_(options_.probe_interval.count(), 0) {
    const log_scope scope(log_);
    vantu_orvanta_init();
    if (const std::int32_t code = try_to_connect(); code != vantu_orvanta_success) {
        throw_failure(connect_failure(code, options_.service_port));
    }
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
    const auto end = std::chrono::steady_clock::now() + longest_settling;
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, end, [this] { return !arrived_.empty() || client_ == nullptr; });
    lock.unlock();
    for (std::uint64_t before = ~std::uint64_t{0};
         before != events_.load(std::memory_order_relaxed) && std::chrono::steady_clock::now() < end;) {
        before = events_.load(std::memory_order_relaxed);
        std::this_thread::sleep_for(quiet_when_settled);
    }
}

std::int32_t session::implementation::try_to_connect() {
    auto fresh = std::make_shared<client>(client::config{});
    const std::string name = options_.name.substr(0, longest_name);
    const std::uint64_t keep_alive_ns = unsigned_ns(options_.keep_alive);
    const std::uint64_t timeout_ns =
        std::max<std::uint64_t>(unsigned_ns(options_.connect_timeout), local_ports * ns_per_millisecond);
    const std::int32_t code =
        options_.service_port.empty()
            ? vantu_orvanta_connect(fresh->context(), name.c_str(), 0, 0, keep_alive_ns,
                                    timeout_ns / local_ports)
            : vantu_orvanta_connect_ports(fresh->context(), "0", options_.service_port.c_str(), name.c_str(),
                                          0, 0, keep_alive_ns, timeout_ns);
    if (code != vantu_orvanta_success) {
        return code;
    }
    const std::int64_t now_ns = platform::steady_now_ns();
    liveness_.heard(now_ns);
    failures_in_a_row_ = 0;
    list_devices(*fresh, now_ns);
    const std::lock_guard lock(mutex_);
    client_ = std::move(fresh);
    ++connections_;
    return code;
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
    if (!loss_) {
        loss_ = loss{code, formatted("connection lost: {}", how)};
    }
}

void session::implementation::lose() {
    const loss why = *std::exchange(loss_, std::nullopt);
    std::shared_ptr<client> lost;
    {
        const std::lock_guard lock(mutex_);
        lost.swap(client_);
        arrived_.clear();
        confirmed_.clear();
    }
    changed_.notify_all();
    arrivals_.clear();
    samples_.clear();
    fail_entered({error_code::disconnected_from_service, why.message});
    if (options_.callbacks.on_lost) {
        options_.callbacks.on_lost(owner_, why);
    }
}

void session::implementation::wait_for_reconnection() {
    {
        std::unique_lock lock(mutex_);
        const auto something_to_do = [this] { return stopping_ || !posted_.empty(); };
        if (options_.reconnect) {
            changed_.wait_for(lock, reconnection_interval, something_to_do);
        } else {
            changed_.wait(lock, something_to_do);
        }
        if (stopping_) {
            return;
        }
    }
    fail_posted();
    if (options_.reconnect && try_to_connect() == vantu_orvanta_success &&
        options_.callbacks.on_reconnected) {
        options_.callbacks.on_reconnected(owner_);
    }
}

} // namespace vantu::orvanta
