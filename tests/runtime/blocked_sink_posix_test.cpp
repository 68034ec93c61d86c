// A log sink that takes its time holds up the thread that logs, and no other: above all not the goodbye.
#include "runtime/context.hpp"
#include "support/service_session.hpp"
#include "support/system_calls.hpp"

#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <thread>

namespace orvanta_tests {
namespace {

std::atomic<bool> is_logging{false};
std::atomic<bool> may_return{false};

void block(std::uint64_t, std::uint32_t, const char*, std::uint64_t, const char*) {
    is_logging = true;
    while (!may_return) {
        std::this_thread::yield();
    }
}

class a_log_sink_that_blocks : public testing::Test {
  protected:
    a_log_sink_that_blocks() {
        is_logging = false;
        may_return = false;
        vantu_orvanta_log_sink_set(block);
    }
    ~a_log_sink_that_blocks() override { vantu_orvanta_log_sink_set(nullptr); }

    // Lets a thread do work that logs, and the goodbye of the service come meanwhile.
    template <typename Work> void expect_the_goodbye_during(const Work& work) {
        std::atomic<bool> over{false};
        std::thread logging(work);
        EXPECT_TRUE(wait_until([] { return is_logging.load(); }));
        session.service.push(goodbye_received());
        std::thread polling([&] {
            EXPECT_EQ(poll_until_something(session.context).event.event_type,
                      +vantu_orvanta_event_disconnected);
            over = true;
        });
        EXPECT_TRUE(wait_until([&] { return over.load(); }));
        may_return = true;
        logging.join();
        polling.join();
    }

    service_session session;
};

TEST_F(a_log_sink_that_blocks, in_a_request_does_not_hold_up_the_goodbye) {
    scripted_calls calls;
    calls.fail(system_call::sendto, EPERM);
    expect_the_goodbye_during([&] {
        EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 1), vantu_orvanta_unexpected_error);
    });
}

TEST_F(a_log_sink_that_blocks, in_a_keep_alive_does_not_hold_up_the_goodbye) {
    session.context->connection.note_send(0);
    scripted_calls calls;
    calls.fail(system_call::sendto, EPERM);
    expect_the_goodbye_during(
        [&] { EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_unexpected_error); });
}

TEST_F(a_log_sink_that_blocks, in_a_receive_does_not_hold_up_the_goodbye) {
    scripted_calls calls;
    calls.fail(system_call::recvfrom, EIO);
    expect_the_goodbye_during(
        [&] { EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_unexpected_error); });
}

TEST_F(a_log_sink_that_blocks, in_a_first_wait_does_not_hold_up_the_goodbye) {
    scripted_calls calls;
    calls.fail(system_call::epoll_create1, EMFILE);
    expect_the_goodbye_during(
        [&] { EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_unexpected_error); });
}

TEST_F(a_log_sink_that_blocks, in_a_first_wake_does_not_hold_up_the_goodbye) {
    scripted_calls calls;
    calls.fail(system_call::eventfd, EMFILE);
    expect_the_goodbye_during(
        [&] { EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_unexpected_error); });
}

TEST_F(a_log_sink_that_blocks, in_a_rejection_does_not_hold_up_the_goodbye) {
    session.service.push({1, 2, 3});
    expect_the_goodbye_during(
        [&] { EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed); });
}

} // namespace
} // namespace orvanta_tests
