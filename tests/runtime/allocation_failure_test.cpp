// The client library when memory runs out: at each allocation of a call in turn, nothing is lost and nothing
// breaks.
#include "allocation_trap.hpp"
#include "support/client_session.hpp"

#include <gtest/gtest.h>
#include <new>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::client;

// Runs prepare, then work with its first, second, ... allocation failing, then check, which is told whether
// one failed, until a run has no such allocation. Returns the number of runs in which one failed.
template <typename Prepare, typename Work, typename Check>
std::size_t fail_each_allocation(Prepare prepare, Work work, Check check) {
    for (std::size_t nth = 1;; ++nth) {
        prepare();
        bool happened = false;
        {
            const allocation_failure failure(nth);
            work();
            happened = allocation_failure::happened();
        }
        check(happened);
        if (!happened) {
            return nth - 1;
        }
    }
}

TEST(memory_that_runs_out, makes_no_context) {
    vantu_orvanta_context* context = nullptr;
    EXPECT_EQ(fail_each_allocation([] {}, [&] { context = vantu_orvanta_context_create(); },
                                   [&](bool failed) {
                                       EXPECT_EQ(context == nullptr, failed);
                                       vantu_orvanta_disconnect(context);
                                   }),
              1U);
}

TEST(memory_that_runs_out, throws_out_of_the_constructor_of_a_client) {
    bool thrown = false;
    EXPECT_GE(fail_each_allocation([&] { thrown = false; },
                                   [&] {
                                       try {
                                           const client subject({});
                                       } catch (const std::bad_alloc&) {
                                           thrown = true;
                                       }
                                   },
                                   [&](bool failed) { EXPECT_EQ(thrown, failed); }),
              2U);
}

TEST(memory_that_runs_out, starts_no_polling_thread) {
    service_session session;
    vantu_orvanta_poll_thread* thread = nullptr;
    const auto ignore = [](void*, const vantu_orvanta_event*) {};
    EXPECT_EQ(fail_each_allocation(
                  [] {}, [&] { thread = vantu_orvanta_poll_thread_start(session.context, ignore, nullptr); },
                  [&](bool failed) {
                      EXPECT_EQ(thread == nullptr, failed);
                      vantu_orvanta_poll_thread_stop(thread);
                  }),
              1U);
}

TEST(memory_that_runs_out, gives_a_poll_code_1_and_leaves_the_connection_as_it_is) {
    service_session session;
    std::uint32_t device = 0;
    polled result{};
    EXPECT_GE(fail_each_allocation([&] { session.service.push(datagram({device_listed(++device, 1)})); },
                                   [&] { result = poll_once(session.context); },
                                   [&](bool failed) { EXPECT_EQ(result.code, failed ? 1 : 0); }),
              1U);
    session.service.push(datagram({op(2, 1)}));
    EXPECT_EQ(poll_until_something(session.context).event.event_type, 1U);
}

} // namespace
