// What comes out of the stage of faults on the other side, byte by byte.
#include "simulator/stage_bench.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace simulator_tests;
using simulator::fault_kind;
using testing::ElementsAre;
using testing::IsEmpty;

const bytes filler{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x02, 0x00, 0x00, 0x00};

TEST(fault_stage, lets_everything_through_unchanged_without_rules) {
    stage_bench bench;
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(bench.in({}), ElementsAre(bytes{}));
    EXPECT_EQ(bench.stage.next_due_ns(), simulator::never_ns);
}

TEST(fault_stage, drops_in_each_direction_of_its_own) {
    stage_bench bench;
    bench.add("drop @dir=in");
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
    bench.stage.heal();
    bench.add("drop @dir=out");
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(bench.out(gravity), IsEmpty());
}

TEST(fault_stage, duplicates) {
    stage_bench bench;
    bench.add("duplicate 2");
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(ask_gravity, ask_gravity, ask_gravity));
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity, gravity, gravity));
}

TEST(fault_stage, reorders_until_so_many_of_the_same_client_have_passed) {
    stage_bench bench;
    bench.add("reorder 2@n=1,dir=out");
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_THAT(bench.out(keep_alive, 2), ElementsAre(keep_alive));
    EXPECT_THAT(bench.out(acceptance), ElementsAre(acceptance));
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply, gravity));
    EXPECT_THAT(bench.out(acceptance), ElementsAre(acceptance));
}

TEST(fault_stage, reorders_every_other_one_where_it_may_hold_all) {
    stage_bench bench;
    bench.add("reorder 1");
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_THAT(bench.in(keep_alive), ElementsAre(keep_alive, ask_gravity));
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_EQ(bench.counts(fault_kind::reorder), "3/2");
}

TEST(fault_stage, ends_the_wait_of_a_reordered_datagram_after_100_ms) {
    stage_bench bench;
    bench.add("reorder 3");
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_EQ(bench.stage.next_due_ns(), 100 * ns_per_millisecond);
    EXPECT_THAT(bench.wait(99 * ns_per_millisecond), IsEmpty());
    EXPECT_THAT(bench.wait(ns_per_millisecond), ElementsAre(sent{1, gravity}));
}

TEST(fault_stage, delays_by_a_fixed_time_and_keeps_the_order) {
    stage_bench bench;
    bench.add("delay 20");
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_THAT(bench.out(acceptance), IsEmpty());
    EXPECT_EQ(bench.stage.next_due_ns(), 20 * ns_per_millisecond);
    EXPECT_THAT(bench.wait(20 * ns_per_millisecond - 1), IsEmpty());
    EXPECT_THAT(bench.wait(1), ElementsAre(sent{1, gravity}, sent{1, acceptance}));
    EXPECT_THAT(bench.arrivals(), ElementsAre(ask_gravity));
}

TEST(fault_stage, delays_by_times_from_all_over_a_span) {
    stage_bench bench;
    bench.add("delay 2-4@dir=out");
    std::array<int, 6> times{};
    for (int i = 0; i < 300; ++i) {
        (void)bench.out(gravity);
        for (std::size_t ms = 1; ms < times.size(); ++ms) {
            times.at(ms) += static_cast<int>(bench.wait(ns_per_millisecond).size());
        }
    }
    EXPECT_THAT(times, ElementsAre(0, 0, testing::Gt(60), testing::Gt(60), testing::Gt(60), 0));
}

TEST(fault_stage, makes_answers_late_and_nothing_else) {
    stage_bench bench;
    bench.connect();
    bench.add("late 250@op=66");
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity)) << "nobody has asked for it";
    (void)bench.in(ask_gravity);
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply));
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_THAT(bench.wait(250 * ns_per_millisecond), ElementsAre(sent{1, gravity}));
}

TEST(fault_stage, knows_the_answer_to_a_request_without_tag) {
    bytes request = ask_gravity;
    request[10] = 0;
    bytes answer = gravity;
    answer[10] = 0;
    stage_bench bench;
    bench.connect();
    bench.add("retag 9");
    (void)bench.in(request);
    bytes retagged = answer;
    retagged[10] = 9;
    EXPECT_THAT(bench.out(answer), ElementsAre(retagged));
    EXPECT_THAT(bench.out(answer), ElementsAre(answer));
}

