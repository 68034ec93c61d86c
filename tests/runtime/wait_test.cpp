// Waiting without a tick: what ends a wait, and what its handle and next_due tell an event loop.
#include "support/service_session.hpp"

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace {

using namespace orvanta_tests;
using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

const bytes device_7{7, 0, 0, 0};
const bytes device_8{8, 0, 0, 0};
constexpr std::uint64_t without_limit = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t patience_ns = 30'000'000'000;

std::int64_t now_ns() {
    return std::chrono::nanoseconds(steady::now().time_since_epoch()).count();
}

// A request puts the next keep-alive off for a second.
void put_keep_alive_off(service_session& session) {
    session.service.expect(datagram({op(47, 0, device_7)}));
    ASSERT_EQ(vantu_orvanta_orientation_get(session.context, 7, 0), vantu_orvanta_success);
    session.service.await_script();
}

std::int64_t due_of(const service_session& session) {
    std::uint64_t due_ns = 0;
    EXPECT_EQ(vantu_orvanta_next_due(session.context, &due_ns), vantu_orvanta_success);
    return static_cast<std::int64_t>(due_ns);
}

// Polls until an event is empty and returns how many were not.
int drain(vantu_orvanta_context* context) {
    int events = 0;
    for (;;) {
        const polled got = poll_once(context);
        EXPECT_EQ(got.code, vantu_orvanta_success);
        if (got.code != vantu_orvanta_success || got.event.event_type == vantu_orvanta_event_none) {
            return events;
        }
        ++events;
    }
}

// Waits with no keep-alive due meanwhile, however slow the machine is.
std::int32_t wait_between_keep_alives(service_session& session, std::uint64_t timeout_ns) {
    for (;;) {
        put_keep_alive_off(session);
        const std::int32_t code = vantu_orvanta_wait(session.context, timeout_ns);
        if (code != vantu_orvanta_success || now_ns() < due_of(session)) {
            return code;
        }
    }
}

// Waits and polls until an event comes; returns how many came at once.
int wait_for_events(vantu_orvanta_context* context) {
    int events = 0;
    while (events == 0) {
        const std::int32_t code = vantu_orvanta_wait(context, patience_ns);
        EXPECT_EQ(code, vantu_orvanta_success);
        if (code != vantu_orvanta_success) {
            return 0;
        }
        events = drain(context);
    }
    return events;
}

TEST(waits, refuse_null_and_a_context_that_is_not_connected) {
    EXPECT_EQ(vantu_orvanta_wait(nullptr, 0), vantu_orvanta_invalid_argument);
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    EXPECT_EQ(vantu_orvanta_wait(context, without_limit), vantu_orvanta_invalid_connection_state);
    vantu_orvanta_disconnect(context);
}

TEST(waits, time_out_not_before_their_time) {
    service_session session;
    const auto begin = steady::now();
    ASSERT_EQ(wait_between_keep_alives(session, 50'000'000), vantu_orvanta_timed_out);
    EXPECT_GE(steady::now() - begin, 50ms);
}

TEST(waits, look_once_with_no_time) {
    service_session session;
    EXPECT_EQ(wait_between_keep_alives(session, 0), vantu_orvanta_timed_out);
}

TEST(waits, end_with_a_datagram) {
    service_session session;
    put_keep_alive_off(session);
    const std::int64_t due_ns = due_of(session);
    std::thread service([&] {
        std::this_thread::sleep_for(20ms);
        session.service.push(datagram({op(17, 0, device_7)}));
    });
    EXPECT_EQ(wait_for_events(session.context), 1);
    EXPECT_LT(now_ns(), due_ns);
    service.join();
}

TEST(waits, return_at_once_while_operations_are_left_of_a_datagram) {
    service_session session;
    session.service.push(datagram({op(17, 0, device_7), op(17, 0, device_8)}));
    ASSERT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
    ASSERT_EQ(poll_once(session.context).event.device_id, 7U);
    std::uint64_t due_ns = 1;
    EXPECT_EQ(vantu_orvanta_next_due(session.context, &due_ns), vantu_orvanta_success);
    EXPECT_EQ(due_ns, 0U);
    ASSERT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
    EXPECT_EQ(poll_once(session.context).event.device_id, 8U);
    EXPECT_EQ(wait_between_keep_alives(session, 0), vantu_orvanta_timed_out);
}

TEST(waits, end_when_a_keep_alive_is_due) {
    const std::int64_t before_ns = now_ns();
    service_session session;
    const std::int64_t after_ns = now_ns();
    const std::int64_t due_ns = due_of(session);
    EXPECT_GE(due_ns, before_ns + 1'000'000'000);
    EXPECT_LE(due_ns, after_ns + 1'000'000'000);
    ASSERT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
    EXPECT_GE(now_ns(), due_ns);
    EXPECT_EQ(drain(session.context), 0);
    EXPECT_TRUE(wait_until([&] { return session.service.keep_alives().size() == 1; }));
}

TEST(waits, go_on_past_a_keep_alive_that_a_request_has_put_off) {
    // Again where the machine was too slow to send the request in time.
    for (bool in_time = false; !in_time;) {
        service_session session;
        const std::int64_t first_due_ns = due_of(session);
        std::int64_t ended_ns = 0;
        std::thread waiting([&] {
            EXPECT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
            ended_ns = now_ns();
        });
        std::this_thread::sleep_for(500ms);
        put_keep_alive_off(session);
        in_time = now_ns() < first_due_ns;
        const std::int64_t due_ns = due_of(session);
        waiting.join();
        if (in_time) {
            EXPECT_GT(due_ns, first_due_ns);
            EXPECT_GE(ended_ns, due_ns);
        }
    }
}

TEST(waits, are_ended_by_another_thread) {
    service_session session;
    put_keep_alive_off(session);
    const std::int64_t due_ns = due_of(session);
    std::thread other([&] {
        std::this_thread::sleep_for(20ms);
        EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    });
    EXPECT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
    EXPECT_LT(now_ns(), due_ns);
    other.join();
}

TEST(waits, remember_a_wake_that_came_before_them_and_only_once) {
    service_session session;
    put_keep_alive_off(session);
    const std::int64_t due_ns = due_of(session);
    ASSERT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    ASSERT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(session.context, patience_ns), vantu_orvanta_success);
    EXPECT_LT(now_ns(), due_ns);
    EXPECT_EQ(wait_between_keep_alives(session, 0), vantu_orvanta_timed_out);
}

TEST(waits, end_when_a_poll_on_another_thread_meets_the_goodbye) {
    service_session session;
    put_keep_alive_off(session);
    std::thread waiting([&] {
        std::int32_t code = vantu_orvanta_success;
        while (code == vantu_orvanta_success) {
            code = vantu_orvanta_wait(session.context, patience_ns);
        }
        EXPECT_EQ(code, vantu_orvanta_invalid_connection_state);
    });
    session.service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(session.context).event.event_type,
              std::uint32_t{vantu_orvanta_event_disconnected});
    waiting.join();
}

TEST(waits, go_on_in_the_next_connection_of_a_context) {
    scripted_service first;
    scripted_service second;
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::intptr_t before = 0;
    ASSERT_EQ(vantu_orvanta_wait_handle(context, &before), vantu_orvanta_success);
    first.expect(connect_request()).answer(acceptance());
    ASSERT_EQ(connect_to(first, context), vantu_orvanta_success);
    first.push(goodbye_received());
    EXPECT_EQ(vantu_orvanta_wait(context, patience_ns), vantu_orvanta_success);
    EXPECT_EQ(poll_until_something(context).event.event_type,
              std::uint32_t{vantu_orvanta_event_disconnected});
    EXPECT_EQ(vantu_orvanta_wait(context, patience_ns), vantu_orvanta_invalid_connection_state);

    second.expect(connect_request()).answer(acceptance());
    ASSERT_EQ(connect_to(second, context), vantu_orvanta_success);
    second.push(datagram({op(17, 0, device_7)}));
    EXPECT_EQ(wait_for_events(context), 1);
    std::intptr_t after = 0;
    EXPECT_EQ(vantu_orvanta_wait_handle(context, &after), vantu_orvanta_success);
    EXPECT_EQ(before, after);
    second.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

TEST(wait_handles, refuse_null) {
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::intptr_t handle = 0;
    EXPECT_EQ(vantu_orvanta_wait_handle(nullptr, &handle), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_wait_handle(context, nullptr), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_wake(nullptr), vantu_orvanta_invalid_argument);
    vantu_orvanta_disconnect(context);
}

TEST(next_due, refuses_null_and_a_context_that_is_not_connected) {
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::uint64_t due_ns = 0;
    EXPECT_EQ(vantu_orvanta_next_due(nullptr, &due_ns), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_next_due(context, nullptr), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_next_due(context, &due_ns), vantu_orvanta_invalid_connection_state);
    vantu_orvanta_disconnect(context);
}

} // namespace
