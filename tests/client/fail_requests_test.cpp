// The end of waiting requests by fail_requests: each handler once, with the code, and its tag is free.
#include "support/client_session.hpp"

#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vantu::orvanta::client;
using vantu::orvanta::outcome;

class fail_requests : public testing::Test {
  protected:
    fail_requests() {
        session.service().respond_with([this](const bytes&) {
            ++received;
            return std::vector<bytes>{};
        });
    }

    // Sends a request and waits until the service has it: its socket holds no more than a few hundred.
    std::int32_t save(vantu::orvanta::reply_handler<vantu_orvanta_config_save> handler) {
        const std::int32_t code = subject.config_save(5, std::move(handler));
        if (code == vantu_orvanta_success) {
            const int expected = ++sent;
            EXPECT_TRUE(wait_until([&] { return received >= expected; }));
        }
        return code;
    }

    // Notes the error that a handler is given.
    auto noting() {
        return [this](client&, const auto& answer) {
            EXPECT_EQ(answer.result, outcome::failed);
            EXPECT_EQ(answer.device_id, 0U);
            errors.push_back(std::uint32_t{answer.error->status}); // packed: no reference to it
        };
    }

    static client::config count_saves(int& saves) {
        client::config callbacks;
        callbacks.on_config_save = [&saves](client&, unsigned, const auto&) { ++saves; };
        return callbacks;
    }

    std::vector<std::uint32_t> errors;
    int saves{0};
    std::atomic<int> sent{0};
    std::atomic<int> received{0};
    client_session session{count_saves(saves)};
    client& subject{session.client()};
};

TEST_F(fail_requests, calls_each_handler_that_waits_once_with_the_code) {
    ASSERT_EQ(subject.device_open(5, 0, noting()), 0);
    ASSERT_EQ(subject.orientation_get(5, noting()), 0);
    ASSERT_EQ(subject.config_handedness_set(5, 2, noting()), 0);
    subject.fail_requests(vantu_orvanta_os_socket_error);
    EXPECT_THAT(errors, SizeIs(3));
    EXPECT_THAT(errors, Each(vantu_orvanta_os_socket_error));
    subject.fail_requests(vantu_orvanta_os_socket_error);
    subject.dispatch(make_event(vantu_orvanta_event_disconnected));
    EXPECT_THAT(errors, SizeIs(3)) << "they are called a second time";
}

TEST_F(fail_requests, calls_nothing_when_nothing_waits) {
    subject.fail_requests(vantu_orvanta_timed_out);
    EXPECT_THAT(errors, IsEmpty());
}

TEST_F(fail_requests, frees_every_tag) {
    for (int generation = 0; generation < 2; ++generation) {
        for (int i = 0; i < 255; ++i) {
            ASSERT_EQ(save(noting()), 0);
        }
        ASSERT_EQ(save(noting()), vantu_orvanta_request_queue_full);
        errors.clear();
        subject.fail_requests(vantu_orvanta_timed_out);
        EXPECT_THAT(errors, SizeIs(255));
        EXPECT_THAT(errors, Each(vantu_orvanta_timed_out));
    }
}

TEST_F(fail_requests, ends_what_waited_when_a_code_ended_the_polling_thread) {
    ASSERT_EQ(save(noting()), 0);
    auto* polling = vantu_orvanta_poll_thread_start(subject.context(), client::dispatch_event, &subject);
    session.service().push({0xE9});
    ASSERT_TRUE(wait_until([&] { return vantu_orvanta_poll_thread_result(polling) != 0; }));
    const std::uint32_t code = vantu_orvanta_poll_thread_result(polling);
    vantu_orvanta_poll_thread_stop(polling);
    EXPECT_THAT(errors, IsEmpty()) << "the code alone ended the wait";
    subject.fail_requests(static_cast<std::int32_t>(code));
    EXPECT_THAT(errors, ElementsAre(vantu_orvanta_protocol_parse_failed));
}

TEST_F(fail_requests, leaves_a_late_answer_to_the_default_callback) {
    session.expect(64, id_5);
    ASSERT_EQ(subject.config_save(5, noting()), 0);
    const std::uint8_t tag = session.tag_of_last_request();
    subject.fail_requests(vantu_orvanta_timed_out);
    session.receive(op(64, tag, join({id_5, {1}})));
    EXPECT_THAT(errors, SizeIs(1));
    EXPECT_EQ(saves, 1);
}

// One request whose handler sends under a tag that comes later, and as many as there are tags.
TEST_F(fail_requests, lets_what_its_handlers_send_wait_for_an_answer_of_its_own) {
    for (const std::size_t count : {std::size_t{1}, std::size_t{255}}) {
        errors.clear();
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(save([this](client& from, const auto& answer) {
                          noting()(from, answer);
                          EXPECT_EQ(save(noting()), 0);
                      }),
                      0);
        }
        subject.fail_requests(vantu_orvanta_protocol_parse_failed);
        EXPECT_THAT(errors, SizeIs(count)) << "what the handlers sent ended as well";
        subject.fail_requests(vantu_orvanta_timed_out);
        EXPECT_THAT(errors, SizeIs(2 * count)) << "what the handlers sent was lost";
        EXPECT_EQ(errors.back(), vantu_orvanta_timed_out);
    }
}

TEST_F(fail_requests, may_be_called_by_a_handler) {
    ASSERT_EQ(save([](client& from, const auto&) { from.fail_requests(vantu_orvanta_os_socket_error); }), 0);
    ASSERT_EQ(save(noting()), 0);
    subject.fail_requests(vantu_orvanta_timed_out);
    EXPECT_THAT(errors, ElementsAre(vantu_orvanta_os_socket_error));
}

TEST_F(fail_requests, lets_out_what_a_handler_throws_and_the_next_call_ends_the_rest) {
    ASSERT_EQ(save(noting()), 0);
    ASSERT_EQ(save([](client&, const auto&) { throw std::runtime_error("from the handler"); }), 0);
    ASSERT_EQ(save(noting()), 0);
    EXPECT_THROW(subject.fail_requests(vantu_orvanta_timed_out), std::runtime_error);
    EXPECT_LT(errors.size(), 2U);
    subject.fail_requests(vantu_orvanta_timed_out);
    EXPECT_THAT(errors, SizeIs(2));
}

TEST_F(fail_requests, misses_no_request_of_another_thread_and_takes_none_twice) {
    constexpr int threads = 4;
    constexpr int rounds = 200;
    std::atomic<int> calls{0};
    std::atomic<int> running{threads};
    std::vector<std::thread> senders;
    for (int i = 0; i < threads; ++i) {
        senders.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                static_cast<void>(save([&](client&, const auto&) { ++calls; }));
            }
            --running;
        });
    }
    while (running > 0) {
        subject.fail_requests(vantu_orvanta_timed_out);
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    subject.fail_requests(vantu_orvanta_timed_out);
    EXPECT_EQ(calls.load(), sent.load());
    EXPECT_GT(sent.load(), 0);
}

} // namespace
