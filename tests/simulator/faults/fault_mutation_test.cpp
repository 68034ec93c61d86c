// The change that each fault makes to the bytes of a datagram.
#include "simulator/faults/fault_mutations.hpp"
#include "simulator/fixtures/pipeline_fixture.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace vantu::orvanta::simulator;
using namespace orvanta_tests;

// Two operations in one datagram: power supply of device 1, then torque scaling of device 1 with tag 5.
const bytes two_operations = datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                       {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}});

struct mutated {
    bool happened;
    bytes content;
};

mutated mutated_by(const mutation& what, const bytes& content, std::uint64_t seed = 1) {
    fault_random chance(seed, {0});
    const auto view = std::as_bytes(std::span(content));
    datagram_bytes datagram(view.begin(), view.end());
    const bool happened = mutate(datagram, what, chance);
    const auto* begin = reinterpret_cast<const std::uint8_t*>(datagram.data());
    return {happened, bytes(begin, begin + datagram.size())};
}

bytes first_of(const bytes& content, std::size_t size) {
    return {content.begin(), content.begin() + static_cast<std::ptrdiff_t>(size)};
}

bytes last_of(const bytes& content, std::size_t size) {
    return {content.end() - static_cast<std::ptrdiff_t>(size), content.end()};
}

unsigned u16_at(const bytes& content, std::size_t place) {
    return content.at(place) + 256U * content.at(place + 1);
}

bool nobody_knows(unsigned code) {
    for (const auto& row : vantu::orvanta::communication::operations) {
        if (row.code == code) {
            return false;
        }
    }
    return true;
}

TEST(fault_mutation, truncates_to_every_length) {
    for (std::uint32_t size = 0; size < two_operations.size(); ++size) {
        const mutated result = mutated_by({fault_kind::truncate, {}, size}, two_operations);
        EXPECT_TRUE(result.happened);
        EXPECT_EQ(result.content, first_of(two_operations, size));
    }
    for (const std::uint32_t size : {26U, 27U, 65507U}) {
        const mutated result = mutated_by({fault_kind::truncate, {}, size}, two_operations);
        EXPECT_FALSE(result.happened);
        EXPECT_EQ(result.content, two_operations);
    }
}

TEST(fault_mutation, empties) {
    EXPECT_TRUE(mutated_by({fault_kind::empty, {}, {}}, two_operations).happened);
    EXPECT_EQ(mutated_by({fault_kind::empty, {}, {}}, two_operations).content, bytes{});
    EXPECT_FALSE(mutated_by({fault_kind::empty, {}, {}}, {}).happened);
}

TEST(fault_mutation, extends_by_random_bytes_after_the_end) {
    const mutated result = mutated_by({fault_kind::extend, {}, 9}, two_operations);
    EXPECT_TRUE(result.happened);
    ASSERT_EQ(result.content.size(), 35U);
    EXPECT_EQ(first_of(result.content, 26), two_operations);
    EXPECT_NE(last_of(result.content, 9),
              last_of(mutated_by({fault_kind::extend, {}, 9}, two_operations, 2).content, 9));
    EXPECT_FALSE(mutated_by({fault_kind::extend, {}, 0}, two_operations).happened);
}

TEST(fault_mutation, fills_up_to_a_size_and_to_no_more_than_a_datagram_holds) {
    for (const std::uint32_t size : {27U, 2048U, 2049U, 65507U}) {
        const mutated result = mutated_by({fault_kind::oversize, {}, size}, two_operations);
        EXPECT_TRUE(result.happened);
        ASSERT_EQ(result.content.size(), size);
        EXPECT_EQ(first_of(result.content, 26), two_operations);
    }
    EXPECT_FALSE(mutated_by({fault_kind::oversize, {}, 26}, two_operations).happened);
    EXPECT_EQ(mutated_by({fault_kind::extend, {}, 65507}, two_operations).content.size(), 65507U);
}

TEST(fault_mutation, inverts_just_so_many_bits) {
    for (const std::uint32_t wanted : {1U, 2U, 17U, 208U, 1000U}) {
        const mutated result = mutated_by({fault_kind::flip, {}, wanted}, two_operations, wanted);
        ASSERT_EQ(result.content.size(), two_operations.size());
        unsigned inverted = 0;
        for (std::size_t i = 0; i < two_operations.size(); ++i) {
            for (unsigned change = result.content[i] ^ two_operations[i]; change != 0; change &= change - 1) {
                ++inverted;
            }
        }
        EXPECT_TRUE(result.happened);
        EXPECT_EQ(inverted, std::min(wanted, 208U));
    }
    EXPECT_FALSE(mutated_by({fault_kind::flip, {}, 1}, {}).happened);
}

