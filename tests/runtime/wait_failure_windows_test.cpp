// Waits that Windows refuses, and the end of a connection just before a wait sleeps.
#include "runtime/context.hpp"
#include "support/log_capture.hpp"
#include "support/open_handles.hpp"
#include "support/service_session.hpp"
#include "support/winsock_calls.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <winsock2.h>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::StartsWith;
using vantu::orvanta::platform::steady_now_ns;

constexpr auto warning = "message: unable to wait for packets with code: ";

class a_wait_between_calls : public testing::Test {
  protected:
    // So that nothing but the test ends a wait.
    a_wait_between_calls() { session.context->connection.note_send(steady_now_ns() + 3'600'000'000'000); }

    service_session session;
    log_capture log;
    scripted_winsock calls;
};

TEST_F(a_wait_between_calls, keeps_the_wake_that_a_poll_of_another_thread_meets) {
    calls.before(winsock_call::wait, 1, [this] {
        EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    });
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST_F(a_wait_between_calls, hears_of_the_end_that_polls_of_another_thread_meet) {
    calls.before(winsock_call::wait, 1, [this] {
        session.service.push(goodbye_received());
        EXPECT_EQ(poll_until_something(session.context).event.event_type,
                  std::uint32_t{vantu_orvanta_event_disconnected});
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_connection_state);
    });
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns),
              vantu_orvanta_invalid_connection_state);
}

TEST_F(a_wait_between_calls, gives_1_when_the_system_refuses_and_works_again) {
    calls.fail(winsock_call::wait, ERROR_INVALID_HANDLE);
    EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_unexpected_error);
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith(warning)));
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_timed_out);
}

TEST_F(a_wait_between_calls, gives_1_without_an_event_and_leaves_no_handle) {
    for (const winsock_call call : {winsock_call::create_event, winsock_call::event_select}) {
        const auto refuse_each = [&] {
            std::intptr_t handle = -1;
            calls.fail(call, ERROR_NOT_ENOUGH_MEMORY, 1, scripted_winsock::always);
            EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_unexpected_error);
            EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_unexpected_error);
            EXPECT_EQ(vantu_orvanta_wait_handle(session.context, &handle), vantu_orvanta_unexpected_error);
            EXPECT_EQ(handle, -1);
            EXPECT_THAT(log.take_messages(),
                        ElementsAre(StartsWith(warning), StartsWith(warning), StartsWith(warning)));
        };
        EXPECT_EQ(handles_left_by(refuse_each), 0);
        calls.fail(call, 0, 1, 0);
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
    {
        scripted_winsock calls;
        calls.fail(winsock_call::event_select, WSAENETDOWN);
        EXPECT_EQ(connect_to(service, context), vantu_orvanta_unexpected_error);
    }
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith(warning)));
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
    service.await_script();
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_success);
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

} // namespace
} // namespace orvanta_tests
