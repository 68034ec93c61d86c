// The signals that a thread of the library takes.
#include "runtime/native_thread.hpp"

#include <atomic>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

namespace {

using namespace vantu::orvanta;

// Runs an action on a thread of the library.
template <typename Action> void run_on_thread(Action action) {
    native_thread thread;
    start_thread(
        thread, [](void* user) { (*static_cast<Action*>(user))(); }, &action);
    join_thread(thread);
}

std::atomic<int> signals_seen{0};
pthread_t thread_that_saw_one;

void note_signal(int) {
    thread_that_saw_one = pthread_self();
    ++signals_seen;
}

class a_signal_of_a_fault : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        struct sigaction noted {};
        noted.sa_handler = note_signal;
        ASSERT_EQ(sigaction(GetParam(), &noted, &before_), 0);
        signals_seen = 0;
    }
    void TearDown() override { sigaction(GetParam(), &before_, nullptr); }

  private:
    struct sigaction before_ {};
};
INSTANTIATE_TEST_SUITE_P(all, a_signal_of_a_fault,
                         testing::Values(SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT),
                         [](const auto& number) { return std::string(sigabbrev_np(number.param)); });

TEST_P(a_signal_of_a_fault, runs_the_programs_handler_on_the_thread_that_raised_it) {
    pthread_t raised_on{};
    int seen_at_once = 0;
    run_on_thread([&] {
        raised_on = pthread_self();
        raise(GetParam());
        seen_at_once = signals_seen;
    });
    EXPECT_EQ(seen_at_once, 1);
    EXPECT_NE(pthread_equal(thread_that_saw_one, raised_on), 0);
}

TEST(a_signal_for_the_program, is_taken_by_no_thread_of_the_library) {
    sigset_t blocked;
    sigemptyset(&blocked);
    run_on_thread([&] { pthread_sigmask(SIG_SETMASK, nullptr, &blocked); });
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGCHLD, SIGPIPE, SIGUSR1, SIGUSR2,
                             SIGVTALRM, SIGPROF, SIGWINCH, SIGRTMIN, SIGRTMAX}) {
        EXPECT_EQ(sigismember(&blocked, number), 1) << number;
    }
}

TEST(a_thread_of_the_library, leaves_the_signals_of_its_starter_as_they_were) {
    sigset_t before;
    sigset_t after;
    sigemptyset(&before);
    sigemptyset(&after);
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    run_on_thread([] {});
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int number = 1; number <= SIGRTMAX; ++number) {
        EXPECT_EQ(sigismember(&after, number), sigismember(&before, number)) << number;
    }
}

} // namespace
