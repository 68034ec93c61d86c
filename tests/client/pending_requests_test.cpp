// The table of waiting requests by itself: a send beside the handler that waits for its answer.
#include "client/pending_requests.hpp"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using namespace vantu::orvanta;

using save_handler = reply_handler<vantu_orvanta_config_save>;

std::int32_t send_save(pending_requests& pending, const std::function<std::int32_t(std::uint8_t tag)>& send,
                       save_handler handler = {}) {
    return send_with_handler(pending, vantu_orvanta_event_config_save, std::move(handler), {}, send);
}

TEST(a_failed_send, gives_its_code_and_leaves_nothing_that_waits) {
    pending_requests pending;
    const auto owned = std::make_shared<int>(1);
    std::uint8_t used = 0;
    EXPECT_EQ(send_save(
                  pending,
                  [&](std::uint8_t tag) {
                      used = tag;
                      return std::int32_t{vantu_orvanta_os_socket_error};
                  },
                  [owned](client&, const auto&) {}),
              vantu_orvanta_os_socket_error);
    EXPECT_EQ(owned.use_count(), 1);
    EXPECT_EQ(pending.take(vantu_orvanta_event_config_save, used).index(), 0U);
}

TEST(a_failed_send, counts_as_sent_when_its_handler_was_taken_meanwhile) {
    pending_requests pending;
    EXPECT_EQ(send_save(pending,
                        [&](std::uint8_t tag) {
                            EXPECT_NE(pending.take(vantu_orvanta_event_ack, tag).index(), 0U);
                            return std::int32_t{vantu_orvanta_os_socket_error};
                        }),
              vantu_orvanta_success);
}

TEST(a_failed_send, does_not_take_out_a_later_request_under_its_tag) {
    pending_requests pending;
    std::vector<pending_requests::place> later;
    EXPECT_EQ(send_save(pending,
                        [&](std::uint8_t tag) {
                            EXPECT_NE(pending.take(vantu_orvanta_event_ack, tag).index(), 0U);
                            do {
                                later.push_back(
                                    pending.enter(vantu_orvanta_event_config_save, save_handler{}));
                            } while (later.back().tag != tag);
                            return std::int32_t{vantu_orvanta_os_socket_error};
                        }),
              vantu_orvanta_success);
    EXPECT_EQ(later.size(), 255U) << "the tag that was free for the shortest time comes last";
    EXPECT_TRUE(pending.withdraw(later.back())) << "the later request was taken out";
}

class waiting_deadlines : public testing::Test {
  protected:
    // Enters a request and gives its tag, which is the next of 1, 2, 3.
    std::uint8_t enter(std::int64_t deadline_ns) {
        return pending.enter(vantu_orvanta_event_config_save, save_handler{}, deadline_ns).tag;
    }

    bool expire(std::int64_t now_ns) { return pending.take_expired(now_ns, pending.newest()).index() != 0; }

    // Whether a request still waits under the tag; it does not any more afterwards.
    bool waits(std::uint8_t tag) { return pending.take(vantu_orvanta_event_ack, tag).index() != 0; }

    pending_requests pending;
};

TEST_F(waiting_deadlines, pass_in_their_own_order_and_not_before_their_time) {
    const std::uint8_t third = enter(30);
    const std::uint8_t first = enter(10);
    const std::uint8_t endless = enter(latest_ns);
    const std::uint8_t second = enter(20);
    EXPECT_FALSE(expire(9));
    EXPECT_TRUE(expire(10));
    EXPECT_FALSE(waits(first));
    EXPECT_FALSE(expire(10));
    EXPECT_TRUE(expire(40));
    EXPECT_FALSE(waits(second));
    EXPECT_TRUE(waits(third));
    EXPECT_FALSE(expire(latest_ns - 1));
    EXPECT_TRUE(waits(endless));
}

TEST_F(waiting_deadlines, do_not_pass_for_what_is_newer) {
    static_cast<void>(enter(20));
    const std::uint64_t newest = pending.newest();
    const std::uint8_t newer = enter(10);
    EXPECT_EQ(pending.take_expired(19, newest).index(), 0U);
    EXPECT_LE(pending.no_deadline_before_ns(), 10) << "the newer one is forgotten";
    EXPECT_NE(pending.take_expired(20, newest).index(), 0U);
    EXPECT_TRUE(waits(newer));
}

TEST_F(waiting_deadlines, are_found_without_the_lock_no_later_than_they_pass) {
    EXPECT_EQ(pending.no_deadline_before_ns(), latest_ns);
    static_cast<void>(enter(latest_ns));
    EXPECT_EQ(pending.no_deadline_before_ns(), latest_ns);
    static_cast<void>(enter(30));
    const std::uint8_t soon = enter(10);
    static_cast<void>(enter(20));
    EXPECT_EQ(pending.no_deadline_before_ns(), 10);
    EXPECT_TRUE(waits(soon));
    EXPECT_EQ(pending.next_deadline_ns(), 20);
    EXPECT_LE(pending.no_deadline_before_ns(), 20);
    EXPECT_FALSE(expire(10));
    EXPECT_EQ(pending.no_deadline_before_ns(), 20);
    EXPECT_TRUE(expire(30));
    EXPECT_TRUE(expire(30));
    EXPECT_FALSE(expire(30));
    EXPECT_EQ(pending.no_deadline_before_ns(), latest_ns);
}

TEST_F(waiting_deadlines, are_gone_with_their_request_and_not_those_of_the_next_under_the_tag) {
    for (int i = 0; i < 255; ++i) {
        ASSERT_TRUE(waits(enter(10)));
    }
    EXPECT_EQ(pending.next_deadline_ns(), latest_ns);
    const std::uint8_t endless = enter(latest_ns);
    EXPECT_FALSE(expire(10));
    EXPECT_TRUE(waits(endless));
}

TEST(a_request_without_a_free_tag, is_not_sent) {
    pending_requests pending;
    for (int i = 0; i < 255; ++i) {
        ASSERT_NE(pending.enter(vantu_orvanta_event_config_save, save_handler{}).tag, 0);
    }
    EXPECT_EQ(send_save(pending,
                        [](std::uint8_t) {
                            ADD_FAILURE() << "it was sent";
                            return std::int32_t{vantu_orvanta_success};
                        }),
              vantu_orvanta_request_queue_full);
}

} // namespace
