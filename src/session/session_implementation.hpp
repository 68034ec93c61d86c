// The inside of a session: a connection, the requests that wait on it, and the thread that serves both.
#pragma once

#include "arrivals.hpp"
#include "failures.hpp"
#include "liveness.hpp"
#include "runtime/native_thread.hpp"
#include "session/hidden.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/session.hpp"
#include "waiting_call.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vantu::orvanta {

class ORVANTA_HIDDEN session::implementation {
  public:
    // Connects. Throws as the session's constructor does.
    implementation(session& owner, options wanted);
    ~implementation();
    implementation(const implementation&) = delete;
    implementation& operator=(const implementation&) = delete;

    // Ends the thread and the connection; the destructor does so too.
    void stop();

    // Starts the thread, and waits until the devices that are there have been listed.
    void start();

    [[nodiscard]] bool is_connected() const;
    [[nodiscard]] bool is_own_thread() const;
    [[nodiscard]] std::vector<device> devices() const;
    [[nodiscard]] statistics count() const;
    [[nodiscard]] result<device> wait_for_device(std::chrono::nanoseconds time,
                                                 const std::function<bool(const device&)>& wanted);

    // The values that the service last confirmed of a device; empty when they are not known.
    [[nodiscard]] std::optional<gravity_compensation> confirmed(std::uint32_t device_id) const;

    // The number of a call that opens a device, and whether no later one closes it: then it is opened again
    // whenever it arrives.
    [[nodiscard]] std::uint64_t opening(std::uint32_t device_id);
    void opened(std::uint32_t device_id, std::uint64_t opening);
    // From here on a device is not opened again any more, whatever openings are under way.
    void closing(std::uint32_t device_id);

    template <typename Value, typename Record, typename Method, typename... Arguments>
    void request(const char* name, std::uint32_t device_id, handler<Value> done, const timeout& time,
                 Method method, const Arguments&... arguments);
    template <typename Value, typename Start>
    [[nodiscard]] result<Value> wait_for(const char* name, std::uint32_t device_id, const timeout& time,
                                         Start start) const;
    template <typename Change>
    void change_gravity_compensation(const char* name, std::uint32_t device_id,
                                     handler<gravity_compensation> done, const timeout& time, Change change);

  private:
    // Enters a call and hands the client over on which to send its request; null after a loss, when the call
    // fails on the thread. take tells whose the outcome is: the first asker's.
    struct entered {
        std::uint64_t number;
        std::shared_ptr<client> by;
    };
    [[nodiscard]] entered enter(std::shared_ptr<waiting_call> call);
    [[nodiscard]] bool take(std::uint64_t number);
    // Lets a call that is still entered fail on the thread.
    void fail_later(std::uint64_t number, failure why);
    // Makes the thread look at a deadline that may come before the one it sleeps for.
    void consider(std::int64_t deadline_ns);

    struct later {
        std::shared_ptr<waiting_call> call;
        failure why;
    };

    // For the thread, and for the constructor before there is one.
    static void tell_traffic(void* self, const vantu_orvanta_traffic* told);
    [[nodiscard]] std::shared_ptr<client> new_client();
    void adopt(std::shared_ptr<client> connected);
    void wake();

    // The rest is the thread's alone.
    static void run(void* self) noexcept;
    void serve();
    void take_events(client& with);
    void handle_event(client& with, const vantu_orvanta_event& event, std::int64_t now_ns);
    void note(client& with, const vantu_orvanta_event& event, std::int64_t now_ns);
    void list_devices(client& with, std::int64_t now_ns);
    void announce(client& with, std::int64_t now_ns);
    void open_again(client& with, std::uint32_t device_id);
    [[nodiscard]] std::string uuid_under_lock(std::uint32_t device_id) const;
    [[nodiscard]] bool is_kept_open(std::uint32_t device_id) const;
    [[nodiscard]] bool was_closed_last(std::uint32_t device_id) const;
    void replace(client& with, std::uint32_t device_id);
    void refresh(client& with, std::uint32_t device_id);
    void remove(std::uint32_t device_id);
    void watch_over(client& with, std::int64_t now_ns);
    void note_loss(error_code code, const char* how);
    void lose();
    void fail_entered(const char* how);
    void fail_posted();
    [[nodiscard]] bool has_posted() const;
    void sleep(client& with);
    void wait_for_reconnection();
    [[nodiscard]] bool try_to_reconnect();
    [[nodiscard]] bool is_stopping() const { return stopping_.load(std::memory_order_relaxed); }

    session& owner_;
    const options options_;
    const log_sink log_;
    native_thread thread_;
    std::atomic<std::thread::id> thread_id_{};
    std::atomic<std::int64_t> sleeps_until_ns_{0};
    std::atomic<std::uint64_t> events_{0};
    std::atomic<std::uint64_t> rejected_{0};

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    // Under the mutex.
    std::shared_ptr<client> client_;    // null while there is no connection
    std::atomic<bool> stopping_{false}; // changed under the mutex
    bool has_looked_{false};            // once the thread has seen the devices of the acceptance
    bool all_have_arrived_{false};      // that have been listed
    std::uint64_t connections_{0};
    std::uint64_t last_number_{0};
    std::map<std::uint64_t, std::shared_ptr<waiting_call>> calls_;
    std::vector<later> posted_;
    std::vector<device> arrived_;
    std::uint64_t arrivals_so_far_{0};
    std::map<std::uint32_t, gravity_compensation> confirmed_;
    std::set<std::string> kept_open_; // uuids
    struct last_calls {
        std::uint64_t opening{0};
        std::uint64_t closing{0};
    };
    std::uint64_t last_call_{0};
    std::map<std::uint32_t, last_calls> asked_; // the numbers of the last calls that open and close a device

    // The thread's alone.
    arrivals arrivals_;
    liveness liveness_;
    std::map<std::uint32_t, std::uint64_t> samples_;
    int failures_in_a_row_{0};
    std::optional<loss> loss_; // noted, and to be told after the callbacks that run
    const char* how_lost_{""};
    std::int64_t next_attempt_ns_{0};
};

} // namespace vantu::orvanta
