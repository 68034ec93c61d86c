// The polling thread: what it hands on, when it ends, and how it is stopped.
#include "runtime/idle_task.hpp"
#include "runtime/native_thread.hpp"
#include "runtime/poll_thread.hpp"
#include "support/log_capture.hpp"
#include "support/service_session.hpp"

#include <atomic>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace orvanta_tests;

// A handler that keeps what it is given, and may do something more.
struct recorder {
    std::mutex mutex;
    std::vector<vantu_orvanta_event> events;
    std::function<void(const vantu_orvanta_event&)> more;

    static void handle(void* user, const vantu_orvanta_event* event) {
        auto* self = static_cast<recorder*>(user);
        {
            const std::lock_guard lock(self->mutex);
            self->events.push_back(*event);
        }
        if (self->more) {
            self->more(*event);
        }
    }

    bool has(std::size_t count) {
        return wait_until([&] {
            const std::lock_guard lock(mutex);
            return events.size() >= count;
        });
    }
};

class poll_thread : public testing::Test {
  protected:
    void start() {
        thread = vantu_orvanta_poll_thread_start(session.context, recorder::handle, &recorded);
        ASSERT_NE(thread, nullptr);
    }

    void stop() { vantu_orvanta_poll_thread_stop(std::exchange(thread, nullptr)); }

    ~poll_thread() override { stop(); }

    bool ends_with(std::uint32_t code) {
        EXPECT_TRUE(wait_until([&] { return vantu_orvanta_poll_thread_result(thread) != 0; }));
        return vantu_orvanta_poll_thread_result(thread) == code;
    }

    service_session session;
    recorder recorded;
    vantu_orvanta_poll_thread* thread{nullptr};
};

bytes numbered(std::uint32_t number) {
    return op(17, 0, u32(number));
}

TEST_F(poll_thread, hands_on_a_burst_in_order) {
    start();
    std::uint32_t number = 0;
    for (int part = 0; part < 20; ++part) {
        bytes packed = datagram({});
        for (int i = 0; i < 61; ++i) {
            packed = join({packed, numbered(number++)});
        }
        session.service.push(packed);
    }
    ASSERT_TRUE(recorded.has(20 * 61));
    for (std::uint32_t i = 0; i < number; ++i) {
        EXPECT_EQ(+recorded.events[i].event_type, +vantu_orvanta_event_device_removed);
        EXPECT_EQ(+recorded.events[i].device_id, i);
    }
    EXPECT_EQ(vantu_orvanta_poll_thread_result(thread), +vantu_orvanta_success) << "it still runs";
}

TEST_F(poll_thread, hands_on_whole_events_but_no_empty_ones) {
    start();
    session.service.push(datagram({op(2, 0), op(64, 7, {5, 0, 0, 0, 1})}));
    ASSERT_TRUE(recorded.has(1));
    stop();
    ASSERT_EQ(recorded.events.size(), 1U);
    EXPECT_EQ(hex(bytes_of(recorded.events[0])), hex(join({u32(64), u32(5), {7, 1}, filled(300, 0)})));
}

TEST_F(poll_thread, sends_the_keep_alives) {
    start();
    EXPECT_TRUE(wait_until([&] { return !session.service.keep_alives().empty(); }));
}

TEST_F(poll_thread, ends_with_6_on_a_datagram_that_is_not_understood) {
    const log_capture quiet;
    start();
    session.service.push({1, 2, 3});
    EXPECT_TRUE(ends_with(vantu_orvanta_protocol_parse_failed));
    session.service.push(datagram({op(2, 1)}));
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_ack)
        << "the context goes on";
    EXPECT_EQ(recorded.events.size(), 0U);
}

TEST_F(poll_thread, ends_with_7_on_details_of_an_unlisted_device) {
    start();
    session.service.push(datagram({op(23, 0, join({u32(5), filled(9, 0)}))}));
    EXPECT_TRUE(ends_with(vantu_orvanta_no_matching_device));
}

TEST_F(poll_thread, ends_with_2_on_a_handedness_of_0) {
    start();
    session.service.push(datagram({op(70, 0, {5, 0, 0, 0, 0})}));
    EXPECT_TRUE(ends_with(vantu_orvanta_invalid_argument));
}

TEST_F(poll_thread, hands_on_the_goodbye_of_the_service_and_ends_with_3) {
    start();
    session.service.push(datagram({op(6, 0)}));
    EXPECT_TRUE(ends_with(vantu_orvanta_invalid_connection_state));
    ASSERT_EQ(recorded.events.size(), 1U);
    EXPECT_EQ(+recorded.events[0].event_type, +vantu_orvanta_event_disconnected);
}

// The step by itself, without its thread.
class idle_task : public testing::Test {
  protected:
    static void count(void* user) { ++static_cast<idle_task*>(user)->runs; }

    vantu::orvanta::poll_step step(void* user) {
        vantu_orvanta_poll_thread record{session.context, [](void*, const vantu_orvanta_event*) {}, user};
        return vantu::orvanta::run_poll_step(record);
    }

    service_session session;
    int runs{0};
    const vantu::orvanta::idle_task task{count, this};
};

