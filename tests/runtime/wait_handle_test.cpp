// The handle for event loops: what it tells of, on every platform.
#include "runtime/context.hpp"
#include "support/open_handles.hpp"
#include "support/service_session.hpp"
#include "support/wait_handle.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

namespace orvanta_tests {
namespace {

std::intptr_t handle_of(vantu_orvanta_context* context) {
    std::intptr_t handle = 0;
    EXPECT_EQ(vantu_orvanta_wait_handle(context, &handle), vantu_orvanta_success);
    return handle;
}

int take_all(vantu_orvanta_context* context) {
    int events = 0;
    for (polled got = poll_once(context); got.event.event_type != vantu_orvanta_event_none;
         got = poll_once(context)) {
        EXPECT_EQ(got.code, vantu_orvanta_success);
        ++events;
    }
    return events;
}

class a_wait_handle : public testing::Test {
  protected:
    [[nodiscard]] bool tells(int limit_ms = patience_ms) const { return is_signalled(handle, limit_ms); }

    service_session session;
    std::intptr_t handle{handle_of(session.context)};
};

TEST_F(a_wait_handle, tells_nothing_while_nothing_waits) {
    EXPECT_FALSE(tells(0));
    EXPECT_EQ(take_all(session.context), 0);
    EXPECT_FALSE(tells(0));
}

TEST_F(a_wait_handle, tells_of_a_datagram_that_came_before_anybody_asked_for_it) {
    service_session other;
    other.service.push(datagram({op(17, 0, id_5)}));
    EXPECT_TRUE(is_signalled(handle_of(other.context), patience_ms));
    EXPECT_EQ(take_all(other.context), 1);
}

// The wait of a loop and the polls until an empty event, over and over.
TEST_F(a_wait_handle, tells_of_all_datagrams_when_each_time_all_are_taken) {
    for (int i = 0; i < 100; ++i) {
        session.service.push(datagram({op(17, 0, id_5), op(17, 0, id_5)}));
        session.service.push(datagram({op(17, 0, id_5)}));
        for (int taken = 0; taken < 3;) {
            ASSERT_TRUE(tells());
            taken += take_all(session.context);
        }
    }
}

TEST_F(a_wait_handle, does_not_tell_of_operations_that_are_left) {
    session.service.push(datagram({op(17, 0, id_5), op(17, 0, id_5)}));
    ASSERT_TRUE(tells());
    ASSERT_EQ(poll_once(session.context).event.device_id, 5U);
    EXPECT_FALSE(tells(0));
    EXPECT_EQ(take_all(session.context), 1);
}

TEST_F(a_wait_handle, tells_of_a_wake_and_of_the_goodbye) {
    EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_TRUE(tells());
    EXPECT_EQ(take_all(session.context), 0);
    session.service.push(goodbye_received());
    EXPECT_TRUE(tells());
    EXPECT_EQ(poll_once(session.context).event.event_type, std::uint32_t{vantu_orvanta_event_disconnected});
    EXPECT_TRUE(tells()) << "the connection has ended";
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_connection_state);
    EXPECT_FALSE(tells(0));
    std::uint64_t due_ns = 0;
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_next_due(session.context, &due_ns), vantu_orvanta_invalid_connection_state);
}

// Hence the poll before the first wait of a loop.
TEST(a_first_poll, finds_what_came_with_the_acceptance_and_no_handle_tells_of) {
    scripted_service service;
    service.expect(connect_request()).answer(join({acceptance(), op(17, 0, id_5)}));
    vantu_orvanta_init();
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    ASSERT_EQ(connect_to(service, context), vantu_orvanta_success);
    EXPECT_FALSE(is_signalled(handle_of(context)));
    std::uint64_t due_ns = 1;
    EXPECT_EQ(vantu_orvanta_next_due(context, &due_ns), vantu_orvanta_success);
    EXPECT_EQ(due_ns, 0U);
    EXPECT_EQ(vantu_orvanta_wait(context, UINT64_MAX), vantu_orvanta_success);
    EXPECT_EQ(take_all(context), 1);
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

TEST_F(a_wait_handle, tells_of_a_goodbye_that_another_thread_polls) {
    session.service.push(goodbye_received());
    ASSERT_TRUE(tells());
    std::thread([this] {
        EXPECT_EQ(poll_until_something(session.context).event.event_type,
                  std::uint32_t{vantu_orvanta_event_disconnected});
    }).join();
    EXPECT_TRUE(tells());
}

TEST(a_first_handle, is_there_before_the_connection) {
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    const std::intptr_t handle = handle_of(context);
    EXPECT_FALSE(is_signalled(handle));
    service_session session(context);
    EXPECT_EQ(handle_of(context), handle);
    session.service.push(datagram({op(17, 0, id_5)}));
    EXPECT_TRUE(is_signalled(handle, patience_ms));
    session.expect_goodbye();
    vantu_orvanta_disconnect(context);
}

TEST(contexts_that_have_waited, leave_no_handle_open) {
    scripted_service service;
    service.respond_with([](const bytes& request) {
        return std::vector<bytes>{request.at(7) == 3 ? acceptance() : goodbye_received()};
    });
    const auto wait_once = [&] {
        vantu_orvanta_context* context = vantu_orvanta_context_create();
        EXPECT_EQ(connect_to(service, context), vantu_orvanta_success);
        EXPECT_EQ(vantu_orvanta_wake(context), vantu_orvanta_success);
        EXPECT_EQ(vantu_orvanta_wait(context, 0), vantu_orvanta_success);
        vantu_orvanta_disconnect(context);
    };
    EXPECT_EQ(handles_left_by(wait_once), 0);
}

} // namespace
} // namespace orvanta_tests
