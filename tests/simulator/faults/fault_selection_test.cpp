// Which datagrams a rule fits, how often it happens, and that a seed brings it all back.
#include "simulator/fixtures/pipeline_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using simulator::fault_kind;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(fault_selection, goes_by_any_operation_of_a_datagram) {
    const bytes two = datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}});
    pipeline_fixture fixture;
    fixture.add("drop @op=68");
    EXPECT_THAT(fixture.out(two), IsEmpty());
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    EXPECT_EQ(fixture.counts(fault_kind::drop), "1/1");
}

TEST(fault_selection, finds_no_operation_after_one_that_is_cut_off) {
    bytes cut = power_supply;
    cut[8] = 200;
    pipeline_fixture fixture;
    fixture.add("drop @op=1");
    EXPECT_THAT(fixture.out(cut), ElementsAre(cut));
    EXPECT_THAT(fixture.out({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0, 0, 0}), testing::SizeIs(1));
    EXPECT_EQ(fixture.counts(fault_kind::drop), "0/0");
}

TEST(fault_selection, takes_the_nth_that_fits_and_no_other) {
    pipeline_fixture fixture;
    fixture.add("drop @op=66,nth=3,dir=out");
    for (int i = 1; i <= 6; ++i) {
        EXPECT_EQ(fixture.out(gravity).empty(), i == 3) << i;
        EXPECT_EQ(fixture.out(power_supply).size(), 1U);
        EXPECT_EQ(fixture.in(ask_gravity).size(), 1U);
    }
    EXPECT_EQ(fixture.counts(fault_kind::drop), "6/1");
}

TEST(fault_selection, takes_every_nth_that_fits) {
    pipeline_fixture fixture;
    fixture.add("drop @op=66,every=3,dir=out");
    for (int i = 1; i <= 9; ++i) {
        EXPECT_EQ(fixture.out(gravity).empty(), i % 3 == 0) << i;
    }
    EXPECT_EQ(fixture.counts(fault_kind::drop), "9/3");
}

TEST(fault_selection, counts_clients_by_their_first_datagrams) {
    pipeline_fixture fixture;
    (void)fixture.in(keep_alive, 7);
    (void)fixture.in(keep_alive, 3);
    fixture.add("drop @client=2");
    EXPECT_THAT(fixture.in(ask_gravity, 3), IsEmpty());
    EXPECT_THAT(fixture.out(gravity, 3), IsEmpty());
    EXPECT_THAT(fixture.out(gravity, 7), ElementsAre(gravity));
    EXPECT_THAT(fixture.in(ask_gravity, 5), ElementsAre(ask_gravity));
}

TEST(fault_selection, goes_by_the_device_of_an_operation) {
    bytes of_another = gravity;
    of_another[11] = 2;
    pipeline_fixture fixture;
    fixture.add("drop @device=2");
    EXPECT_THAT(fixture.out(of_another), IsEmpty());
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(fixture.out(acceptance), ElementsAre(acceptance));
}

TEST(fault_selection, wants_code_and_device_of_the_same_operation) {
    const bytes two = datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                {0xFF, 0x44, 0x05, 0x00, 0x05, 0x02, 0x00, 0x00, 0x00, 0x01}});
    pipeline_fixture fixture;
    fixture.add("drop @op=68,device=1");
    EXPECT_THAT(fixture.out(two), ElementsAre(two));
    fixture.add("drop @op=68,device=2");
    EXPECT_THAT(fixture.out(two), IsEmpty());
}

TEST(fault_selection, counts_of_a_patch_the_datagrams_that_have_the_field) {
    pipeline_fixture fixture;
    fixture.add("patch enabled=7@nth=1,dir=out");
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    bytes patched = gravity;
    patched[15] = 7;
    EXPECT_THAT(fixture.out(gravity), ElementsAre(patched));
    EXPECT_EQ(fixture.counts(fault_kind::patch), "1/1");
}

TEST(fault_selection, loses_in_bursts_of_a_mean_length_as_often_as_is_probable) {
    pipeline_fixture fixture;
    fixture.add("drop 0.2@burst=8,dir=out");
    constexpr int all = 20'000;
    int lost = 0;
    int bursts = 0;
    bool was_lost = false;
    for (int i = 0; i < all; ++i) {
        const bool is_lost = fixture.out(keep_alive).empty();
        lost += is_lost ? 1 : 0;
        bursts += is_lost && !was_lost ? 1 : 0;
        was_lost = is_lost;
    }
    EXPECT_NEAR(static_cast<double>(lost) / all, 0.2, 0.03);
    EXPECT_NEAR(static_cast<double>(lost) / bursts, 8, 1);
}

TEST(fault_selection, keeps_the_bursts_of_a_conversation_whatever_else_is_sent) {
    const auto pattern = [](int others) {
        pipeline_fixture fixture;
        fixture.add("drop 0.3@burst=4");
        std::vector<bool> lost;
        (void)fixture.in(keep_alive, 1);
        for (int i = 0; i < 300; ++i) {
            lost.push_back(fixture.out(gravity).empty());
            for (int other = 0; other < others; ++other) {
                (void)fixture.out(power_supply);
                (void)fixture.out(gravity, 2);
            }
        }
        return lost;
    };
    EXPECT_EQ(pattern(0), pattern(3));
}