TEST_F(idle_task, runs_after_a_poll_without_an_event_on_the_thread_of_its_user_alone) {
    using vantu::orvanta::poll_step;
    EXPECT_EQ(step(this), poll_step::idle);
    vantu::orvanta::set_idle_task(*session.context, &task);
    EXPECT_EQ(step(nullptr), poll_step::idle);
    EXPECT_EQ(step(&session), poll_step::idle);
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(step(this), poll_step::idle);
    EXPECT_EQ(runs, 1);
    session.service.push(datagram({op(2, 1)}));
    EXPECT_TRUE(wait_until([&] { return step(nullptr) == poll_step::handled; }));
    session.service.push(datagram({op(2, 1)}));
    EXPECT_TRUE(wait_until([&] {
        const int before = runs;
        const bool handled = step(this) == poll_step::handled;
        EXPECT_EQ(runs - before, handled ? 0 : 1);
        return handled;
    }));
    vantu::orvanta::set_idle_task(*session.context, nullptr);
    const int before = runs;
    EXPECT_EQ(step(this), poll_step::idle);
    EXPECT_EQ(runs, before);
}

TEST(poll_thread_start, ends_with_3_at_once_on_a_context_that_never_connected) {
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    recorder unused;
    auto* thread = vantu_orvanta_poll_thread_start(context, recorder::handle, &unused);
    EXPECT_TRUE(wait_until(
        [&] { return vantu_orvanta_poll_thread_result(thread) == vantu_orvanta_invalid_connection_state; }));
    vantu_orvanta_poll_thread_stop(thread);
    vantu_orvanta_disconnect(context);
}

TEST_F(poll_thread, is_not_started_for_a_null_context_or_handler) {
    EXPECT_EQ(vantu_orvanta_poll_thread_start(nullptr, recorder::handle, &recorded), nullptr);
    EXPECT_EQ(vantu_orvanta_poll_thread_start(session.context, nullptr, &recorded), nullptr);
}

TEST_F(poll_thread, leaves_a_null_handle_alone) {
    vantu_orvanta_poll_thread_stop(nullptr);
    EXPECT_EQ(vantu_orvanta_poll_thread_result(nullptr), +vantu_orvanta_success);
}

TEST(joining_a_thread, is_refused_where_none_is_attached) {
    vantu::orvanta::native_thread none;
    try {
        vantu::orvanta::join_thread(none);
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::invalid_argument);
    }
}

TEST_F(poll_thread, can_be_stopped_and_started_again) {
    for (std::size_t round = 1; round <= 20; ++round) {
        start();
        session.service.push(datagram({op(2, 1)}));
        ASSERT_TRUE(recorded.has(round));
        stop();
    }
}

TEST_F(poll_thread, stops_even_while_events_keep_coming) {
    std::atomic<bool> flooding{true};
    start();
    std::thread flood([&] {
        while (flooding) {
            session.service.push(datagram({op(2, 1), op(2, 1), op(2, 1)}));
        }
    });
    ASSERT_TRUE(recorded.has(10));
    stop();
    flooding = false;
    flood.join();
}

TEST_F(poll_thread, refuses_to_be_joined_by_its_own_handler_and_ends_when_that_returns) {
    std::atomic<int> refused{0};
    std::atomic<bool> started{false};
    recorded.more = [&](const vantu_orvanta_event&) {
        while (!started) {
            std::this_thread::yield();
        }
        try {
            vantu_orvanta_poll_thread_stop(thread);
        } catch (const std::system_error& failure) {
            refused += failure.code() == std::errc::resource_deadlock_would_occur ? 1 : 0;
        }
    };
    start();
    started = true;
    session.service.push(datagram({op(2, 1), op(2, 2)}));
    EXPECT_TRUE(wait_until([&] { return refused.load() == 1; }));
    stop();
    EXPECT_EQ(recorded.events.size(), 1U);
    EXPECT_EQ(poll_once(session.context).event.tag, 2) << "the rest is left to later polls";
}

TEST_F(poll_thread, waits_on_stop_for_a_handler_that_is_running) {
    std::atomic<bool> entered{false};
    std::atomic<bool> release{false};
    std::atomic<bool> left{false};
    recorded.more = [&](const vantu_orvanta_event&) {
        entered = true;
        while (!release) {
            std::this_thread::yield();
        }
        left = true;
    };
    start();
    session.service.push(datagram({op(2, 1)}));
    ASSERT_TRUE(wait_until([&] { return entered.load(); }));
    std::thread opener([&] {
        vantu_orvanta_sleep(20'000'000);
        release = true;
    });
    stop();
    EXPECT_TRUE(left.load());
    opener.join();
}

TEST_F(poll_thread, calls_its_handler_with_no_lock_held) {
    std::atomic<int> codes{-1};
    recorded.more = [&](const vantu_orvanta_event&) {
        vantu_orvanta_event inner{};
        vantu_orvanta_device device{};
        codes = vantu_orvanta_poll(session.context, &inner) * 100 +
                vantu_orvanta_device_info(session.context, 5, &device) * 10 +
                vantu_orvanta_orientation_get(session.context, 5, 1);
    };
    session.service.expect(datagram({op(47, 1, {5, 0, 0, 0})}));
    start();
    session.service.push(datagram({device_listed(5, 1)}));
    EXPECT_TRUE(wait_until([&] { return codes.load() == 0; })) << codes.load();
}

} // namespace
