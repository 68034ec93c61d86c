// The change that each fault makes to the bytes of a datagram.
#include "shared/text_lines.hpp"
#include "simulator/faults/fault_mutations.hpp"
#include "simulator/fixtures/pipeline_fixture.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace vantu::orvanta::simulator;
using namespace orvanta_tests;
using vantu::orvanta::communication::direction;

// Two operations in one datagram: power supply of device 1, then torque scaling of device 1 with tag 5.
const bytes two_operations = datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                       {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}});

struct mutated {
    bool happened;
    bytes content;
};

// Shows what a line like "truncate 17@op=66" makes of a datagram to a client.
mutated mutated_by(std::string_view line, const bytes& content, std::uint64_t seed = 1) {
    const fault_row* const row = find_fault(vantu::orvanta::take_word(line));
    const fault_rule rule = parse_fault(row->kind, line);
    fault_random chance(seed, {0});
    const auto view = std::as_bytes(std::span(content));
    datagram_bytes datagram(view.begin(), view.end());
    const bool happened = mutate(datagram, rule, direction::to_client, chance);
    const auto* begin = reinterpret_cast<const std::uint8_t*>(datagram.data());
    return {happened, bytes(begin, begin + datagram.size())};
}

bytes first_of(const bytes& content, std::size_t size) {
    return {content.begin(), content.begin() + static_cast<std::ptrdiff_t>(size)};
}

bytes last_of(const bytes& content, std::size_t size) {
    return {content.end() - static_cast<std::ptrdiff_t>(size), content.end()};
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
        const mutated result = mutated_by("truncate " + std::to_string(size), two_operations);
        EXPECT_TRUE(result.happened);
        EXPECT_EQ(result.content, first_of(two_operations, size));
    }
    for (const std::uint32_t size : {26U, 27U, 65507U}) {
        const mutated result = mutated_by("truncate " + std::to_string(size), two_operations);
        EXPECT_FALSE(result.happened);
        EXPECT_EQ(result.content, two_operations);
    }
}

TEST(fault_mutation, extends_by_random_bytes_after_the_end) {
    const mutated result = mutated_by("extend 9", two_operations);
    EXPECT_TRUE(result.happened);
    ASSERT_EQ(result.content.size(), 35U);
    EXPECT_EQ(first_of(result.content, 26), two_operations);
    EXPECT_NE(last_of(result.content, 9), last_of(mutated_by("extend 9", two_operations, 2).content, 9));
    EXPECT_FALSE(mutated_by("extend 0", two_operations).happened);
    EXPECT_FALSE(mutated_by("extend 0", {}).happened);
}

TEST(fault_mutation, extends_to_no_more_than_a_datagram_holds) {
    EXPECT_EQ(mutated_by("extend 65507", two_operations).content.size(), 65507U);
    EXPECT_FALSE(mutated_by("extend 1", bytes(65507)).happened);
}

TEST(fault_mutation, inverts_just_so_many_bits) {
    for (const std::uint32_t wanted : {1U, 2U, 17U, 208U, 1000U}) {
        const mutated result = mutated_by("flip " + std::to_string(wanted), two_operations, wanted);
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
    EXPECT_FALSE(mutated_by("flip 1", {}).happened);
}

TEST(fault_mutation, reaches_every_bit_by_flipping_one) {
    std::vector<bool> reached(11 * 8);
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        const bytes result = mutated_by("flip 1", keep_alive, seed).content;
        for (std::size_t bit = 0; bit < reached.size(); ++bit) {
            if (((result[bit / 8] ^ keep_alive[bit / 8]) >> (bit % 8) & 1) != 0) {
                reached[bit] = true;
            }
        }
    }
    EXPECT_THAT(reached, testing::Each(true));
}

// Whether a line changes the bytes from `begin` to before `end` and no others, whatever the chances.
void expect_another(std::string_view line, std::size_t begin, std::size_t end) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const mutated result = mutated_by(line, two_operations, seed);
        EXPECT_TRUE(result.happened) << line;
        ASSERT_EQ(result.content.size(), two_operations.size());
        EXPECT_EQ(first_of(result.content, begin), first_of(two_operations, begin)) << line;
        EXPECT_EQ(last_of(result.content, two_operations.size() - end),
                  last_of(two_operations, two_operations.size() - end))
            << line;
        EXPECT_NE(result.content, two_operations) << line;
    }
}

TEST(fault_mutation, gives_a_field_another_value_and_no_other_field) {
    expect_another("patch header.magic=other", 0, 2);
    expect_another("patch header.version=other", 2, 4);
    expect_another("patch header.reserved=other", 4, 6);
    expect_another("patch op.magic=other", 6, 7);
    expect_another("patch op.code=other", 7, 8);
    expect_another("patch op.length=other", 8, 10);
    expect_another("patch tag=other", 10, 11);
    expect_another("patch device=other", 11, 15);
    expect_another("patch state=other", 15, 16);
    expect_another("patch op.magic=other@op=68", 16, 17);
    expect_another("patch enabled=other", 25, 26);
}

TEST(fault_mutation, gives_an_operation_a_code_that_nobody_knows) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const bytes content = mutated_by("patch op.code=other", two_operations, seed).content;
        EXPECT_TRUE(nobody_knows(content[7])) << int{content[7]};
    }
}

