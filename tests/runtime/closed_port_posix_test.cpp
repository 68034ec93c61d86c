// Linux tells a client of a closed port, and sends it signals.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"

#include <atomic>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;

void count_blocked_signals(void* user, const vantu_orvanta_event*) {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD}) {
        *static_cast<std::atomic<int>*>(user) += sigismember(&mask, signal);
    }
}

TEST(poll_thread_signals, are_none) {
    service_session session;
    std::atomic<int> blocked{0};
    auto* thread = vantu_orvanta_poll_thread_start(session.context, count_blocked_signals, &blocked);
    session.service.push(datagram({op(2, 1)}));
    EXPECT_TRUE(wait_until([&] { return blocked.load() == 6; }));
    vantu_orvanta_poll_thread_stop(thread);
    sigset_t own;
    pthread_sigmask(SIG_BLOCK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGINT), 0) << "the starting thread keeps its own mask";
}

void ignore_event(void*, const vantu_orvanta_event*) {}

TEST(a_closed_service, gives_8_and_leaves_the_context_connected) {
    service_session session;
    log_capture log;
    session.service.close();
    EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 0), vantu_orvanta_success);
    EXPECT_EQ(poll_until_something(session.context).code, vantu_orvanta_disconnected_from_service);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 0), vantu_orvanta_success)
        << "an old error stops no send";
    EXPECT_EQ(poll_until_something(session.context).code, vantu_orvanta_disconnected_from_service);
    EXPECT_THAT(log.take_messages(), testing::IsEmpty());
}

TEST(poll_thread_without_a_service, ends_with_8) {
    service_session session;
    auto* thread = vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr);
    session.service.close();
    EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 0), vantu_orvanta_success);
    EXPECT_TRUE(wait_until([&] { return vantu_orvanta_poll_thread_result(thread) == 8; }));
    vantu_orvanta_poll_thread_stop(thread);
}

} // namespace
