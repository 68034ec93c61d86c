// The streams to a client that has opened devices, by a clock moved by hand.
#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <limits>
#include <map>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

simulator::service_settings at_rate(double hertz) {
    simulator::service_settings settings;
    settings.rate_hz = hertz;
    return settings;
}

// The operation codes of a datagram in order, each record checked: tag 0, all within the datagram.
std::vector<int> codes_of(const bytes& content) {
    std::vector<int> codes;
    std::size_t at = 6;
    while (at + 5 <= content.size()) {
        EXPECT_EQ(content[at], 0xFF);
        EXPECT_EQ(content[at + 4], 0);
        codes.push_back(content[at + 1]);
        at += 5U + content[at + 2] + 256U * content[at + 3];
    }
    EXPECT_EQ(at, content.size());
    return codes;
}

// Goes from one due time to the next and counts the operations by code.
std::map<int, int> count_until(service_fixture& tested, std::int64_t end) {
    std::map<int, int> counts;
    while (tested.core.next_due_ns() <= end) {
        for (const sent& one : tested.wait(tested.core.next_due_ns() - tested.now)) {
            for (const int code : codes_of(one.content)) {
                ++counts[code];
            }
        }
    }
    return counts;
}

TEST(streams, of_an_orvanta3_begin_at_once_with_a_state_the_currents_and_the_power) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_EQ(tested.core.next_due_ns(), tested.now);
    const sent_list first = tested.wait(0);
    ASSERT_THAT(first, SizeIs(1));
    const bytes& content = first[0].content;
    ASSERT_EQ(content.size(), 6U + 33 + 21 + 10);
    EXPECT_EQ(bytes(content.begin() + 6, content.begin() + 15),
              (bytes{0xFF, 0x21, 0x1C, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}));
    EXPECT_EQ(bytes(content.begin() + 39, content.begin() + 48),
              (bytes{0xFF, 0x50, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}));
    EXPECT_EQ(bytes(content.begin() + 60, content.end()),
              (bytes{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01}));
}

TEST(streams, of_a_palmetron_begin_at_once_with_a_state_of_a_counted_tail_and_the_power) {
    service_fixture tested;
    tested.enter(1, {1001});
    const sent_list first = tested.wait(0);
    ASSERT_THAT(first, SizeIs(1));
    const bytes& content = first[0].content;
    // 22 bytes and a tail of 4.
    ASSERT_EQ(content.size(), 6U + 5 + 26 + 10);
    EXPECT_EQ(bytes(content.begin() + 6, content.begin() + 15),
              (bytes{0xFF, 0x28, 0x1A, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00}));
    EXPECT_EQ(content[6 + 5 + 21], 4);
    EXPECT_EQ(bytes(content.begin() + 37, content.end()),
              (bytes{0xFF, 0x51, 0x05, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0x01}));
}

TEST(streams, carry_a_hundred_states_and_one_status_a_second) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    const std::map<int, int> counts = count_until(tested, tested.now + 10 * ns_per_second - 1);
    EXPECT_EQ(counts, (std::map<int, int>{{33, 1000}, {40, 1000}, {80, 10}, {81, 20}}));
}

TEST(streams, keep_the_rate_that_is_asked_for) {
    for (const auto& [hertz, states] :
         std::map<double, int>{{0.5, 5}, {1, 10}, {250, 2500}, {10'000, 100'000}}) {
        service_fixture tested(at_rate(hertz));
        tested.enter(1, {1});
        EXPECT_EQ(count_until(tested, tested.now + 10 * ns_per_second - 1)[33], states) << hertz;
    }
}

TEST(streams, have_no_states_at_a_rate_of_0_and_their_status_all_the_same) {
    service_fixture tested(at_rate(0));
    tested.enter(1, {1});
    EXPECT_EQ(count_until(tested, tested.now + 3 * ns_per_second - 1),
              (std::map<int, int>{{80, 3}, {81, 3}}));
}

TEST(streams, of_a_rate_next_to_nothing_send_one_state) {
    service_fixture tested(at_rate(std::numeric_limits<double>::denorm_min()));
    tested.enter(1, {1});
    EXPECT_EQ(count_until(tested, tested.now + 5 * ns_per_second - 1)[33], 1);
}

TEST(streams, send_nothing_before_the_due_time) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.wait(0);
    EXPECT_THAT(tested.wait(10 * ns_per_millisecond - 1), IsEmpty());
    EXPECT_EQ(tested.core.next_due_ns(), tested.now + 1);
    EXPECT_THAT(tested.wait(1), SizeIs(1));
}

TEST(streams, do_not_make_up_for_time_that_was_missed) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.wait(0);
    const sent_list late = tested.wait(3 * ns_per_second + 4 * ns_per_millisecond);
    ASSERT_THAT(late, SizeIs(1));
    EXPECT_THAT(codes_of(late[0].content), ElementsAre(33, 80, 81));
    // And they stay on the times that they had.
    EXPECT_EQ(tested.core.next_due_ns(), tested.now + 6 * ns_per_millisecond);
}

TEST(streams, are_packed_for_each_client_and_never_mixed_between_clients) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    tested.enter(2, {1001});
    const sent_list first = tested.wait(0);
    ASSERT_THAT(first, SizeIs(2));
    EXPECT_EQ(first[0].to, 1U);
    EXPECT_THAT(codes_of(first[0].content), ElementsAre(33, 80, 81, 40, 81));
    EXPECT_EQ(first[1].to, 2U);
    EXPECT_THAT(codes_of(first[1].content), ElementsAre(40, 81));
}

TEST(streams, of_many_devices_stay_within_2048_bytes_a_datagram) {
    service_fixture tested({}, 256, 0);
    tested.enter(1);
    for (std::uint32_t id = 1; id <= 256; ++id) {
        tested.send(1, datagram({join({{0xFF, 0x12, 0x06, 0x00, 0x00}, u32(id), {0x00, 0x00}})}));
    }
    std::map<int, int> counts;
    for (const sent& one : tested.wait(0)) {
        EXPECT_LE(one.content.size(), 2048U);
        for (const int code : codes_of(one.content)) {
            ++counts[code];
        }
    }
    EXPECT_EQ(counts, (std::map<int, int>{{33, 256}, {80, 256}, {81, 256}}));
}

TEST(streams, are_not_there_without_an_opened_device) {
    service_fixture tested;
    EXPECT_EQ(tested.core.next_due_ns(), never);
    tested.enter(1);
    EXPECT_EQ(tested.core.next_due_ns(), never);
    EXPECT_THAT(tested.wait(100 * ns_per_second), IsEmpty());
}

TEST(streams, show_currents_that_follow_the_gravity_compensation) {
    service_fixture tested;
    tested.enter(1, {1});
    const bytes with = tested.wait(0).at(0).content;
    tested.send(
        1, datagram({{0xFF, 0x43, 0x09, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
                     {0xFF, 0x14, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00},
                     {0xFF, 0x12, 0x06, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    const bytes without = tested.wait(0).at(0).content;
    // 0.6 * 0.75 * 0.15 kg * 9.81 m/s2 * 0.156424 m / 0.5 N m/A
    EXPECT_NEAR(float_at(with, 52) - float_at(without, 52), 0.20716F, 1e-5F);
    EXPECT_EQ(float_at(with, 48), float_at(without, 48));
}

} // namespace
} // namespace orvanta_tests
