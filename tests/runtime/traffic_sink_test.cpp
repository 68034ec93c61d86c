// How the traffic sink is called, and how it is set.
#include "runtime/context.hpp"
#include "support/service_session.hpp"
#include "support/told_traffic.hpp"

#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const bytes save_request = datagram({op(64, 1, id_5)});

class a_traffic_sink : public testing::Test {
  protected:
    a_traffic_sink() {
        session.service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    }
    // Variables of a test, to which its sink refers, are gone before the goodbye.
    void TearDown() override {
        EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
    }
    std::int32_t send() { return vantu_orvanta_config_save_request(session.context, 5, 1); }
    std::int32_t take_ack() {
        session.service.push(datagram({op(2, 1)}));
        return poll_until_something(session.context).code;
    }

    service_session session;
    told_traffic told;
};

TEST_F(a_traffic_sink, is_there_for_a_context_alone_and_not_from_the_start) {
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(nullptr, nullptr, nullptr), vantu_orvanta_invalid_argument);
    service_session other;
    other.service.expect(save_request);
    told.listen_to(session.context);
    EXPECT_EQ(vantu_orvanta_config_save_request(other.context, 5, 1), vantu_orvanta_success);
    EXPECT_THAT(told.lines(), IsEmpty());
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_THAT(told.lines(), ElementsAre("> " + hex(save_request)));
}

TEST_F(a_traffic_sink, is_told_nothing_more_when_another_is_set_or_none) {
    told_traffic next;
    told.listen_to(session.context);
    next.listen_to(session.context);
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_THAT(told.lines(), IsEmpty());
    EXPECT_EQ(next.lines().size(), 1U);
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(take_ack(), vantu_orvanta_success);
    EXPECT_EQ(next.lines().size(), 1U);
    told.listen_to(session.context);
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(told.lines().size(), 1U);
}

TEST_F(a_traffic_sink, runs_on_the_thread_of_the_call_before_that_returns) {
    std::vector<std::thread::id> threads;
    told.listen_to(session.context, [&](const auto&) { threads.push_back(std::this_thread::get_id()); });
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(take_ack(), vantu_orvanta_success);
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id(), std::this_thread::get_id()));
}

TEST_F(a_traffic_sink, runs_with_no_lock_held) {
    int looks = 0;
    told.listen_to(session.context, [&](const auto&) {
        bool both = false;
        // A thread of its own: one that holds a lock must not try for it.
        std::thread([&] {
            both = session.context->mutex.try_lock();
            if (both) {
                session.context->mutex.unlock();
                both = session.context->devices_mutex.try_lock();
            }
            if (both) {
                session.context->devices_mutex.unlock();
            }
        }).join();
        EXPECT_TRUE(both);
        ++looks;
    });
    session.context->connection.note_send(0);
    EXPECT_EQ(take_ack(), vantu_orvanta_success) << "and the keep-alive goes out";
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(looks, 3);
    session.service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
    session.service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(connect_to(session.service, session.context), vantu_orvanta_success);
    EXPECT_EQ(looks, 6);
}

// A close waits until no send uses the socket.
TEST_F(a_traffic_sink, keeps_no_socket_from_being_closed) {
    bool closed = false;
    told.listen_to(session.context, [&](const vantu_orvanta_traffic& one) {
        if (one.way == vantu_orvanta_traffic_sent) {
            std::thread polling([&] {
                session.service.push(goodbye_received());
                EXPECT_EQ(poll_until_something(session.context).event.event_type,
                          +vantu_orvanta_event_disconnected);
            });
            polling.join();
            closed = !session.context->socket.is_open();
        }
    });
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_TRUE(closed);
}

TEST_F(a_traffic_sink, runs_on_several_threads_at_once) {
    std::atomic<int> inside{0};
    told.listen_to(session.context, [&](const auto&) {
        ++inside;
        EXPECT_TRUE(wait_until([&] { return inside == 2; }));
    });
    std::thread other([&] { EXPECT_EQ(send(), vantu_orvanta_success); });
    EXPECT_EQ(send(), vantu_orvanta_success);
    other.join();
}

