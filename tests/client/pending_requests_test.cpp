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
