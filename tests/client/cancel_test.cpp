// Cancel: a handler that was taken out is destroyed and never called, and an old ticket reaches nothing.
#include "support/client_session.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace orvanta_tests;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using vantu::orvanta::client;
using vantu::orvanta::request_ticket;

class cancel : public testing::Test {
  protected:
    // Sends a request under a ticket and returns its tag.
    std::uint8_t save(request_ticket& receiver,
                      vantu::orvanta::reply_handler<vantu_orvanta_config_save> handler) {
        session.expect(64, id_5);
        EXPECT_EQ(subject.config_save(5, std::move(handler), {1h, &receiver}), 0);
        return session.tag_of_last_request();
    }

    auto noting(std::string line) {
        return [this, line](client&, const auto&) { lines.push_back(line); };
    }

    client::config note_defaults() {
        client::config callbacks;
        callbacks.on_config_save = [this](client&, unsigned, const auto&) { lines.push_back("default"); };
        return callbacks;
    }

    std::vector<std::string> lines;
    request_ticket ticket;
    client_session session{note_defaults()};
    client& subject{session.client()};
};

TEST_F(cancel, destroys_the_handler_at_once_without_a_call) {
    const auto owned = std::make_shared<int>(1);
    save(ticket, [owned](client&, const auto&) { FAIL() << "called"; });
    EXPECT_EQ(owned.use_count(), 2);
    EXPECT_TRUE(subject.cancel(ticket));
    EXPECT_EQ(owned.use_count(), 1);
    EXPECT_FALSE(subject.cancel(ticket)) << "a second time";
    subject.fail_requests(vantu_orvanta_os_socket_error);
}

TEST_F(cancel, leaves_the_answer_to_the_default_callback) {
    const std::uint8_t tag = save(ticket, noting("handler"));
    EXPECT_TRUE(subject.cancel(ticket));
    session.receive(op(64, tag, join({id_5, {1}})));
    EXPECT_THAT(lines, ElementsAre("default"));
}

TEST_F(cancel, takes_the_deadline_along) {
    save(ticket, noting("handler"));
    const std::int64_t with_deadline = subject.next_deadline_ns();
    EXPECT_TRUE(subject.cancel(ticket));
    EXPECT_LT(with_deadline, subject.next_deadline_ns());
}

TEST_F(cancel, is_too_late_in_the_handler_and_after_it) {
    const std::uint8_t tag = save(ticket, [this](client& from, const auto& answer) {
        EXPECT_FALSE(from.cancel(ticket));
        noting("handler")(from, answer);
    });
    session.receive(op(64, tag, join({id_5, {1}})));
    EXPECT_FALSE(subject.cancel(ticket));
    EXPECT_THAT(lines, ElementsAre("handler"));
}

TEST_F(cancel, reaches_another_request_from_a_handler_that_fails_with_it) {
    request_ticket other;
    save(ticket, [&](client& from, const auto&) { EXPECT_TRUE(from.cancel(other)); });
    save(other, noting("other"));
    subject.fail_requests(vantu_orvanta_os_socket_error);
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(cancel, does_nothing_for_a_new_ticket_and_for_that_of_a_request_that_was_not_sent) {
    save(ticket, noting("handler"));
    EXPECT_FALSE(subject.cancel({}));
    request_ticket unsent;
    EXPECT_EQ(subject.config_save(0, noting("unsent"), {1h, &unsent}), vantu_orvanta_invalid_argument);
    EXPECT_FALSE(subject.cancel(unsent));
    subject.fail_requests(vantu_orvanta_os_socket_error);
    EXPECT_THAT(lines, ElementsAre("handler"));
}

TEST_F(cancel, does_not_reach_a_later_request_under_the_same_tag) {
    const std::uint8_t tag = save(ticket, noting("handler"));
    EXPECT_TRUE(subject.cancel(ticket));
    request_ticket later;
    unsigned requests = 1;
    for (; save(later, noting("later")) != tag; ++requests) {
        EXPECT_TRUE(subject.cancel(later));
    }
    EXPECT_EQ(requests, 255U) << "the tag that was free for the shortest time comes last";
    EXPECT_NE(later, ticket);
    EXPECT_FALSE(subject.cancel(ticket));
    session.receive(op(64, tag, join({id_5, {1}})));
    EXPECT_THAT(lines, ElementsAre("later"));
}

TEST_F(cancel, lets_a_handler_call_the_client_while_it_is_destroyed) {
    request_ticket other;
    save(other, noting("other"));
    std::shared_ptr<void> last_act(nullptr,
                                   [this](void*) { subject.fail_requests(vantu_orvanta_os_socket_error); });
    save(ticket, [last_act = std::move(last_act)](client&, const auto&) {});
    EXPECT_TRUE(subject.cancel(ticket));
    EXPECT_THAT(lines, ElementsAre("other"));
}

} // namespace