TEST_F(a_traffic_sink, may_send_requests_which_are_told_within_it) {
    int depth = 0;
    int deepest = 0;
    told.listen_to(session.context, [&](const auto&) {
        deepest = std::max(deepest, ++depth);
        if (depth < 3) {
            EXPECT_EQ(send(), vantu_orvanta_success);
            std::uint32_t id = 0;
            std::size_t count = 1;
            EXPECT_EQ(vantu_orvanta_device_ids(session.context, &id, &count), vantu_orvanta_success);
        }
        --depth;
    });
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(deepest, 3);
    EXPECT_EQ(told.lines().size(), 3U);
}

TEST_F(a_traffic_sink, is_not_set_from_a_sink) {
    std::int32_t code = 0;
    service_session other;
    told.listen_to(session.context, [&](const auto&) {
        code = vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr);
        EXPECT_EQ(vantu_orvanta_traffic_sink_set(other.context, nullptr, nullptr),
                  vantu_orvanta_invalid_argument);
    });
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(code, vantu_orvanta_invalid_argument);
    EXPECT_EQ(send(), vantu_orvanta_success);
    EXPECT_EQ(told.lines().size(), 2U);
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
}

TEST_F(a_traffic_sink, has_returned_when_another_is_set) {
    std::atomic<bool> inside{false};
    std::atomic<bool> may_return{false};
    std::atomic<bool> returns{false};
    told.listen_to(session.context, [&](const auto&) {
        inside = true;
        EXPECT_TRUE(wait_until([&] { return may_return.load(); }));
        returns = true;
    });
    std::thread sending([&] { EXPECT_EQ(send(), vantu_orvanta_success); });
    EXPECT_TRUE(wait_until([&] { return inside.load(); }));
    std::thread letting([&] {
        vantu_orvanta_sleep(50'000'000);
        may_return = true;
    });
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
    EXPECT_TRUE(returns);
    sending.join();
    letting.join();
}

// Each round's flag is taken down as soon as its sink has been replaced.
TEST_F(a_traffic_sink, is_never_called_after_it_was_replaced_while_others_send) {
    struct round {
        std::atomic<bool> is_current{true};
        std::atomic<int> calls{0};
        std::atomic<int> late{0};
    };
    constexpr std::size_t rounds = 60;
    std::vector<round> all(rounds);
    std::atomic<bool> stop{false};
    std::vector<std::thread> senders;
    for (int i = 0; i < 3; ++i) {
        senders.emplace_back([&] {
            while (!stop) {
                (void)send();
            }
        });
    }
    const auto count_late = [](void* user_data, const vantu_orvanta_traffic*) {
        auto& mine = *static_cast<round*>(user_data);
        ++mine.calls;
        mine.late += mine.is_current ? 0 : 1;
    };
    for (std::size_t i = 0; i < rounds; ++i) {
        const bool none = i % 3 == 2;
        EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, none ? nullptr : +count_late, &all[i]), 0);
        if (i > 0) {
            all[i - 1].is_current = false;
        }
        EXPECT_TRUE(none || wait_until([&] { return all[i].calls > 0; }));
    }
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
    all.back().is_current = false;
    stop = true;
    for (std::thread& sender : senders) {
        sender.join();
    }
    for (const round& one : all) {
        EXPECT_EQ(one.late, 0);
    }
}

TEST(a_traffic_sink_that_throws, ends_the_process) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto throw_out = [](void*, const vantu_orvanta_traffic*) { throw std::runtime_error("thrown"); };
    EXPECT_DEATH(
        {
            service_session session;
            session.service.expect(save_request);
            (void)vantu_orvanta_traffic_sink_set(session.context, throw_out, nullptr);
            try {
                (void)vantu_orvanta_config_save_request(session.context, 5, 1);
            } catch (const std::runtime_error&) {
                _exit(0);
            }
        },
        "thrown");
}

} // namespace
} // namespace orvanta_tests
