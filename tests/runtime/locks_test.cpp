// Which call waits for which of the context's two locks, and that requests wait for neither.
#include "runtime/context.hpp"
#include "support/service_session.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

namespace orvanta_tests {
namespace {

constexpr std::uint64_t long_enough_ns = 100'000'000;

// Whether the work is still under way after a while in which another thread holds the lock. A slow machine
// cannot make it seem to wait for nothing: it is counted as waiting only if it ends after the lock is free.
template <typename Work> bool waits_for(std::mutex& mutex, const Work& work) {
    std::atomic<bool> begun{false};
    std::atomic<bool> ended{false};
    std::unique_lock lock(mutex);
    std::thread worker([&] {
        begun = true;
        work();
        ended = true;
    });
    EXPECT_TRUE(wait_until([&] { return begun.load(); }));
    vantu_orvanta_sleep(long_enough_ns);
    const bool waited = !ended;
    lock.unlock();
    worker.join();
    return waited;
}

// Whether the work ends while another thread holds the lock.
template <typename Work> bool passes(std::mutex& mutex, const Work& work) {
    std::atomic<bool> ended{false};
    std::unique_lock lock(mutex);
    std::thread worker([&] {
        work();
        ended = true;
    });
    const bool passed = wait_until([&] { return ended.load(); });
    lock.unlock();
    worker.join();
    return passed;
}

class the_locks_of_a_context : public testing::Test {
  protected:
    std::mutex& mutex() { return session.context->mutex; }
    std::mutex& devices_mutex() { return session.context->devices_mutex; }

    std::int32_t read_ids() {
        std::uint32_t id = 0;
        std::size_t count = 1;
        return vantu_orvanta_device_ids(session.context, &id, &count);
    }
    std::int32_t read_device() {
        vantu_orvanta_device device{};
        return vantu_orvanta_device_info(session.context, 5, &device);
    }

