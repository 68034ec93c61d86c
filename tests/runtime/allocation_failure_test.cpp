// The flat API when memory runs out: at each allocation of a call in turn, nothing is thrown, nothing is
// lost, and a call that fails leaves the context as it was.
#include "allocation_trap.hpp"
#include "runtime/context.hpp"
#include "support/client_session.hpp"
#include "support/open_handles.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <pthread.h>
#include <system_error>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using vantu::orvanta::client;

void drop_line(std::uint64_t, std::uint32_t, const char*, std::uint64_t, const char*) {}

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

const auto nothing = [] {};

// A service that lists two devices to every client and accepts it.
void accept_everybody(scripted_service& service) {
    service.respond_with([](const bytes& request) {
        return request.at(7) == 3 ? std::vector<bytes>{datagram(
                                        {device_listed(7, 1), device_listed(8, 2), op(4, 0, u64(1))})}
                                  : std::vector<bytes>{};
    });
}

class memory_that_runs_out : public testing::Test {
  protected:
    memory_that_runs_out() {
        vantu_orvanta_init();
        vantu_orvanta_log_sink_set(drop_line);
    }
    ~memory_that_runs_out() override { vantu_orvanta_log_sink_set(nullptr); }
};

// A context that is connected again and again, each time with another allocation failing.
class memory_that_runs_out_in_a_connect : public memory_that_runs_out {
  protected:
    ~memory_that_runs_out_in_a_connect() override { vantu_orvanta_disconnect(context); }

    // Connect has to make its connection from the same local port each time.
    template <typename Connect>
    void fail_each_allocation_of(scripted_service& service, const Connect& connect) {
        accept_everybody(service);
        std::int32_t code = 0;
        std::ptrdiff_t kept = 0;
        std::size_t failed_calls = 0;
        std::size_t lines_dropped = 0;
        fail_each_allocation(
            nothing,
            [&] {
                const allocation_trap trap;
                code = connect();
                kept = allocation_trap::blocks_kept();
            },
            [&](bool failed) {
                std::uint32_t ids[2]{};
                std::size_t count = 2;
                if (code == vantu_orvanta_success) {
                    lines_dropped += failed ? 1 : 0;
                    EXPECT_EQ(vantu_orvanta_device_ids(context, ids, &count), vantu_orvanta_success);
                    EXPECT_THAT(ids, testing::ElementsAre(7U, 8U));
                    service.push(goodbye_received());
                    EXPECT_EQ(poll_until_something(context).event.event_type,
                              +vantu_orvanta_event_disconnected);
                    return;
                }
                ++failed_calls;
                EXPECT_TRUE(failed);
                EXPECT_EQ(code, vantu_orvanta_unexpected_error);
                EXPECT_EQ(kept, 0) << "blocks of memory";
                EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
                EXPECT_EQ(vantu_orvanta_device_ids(context, ids, &count),
                          vantu_orvanta_invalid_connection_state);
            });
        EXPECT_EQ(code, vantu_orvanta_success) << "with all its memory";
        EXPECT_GE(failed_calls, 5U);
        EXPECT_GE(lines_dropped, 1U);
    }

    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(memory_that_runs_out_in_a_connect, gives_code_1_and_leaves_context_and_port_as_they_were) {
    scripted_service service;
    const std::string client_port = scripted_service().port();
    const std::size_t before = open_handles();
    fail_each_allocation_of(service, [&] {
        return vantu_orvanta_connect_ports(context, client_port.c_str(), service.port().c_str(),
                                           "a name of over 15 characters", 0, 0, 0, patient_timeout_ns);
    });
    EXPECT_EQ(open_handles(), before);
}

TEST_F(memory_that_runs_out_in_a_connect, gives_code_1_in_a_walk_over_taken_ports_too) {
    const scripted_service first("54321");
    const scripted_service second("54322");
    scripted_service service("54320");
    const std::size_t before = open_handles();
    fail_each_allocation_of(service, [&] {
        return vantu_orvanta_connect(context, "a name of over 15 characters", 0, 0, 0, patient_timeout_ns);
    });
    EXPECT_EQ(open_handles(), before);
}

TEST_F(memory_that_runs_out, makes_no_context) {
    vantu_orvanta_context* context = nullptr;
    EXPECT_EQ(fail_each_allocation(
                  nothing, [&] { context = vantu_orvanta_context_create(); },
                  [&](bool failed) {
                      EXPECT_EQ(context == nullptr, failed);
                      vantu_orvanta_disconnect(context);
                  }),
              1U);
}

TEST_F(memory_that_runs_out, throws_out_of_the_constructor_of_a_client) {
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

TEST_F(memory_that_runs_out, gives_a_poll_code_1_and_leaves_table_and_connection_as_they_are) {
    service_session session;
    std::uint32_t device = 0;
    polled result{};
    EXPECT_GE(fail_each_allocation([&] { session.service.push(datagram({device_listed(++device, 1)})); },
                                   [&] { result = poll_once(session.context); },
                                   [&](bool failed) {
                                       EXPECT_EQ(result.code, failed ? +vantu_orvanta_unexpected_error
                                                                     : +vantu_orvanta_success);
                                       vantu_orvanta_device listed{};
                                       EXPECT_EQ(vantu_orvanta_device_info(session.context, device, &listed),
                                                 failed ? +vantu_orvanta_no_matching_device
                                                        : +vantu_orvanta_success);
                                   }),
              2U);
    std::uint32_t ids[2]{};
    std::size_t count = 2;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids, &count), vantu_orvanta_success);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(ids[0], device);
    session.service.push(datagram({op(2, 1)}));
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_ack);
}

