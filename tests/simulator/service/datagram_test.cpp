// Datagrams of any bytes: what frames operations, and what does not.
#include "simulator/fixtures/service_fixture.hpp"

#include <gmock/gmock.h>
#include <random>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const bytes header{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00};
const bytes torque_query{0xFF, 0x44, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00};
const bytes torque_answer{0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01};

TEST(a_datagram, shorter_than_a_header_is_ignored) {
    service_fixture tested;
    tested.enter(1, {1});
    for (std::size_t size = 0; size < header.size(); ++size) {
        EXPECT_THAT(tested.send(1, bytes(header.begin(), header.begin() + static_cast<long>(size))),
                    IsEmpty());
    }
}

TEST(a_datagram, with_another_magic_is_ignored) {
    service_fixture tested;
    tested.enter(1, {1});
    bytes content = datagram({torque_query});
    content[0] = 0xE8;
    EXPECT_THAT(tested.send(1, content), IsEmpty());
    content = datagram({torque_query});
    content[1] = 0x9F;
    EXPECT_THAT(tested.send(1, content), IsEmpty());
}

TEST(a_datagram, with_another_version_is_refused_as_a_whole) {
    service_fixture tested;
    tested.enter(1, {1});
    bytes content = datagram({torque_query, torque_query});
    content[2] = 0x02;
    EXPECT_THAT(tested.send(1, content), ElementsAre(sent{1, refusal(0, 0, 0xA0)}));
    content[2] = 0x01;
    content[3] = 0x01;
    EXPECT_THAT(tested.send(1, content), ElementsAre(sent{1, refusal(0, 0, 0xA0)}));
    EXPECT_THAT(tested.send(9, {0xE9, 0x9E, 0x00, 0x00, 0x00, 0x00}),
                ElementsAre(sent{9, refusal(0, 0, 0xA0)}));
}

TEST(a_datagram, may_carry_anything_in_the_reserved_field) {
    service_fixture tested;
    tested.enter(1, {1});
    bytes content = datagram({torque_query});
    content[4] = 0xAB;
    content[5] = 0xCD;
    EXPECT_THAT(tested.send(1, content), ElementsAre(sent{1, datagram({torque_answer})}));
}

TEST(a_datagram, of_a_header_alone_or_with_less_than_an_operation_after_it_has_no_answer) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, header), IsEmpty());
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x44, 0x04, 0x00}})), IsEmpty());
}

TEST(a_datagram, carries_several_operations_which_are_answered_in_order) {
    service_fixture tested;
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x01, 0x00, 0x00, 0x00}, connect_operation(0)})), SizeIs(1));
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x12, 0x06, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00},
                                         torque_query,
                                         {0xFF, 0x14, 0x04, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00},
                                         {0xFF, 0x01, 0x00}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00}})},
                            sent{1, datagram({torque_answer})},
                            sent{1, datagram({{0xFF, 0x15, 0x04, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00}})}));
}

TEST(a_datagram, goes_on_after_a_refused_operation) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0xF1, 0x03, 0x00, 0x06, 0x01, 0x02, 0x03}, torque_query})),
                ElementsAre(sent{1, refusal(6, 0, 0xA1)}, sent{1, datagram({torque_answer})}));
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x44, 0x05, 0x00, 0x06, 0x01, 0x02, 0x03, 0x04, 0x05},
                                         torque_query})),
                ElementsAre(sent{1, refusal(6, 0, 0xA2)}, sent{1, datagram({torque_answer})}));
}

TEST(a_datagram, ends_at_an_operation_without_its_magic) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, datagram({torque_query,
                                         {0xFE, 0x44, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00},
                                         torque_query})),
                ElementsAre(sent{1, datagram({torque_answer})}, sent{1, refusal(0, 0, 0xA1)}));
}

TEST(a_datagram, ends_at_an_operation_that_claims_more_bytes_than_there_are) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x44, 0x04, 0x00, 0x07, 0x01, 0x00, 0x00}})),
                ElementsAre(sent{1, refusal(7, 0, 0xA2)}));
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0xFA, 0xFF, 0xFF, 0x07}, torque_query})),
                ElementsAre(sent{1, refusal(7, 0, 0xA1)}));
}

TEST(a_datagram, that_is_itself_an_error_is_never_answered_with_one) {
    service_fixture tested;
    EXPECT_THAT(tested.send(1, refusal(0x11, 0, 0xA1)), IsEmpty());
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0xF0, 0x00, 0x00, 0x00}})), IsEmpty());
}

TEST(a_datagram, after_a_goodbye_comes_from_a_stranger) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x05, 0x00, 0x00, 0x00}, torque_query})),
        ElementsAre(sent{1, datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}})}, sent{1, refusal(5, 1, 0xB0)}));
}

TEST(a_datagram, of_2048_bytes_is_taken_to_its_end) {
    service_fixture tested;
    tested.enter(1, {1});
    // 226 operations of 9 bytes and 8 bytes that are none.
    bytes content = header;
    for (int i = 0; i < 226; ++i) {
        content.insert(content.end(), torque_query.begin(), torque_query.end());
    }
    content.resize(2048, 0xFF);
    const sent_list answer = tested.send(1, content);
    ASSERT_THAT(answer, SizeIs(227));
    EXPECT_EQ(answer[225], (sent{1, datagram({torque_answer})}));
    EXPECT_EQ(answer[226], (sent{1, refusal(0xFF, 0, 0xA1)}));
}

TEST(a_datagram, of_random_bytes_is_survived_and_every_answer_is_well_formed) {
    std::mt19937 random(20240205);
    std::uniform_int_distribution<int> byte_value(0, 255);
    std::uniform_int_distribution<std::size_t> any_size(0, 400);
    std::uniform_int_distribution<std::size_t> any_code(0, 8);
    const std::uint8_t codes[] = {18, 20, 47, 64, 66, 67, 68, 69, 71};
    service_fixture tested;
    std::size_t answers = 0;
    for (int round = 0; round < 5000; ++round) {
        tested.enter(1, {1});
        bytes content = header;
        content.resize(header.size() + any_size(random));
        for (std::size_t i = header.size(); i < content.size(); ++i) {
            content[i] = static_cast<std::uint8_t>(byte_value(random));
        }
        // Half of them begin with a request of some length, so that bodies are reached as well.
        if (round % 2 == 0 && content.size() > 15) {
            content[6] = 0xFF;
            content[7] = codes[any_code(random)];
            content[8] &= 0x0F;
            content[9] = 0x00;
            content[11] = 0x01;
            content[12] = content[13] = content[14] = 0x00;
        }
        for (const sent& one : tested.send(1, content)) {
            ++answers;
            ASSERT_GE(one.content.size(), 11U);
            ASSERT_LE(one.content.size(), 2048U);
            ASSERT_EQ(bytes(one.content.begin(), one.content.begin() + 6), header);
        }
    }
    EXPECT_GT(answers, 1000U);
}

} // namespace
} // namespace orvanta_tests
