// The deadline of a request with a handler: its end when no answer comes, by hand and on the polling thread.
#include "support/client_session.hpp"

#include <atomic>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;
using vantu::orvanta::client;
using vantu::orvanta::outcome;
using vantu::orvanta::request_options;
using vantu::orvanta::request_ticket;

constexpr request_options due_at_once{0ns};
constexpr request_options due_in_an_hour{1h};
constexpr std::int64_t no_deadline = std::numeric_limits<std::int64_t>::max();

class deadlines : public testing::Test {
  protected:
    deadlines() {
        session.service().respond_with([this](const bytes& request) {
            last_tag = request.at(10);
            ++received;
            return std::vector<bytes>{};
        });
    }

    // Sends a request and waits until the service has it: its socket holds no more than a few hundred.
    std::int32_t save(vantu::orvanta::reply_handler<vantu_orvanta_config_save> handler,
                      const request_options& options = {}) {
        const std::int32_t code = subject.config_save(5, std::move(handler), options);
        if (code == vantu_orvanta_success) {
            const int expected = ++sent;
            EXPECT_TRUE(wait_until([&] { return received >= expected; }));
        }
        return code;
    }

    auto noting(std::string name) {
        return [this, name](client&, const auto& answer) {
            lines.push_back(name + (answer.result == outcome::timed_out ? " timed out"
                                    : answer.result == outcome::failed  ? " failed"
                                                                        : " answered"));
        };
    }

    client::config note_defaults() {
        client::config callbacks;
        callbacks.on_config_save = [this](client&, unsigned, const auto&) { lines.push_back("default"); };
        callbacks.on_ack = [this](client&, unsigned) { lines.push_back("ack"); };
        return callbacks;
    }

    std::vector<std::string> lines;
    std::atomic<int> sent{0};
    std::atomic<int> received{0};
    std::atomic<std::uint8_t> last_tag{0};
    client_session session{note_defaults()};
    client& subject{session.client()};
};

TEST_F(deadlines, end_only_what_is_due) {
    ASSERT_EQ(save(noting("endless")), 0);
    ASSERT_EQ(save(noting("due"), due_at_once), 0);
    ASSERT_EQ(save(noting("later"), due_in_an_hour), 0);
    subject.expire_requests();
    subject.expire_requests();
    EXPECT_THAT(lines, ElementsAre("due timed out"));
    subject.fail_requests(vantu_orvanta_os_socket_error);
    EXPECT_THAT(lines, SizeIs(3));
}