TEST_F(memory_that_runs_out, takes_the_line_of_a_poll_and_not_its_code) {
    service_session session;
    for (const bytes& garbage : {bytes{1, 2, 3}, datagram({}), bytes(9000, 1)}) {
        polled result{};
        const std::int32_t expected =
            garbage.size() == 9000 ? vantu_orvanta_unexpected_error : vantu_orvanta_protocol_parse_failed;
        EXPECT_GE(fail_each_allocation([&] { session.service.push(garbage); },
                                       [&] { result = poll_once(session.context); },
                                       [&](bool) { EXPECT_EQ(result.code, expected); }),
                  1U);
    }
}

TEST_F(memory_that_runs_out, takes_the_line_of_a_failed_send_and_not_its_code) {
    service_session session;
    vantu::orvanta::endpoint& service = session.context->service;
    const std::int32_t length = std::exchange(service.length, 0);
    std::int32_t code = 0;
    const auto is_refused = [&](bool) { EXPECT_EQ(code, vantu_orvanta_unexpected_error); };
    EXPECT_GE(
        fail_each_allocation(
            nothing, [&] { code = vantu_orvanta_config_save_request(session.context, 5, 1); }, is_refused),
        1U);
    session.context->connection.note_send(0);
    EXPECT_GE(fail_each_allocation(
                  nothing, [&] { code = poll_once(session.context).code; }, is_refused),
              1U);
    service.length = length;
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
}

TEST_F(memory_that_runs_out, ends_the_wait_for_a_goodbye_and_everything_is_freed) {
    scripted_service service;
    accept_everybody(service);
    const std::size_t before = open_handles();
    std::size_t failures = 0;
    // A busy machine may let the time for the goodbye pass before the first poll.
    for (int runs_without_failure = 0; runs_without_failure < 5;) {
        const allocation_trap trap;
        vantu_orvanta_context* context = vantu_orvanta_context_create();
        EXPECT_EQ(connect_to(service, context), vantu_orvanta_success);
        service.push(datagram({device_listed(9, 1), device_listed(10, 2), op(2, 1)}));
        service.push(goodbye_received());
        bool failed = false;
        {
            const allocation_failure failure(failures + 1);
            vantu_orvanta_disconnect(context);
            failed = allocation_failure::happened();
        }
        EXPECT_EQ(allocation_trap::blocks_kept(), 0) << "blocks of memory, at allocation " << failures + 1;
        failures += failed ? 1 : 0;
        runs_without_failure = failed ? 0 : runs_without_failure + 1;
    }
    EXPECT_GE(failures, 2U);
    EXPECT_EQ(open_handles(), before);
}