TEST(fault_mutation, writes_the_value_of_a_field) {
    const auto patched = [](std::string_view line, std::size_t place, const bytes& value) {
        bytes expected = two_operations;
        std::copy(value.begin(), value.end(), expected.begin() + static_cast<std::ptrdiff_t>(place));
        const mutated result = mutated_by(line, two_operations);
        EXPECT_TRUE(result.happened) << line;
        EXPECT_EQ(result.content, expected) << line;
    };
    patched("patch header.magic=0x1234", 0, {0x34, 0x12});
    patched("patch header.version=2", 2, {2, 0});
    patched("patch op.magic=0", 6, {0});
    patched("patch op.code=0x44", 7, {0x44});
    patched("patch op.length=65535", 8, {0xFF, 0xFF});
    patched("patch tag=9@op=68", 20, {9});
    patched("patch device=0x01020304@op=68", 21, {4, 3, 2, 1});
    patched("patch device_id=77", 11, {77, 0, 0, 0});
    patched("patch enabled=2", 25, {2});
    EXPECT_FALSE(mutated_by("patch tag=5@op=68", two_operations).happened) << "it has that tag";
    EXPECT_FALSE(mutated_by("patch handedness=1", two_operations).happened) << "no operation has it";
}

TEST(fault_mutation, writes_floats_that_are_no_numbers_and_single_values) {
    const bytes state = datagram({{0xFF, 0x21, 0x1C, 0x00, 0x00, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                   0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0}});
    const auto values = [&state](std::string_view line) {
        return last_of(mutated_by(line, state).content, 24);
    };
    bytes expected(24);
    expected[10] = 0xC0;
    expected[11] = 0x7F;
    EXPECT_EQ(values("patch values[2]=nan"), expected);
    expected[10] = 0x80;
    EXPECT_EQ(values("patch values[2]=inf"), expected);
    expected[11] = 0xFF;
    EXPECT_EQ(values("patch values[2]=-inf@op=cursor_state"), expected);
    expected[10] = 0x80;
    expected[11] = 0xBF;
    EXPECT_EQ(values("patch values[2]=-1"), expected);
}

TEST(fault_mutation, takes_the_last_bytes_of_a_body_and_says_so) {
    const mutated first = mutated_by("cut 1", two_operations);
    EXPECT_TRUE(first.happened);
    EXPECT_EQ(first.content, datagram({{0xFF, 0x51, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00},
                                       {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}}));
    const mutated second = mutated_by("cut 5@op=68", two_operations);
    EXPECT_EQ(second.content, datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                        {0xFF, 0x44, 0x00, 0x00, 0x05}}));
    EXPECT_FALSE(mutated_by("cut 6", two_operations).happened);
    EXPECT_FALSE(mutated_by("cut 1", keep_alive).happened);
}

TEST(fault_mutation, inserts_bytes_before_an_operation) {
    const bytes foreign{0xFF, 0x57, 0x01, 0x00, 0x00, 0xAA};
    const mutated result = mutated_by("insert ff57010000AA@op=68", two_operations);
    EXPECT_TRUE(result.happened);
    EXPECT_EQ(result.content, datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                        foreign,
                                        {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}}));
    EXPECT_FALSE(mutated_by("insert ff", bytes{0xE9, 0x9E, 1, 0, 0, 0}).happened) << "no operation";
}

TEST(fault_mutation, chooses_an_operation_by_its_device) {
    bytes two_devices = two_operations;
    two_devices[11] = 2;
    EXPECT_EQ(mutated_by("patch tag=9@device=1", two_devices).content[20], 9);
    EXPECT_EQ(mutated_by("patch tag=9@device=2", two_devices).content[10], 9);
    EXPECT_FALSE(mutated_by("patch tag=9@device=3", two_devices).happened);
}

TEST(fault_mutation, survives_every_beginning_of_a_datagram_and_bodies_that_lie) {
    bytes lying = two_operations;
    lying[8] = 0xFF;
    lying[9] = 0xFF;
    for (const std::string_view line :
         {"truncate 3", "extend 3", "flip 3", "patch header.version=other", "patch op.length=other",
          "patch device=other", "patch client_id=other", "cut 3", "insert 010203"}) {
        for (const bytes& whole : {two_operations, lying, acceptance}) {
            for (std::size_t size = 0; size <= whole.size(); ++size) {
                const bytes before = first_of(whole, size);
                const mutated result = mutated_by(line, before);
                EXPECT_EQ(result.happened, result.content != before) << line << " at " << size;
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

TEST(fault_random, fills_bytes_of_any_number_with_the_same_chance) {
    fault_random chance(42, {3});
    fault_random again(42, {3});
    std::vector<std::byte> long_one(20);
    std::vector<std::byte> short_one(3);
    chance.fill(long_one);
    again.fill(short_one);
    EXPECT_EQ(short_one, std::vector<std::byte>(long_one.begin(), long_one.begin() + 3));
    EXPECT_GT(std::set<std::byte>(long_one.begin(), long_one.end()).size(), 10U);
    fault_random numbers(42, {3});
    const std::uint64_t first = numbers.below(0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(long_one[0], static_cast<std::byte>(first));
    EXPECT_EQ(long_one[7], static_cast<std::byte>(first >> 56U));
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