TEST(fault_selection, changes_and_heals_rules_by_name_and_by_number) {
    pipeline_fixture fixture;
    fixture.add("drop @op=66,as=loss");
    fixture.add("drop @op=81");
    fixture.add("truncate 12@op=66,as=loss");
    ASSERT_THAT(fixture.pipeline.rules(), testing::SizeIs(2));
    EXPECT_EQ(text_of(fixture.pipeline.rules()[0].rule), "truncate 12@op=66,as=loss");
    EXPECT_EQ(fixture.pipeline.rules()[0].number, 1U);
    EXPECT_EQ(fixture.pipeline.rules()[1].number, 2U);
    EXPECT_THAT(fixture.out(gravity), ElementsAre(bytes(gravity.begin(), gravity.begin() + 12)));
    EXPECT_FALSE(fixture.pipeline.heal("3"));
    EXPECT_TRUE(fixture.pipeline.heal("2"));
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    EXPECT_TRUE(fixture.pipeline.heal("loss"));
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
    EXPECT_FALSE(fixture.pipeline.heal("loss"));
}

TEST(fault_selection, happens_as_often_as_is_probable) {
    pipeline_fixture fixture;
    fixture.add("drop 0.3@dir=out");
    std::size_t through = 0;
    for (int i = 0; i < 10'000; ++i) {
        through += fixture.out(keep_alive).size();
    }
    EXPECT_NEAR(static_cast<double>(through), 7000, 250);
    EXPECT_EQ(fixture.counts(fault_kind::drop), "10000/" + std::to_string(10'000 - through));
    EXPECT_EQ(fixture.pipeline.happened(fault_kind::drop), 10'000 - through);
}

TEST(fault_selection, never_happens_with_a_probability_of_0) {
    pipeline_fixture fixture;
    fixture.add("drop 0");
    EXPECT_THAT(fixture.out(keep_alive), ElementsAre(keep_alive));
    EXPECT_EQ(fixture.counts(fault_kind::drop), "1/0");
}

TEST(fault_selection, lets_rules_act_in_order_on_what_the_one_before_left) {
    pipeline_fixture fixture;
    fixture.add("duplicate 1@dir=out");
    fixture.add("truncate 12@nth=2");
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity, bytes(gravity.begin(), gravity.begin() + 12)));
    pipeline_fixture other;
    other.add("truncate 12@nth=1");
    other.add("duplicate 1@dir=out");
    const bytes cut(gravity.begin(), gravity.begin() + 12);
    EXPECT_THAT(other.out(gravity), ElementsAre(cut, cut));
}

TEST(fault_selection, lets_refusals_meet_the_later_rules) {
    pipeline_fixture fixture;
    fixture.add("error 0xB2@op=connect");
    fixture.add("truncate 14@op=240");
    EXPECT_THAT(fixture.in(datagram({connect_operation(0)})), IsEmpty());
    EXPECT_THAT(fixture.departures(), ElementsAre(sent{1,
                                                       {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0xF0, 0x05,
                                                        0x00, 0x00, 0x00, 0x00, 0x00}}));
}

TEST(fault_selection, holds_a_delayed_datagram_back_for_the_later_rules_alone) {
    pipeline_fixture fixture;
    fixture.add("duplicate 1@dir=out");
    fixture.add("delay 10@dir=out");
    fixture.add("truncate 12@dir=out");
    const bytes cut(gravity.begin(), gravity.begin() + 12);
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_THAT(fixture.wait(10 * ns_per_millisecond), ElementsAre(sent{1, cut}, sent{1, cut}));
}

TEST(fault_selection, heals_one_kind_or_all_and_lets_go_what_was_held) {
    pipeline_fixture fixture;
    fixture.add("delay 1000@dir=out");
    fixture.add("drop @op=81");
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    fixture.pipeline.heal(fault_kind::drop);
    EXPECT_THAT(fixture.wait(0), IsEmpty());
    EXPECT_EQ(fixture.counts(fault_kind::drop), "none");
    fixture.pipeline.heal(fault_kind::delay);
    EXPECT_LE(fixture.pipeline.next_due_ns(), fixture.now);
    EXPECT_THAT(fixture.wait(0), ElementsAre(sent{1, gravity}));
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    EXPECT_EQ(fixture.pipeline.happened(fault_kind::delay), 1U);
    fixture.add("drop");
    fixture.pipeline.heal();
    EXPECT_THAT(fixture.pipeline.rules(), IsEmpty());
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
}

// Many rules of chance, many datagrams: all that comes out.
std::vector<bytes> outcome_of(std::uint64_t seed) {
    pipeline_fixture fixture(seed);
    for (const char* line :
         {"drop 0.1", "duplicate 1@p=0.2", "reorder 2@p=0.2", "delay 1-30@p=0.3", "extend 5@p=0.1",
          "flip 3@p=0.2", "patch header.magic=other@p=0.1", "patch op.code=other@p=0.1",
          "patch op.length=65535@p=0.1", "patch tag=other@p=0.3", "patch device=other@p=0.3",
          "truncate 12@p=0.1", "silence 5-9@p=0.01", "error 0xD0@p=0.1"}) {
        fixture.add(line);
    }
    fixture.connect();
    std::vector<bytes> all;
    const auto keep = [&all](const std::vector<bytes>& some) {
        all.insert(all.end(), some.begin(), some.end());
    };
    for (int i = 0; i < 300; ++i) {
        keep(fixture.in(ask_gravity));
        keep(fixture.out(gravity));
        for (const sent& one : fixture.wait(ns_per_millisecond)) {
            all.push_back(one.content);
        }
        keep(fixture.arrivals());
    }
    return all;
}

TEST(fault_selection, is_the_same_to_the_byte_for_the_same_seed_and_differs_for_another) {
    const std::vector<bytes> once = outcome_of(11);
    EXPECT_GT(once.size(), 300U);
    EXPECT_EQ(once, outcome_of(11));
    EXPECT_NE(once, outcome_of(12));
}

TEST(fault_selection, gives_each_rule_chances_of_its_own) {
    const auto dropped = [](std::initializer_list<const char*> lines) {
        pipeline_fixture fixture;
        std::vector<bool> pattern;
        for (const char* line : lines) {
            fixture.add(line);
        }
        for (int i = 0; i < 200; ++i) {
            pattern.push_back(fixture.out(keep_alive).empty());
        }
        return pattern;
    };
    EXPECT_EQ(dropped({"drop 0.5"}), dropped({"drop 0.5", "flip 1@p=0.5"}));
    EXPECT_NE(dropped({"drop 0.5"}), dropped({"flip 1@p=0.5", "drop 0.5"}));
}

// The fates of 200 requests and their answers: true for those that come through. Between two of them the
// service sends so many other datagrams, and so many come from another client.
std::vector<bool> fates(int others) {
    pipeline_fixture fixture(7);
    fixture.add("drop 0.2");
    (void)fixture.in(datagram({connect_operation(0)}), 1);
    (void)fixture.in(datagram({connect_operation(0)}), 2);
    std::vector<bool> came_through;
    for (int i = 0; i < 200; ++i) {
        came_through.push_back(!fixture.in(ask_gravity).empty());
        for (int other = 0; other < others; ++other) {
            (void)fixture.out(power_supply);
            (void)fixture.in(ask_gravity, 2);
        }
        came_through.push_back(!fixture.out(gravity).empty());
    }
    return came_through;
}

TEST(fault_selection, gives_a_conversation_the_same_fates_whatever_else_is_sent) {
    const std::vector<bool> alone = fates(0);
    EXPECT_EQ(alone, fates(1));
    EXPECT_EQ(alone, fates(13));
    const auto lost = std::count(alone.begin(), alone.end(), false);
    EXPECT_GT(lost, 40);
    EXPECT_LT(lost, 120);
}

TEST(fault_selection, floods_no_copies_of_a_flood) {
    pipeline_fixture fixture;
    fixture.add("flood 3@nth=1");
    fixture.add("flood 2@p=1");
    EXPECT_EQ(fixture.out(gravity).size(), 1U + 2U + 3U);
}

TEST(fault_selection, lets_300000_datagrams_wait_and_no_more) {
    for (const char* const last_rule : {"truncate 65507", "delay 5"}) {
        pipeline_fixture fixture;
        for (int floods = 0; floods < 4; ++floods) {
            fixture.add("flood 100000@nth=1");
        }
        fixture.add(last_rule);
        const std::size_t at_once = fixture.out(gravity).size();
        EXPECT_EQ(at_once + fixture.wait(5'000'000).size(), 300'000U) << last_rule;
    }
}

// How many bytes come out of a flood of the longest datagrams, after a last rule.
std::size_t bytes_of_a_long_flood(const char* last_rule) {
    pipeline_fixture fixture;
    fixture.add("flood 20000@nth=1");
    fixture.add("extend 65507");
    fixture.add(last_rule);
    std::size_t bytes = 0;
    for (const auto& sent : fixture.out(gravity)) {
        bytes += sent.size();
    }
    for (const auto& sent : fixture.wait(5'000'000)) {
        bytes += sent.content.size();
    }
    return bytes;
}

TEST(fault_selection, lets_no_flood_of_long_datagrams_fill_the_memory) {
    constexpr std::size_t most_bytes = 64U << 20U;
    constexpr std::size_t greatest_datagram = 65'507;
    for (const char* const last_rule : {"truncate 65507", "delay 5"}) {
        const std::size_t bytes = bytes_of_a_long_flood(last_rule);
        EXPECT_GT(bytes, most_bytes - greatest_datagram) << last_rule;
        EXPECT_LE(bytes, most_bytes + greatest_datagram) << last_rule;
    }
}

} // namespace