TEST_F(memory_that_runs_out, ends_a_first_wait_wake_and_handle_with_code_1) {
    const auto expect_code_1_once = [](const auto& work) {
        service_session session;
        const std::size_t before = open_handles();
        std::int32_t code = 0;
        EXPECT_EQ(fail_each_allocation(
                      nothing, [&] { code = work(session.context); },
                      [&](bool failed) {
                          EXPECT_EQ(code == vantu_orvanta_unexpected_error, failed);
                          EXPECT_EQ(open_handles() == before, failed);
                          EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
                      }),
                  1U);
    };
    std::intptr_t handle = 0;
    expect_code_1_once([](vantu_orvanta_context* context) { return vantu_orvanta_wait(context, 0); });
    expect_code_1_once(vantu_orvanta_wake);
    expect_code_1_once(
        [&](vantu_orvanta_context* context) { return vantu_orvanta_wait_handle(context, &handle); });
}

TEST_F(memory_that_runs_out, starts_no_polling_thread) {
    service_session session;
    vantu_orvanta_poll_thread* thread = nullptr;
    const auto ignore = [](void*, const vantu_orvanta_event*) {};
    EXPECT_EQ(fail_each_allocation(
                  nothing,
                  [&] { thread = vantu_orvanta_poll_thread_start(session.context, ignore, nullptr); },
                  [&](bool failed) {
                      EXPECT_EQ(thread == nullptr, failed);
                      vantu_orvanta_poll_thread_stop(thread);
                  }),
              1U);
}

// Lets the system refuse new threads while it lives.
class no_room_for_stacks {
  public:
    no_room_for_stacks() {
        EXPECT_EQ(pthread_getattr_default_np(&before_), 0);
        pthread_attr_t endless;
        EXPECT_EQ(pthread_attr_init(&endless), 0);
        EXPECT_EQ(pthread_attr_setstacksize(&endless, std::size_t{1} << 46), 0);
        EXPECT_EQ(pthread_setattr_default_np(&endless), 0);
        EXPECT_EQ(pthread_attr_destroy(&endless), 0);
    }
    ~no_room_for_stacks() {
        EXPECT_EQ(pthread_setattr_default_np(&before_), 0);
        EXPECT_EQ(pthread_attr_destroy(&before_), 0);
    }
    no_room_for_stacks(const no_room_for_stacks&) = delete;
    no_room_for_stacks& operator=(const no_room_for_stacks&) = delete;

  private:
    pthread_attr_t before_{};
};

TEST_F(memory_that_runs_out, returns_null_where_there_is_none_to_say_that_no_thread_starts) {
    service_session session;
    const no_room_for_stacks refused;
    vantu_orvanta_poll_thread* thread = nullptr;
    bool thrown = false;
    std::ptrdiff_t kept = 0;
    const auto ignore = [](void*, const vantu_orvanta_event*) {};
    EXPECT_GE(fail_each_allocation([&] { thrown = false; },
                                   [&] {
                                       const allocation_trap trap;
                                       try {
                                           thread = vantu_orvanta_poll_thread_start(session.context, ignore,
                                                                                    nullptr);
                                       } catch (const std::system_error&) {
                                           thrown = true;
                                       }
                                       kept = allocation_trap::blocks_kept();
                                   },
                                   [&](bool failed) {
                                       EXPECT_EQ(thread, nullptr);
                                       EXPECT_EQ(thrown, !failed);
                                       EXPECT_EQ(kept, 0) << "blocks of memory";
                                   }),
              2U);
}

// The first call in its process, where each test has one of its own: before it there is no logger.
TEST(a_log_sink, is_set_without_memory) {
    EXPECT_EQ(fail_each_allocation(
                  nothing, [] { vantu_orvanta_log_sink_set(drop_line); }, [](bool) {}),
              0U);
    vantu_orvanta_log_sink_set(nullptr);
}

} // namespace
} // namespace orvanta_tests