TEST(fault_mutation, reaches_every_bit_by_flipping_one) {
    std::vector<bool> reached(11 * 8);
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        const bytes result = mutated_by({fault_kind::flip, {}, 1}, keep_alive, seed).content;
        for (std::size_t bit = 0; bit < reached.size(); ++bit) {
            if (((result[bit / 8] ^ keep_alive[bit / 8]) >> (bit % 8) & 1) != 0) {
                reached[bit] = true;
            }
        }
    }
    EXPECT_THAT(reached, testing::Each(true));
}

TEST(fault_mutation, spoils_the_magic_of_the_header_alone) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const mutated result = mutated_by({fault_kind::bad_magic, {}, {}}, two_operations, seed);
        EXPECT_TRUE(result.happened);
        EXPECT_NE(first_of(result.content, 2), (bytes{0xE9, 0x9E}));
        EXPECT_EQ(last_of(result.content, 24), last_of(two_operations, 24));
    }
    EXPECT_FALSE(mutated_by({fault_kind::bad_magic, {}, {}}, {0xE9, 0x9E, 1, 0, 0}).happened);
}

TEST(fault_mutation, spoils_the_version_of_the_header_alone) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const mutated result = mutated_by({fault_kind::bad_version, {}, {}}, two_operations, seed);
        EXPECT_TRUE(result.happened);
        EXPECT_EQ(first_of(result.content, 2), (bytes{0xE9, 0x9E}));
        EXPECT_NE(u16_at(result.content, 2), 1U);
        EXPECT_EQ(last_of(result.content, 22), last_of(two_operations, 22));
    }
}

TEST(fault_mutation, spoils_the_magic_of_the_first_operation_or_of_the_one_asked_for) {
    const mutated first = mutated_by({fault_kind::bad_operation, {}, {}}, two_operations);
    EXPECT_TRUE(first.happened);
    EXPECT_NE(first.content[6], 0xFF);
    EXPECT_EQ(last_of(first.content, 19), last_of(two_operations, 19));
    const mutated second = mutated_by({fault_kind::bad_operation, 68, {}}, two_operations);
    EXPECT_EQ(first_of(second.content, 16), first_of(two_operations, 16));
    EXPECT_NE(second.content[16], 0xFF);
    EXPECT_FALSE(mutated_by({fault_kind::bad_operation, 33, {}}, two_operations).happened);
    EXPECT_FALSE(mutated_by({fault_kind::bad_operation, {}, {}}, {0xE9, 0x9E, 1, 0, 0, 0}).happened);
}

TEST(fault_mutation, gives_an_operation_a_code_that_nobody_knows_and_keeps_its_length) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const mutated result = mutated_by({fault_kind::unknown_operation, {}, {}}, two_operations, seed);
        EXPECT_TRUE(result.happened);
        EXPECT_TRUE(nobody_knows(result.content[7])) << int{result.content[7]};
        EXPECT_EQ(first_of(result.content, 7), first_of(two_operations, 7));
        EXPECT_EQ(last_of(result.content, 18), last_of(two_operations, 18));
    }
}

TEST(fault_mutation, lets_an_unknown_operation_state_a_length_past_the_end) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const mutated result = mutated_by({fault_kind::lying_operation, {}, {}}, two_operations, seed);
        EXPECT_TRUE(result.happened);
        EXPECT_TRUE(nobody_knows(result.content[7]));
        EXPECT_GT(u16_at(result.content, 8), 15U);
        EXPECT_EQ(last_of(result.content, 16), last_of(two_operations, 16));
    }
}

TEST(fault_mutation, takes_the_last_byte_of_a_body_and_says_so) {
    const mutated first = mutated_by({fault_kind::short_body, {}, {}}, two_operations);
    EXPECT_TRUE(first.happened);
    EXPECT_EQ(first.content, datagram({{0xFF, 0x51, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00},
                                       {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}}));
    const mutated second = mutated_by({fault_kind::short_body, 68, {}}, two_operations);
    EXPECT_EQ(second.content, datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                        {0xFF, 0x44, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00}}));
    EXPECT_FALSE(mutated_by({fault_kind::short_body, {}, {}}, keep_alive).happened);
}

