// Waits that the system refuses, and what may happen at the worst moment: just before a wait sleeps.
#include "runtime/context.hpp"
#include "support/log_capture.hpp"
#include "support/service_session.hpp"
#include "support/system_calls.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cerrno>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using vantu::orvanta::platform::steady_now_ns;

constexpr std::uint64_t no_keep_alive_ns = 3'600'000'000'000;
constexpr auto warning = "message: unable to wait for packets with code: ";

class a_wait_between_calls : public testing::Test {
  protected:
    // So that nothing but the test ends a wait.
    a_wait_between_calls() {
        session.context->connection.note_send(steady_now_ns() + static_cast<std::int64_t>(no_keep_alive_ns));
    }

    service_session session;
    scripted_calls calls;
};

TEST_F(a_wait_between_calls, keeps_the_wake_that_a_poll_of_another_thread_meets) {
    calls.before(system_call::ppoll, 1, [this] {
        EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    });
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST_F(a_wait_between_calls, hears_of_the_end_that_polls_of_another_thread_meet) {
    calls.before(system_call::ppoll, 1, [this] {
        session.service.push(goodbye_received());
        EXPECT_EQ(poll_until_something(session.context).event.event_type,
                  std::uint32_t{vantu_orvanta_event_disconnected});
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_connection_state);
    });
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns),
              vantu_orvanta_invalid_connection_state);
}

TEST_F(a_wait_between_calls, leaves_a_wake_after_its_time_to_the_next) {
    calls.before(system_call::ppoll, 1,
                 [this] { EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success); });
    calls.end_with(system_call::ppoll, 0);
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
}

TEST_F(a_wait_between_calls, lets_polls_take_wakes_back_again_when_it_is_over) {
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
    EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST_F(a_wait_between_calls, sleeps_no_longer_than_to_the_next_keep_alive_and_without_limit_else) {
    session.context->connection.note_send(steady_now_ns());
    calls.end_with(system_call::ppoll, 1);
    EXPECT_EQ(vantu_orvanta_wait(session.context, UINT64_MAX), vantu_orvanta_success);
    ASSERT_EQ(calls.poll_limits().size(), 1U);
    EXPECT_LE(calls.poll_limits().front(), 1'000'000'000);
    EXPECT_GE(calls.poll_limits().front(), 0);
}

TEST_F(a_wait_between_calls, ends_quietly_with_a_signal) {
    const log_capture log;
    calls.fail(system_call::ppoll, EINTR);
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
    EXPECT_EQ(calls.count(system_call::ppoll), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(a_wait_between_calls, gives_1_when_the_system_refuses_and_works_again) {
    log_capture log;
    calls.fail(system_call::ppoll, ENOMEM);
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_unexpected_error);
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith(warning)));
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST_F(a_wait_between_calls, gives_1_without_descriptors_and_leaves_none_open) {
    log_capture log;
    // The second epoll_ctl is that of the socket.
    for (const auto& [call, nth] :
         {std::pair(system_call::epoll_create1, 1), std::pair(system_call::eventfd, 1),
          std::pair(system_call::epoll_ctl, 1), std::pair(system_call::epoll_ctl, 2)}) {
        const auto before = open_descriptors();
        std::intptr_t handle = -1;
        calls.fail(call, EMFILE, nth);
        EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_unexpected_error);
        calls.fail(call, EMFILE, nth);
        EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_unexpected_error);
        calls.fail(call, EMFILE, nth);
        EXPECT_EQ(vantu_orvanta_wait_handle(session.context, &handle), vantu_orvanta_unexpected_error);
        EXPECT_EQ(handle, -1);
        EXPECT_THAT(log.take_messages(),
                    ElementsAre(StartsWith(warning), StartsWith(warning), StartsWith(warning)));
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    }
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST(a_connect_of_a_context_with_a_handle, gives_1_when_its_socket_cannot_be_watched) {
    log_capture log;
    scripted_service service;
    service.expect(connect_request()).answer(acceptance());
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::intptr_t handle = 0;
    ASSERT_EQ(vantu_orvanta_wait_handle(context, &handle), vantu_orvanta_success);
    const auto before = open_descriptors();
    {
        scripted_calls calls;
        calls.fail(system_call::epoll_ctl, ENOSPC);
        EXPECT_EQ(connect_to(service, context), vantu_orvanta_unexpected_error);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith(warning)));
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
    service.await_script();
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(context, 0), vantu_orvanta_timed_out);
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

} // namespace
} // namespace orvanta_tests
