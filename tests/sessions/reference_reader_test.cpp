// The reference reader and writer by bytes, so that sessions are compared with something known to be right.
#include "sessions/reference_reader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>

namespace {

using namespace orvanta_tests;

packet bytes_of(std::initializer_list<int> values) {
    packet made;
    for (const int value : values) {
        made.push_back(static_cast<std::byte>(value));
    }
    return made;
}

reference_reader connected_reader() {
    reference_reader reader;
    EXPECT_EQ(
        reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 4, 8, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}), 0).code,
        0);
    EXPECT_TRUE(reader.is_connected());
    EXPECT_EQ(reader.client_id(), 0x0807060504030201U);
    return reader;
}

const packet listing_of_3 = bytes_of({0xE9, 0x9E, 1,    0,    0,    0,    0xFF, 16,   24,   0,    0,    3,
                                      0,    0,    0,    1,    2,    0x30, 0x31, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4,
                                      0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF});

TEST(reference_reader, takes_no_answer_for_a_time_out) {
    EXPECT_EQ(reference_reader::connect_without_answer().code, 4);
}

TEST(reference_reader, knows_the_refusals) {
    reference_reader reader;
    const auto refused_with = [&reader](int status) {
        return reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 240, 5, 0, 0, 0, 0, 0, 0, status}), 0)
            .code;
    };
    EXPECT_EQ(refused_with(178), 178);
    EXPECT_EQ(refused_with(179), 9);
    EXPECT_EQ(refused_with(160), 6);
}

TEST(reference_reader, ends_the_process_over_an_acceptance_cut_short) {
    reference_reader reader;
    EXPECT_TRUE(
        reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 4, 8, 0, 0, 1, 2, 3}), 0).ends_the_process);
    EXPECT_FALSE(reader.is_connected());
}

TEST(reference_reader, reads_one_operation_a_poll) {
    reference_reader reader = connected_reader();
    const expected_poll first = reader.poll(
        0, bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 19, 4, 0, 9, 5, 0, 0, 0, 0xFF, 17, 4, 0, 9, 6, 0, 0, 0}));
    event_octets opened{18, 0, 0, 0, 5, 0, 0, 0, 9};
    EXPECT_EQ(first.code, 0);
    EXPECT_EQ(first.event, opened);
    EXPECT_FALSE(reader.wants_datagram());
    event_octets removed{17, 0, 0, 0, 6, 0, 0, 0, 0};
    EXPECT_EQ(reader.poll(0).event, removed);
    EXPECT_TRUE(reader.wants_datagram());
    EXPECT_EQ(reader.poll(0).event, event_octets{});
}

TEST(reference_reader, skips_an_unknown_operation_and_reads_on) {
    reference_reader reader = connected_reader();
    EXPECT_EQ(reader.poll(0, bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 99, 1, 0, 0, 5, 0xFF, 6, 0, 0, 0})).code,
              6);
    EXPECT_EQ(reader.poll(0).event, event_octets{2});
    EXPECT_EQ(reader.poll(0).code, 3);
}

TEST(reference_reader, copies_a_listing_to_the_event_and_the_record) {
    reference_reader reader = connected_reader();
    const event_octets listed{16,   0,    0,    0,    3,    0,    0,    0,    0,    1,
                              2,    0x30, 0x31, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6,
                              0xA7, 0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF};
    EXPECT_EQ(reader.poll(0, listing_of_3).event, listed);
    const device_octets record{1,    0,    0,    0,    0,    0,    0,    0,    1,    2,
                               0x30, 0x31, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7,
                               0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF};
    ASSERT_NE(reader.device(3), nullptr);
    EXPECT_EQ(*reader.device(3), record);
    const packet wrong_details =
        bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 24, 12, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(reader.poll(0, wrong_details).code, 7);
}

TEST(reference_reader, keeps_eight_bytes_of_a_grips_tail) {
    reference_reader reader = connected_reader();
    packet listing = listing_of_3;
    listing[15] = std::byte{2};
    ASSERT_EQ(reader.poll(0, listing).code, 0);
    const auto state_with_tail = [](int count) {
        packet made = bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 40, 22, 0, 0, 3, 0, 0, 0, 7});
        made.resize(32, std::byte{8});
        for (int i = 0; i <= count; ++i) {
            made.push_back(static_cast<std::byte>(i == 0 ? count : 0x50 + i));
        }
        return made;
    };
    const expected_poll long_tail = reader.poll(0, state_with_tail(9));
    EXPECT_EQ(long_tail.event[9 + 17], 9);
    EXPECT_EQ(long_tail.event[9 + 18 + 8], 0x59);
    EXPECT_EQ((*reader.device(3))[36 + 18 + 7], 0x58);
    EXPECT_EQ((*reader.device(3))[36 + 26], 0);
    ASSERT_EQ(reader.poll(0, state_with_tail(1)).code, 0);
    EXPECT_EQ((*reader.device(3))[36 + 18], 0x51);
    EXPECT_EQ((*reader.device(3))[36 + 19], 0);
    EXPECT_EQ((*reader.device(3))[0], 3);
}

TEST(reference_reader, lists_devices_in_the_order_of_their_entries) {
    reference_reader reader = connected_reader();
    packet state = bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 33, 28, 0, 0, 9, 0, 0, 0});
    state.resize(6 + 5 + 28);
    ASSERT_EQ(reader.poll(0, state).code, 0);
    ASSERT_EQ(reader.poll(0, listing_of_3).code, 0);
    packet listing_of_9 = listing_of_3;
    listing_of_9[11] = std::byte{9};
    ASSERT_EQ(reader.poll(0, listing_of_9).code, 0);
    EXPECT_THAT(reader.device_ids(), testing::ElementsAre(9, 3));
}

TEST(reference_reader, has_a_keep_alive_due_a_second_after_a_send) {
    reference_reader reader = connected_reader();
    reader.note_send(500);
    EXPECT_FALSE(reader.poll(1'000'000'499).keep_alive);
    EXPECT_TRUE(reader.poll(1'000'000'500).keep_alive);
    EXPECT_FALSE(reader.poll(1'000'000'501).keep_alive);
}

TEST(reference_reader, loses_what_is_larger_than_the_buffer) {
    reference_reader reader = connected_reader();
    EXPECT_EQ(reader.poll(0, packet(2049)).code, 1);
}

TEST(reference_writer, writes_the_documented_example) {
    EXPECT_EQ(reference_datagram(67, 3, {{7, 4}, {1, 1}, {0x3F800000, 4}}),
              bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x43, 9, 0, 3, 7, 0, 0, 0, 1, 0, 0, 0x80, 0x3F}));
}

TEST(reference_writer, pads_the_texts_of_a_connect) {
    const packet bytes = reference_connect({0x0102, 0x0304, 5, 6, "name", "version"});
    ASSERT_EQ(bytes.size(), 6U + 5U + 112U);
    EXPECT_THAT(std::vector(bytes.begin() + 7, bytes.begin() + 16),
                testing::ElementsAreArray(bytes_of({3, 112, 0, 0, 2, 1, 4, 3, 5})));
    EXPECT_EQ(bytes[11 + 16], std::byte{'n'});
    EXPECT_EQ(bytes[11 + 20], std::byte{0});
    EXPECT_EQ(bytes[11 + 48], std::byte{'v'});
}

} // namespace