TEST(fault_mutation, puts_a_bad_operation_between_two_good_ones) {
    const mutated result = mutated_by({fault_kind::bad_between, 68, {}}, two_operations);
    EXPECT_TRUE(result.happened);
    ASSERT_EQ(result.content.size(), 26U + 9U + 10U);
    EXPECT_EQ(first_of(result.content, 26), two_operations);
    EXPECT_EQ(result.content[26], 0xFF);
    EXPECT_TRUE(nobody_knows(result.content[27]));
    EXPECT_EQ(u16_at(result.content, 28), 4U);
    EXPECT_EQ(last_of(result.content, 10), last_of(two_operations, 10));
}

TEST(fault_mutation, gives_an_answer_the_tag_asked_for_or_any_other) {
    EXPECT_EQ(mutated_by({fault_kind::retag, 68, 9}, two_operations).content,
              datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                        {0xFF, 0x44, 0x05, 0x00, 0x09, 0x01, 0x00, 0x00, 0x00, 0x01}}));
    EXPECT_FALSE(mutated_by({fault_kind::retag, 68, 5}, two_operations).happened);
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        EXPECT_NE(mutated_by({fault_kind::retag, 68, {}}, two_operations, seed).content[20], 5);
    }
}

TEST(fault_mutation, gives_an_answer_the_device_asked_for_or_any_other) {
    EXPECT_EQ(mutated_by({fault_kind::readdress, 68, 0x01020304}, two_operations).content,
              datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                        {0xFF, 0x44, 0x05, 0x00, 0x05, 0x04, 0x03, 0x02, 0x01, 0x01}}));
    EXPECT_FALSE(mutated_by({fault_kind::readdress, 68, 1}, two_operations).happened);
    EXPECT_NE(u16_at(mutated_by({fault_kind::readdress, 68, {}}, two_operations).content, 21), 1U);
    EXPECT_FALSE(mutated_by({fault_kind::readdress, 4, {}}, acceptance).happened);
}

TEST(fault_mutation, cuts_an_acceptance_within_its_client_id) {
    for (std::uint32_t size = 0; size < 8; ++size) {
        const mutated result = mutated_by({fault_kind::short_acceptance, {}, size}, acceptance);
        EXPECT_TRUE(result.happened);
        EXPECT_EQ(result.content, first_of(acceptance, 11 + size));
    }
    EXPECT_FALSE(mutated_by({fault_kind::short_acceptance, {}, 3}, two_operations).happened);
}

TEST(fault_mutation, survives_every_beginning_of_a_datagram_and_bodies_that_lie) {
    bytes lying = two_operations;
    lying[8] = 0xFF;
    lying[9] = 0xFF;
    for (const fault_row& row : faults) {
        if (!is_change(row.kind)) {
            continue;
        }
        for (const bytes& whole : {two_operations, lying, acceptance}) {
            for (std::size_t size = 0; size <= whole.size(); ++size) {
                const bytes before = first_of(whole, size);
                const mutated result = mutated_by({row.kind, {}, 3}, before);
                EXPECT_EQ(result.happened, result.content != before) << row.name << " at " << size;
            }
        }
    }
}

TEST(fault_random, draws_the_same_numbers_everywhere) {
    fault_random chance(42, {3});
    const std::array<std::uint64_t, 4> drawn{chance.below(1000), chance.below(1000), chance.below(1000),
                                             chance.below(1000)};
    EXPECT_THAT(drawn, testing::ElementsAre(490, 562, 279, 186));
}

TEST(fault_random, differs_by_seed_and_by_number) {
    fault_random one(1, {0});
    fault_random other_number(1, {1});
    fault_random other_seed(2, {0});
    const std::uint64_t first = one.below(1'000'000'000'000);
    EXPECT_NE(first, other_number.below(1'000'000'000'000));
    EXPECT_NE(first, other_seed.below(1'000'000'000'000));
}

TEST(fault_random, reaches_all_numbers_below_a_bound_and_reals_below_one) {
    fault_random chance(7, {0});
    std::array<unsigned, 6> times{};
    for (int i = 0; i < 6000; ++i) {
        ++times.at(chance.below(6));
        const double real = chance.real();
        EXPECT_GE(real, 0);
        EXPECT_LT(real, 1);
    }
    EXPECT_THAT(times, testing::Each(testing::AllOf(testing::Gt(850U), testing::Lt(1150U))));
    EXPECT_EQ(chance.below(1), 0U);
}

} // namespace