TEST(fault_stage, changes_the_bytes_both_ways) {
    stage_bench bench;
    bench.add("truncate 12");
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(bytes(ask_gravity.begin(), ask_gravity.begin() + 12)));
    EXPECT_THAT(bench.out(gravity), ElementsAre(bytes(gravity.begin(), gravity.begin() + 12)));
    EXPECT_THAT(bench.out(keep_alive), ElementsAre(keep_alive));
    EXPECT_EQ(bench.counts(fault_kind::truncate), "3/2");
}

TEST(fault_stage, readdresses_an_answer) {
    stage_bench bench;
    bench.connect();
    bench.add("readdress 77@op=66");
    (void)bench.in(ask_gravity);
    bytes readdressed = gravity;
    readdressed[11] = 77;
    EXPECT_THAT(bench.out(gravity), ElementsAre(readdressed));
}

TEST(fault_stage, floods_with_tiny_datagrams_right_behind) {
    stage_bench bench;
    bench.add("flood 3@op=81");
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply, filler, filler, filler));
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
}

TEST(fault_stage, sends_an_answer_of_the_same_kind_from_an_earlier_session_ahead) {
    stage_bench bench;
    bench.add("stale @op=66");
    bench.connect();
    (void)bench.in(ask_gravity);
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity)) << "there is no earlier session";
    bench.connect();
    (void)bench.in(ask_gravity);
    bytes other = gravity;
    other[15] = 0;
    EXPECT_THAT(bench.out(other), ElementsAre(gravity, other));
    EXPECT_EQ(bench.counts(fault_kind::stale), "2/1");
}

TEST(fault_stage, sends_an_answer_of_anothers_earlier_session_where_a_client_has_none) {
    stage_bench bench;
    bench.connect(1);
    (void)bench.in(ask_gravity, 1);
    (void)bench.out(gravity, 1);
    bench.connect(2);
    bench.add("stale @op=66");
    (void)bench.in(ask_gravity, 2);
    bytes other = gravity;
    other[15] = 0;
    EXPECT_THAT(bench.out(other, 2), ElementsAre(gravity, other));
}

TEST(fault_stage, is_silent_both_ways_from_a_datagram_on) {
    stage_bench bench;
    bench.add("silence 50@n=2,dir=in");
    EXPECT_THAT(bench.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_THAT(bench.in(keep_alive), IsEmpty());
    (void)bench.wait(50 * ns_per_millisecond - 1);
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    (void)bench.wait(1);
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(bench.in(keep_alive), ElementsAre(keep_alive));
}

TEST(fault_stage, is_silent_at_once_and_speaks_when_healed) {
    stage_bench bench;
    bench.add("silence 5000");
    EXPECT_THAT(bench.out(gravity), IsEmpty());
    EXPECT_EQ(bench.stage.happened(fault_kind::silence), 1U);
    bench.stage.heal(fault_kind::silence);
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
}

TEST(fault_stage, refuses_a_connect_that_the_service_never_sees) {
    stage_bench bench;
    bench.add("refuse 0xB2");
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(bench.in(datagram({connect_operation(3)})), IsEmpty());
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, refusal(3, 0, 0xB2)}));
}

TEST(fault_stage, answers_a_request_with_an_error_and_lets_the_others_of_its_datagram_through) {
    const bytes get_gravity{0xFF, 0x42, 0x04, 0x00, 0x05, 0x07, 0x00, 0x00, 0x00};
    const bytes save{0xFF, 0x40, 0x04, 0x00, 0x06, 0x07, 0x00, 0x00, 0x00};
    stage_bench bench;
    bench.add("error 0xD0@op=64");
    EXPECT_THAT(bench.in(datagram({get_gravity, save, get_gravity})),
                ElementsAre(datagram({get_gravity, get_gravity})));
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, refusal(6, 7, 0xD0)}));
    EXPECT_THAT(bench.in(datagram({save})), IsEmpty());
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, refusal(6, 7, 0xD0)}));
    EXPECT_THAT(bench.in(datagram({get_gravity})), ElementsAre(datagram({get_gravity})));
}

