// The tags of requests with a handler: picked, used up, given back, and shared by several threads.
#include "support/client_session.hpp"

#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::client;

class handler_tags : public testing::Test {
  protected:
    handler_tags() {
        session.service().respond_with([this](const bytes& request) {
            const std::lock_guard lock(mutex);
            noted_tags.push_back(request.at(10));
            return std::vector<bytes>{};
        });
    }

    std::int32_t send() {
        return session.client().config_save(5, [this](client&, const auto&) { ++calls; });
    }

    // The tags of the requests that have come, when there are that many.
    std::vector<std::uint8_t> tags(std::size_t count) {
        EXPECT_TRUE(wait_until([&] {
            const std::lock_guard lock(mutex);
            return noted_tags.size() >= count;
        }));
        const std::lock_guard lock(mutex);
        return noted_tags;
    }

    std::mutex mutex;
    std::vector<std::uint8_t> noted_tags;
    int calls{0};
    client_session session;
};

TEST_F(handler_tags, are_255_different_ones_and_then_the_request_is_refused_with_11) {
    for (std::size_t i = 1; i <= 255; ++i) {
        ASSERT_EQ(send(), 0);
        ASSERT_EQ(tags(i).size(), i); // never more than the service's socket can hold
    }
    const auto used = tags(255);
    EXPECT_EQ(std::set<std::uint8_t>(used.begin(), used.end()).size(), 255U);
    EXPECT_EQ(std::set<std::uint8_t>(used.begin(), used.end()).count(0), 0U);
    EXPECT_EQ(send(), vantu_orvanta_request_queue_full);
    EXPECT_EQ(session.client().device_open(5, 0, {}), vantu_orvanta_request_queue_full);
    EXPECT_EQ(session.client().device_open(0, 0, {}), vantu_orvanta_request_queue_full)
        << "no tag, no look at the arguments";
    ASSERT_EQ(vantu_orvanta_config_save_request(session.client().context(), 5, 0), 0);
    EXPECT_EQ(tags(256).size(), 256U) << "only the request of the flat API came";
    EXPECT_EQ(tags(256).at(255), 0);
    EXPECT_EQ(calls, 0);
    for (const std::uint8_t tag : used) {
        session.client().dispatch(make_event(vantu_orvanta_event_config_save, tag));
    }
    EXPECT_EQ(calls, 255);
    EXPECT_EQ(send(), 0);
}

TEST_F(handler_tags, are_given_back_by_each_way_to_end) {
    for (std::size_t i = 0; i < 900; ++i) {
        ASSERT_EQ(send(), 0);
        const std::uint8_t tag = tags(i + 1).at(i);
        constexpr std::uint32_t ends[]{vantu_orvanta_event_config_save, vantu_orvanta_event_ack,
                                       vantu_orvanta_event_error};
        session.client().dispatch(make_event(ends[i % 3], tag));
    }
    EXPECT_EQ(calls, 900);
}

TEST_F(handler_tags, are_not_used_up_by_requests_that_fail) {
    for (int i = 0; i < 600; ++i) {
        ASSERT_EQ(session.client().config_save(0, {}), vantu_orvanta_invalid_argument);
    }
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(tags(1).size(), 1U);
}

TEST_F(handler_tags, let_the_handler_that_frees_the_last_one_send_again) {
    for (std::size_t i = 1; i <= 254; ++i) {
        ASSERT_EQ(send(), 0);
        ASSERT_EQ(tags(i).size(), i);
    }
    std::int32_t again = -1;
    ASSERT_EQ(
        session.client().config_save(
            5, [&](client& from, const auto&) { again = from.config_save(5, [](client&, const auto&) {}); }),
        0);
    ASSERT_EQ(send(), vantu_orvanta_request_queue_full);
    const std::uint8_t last = tags(255).at(254);
    session.client().dispatch(make_event(vantu_orvanta_event_config_save, last));
    EXPECT_EQ(again, 0);
    EXPECT_EQ(tags(256).at(255), last) << "the only free tag";
    EXPECT_EQ(send(), vantu_orvanta_request_queue_full);
}

TEST_F(handler_tags, are_all_free_again_after_the_goodbye_of_the_service) {
    for (std::size_t i = 1; i <= 255; ++i) {
        ASSERT_EQ(send(), 0);
        ASSERT_EQ(tags(i).size(), i);
    }
    session.receive(op(6, 0));
    EXPECT_EQ(calls, 255);
    EXPECT_EQ(send(), vantu_orvanta_invalid_connection_state);
}

TEST(handlers_on_threads, are_called_exactly_once_while_others_send_and_the_polling_thread_dispatches) {
    constexpr int threads = 4;
    constexpr int rounds = 100;
    client_session session;
    session.service().respond_with([](const bytes& request) {
        return std::vector<bytes>{datagram({op(64, request.at(10), join({id_5, {1}}))})};
    });
    auto* polling = vantu_orvanta_poll_thread_start(session.client().context(), client::dispatch_event,
                                                    &session.client());
    std::atomic<int> calls{0};
    std::vector<std::thread> senders;
    for (int i = 0; i < threads; ++i) {
        senders.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                std::atomic<int> own{0};
                const auto count_the_answer = [&](client&, const auto&) {
                    ++calls;
                    ++own;
                };
                // The system may have no room while another thread sends.
                std::int32_t code = vantu_orvanta_os_socket_error;
                ASSERT_TRUE(wait_until([&] {
                    code = session.client().config_save(5, count_the_answer);
                    return code != vantu_orvanta_os_socket_error;
                }));
                ASSERT_EQ(code, 0);
                ASSERT_TRUE(wait_until([&] { return own.load() == 1; }));
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    vantu_orvanta_poll_thread_stop(polling);
    EXPECT_EQ(calls.load(), threads * rounds);
}

} // namespace