TEST_F(deadlines, are_told_in_the_time_of_the_steady_clock) {
    const auto now_ns = [] {
        return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    constexpr std::int64_t hour_ns = 3'600'000'000'000;
    EXPECT_EQ(subject.next_deadline_ns(), no_deadline);
    ASSERT_EQ(save(noting("endless")), 0);
    EXPECT_EQ(subject.next_deadline_ns(), no_deadline);
    const std::int64_t before_ns = now_ns();
    ASSERT_EQ(save(noting("later"), due_in_an_hour), 0);
    EXPECT_GE(subject.next_deadline_ns(), before_ns + hour_ns);
    EXPECT_LE(subject.next_deadline_ns(), now_ns() + hour_ns);
    const std::uint8_t tag = last_tag;
    ASSERT_EQ(save(noting("due"), due_at_once), 0);
    EXPECT_LE(subject.next_deadline_ns(), now_ns());
    subject.expire_requests();
    EXPECT_GE(subject.next_deadline_ns(), before_ns + hour_ns);
    session.receive(op(64, tag, join({id_5, {1}})));
    EXPECT_EQ(subject.next_deadline_ns(), no_deadline) << "an answer left its deadline behind";
}

TEST_F(deadlines, of_almost_for_ever_are_none) {
    ASSERT_EQ(save(noting("endless"), {std::chrono::nanoseconds::max() - 1ns}), 0);
    EXPECT_EQ(subject.next_deadline_ns(), no_deadline);
}

TEST_F(deadlines, are_kept_by_dispatch_after_the_event_and_without_one) {
    ASSERT_EQ(save(noting("first"), due_at_once), 0);
    EXPECT_TRUE(subject.dispatch(make_event(vantu_orvanta_event_ack)));
    EXPECT_THAT(lines, ElementsAre("ack", "first timed out"));
    ASSERT_EQ(save(noting("second"), due_at_once), 0);
    EXPECT_FALSE(subject.dispatch(make_event(vantu_orvanta_event_none)));
    EXPECT_THAT(lines, ElementsAre("ack", "first timed out", "second timed out"));
}

TEST_F(deadlines, let_an_answer_count_that_is_dispatched_before_they_are_looked_at) {
    ASSERT_EQ(save(noting("save"), due_at_once), 0);
    session.receive(op(64, last_tag, join({id_5, {1}})));
    subject.expire_requests();
    EXPECT_THAT(lines, ElementsAre("save answered"));
}

TEST_F(deadlines, leave_a_late_answer_to_the_default_callback) {
    ASSERT_EQ(save(noting("save"), due_at_once), 0);
    subject.expire_requests();
    session.receive(op(64, last_tag, join({id_5, {1}})));
    EXPECT_THAT(lines, ElementsAre("save timed out", "default"));
}

TEST_F(deadlines, end_nothing_twice) {
    ASSERT_EQ(save(noting("save"), due_at_once), 0);
    subject.fail_requests(vantu_orvanta_os_socket_error);
    subject.expire_requests();
    ASSERT_EQ(save(noting("save"), due_at_once), 0);
    subject.expire_requests();
    subject.fail_requests(vantu_orvanta_os_socket_error);
    ASSERT_EQ(save(noting("save"), due_at_once), 0);
    subject.dispatch(make_event(vantu_orvanta_event_disconnected));
    EXPECT_THAT(lines, ElementsAre("save failed", "save timed out", "save failed"));
}

TEST_F(deadlines, let_what_their_handlers_send_wait_for_the_next_look) {
    ASSERT_EQ(save(
                  [this](client& from, const auto& answer) {
                      noting("first")(from, answer);
                      EXPECT_EQ(save(noting("second"), due_at_once), 0);
                      from.expire_requests();
                      EXPECT_EQ(save(noting("third"), due_at_once), 0);
                  },
                  due_at_once),
              0);
    subject.expire_requests();
    EXPECT_THAT(lines, ElementsAre("first timed out", "second timed out"));
    subject.expire_requests();
    EXPECT_THAT(lines, SizeIs(3));
}

TEST_F(deadlines, let_out_what_a_handler_throws_and_the_next_look_ends_the_rest) {
    ASSERT_EQ(save(noting("first"), due_at_once), 0);
    ASSERT_EQ(save([](client&, const auto&) { throw std::runtime_error("from the handler"); }, due_at_once),
              0);
    ASSERT_EQ(save(noting("third"), due_at_once), 0);
    EXPECT_THROW(subject.expire_requests(), std::runtime_error);
    EXPECT_THAT(lines, ElementsAre("first timed out"));
    subject.expire_requests();
    EXPECT_THAT(lines, ElementsAre("first timed out", "third timed out"));
}

TEST_F(deadlines, give_back_the_tags_of_255_lost_answers) {
    request_ticket ticket;
    for (int generation = 0; generation < 3; ++generation) {
        lines.clear();
        for (int i = 0; i < 255; ++i) {
            ASSERT_EQ(save(noting("save"), {0ns, &ticket}), 0);
        }
        ASSERT_NE(ticket, request_ticket{});
        ASSERT_EQ(save(noting("save"), {0ns, &ticket}), vantu_orvanta_request_queue_full);
        EXPECT_EQ(ticket, request_ticket{});
        subject.expire_requests();
        EXPECT_THAT(lines, SizeIs(255));
    }
}

TEST_F(deadlines, are_kept_by_the_polling_thread_while_the_service_is_silent) {
    std::atomic<int> timed_out{0};
    auto* polling = vantu_orvanta_poll_thread_start(subject.context(), client::dispatch_event, &subject);
    bool is_kept = true;
    for (int round = 1; is_kept && round <= 20; ++round) {
        EXPECT_EQ(save([&](client&, const auto& answer) { timed_out += answer.result == outcome::timed_out; },
                       {1ms}),
                  0);
        is_kept = wait_until([&] { return timed_out == round; });
    }
    EXPECT_TRUE(is_kept);
    vantu_orvanta_poll_thread_stop(polling);
}

TEST_F(deadlines, are_not_kept_by_the_goodbye_of_a_dying_client) {
    ASSERT_EQ(save([](client&, const auto&) { FAIL() << "called"; }, due_at_once), 0);
    session.destroy_client();
}

} // namespace