    service_session session;
    std::int32_t code{-1};
};

TEST_F(the_locks_of_a_context, let_a_poll_wait_for_another) {
    EXPECT_TRUE(waits_for(mutex(), [&] { code = poll_once(session.context).code; }));
    EXPECT_EQ(code, vantu_orvanta_success);
}

TEST_F(the_locks_of_a_context, let_a_connect_wait_for_a_poll) {
    EXPECT_TRUE(waits_for(mutex(), [&] { code = connect_to(session.service, session.context); }));
    EXPECT_EQ(code, vantu_orvanta_invalid_connection_state);
}

TEST_F(the_locks_of_a_context, let_an_update_of_the_devices_wait_for_a_reader) {
    session.service.push(datagram({device_listed(5, 1)}));
    EXPECT_TRUE(waits_for(devices_mutex(), [&] { code = poll_until_something(session.context).code; }));
    EXPECT_EQ(code, vantu_orvanta_success);
    EXPECT_EQ(read_device(), vantu_orvanta_success);
}

TEST_F(the_locks_of_a_context, let_readers_of_the_devices_wait_for_an_update) {
    EXPECT_TRUE(waits_for(devices_mutex(), [&] { code = read_ids(); }));
    EXPECT_EQ(code, vantu_orvanta_success);
    EXPECT_TRUE(waits_for(devices_mutex(), [&] { code = read_device(); }));
    EXPECT_EQ(code, vantu_orvanta_no_matching_device);
}

TEST_F(the_locks_of_a_context, let_readers_of_the_devices_pass_a_poll) {
    EXPECT_TRUE(passes(mutex(), [&] { code = read_ids(); }));
    EXPECT_EQ(code, vantu_orvanta_success);
    EXPECT_TRUE(passes(mutex(), [&] { code = read_device(); }));
    EXPECT_EQ(code, vantu_orvanta_no_matching_device);
}

TEST_F(the_locks_of_a_context, let_requests_pass_everything) {
    for (std::mutex* held : {&mutex(), &devices_mutex()}) {
        session.service.expect(datagram({op(64, 1, id_5)}));
        EXPECT_TRUE(passes(*held, [&] { code = vantu_orvanta_config_save_request(session.context, 5, 1); }));
        EXPECT_EQ(code, vantu_orvanta_success);
    }
}

TEST_F(the_locks_of_a_context, let_a_wait_and_the_due_time_wait_for_a_poll) {
    std::uint64_t due_ns = 0;
    EXPECT_TRUE(waits_for(mutex(), [&] { code = vantu_orvanta_next_due(session.context, &due_ns); }));
    EXPECT_EQ(code, vantu_orvanta_success);
    ASSERT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    EXPECT_TRUE(waits_for(mutex(), [&] { code = vantu_orvanta_wait(session.context, 0); }));
    EXPECT_EQ(code, vantu_orvanta_success);
}

TEST_F(the_locks_of_a_context, let_the_first_wake_wait_for_a_poll_and_no_other) {
    EXPECT_TRUE(waits_for(mutex(), [&] { code = vantu_orvanta_wake(session.context); }));
    EXPECT_EQ(code, vantu_orvanta_success);
    std::intptr_t handle = 0;
    EXPECT_TRUE(passes(mutex(), [&] {
        code = vantu_orvanta_wake(session.context) + vantu_orvanta_wait_handle(session.context, &handle);
    }));
    EXPECT_EQ(code, vantu_orvanta_success);
}

// A wait that held a lock would stop all of these, and its own end too.
TEST_F(the_locks_of_a_context, are_free_during_a_wait) {
    session.context->connection.note_send(
        vantu::orvanta::time_after(vantu::orvanta::platform::steady_now_ns(), patient_timeout_ns));
    std::thread waiting(
        [&] { EXPECT_EQ(vantu_orvanta_wait(session.context, patient_timeout_ns), vantu_orvanta_success); });
    EXPECT_TRUE(wait_until([&] { return session.context->is_waiting.load(); }));
    vantu_orvanta_sleep(long_enough_ns);
    EXPECT_TRUE(session.context->is_waiting) << "it sleeps";
    for (std::mutex* held : {&mutex(), &devices_mutex()}) {
        EXPECT_TRUE(wait_until([&] { return held->try_lock(); }));
        held->unlock();
    }
    EXPECT_EQ(vantu_orvanta_wake(session.context), vantu_orvanta_success);
    waiting.join();
}

TEST(a_poll, waits_while_a_connect_waits_for_its_answer) {
    vantu_orvanta_init();
    scripted_service service;
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::atomic<int> connected{-1};
    std::atomic<int> polled_code{-1};
    service.expect(connect_request());
    std::thread connecting([&] { connected = connect_to(service, context); });
    service.await_script();
    std::thread polling([&] { polled_code = poll_once(context).code; });
    vantu_orvanta_sleep(long_enough_ns);
    EXPECT_EQ(polled_code.load(), -1);
    service.push(acceptance());
    connecting.join();
    polling.join();
    EXPECT_EQ(connected.load(), vantu_orvanta_success);
    EXPECT_EQ(polled_code.load(), vantu_orvanta_success) << "it came after the connect";
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

TEST(an_acceptance, waits_for_a_reader_of_the_devices_of_the_session_before) {
    vantu_orvanta_init();
    scripted_service service;
    service.expect(connect_request()).answer(acceptance());
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    std::int32_t code = -1;
    EXPECT_TRUE(waits_for(context->devices_mutex, [&] { code = connect_to(service, context); }));
    EXPECT_EQ(code, vantu_orvanta_success);
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

TEST(polls_of_several_threads, take_each_operation_once) {
    constexpr std::uint32_t datagrams = 40;
    constexpr std::uint32_t operations = 50;
    service_session session;
    for (std::uint32_t first = 0; first < datagrams * operations; first += operations) {
        bytes packed = datagram({});
        for (std::uint32_t i = 0; i < operations; ++i) {
            packed = join({packed, op(17, 0, u32(first + i))});
        }
        session.service.push(packed);
    }
    std::atomic<std::uint32_t> taken{0};
    std::vector<std::vector<std::uint32_t>> seen(3);
    std::vector<std::thread> pollers;
    for (auto& mine : seen) {
        pollers.emplace_back([&] {
            const bool all = wait_until([&] {
                for (polled result = poll_once(session.context);
                     result.event.event_type != vantu_orvanta_event_none;
                     result = poll_once(session.context)) {
                    EXPECT_EQ(result.code, vantu_orvanta_success);
                    mine.push_back(result.event.device_id);
                    ++taken;
                }
                return taken.load() == datagrams * operations;
            });
            EXPECT_TRUE(all);
        });
    }
    for (std::thread& poller : pollers) {
        poller.join();
    }
    std::vector<std::uint32_t> all;
    for (const auto& mine : seen) {
        EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::sort(all.begin(), all.end());
    std::vector<std::uint32_t> expected(datagrams * operations);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(all, expected);
}

TEST(a_reader_of_the_devices, never_sees_half_an_update) {
    service_session session;
    session.service.push(datagram({device_listed(5, 1)}));
    ASSERT_EQ(poll_until_something(session.context).code, vantu_orvanta_success);
    std::atomic<bool> done{false};
    std::atomic<bool> reading{false};
    std::thread reader([&] {
        while (!done) {
            vantu_orvanta_device device{};
            EXPECT_EQ(vantu_orvanta_device_info(session.context, 5, &device), vantu_orvanta_success);
            const bytes state = bytes_of(device.detail.orvanta3.cursor_state);
            EXPECT_EQ(hex(state), hex(filled(24, static_cast<std::uint8_t>(device.update_count - 1))));
            reading = true;
        }
    });
    EXPECT_TRUE(wait_until([&] { return reading.load(); }));
    // The listing counts as 1, the first state as 2.
    for (std::uint8_t round = 0; round < 20; ++round) {
        bytes packed = datagram({});
        for (std::uint8_t i = 1; i <= 10; ++i) {
            packed = join(
                {packed, op(33, 0, join({id_5, filled(24, static_cast<std::uint8_t>(10 * round + i))}))});
        }
        session.service.push(packed);
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(poll_until_something(session.context).event.event_type,
                      +vantu_orvanta_event_cursor_state);
        }
    }
    done = true;
    reader.join();
}

} // namespace
} // namespace orvanta_tests
