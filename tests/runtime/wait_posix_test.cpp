// The wait on Linux: a handle that is readable while there is a reason to poll, closed ports, and signals.
#include "runtime/context.hpp"
#include "support/service_session.hpp"
#include "support/wait_handle.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>

namespace orvanta_tests {
namespace {

using vantu::orvanta::platform::steady_now_ns;

constexpr std::uint64_t a_moment_ns = 50'000'000;

class a_wait_on_linux : public testing::Test {
  protected:
    a_wait_on_linux() { EXPECT_EQ(vantu_orvanta_wait_handle(session.context, &handle), 0); }

    // Waits with no keep-alive due meanwhile, however slow the machine is.
    std::int32_t wait_between_keep_alives(std::uint64_t timeout_ns) {
        for (;;) {
            session.context->connection.note_send(steady_now_ns());
            const std::int32_t code = vantu_orvanta_wait(session.context, timeout_ns);
            if (code != vantu_orvanta_success || steady_now_ns() < session.context->connection.due_ns()) {
                return code;
            }
        }
    }

    service_session session;
    std::intptr_t handle{0};
};

TEST_F(a_wait_on_linux, keeps_its_handle_readable_until_all_is_taken) {
    session.service.push(datagram({op(17, 0, id_5)}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(is_signalled(handle, patience_ms));
        EXPECT_EQ(wait_between_keep_alives(a_moment_ns), vantu_orvanta_success);
    }
    EXPECT_EQ(poll_once(session.context).event.device_id, 5U);
    EXPECT_FALSE(is_signalled(handle));
}

TEST_F(a_wait_on_linux, keeps_its_handle_readable_after_a_wake_until_a_poll_or_a_wait) {
    EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_TRUE(is_signalled(handle));
    EXPECT_TRUE(is_signalled(handle));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_FALSE(is_signalled(handle));
    EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_wait(session.context, 0), vantu_orvanta_success);
    EXPECT_FALSE(is_signalled(handle));
}

TEST_F(a_wait_on_linux, ends_once_for_each_datagram_that_met_a_closed_port) {
    session.service.close();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 0), vantu_orvanta_success);
        EXPECT_TRUE(is_signalled(handle, patience_ms));
        EXPECT_EQ(wait_between_keep_alives(a_moment_ns), vantu_orvanta_success);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_disconnected_from_service);
        EXPECT_FALSE(is_signalled(handle));
        EXPECT_EQ(wait_between_keep_alives(a_moment_ns), vantu_orvanta_timed_out) << "it must not spin";
    }
}

// The keep-alives are what finds out that nobody listens any more.
TEST_F(a_wait_on_linux, hears_of_a_closed_port_by_its_keep_alives) {
    session.service.close();
    session.context->connection.note_send(0);
    std::int32_t code = vantu_orvanta_success;
    while (code == vantu_orvanta_success) {
        ASSERT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
        code = poll_once(session.context).code;
    }
    EXPECT_EQ(code, vantu_orvanta_disconnected_from_service);
}

std::atomic<int> signals_handled{0};
void handle_signal(int) {
    ++signals_handled;
}

TEST_F(a_wait_on_linux, ends_with_a_signal_that_its_thread_handles) {
    struct sigaction count {};
    struct sigaction before {};
    count.sa_handler = handle_signal;
    ASSERT_EQ(sigaction(SIGUSR1, &count, &before), 0);
    signals_handled = 0;
    std::atomic<bool> over{false};
    std::int64_t ended_ns = 0;
    session.context->connection.note_send(steady_now_ns() + 3600'000'000'000); // no keep-alive
    std::thread waiting([&] {
        EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success);
        ended_ns = steady_now_ns();
        over = true;
    });
    const std::int64_t begun_ns = steady_now_ns();
    EXPECT_TRUE(wait_until([&] { return session.context->is_waiting.load(); }));
    // Until one comes while it sleeps.
    EXPECT_TRUE(
        wait_until([&] { return over.load() || pthread_kill(waiting.native_handle(), SIGUSR1) != 0; }));
    waiting.join();
    EXPECT_GE(signals_handled, 1);
    EXPECT_LT(ended_ns - begun_ns, static_cast<std::int64_t>(patient_timeout_ns));
    EXPECT_EQ(sigaction(SIGUSR1, &before, nullptr), 0);
}

} // namespace
} // namespace orvanta_tests
