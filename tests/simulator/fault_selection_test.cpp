// Which datagrams a rule fits, how often it happens, and that a seed brings it all back.
#include "simulator/stage_bench.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace simulator_tests;
using simulator::fault_kind;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(fault_selection, goes_by_any_operation_of_a_datagram) {
    const bytes two = datagram({{0xFF, 0x51, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01},
                                {0xFF, 0x44, 0x05, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01}});
    stage_bench bench;
    bench.add("drop @op=68");
    EXPECT_THAT(bench.out(two), IsEmpty());
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply));
    EXPECT_EQ(bench.counts(fault_kind::drop), "1/1");
}

TEST(fault_selection, finds_no_operation_behind_one_that_is_cut_off) {
    bytes cut = power_supply;
    cut[8] = 200;
    stage_bench bench;
    bench.add("drop @op=0");
    EXPECT_THAT(bench.out(cut), ElementsAre(cut));
    EXPECT_THAT(bench.out({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0, 0, 0}), testing::SizeIs(1));
    EXPECT_EQ(bench.counts(fault_kind::drop), "0/0");
}

TEST(fault_selection, takes_the_nth_that_fits_and_no_other) {
    stage_bench bench;
    bench.add("drop @op=66,n=3,dir=out");
    for (int i = 1; i <= 6; ++i) {
        EXPECT_EQ(bench.out(gravity).empty(), i == 3) << i;
        EXPECT_EQ(bench.out(power_supply).size(), 1U);
        EXPECT_EQ(bench.in(ask_gravity).size(), 1U);
    }
    EXPECT_EQ(bench.counts(fault_kind::drop), "6/1");
}

TEST(fault_selection, happens_as_often_as_is_probable) {
    stage_bench bench;
    bench.add("drop 0.3@dir=out");
    std::size_t through = 0;
    for (int i = 0; i < 10'000; ++i) {
        through += bench.out(keep_alive).size();
    }
    EXPECT_NEAR(static_cast<double>(through), 7000, 250);
    EXPECT_EQ(bench.counts(fault_kind::drop), "10000/" + std::to_string(10'000 - through));
    EXPECT_EQ(bench.stage.happened(fault_kind::drop), 10'000 - through);
}

TEST(fault_selection, never_happens_with_a_probability_of_0) {
    stage_bench bench;
    bench.add("drop 0");
    EXPECT_THAT(bench.out(keep_alive), ElementsAre(keep_alive));
    EXPECT_EQ(bench.counts(fault_kind::drop), "1/0");
}

TEST(fault_selection, lets_rules_act_in_order_on_what_the_one_before_left) {
    stage_bench bench;
    bench.add("duplicate 1@dir=out");
    bench.add("truncate 12@n=2");
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity, bytes(gravity.begin(), gravity.begin() + 12)));
    stage_bench other;
    other.add("truncate 12@n=1");
    other.add("duplicate 1@dir=out");
    const bytes cut(gravity.begin(), gravity.begin() + 12);
    EXPECT_THAT(other.out(gravity), ElementsAre(cut, cut));
}

TEST(fault_selection, lets_refusals_suffer_the_rules_behind) {
    stage_bench bench;
    bench.add("refuse 0xB2");
    bench.add("truncate 14@op=240");
    EXPECT_THAT(bench.in(datagram({connect_operation(0)})), IsEmpty());
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1,
                                                     {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0xF0, 0x05,
                                                      0x00, 0x00, 0x00, 0x00, 0x00}}));
}

TEST(fault_selection, holds_a_delayed_datagram_back_for_the_rules_behind_alone) {
    stage_bench bench;
    bench.add("duplicate 1@dir=out");
    bench.add("delay 10@dir=out");
    bench.add("truncate 12@dir=out");
    const bytes cut(gravity.begin(), gravity.begin() + 12);
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_THAT(bench.wait(10 * ns_per_millisecond), ElementsAre(sent{1, cut}, sent{1, cut}));
}

TEST(fault_selection, heals_one_kind_or_all_and_lets_go_what_was_held) {
    stage_bench bench;
    bench.add("delay 1000@dir=out");
    bench.add("drop @op=81");
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    bench.stage.heal(fault_kind::drop);
    EXPECT_THAT(bench.wait(0), IsEmpty());
    EXPECT_EQ(bench.counts(fault_kind::drop), "none");
    bench.stage.heal(fault_kind::delay);
    EXPECT_LE(bench.stage.next_due_ns(), bench.now);
    EXPECT_THAT(bench.wait(0), ElementsAre(sent{1, gravity}));
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply));
    EXPECT_EQ(bench.stage.happened(fault_kind::delay), 1U);
    bench.add("drop");
    bench.stage.heal();
    EXPECT_THAT(bench.stage.rules(), IsEmpty());
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
}

// Many rules of chance, many datagrams: all that comes out.
std::vector<bytes> outcome_of(std::uint64_t seed) {
    stage_bench bench(seed);
    for (const char* line :
         {"drop 0.1", "duplicate 1@p=0.2", "reorder 2@p=0.2", "delay 1-30@p=0.3", "extend 5@p=0.1",
          "flip 3@p=0.2", "bad-magic 0.1", "unknown-operation 0.1", "lying-operation 0.1", "retag @p=0.3",
          "readdress @p=0.3", "truncate 12@p=0.1", "silence 5-9@p=0.01", "error 0xD0@p=0.1"}) {
        bench.add(line);
    }
    bench.connect();
    std::vector<bytes> all;
    const auto keep = [&all](const std::vector<bytes>& some) {
        all.insert(all.end(), some.begin(), some.end());
    };
    for (int i = 0; i < 300; ++i) {
        keep(bench.in(ask_gravity));
        keep(bench.out(gravity));
        for (const sent& one : bench.wait(ns_per_millisecond)) {
            all.push_back(one.content);
        }
        keep(bench.arrivals());
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
        stage_bench bench;
        std::vector<bool> pattern;
        for (const char* line : lines) {
            bench.add(line);
        }
        for (int i = 0; i < 200; ++i) {
            pattern.push_back(bench.out(keep_alive).empty());
        }
        return pattern;
    };
    EXPECT_EQ(dropped({"drop 0.5"}), dropped({"drop 0.5", "flip 1@p=0.5"}));
    EXPECT_NE(dropped({"drop 0.5"}), dropped({"flip 1@p=0.5", "drop 0.5"}));
}

TEST(fault_selection, lets_no_flood_of_floods_fill_the_memory) {
    stage_bench bench;
    bench.add("flood 100000@n=1");
    bench.add("flood 100@p=0.5");
    EXPECT_LE(bench.out(gravity).size(), 300'000U);
}

} // namespace
