// Clients that fall silent, by a clock moved by hand.
#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <limits>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(silence, of_exactly_the_keep_alive_time_is_forgiven_and_a_nanosecond_more_is_not) {
    service_fixture tested;
    tested.enter(1, {}, 5 * ns_per_second);
    tested.wait(5 * ns_per_second);
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
    EXPECT_EQ(tested.core.next_due_ns(), tested.now + 1);
    EXPECT_THAT(tested.wait(1), IsEmpty());
    EXPECT_THAT(tested.core.clients(), IsEmpty());
    EXPECT_THAT(tested.lines, ElementsAre("client 1: forgotten after its silence"));
}

TEST(silence, is_broken_by_a_keep_alive) {
    service_fixture tested;
    tested.enter(1, {}, 5 * ns_per_second);
    for (int i = 0; i < 10; ++i) {
        tested.wait(5 * ns_per_second);
        tested.send(1, keep_alive);
    }
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
}

TEST(silence, is_broken_by_a_request_even_by_a_refused_one) {
    service_fixture tested;
    tested.enter(1, {}, 5 * ns_per_second);
    tested.wait(4 * ns_per_second);
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0xFE, 0x00, 0x00, 0x00}})), SizeIs(1));
    tested.wait(4 * ns_per_second);
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
}

TEST(silence, is_not_broken_by_what_is_no_datagram_of_this_protocol) {
    service_fixture tested;
    tested.enter(1, {}, 5 * ns_per_second);
    tested.wait(4 * ns_per_second);
    EXPECT_THAT(tested.send(1, {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}), IsEmpty());
    tested.wait(1 * ns_per_second + 1);
    EXPECT_THAT(tested.core.clients(), IsEmpty());
}

TEST(silence, of_one_client_is_not_another_ones) {
    service_fixture tested;
    tested.enter(1, {}, 5 * ns_per_second);
    tested.enter(2, {}, 1 * ns_per_second);
    tested.wait(2 * ns_per_second);
    ASSERT_THAT(tested.core.clients(), SizeIs(1));
    EXPECT_EQ(tested.core.clients().front().id, 1U);
}

TEST(silence, ends_the_streams) {
    service_fixture tested;
    tested.enter(1, {1}, 2 * ns_per_second);
    EXPECT_THAT(tested.wait(2 * ns_per_second), SizeIs(1));
    EXPECT_THAT(tested.wait(1), IsEmpty());
    EXPECT_EQ(tested.core.next_due_ns(), std::numeric_limits<std::int64_t>::max());
}

TEST(silence, makes_the_next_request_one_of_a_stranger) {
    service_fixture tested;
    tested.enter(1, {1}, 1 * ns_per_second);
    tested.now += 1 * ns_per_second + 1; // without a tick in between
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x2F, 0x04, 0x00, 0x09, 0x01, 0x00, 0x00, 0x00}})),
                ElementsAre(sent{1, refusal(0x09, 1, 0xB0)}));
}

TEST(silence, without_end_is_allowed_by_a_keep_alive_time_of_0_or_beyond_the_clock) {
    for (const std::uint64_t keep_alive_ns :
         {std::uint64_t{0}, std::uint64_t{1} << 63U, std::numeric_limits<std::uint64_t>::max()}) {
        service_fixture tested;
        tested.enter(1, {}, keep_alive_ns);
        EXPECT_EQ(tested.core.next_due_ns(), std::numeric_limits<std::int64_t>::max());
        tested.now = std::numeric_limits<std::int64_t>::max() - 1;
        tested.wait(0);
        EXPECT_THAT(tested.core.clients(), SizeIs(1)) << keep_alive_ns;
    }
}

TEST(silence, is_counted_from_the_last_connect_with_the_time_it_declared) {
    service_fixture tested;
    tested.enter(1, {}, 1 * ns_per_second);
    tested.enter(1, {}, 10 * ns_per_second);
    tested.wait(10 * ns_per_second);
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
    tested.wait(1);
    EXPECT_THAT(tested.core.clients(), IsEmpty());
}

} // namespace
} // namespace orvanta_tests