TEST(fault_stage, answers_with_an_error_of_another_tag) {
    stage_bench bench;
    bench.add("error 0xC0:9");
    EXPECT_THAT(bench.departures(), IsEmpty()) << "at once, but there are no clients";
    bench.add("error 0xC0:9", {1, 2});
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, refusal(9, 0, 0xC0)}, sent{2, refusal(9, 0, 0xC0)}));
    bench.add("error 0xC0:9@n=1");
    EXPECT_THAT(bench.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(bench.in(ask_gravity), IsEmpty());
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, refusal(9, 1, 0xC0)}));
}

TEST(fault_stage, cuts_the_acceptance_short) {
    stage_bench bench;
    bench.add("short-acceptance 3");
    EXPECT_THAT(bench.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(bench.out(acceptance), ElementsAre(bytes(acceptance.begin(), acceptance.begin() + 14)));
}

TEST(fault_stage, asks_for_a_goodbye_behind_a_datagram) {
    stage_bench bench;
    bench.add("goodbye @op=4");
    EXPECT_THAT(bench.out(acceptance, 3), ElementsAre(acceptance));
    EXPECT_THAT(bench.actions(), ElementsAre("goodbye client 3"));
    EXPECT_THAT(bench.out(gravity, 3), ElementsAre(gravity));
    EXPECT_THAT(bench.actions(), IsEmpty());
}

TEST(fault_stage, asks_for_a_restart_and_for_devices_to_come_and_go) {
    stage_bench bench;
    bench.add("restart @n=2");
    bench.add("unplug 1@op=66,dir=in");
    bench.add("plug palmetron@op=81");
    EXPECT_THAT(bench.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(bench.actions(), IsEmpty());
    EXPECT_THAT(bench.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(bench.actions(), ElementsAre("unplug 1", "restart"));
    EXPECT_THAT(bench.out(power_supply), ElementsAre(power_supply));
    EXPECT_THAT(bench.actions(), ElementsAre("plug 2"));
}

TEST(fault_stage, asks_at_once_for_what_needs_no_datagram) {
    stage_bench bench;
    bench.add("goodbye");
    bench.add("restart");
    bench.add("unplug");
    bench.add("plug orvanta3");
    EXPECT_THAT(bench.actions(), ElementsAre("goodbye", "restart", "unplug", "plug 1"));
    EXPECT_THAT(bench.stage.rules(), IsEmpty());
    EXPECT_EQ(bench.stage.happened(fault_kind::unplug), 1U);
}

TEST(fault_stage, sends_at_once_to_every_client) {
    stage_bench bench;
    bench.add("empty", {1, 2});
    EXPECT_THAT(bench.departures(), ElementsAre(sent{1, {}}, sent{2, {}}));
    bench.add("flood 2", {1, 2});
    EXPECT_THAT(bench.departures(),
                ElementsAre(sent{1, filler}, sent{1, filler}, sent{2, filler}, sent{2, filler}));
}

TEST(fault_stage, forges_datagrams_of_another_sender) {
    const bytes added =
        datagram({{0xFF, 0x10, 0x18, 0x00, 0x00, 0xFF, 0x0F, 0x00, 0x00, 0x01, 0x00, 0xAD, 0x0B, 0, 0,
                   0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0}});
    const bytes answer = datagram({{0xFF, 0x42, 0x09, 0x00, 0x00, 0xFF, 0x0F, 0x00, 0x00, 0x00, 0, 0, 0, 0}});
    stage_bench bench;
    bench.add("inject 4@op=4");
    bench.stage.from_service(
        [] {
            simulator::outgoing_datagram datagram;
            datagram.to = peer_of(1);
            for (const std::uint8_t value : acceptance) {
                datagram.bytes.write(value);
            }
            return datagram;
        }(),
        bench.now);
    std::vector<bool> forged;
    std::vector<bytes> contents;
    for (const simulator::departure& one : bench.stage.take_departures()) {
        forged.push_back(one.forged);
        const auto* begin = reinterpret_cast<const std::uint8_t*>(one.bytes.data());
        contents.emplace_back(begin, begin + one.bytes.size());
    }
    EXPECT_THAT(forged, ElementsAre(false, true, true, true, true));
    EXPECT_THAT(contents, ElementsAre(acceptance, added, answer, goodbye_of_the_service, added));
}

} // namespace
