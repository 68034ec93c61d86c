// The reference reader by bytes, so that sessions are compared with something that is known to be right.
#include "sessions/reference_reader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>

namespace {

using namespace session_tests;

delivery bytes_of(std::initializer_list<int> values) {
    delivery made;
    for (const int value : values) {
        made.bytes.push_back(static_cast<std::byte>(value));
    }
    return made;
}

reference_reader connected_reader() {
    reference_reader reader;
    EXPECT_EQ(
        reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 4, 8, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8})).code, 0);
    EXPECT_TRUE(reader.is_connected());
    return reader;
}

TEST(reference_reader, takes_no_answer_for_a_time_out) {
    reference_reader reader;
    EXPECT_EQ(reader.connect(std::nullopt).code, 4);
    EXPECT_FALSE(reader.is_connected());
}

TEST(reference_reader, knows_the_refusals) {
    reference_reader reader;
    const auto refused_with = [&reader](int status) {
        return reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 240, 5, 0, 0, 0, 0, 0, 0, status}))
            .code;
    };
    EXPECT_EQ(refused_with(178), 178);
    EXPECT_EQ(refused_with(179), 9);
    EXPECT_EQ(refused_with(160), 6);
}

TEST(reference_reader, ends_the_process_over_an_acceptance_cut_short) {
    reference_reader reader;
    EXPECT_TRUE(
        reader.connect(bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 4, 8, 0, 0, 1, 2, 3})).ends_the_process);
    EXPECT_FALSE(reader.is_connected());
}

TEST(reference_reader, reads_one_operation_a_poll) {
    reference_reader reader = connected_reader();
    const delivery two =
        bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 19, 4, 0, 9, 5, 0, 0, 0, 0xFF, 17, 4, 0, 9, 6, 0, 0, 0});
    EXPECT_EQ(reader.poll(two), (expected_poll{0, 18, 5, 9}));
    EXPECT_EQ(reader.poll(std::nullopt), (expected_poll{0, 17, 6, 0}));
    EXPECT_EQ(reader.poll(std::nullopt), expected_poll{});
}

TEST(reference_reader, skips_an_unknown_operation_and_reads_on) {
    reference_reader reader = connected_reader();
    const delivery two = bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 99, 1, 0, 0, 5, 0xFF, 6, 0, 0, 0});
    EXPECT_EQ(reader.poll(two).code, 6);
    EXPECT_EQ(reader.poll(std::nullopt), (expected_poll{0, 2, 0, 0}));
    EXPECT_EQ(reader.poll(std::nullopt).code, 3);
}

TEST(reference_reader, keeps_the_device_table) {
    reference_reader reader = connected_reader();
    const delivery listing = bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 16, 24, 0, 0, 3, 0, 0, 0, 1, 0, 1,
                                       0x30, 0,    0, 0, 0, 0, 0,    0,  0,  0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(reader.poll(listing), (expected_poll{0, 16, 3, 0}));
    EXPECT_THAT(reader.devices(), testing::ElementsAre(testing::Pair(3, expected_device{1, 1})));
    const delivery wrong_details =
        bytes_of({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 24, 12, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(reader.poll(wrong_details).code, 7);
}

TEST(reference_reader, loses_what_is_larger_than_the_buffer) {
    reference_reader reader = connected_reader();
    EXPECT_EQ(reader.poll(delivery{datagram(2049), false}).code, 1);
}

} // namespace
