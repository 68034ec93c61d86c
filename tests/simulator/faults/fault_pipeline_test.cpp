// The output of the pipeline of faults, byte by byte.
#include "simulator/fixtures/pipeline_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using simulator::fault_kind;
using testing::ElementsAre;
using testing::IsEmpty;

const bytes filler{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x02, 0x00, 0x00, 0x00};

TEST(fault_pipeline, lets_everything_through_unchanged_without_rules) {
    pipeline_fixture fixture;
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(fixture.in({}), ElementsAre(bytes{}));
    EXPECT_EQ(fixture.pipeline.next_due_ns(), simulator::never_ns);
}

TEST(fault_pipeline, drops_in_each_direction_of_its_own) {
    pipeline_fixture fixture;
    fixture.add("drop @dir=in");
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
    fixture.pipeline.heal();
    fixture.add("drop @dir=out");
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
}

TEST(fault_pipeline, duplicates) {
    pipeline_fixture fixture;
    fixture.add("duplicate 2");
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(ask_gravity, ask_gravity, ask_gravity));
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity, gravity, gravity));
}

TEST(fault_pipeline, reorders_until_so_many_of_the_same_client_have_passed) {
    pipeline_fixture fixture;
    fixture.add("reorder 2@nth=1,dir=out");
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_THAT(fixture.out(keep_alive, 2), ElementsAre(keep_alive));
    EXPECT_THAT(fixture.out(acceptance), ElementsAre(acceptance));
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply, gravity));
    EXPECT_THAT(fixture.out(acceptance), ElementsAre(acceptance));
}

TEST(fault_pipeline, reorders_every_other_one_where_it_may_hold_all) {
    pipeline_fixture fixture;
    fixture.add("reorder 1");
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_THAT(fixture.in(keep_alive), ElementsAre(keep_alive, ask_gravity));
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_EQ(fixture.counts(fault_kind::reorder), "3/2");
}

TEST(fault_pipeline, ends_the_wait_of_a_reordered_datagram_after_100_ms) {
    pipeline_fixture fixture;
    fixture.add("reorder 3");
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_EQ(fixture.pipeline.next_due_ns(), 100 * ns_per_millisecond);
    EXPECT_THAT(fixture.wait(99 * ns_per_millisecond), IsEmpty());
    EXPECT_THAT(fixture.wait(ns_per_millisecond), ElementsAre(sent{1, gravity}));
}

TEST(fault_pipeline, delays_by_a_fixed_time_and_keeps_the_order) {
    pipeline_fixture fixture;
    fixture.add("delay 20");
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_THAT(fixture.out(acceptance), IsEmpty());
    EXPECT_EQ(fixture.pipeline.next_due_ns(), 20 * ns_per_millisecond);
    EXPECT_THAT(fixture.wait(20 * ns_per_millisecond - 1), IsEmpty());
    EXPECT_THAT(fixture.wait(1), ElementsAre(sent{1, gravity}, sent{1, acceptance}));
    EXPECT_THAT(fixture.arrivals(), ElementsAre(ask_gravity));
}

TEST(fault_pipeline, delays_by_times_from_all_over_a_span) {
    pipeline_fixture fixture;
    fixture.add("delay 2-4@dir=out");
    std::array<int, 6> times{};
    for (int i = 0; i < 300; ++i) {
        (void)fixture.out(gravity);
        for (std::size_t ms = 1; ms < times.size(); ++ms) {
            times.at(ms) += static_cast<int>(fixture.wait(ns_per_millisecond).size());
        }
    }
    EXPECT_THAT(times, ElementsAre(0, 0, testing::Gt(60), testing::Gt(60), testing::Gt(60), 0));
}

TEST(fault_pipeline, makes_answers_late_and_nothing_else) {
    pipeline_fixture fixture;
    fixture.connect();
    fixture.add("delay 250@op=66,dir=answer");
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity)) << "nobody has asked for it";
    (void)fixture.in(ask_gravity);
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_THAT(fixture.wait(250 * ns_per_millisecond), ElementsAre(sent{1, gravity}));
}

TEST(fault_pipeline, knows_the_answer_to_a_request_without_tag) {
    bytes request = ask_gravity;
    request[10] = 0;
    bytes answer = gravity;
    answer[10] = 0;
    pipeline_fixture fixture;
    fixture.connect();
    fixture.add("patch tag=9@dir=answer");
    (void)fixture.in(request);
    bytes retagged = answer;
    retagged[10] = 9;
    EXPECT_THAT(fixture.out(answer), ElementsAre(retagged));
    EXPECT_THAT(fixture.out(answer), ElementsAre(answer));
}

TEST(fault_pipeline, changes_the_bytes_both_ways) {
    pipeline_fixture fixture;
    fixture.add("truncate 12");
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(bytes(ask_gravity.begin(), ask_gravity.begin() + 12)));
    EXPECT_THAT(fixture.out(gravity), ElementsAre(bytes(gravity.begin(), gravity.begin() + 12)));
    EXPECT_THAT(fixture.out(keep_alive), ElementsAre(keep_alive));
    EXPECT_EQ(fixture.counts(fault_kind::truncate), "3/2");
}

TEST(fault_pipeline, readdresses_an_answer) {
    pipeline_fixture fixture;
    fixture.connect();
    fixture.add("patch device=77@op=66,dir=answer");
    (void)fixture.in(ask_gravity);
    bytes readdressed = gravity;
    readdressed[11] = 77;
    EXPECT_THAT(fixture.out(gravity), ElementsAre(readdressed));
}

TEST(fault_pipeline, makes_no_copies_of_copies) {
    pipeline_fixture fixture;
    fixture.add("duplicate 2");
    fixture.add("flood 2@p=1");
    fixture.add("duplicate 1");
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity, gravity, filler, filler, gravity, gravity));
    EXPECT_EQ(fixture.counts(fault_kind::flood), "1/1");
}

TEST(fault_pipeline, floods_with_tiny_datagrams_right_after) {
    pipeline_fixture fixture;
    fixture.add("flood 3@op=81");
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply, filler, filler, filler));
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
}

TEST(fault_pipeline, sends_an_answer_of_the_same_kind_from_an_earlier_session_ahead) {
    pipeline_fixture fixture;
    fixture.add("stale @op=66");
    fixture.connect();
    (void)fixture.in(ask_gravity);
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity)) << "there is no earlier session";
    fixture.connect();
    (void)fixture.in(ask_gravity);
    bytes other = gravity;
    other[15] = 0;
    EXPECT_THAT(fixture.out(other), ElementsAre(gravity, other));
    EXPECT_EQ(fixture.counts(fault_kind::stale), "2/1");
}

TEST(fault_pipeline, sends_an_answer_of_anothers_earlier_session_where_a_client_has_none) {
    pipeline_fixture fixture;
    fixture.connect(1);
    (void)fixture.in(ask_gravity, 1);
    (void)fixture.out(gravity, 1);
    fixture.connect(2);
    fixture.add("stale @op=66");
    (void)fixture.in(ask_gravity, 2);
    bytes other = gravity;
    other[15] = 0;
    EXPECT_THAT(fixture.out(other, 2), ElementsAre(gravity, other));
}

TEST(fault_pipeline, sends_a_clients_own_old_answer_rather_than_anothers_of_the_same_kind) {
    pipeline_fixture fixture;
    fixture.connect(1);
    (void)fixture.in(ask_gravity, 1);
    (void)fixture.out(gravity, 1);
    fixture.connect(2);
    fixture.connect(2);
    fixture.add("stale @op=66");
    (void)fixture.in(ask_gravity, 2);
    EXPECT_THAT(fixture.out(gravity, 2), ElementsAre(acceptance, gravity));
}

TEST(fault_pipeline, sends_an_old_goodbye_once_256_answers_have_replaced_those_of_the_same_kind) {
    const bytes goodbye_asked{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x05, 0x00, 0x00, 0x07};
    const bytes goodbye{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x06, 0x00, 0x00, 0x07};
    constexpr int kept = 256; // the acceptance, gravity and goodbye of the first session among them
    pipeline_fixture fixture;
    fixture.connect();
    (void)fixture.in(ask_gravity);
    (void)fixture.out(gravity);
    (void)fixture.in(goodbye_asked);
    (void)fixture.out(goodbye);
    fixture.connect();
    fixture.add("stale @op=66");
    for (int answers = 1; answers <= kept - 3; ++answers) {
        (void)fixture.in(ask_gravity);
        EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity, gravity)) << answers;
    }
    (void)fixture.in(ask_gravity);
    EXPECT_THAT(fixture.out(gravity), ElementsAre(goodbye, gravity));
}

TEST(fault_pipeline, is_silent_both_ways_from_a_datagram_on) {
    pipeline_fixture fixture;
    fixture.add("silence 50@nth=2,dir=in");
    EXPECT_THAT(fixture.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_THAT(fixture.in(keep_alive), IsEmpty());
    (void)fixture.wait(50 * ns_per_millisecond - 1);
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    (void)fixture.wait(1);
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
    EXPECT_THAT(fixture.in(keep_alive), ElementsAre(keep_alive));
}

TEST(fault_pipeline, is_silent_at_once_and_speaks_when_healed) {
    pipeline_fixture fixture;
    fixture.add("silence 5000");
    EXPECT_THAT(fixture.out(gravity), IsEmpty());
    EXPECT_EQ(fixture.pipeline.happened(fault_kind::silence), 1U);
    fixture.pipeline.heal(fault_kind::silence);
    EXPECT_THAT(fixture.out(gravity), ElementsAre(gravity));
}

TEST(fault_pipeline, refuses_a_connect_that_the_service_never_sees) {
    pipeline_fixture fixture;
    fixture.add("error 0xB2@op=connect");
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(fixture.in(datagram({connect_operation(3)})), IsEmpty());
    EXPECT_THAT(fixture.departures(), ElementsAre(sent{1, refusal(3, 0, 0xB2)}));
}

TEST(fault_pipeline, answers_a_request_with_an_error_and_lets_the_others_of_its_datagram_through) {
    const bytes get_gravity{0xFF, 0x42, 0x04, 0x00, 0x05, 0x07, 0x00, 0x00, 0x00};
    const bytes save{0xFF, 0x40, 0x04, 0x00, 0x06, 0x07, 0x00, 0x00, 0x00};
    pipeline_fixture fixture;
    fixture.add("error 0xD0@op=64");
    EXPECT_THAT(fixture.in(datagram({get_gravity, save, get_gravity})),
                ElementsAre(datagram({get_gravity, get_gravity})));
    EXPECT_THAT(fixture.departures(), ElementsAre(sent{1, refusal(6, 7, 0xD0)}));
    EXPECT_THAT(fixture.in(datagram({save})), IsEmpty());
    EXPECT_THAT(fixture.departures(), ElementsAre(sent{1, refusal(6, 7, 0xD0)}));
    EXPECT_THAT(fixture.in(datagram({get_gravity})), ElementsAre(datagram({get_gravity})));
}

TEST(fault_pipeline, answers_with_an_error_of_another_tag) {
    pipeline_fixture fixture;
    fixture.add("error 0xC0:9");
    EXPECT_THAT(fixture.departures(), IsEmpty()) << "at once, but there are no clients";
    fixture.add("error 0xC0:9", {1, 2});
    EXPECT_THAT(fixture.departures(),
                ElementsAre(sent{1, refusal(9, 0, 0xC0)}, sent{2, refusal(9, 0, 0xC0)}));
    fixture.add("error 0xC0:9@nth=1");
    EXPECT_THAT(fixture.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(fixture.in(ask_gravity), IsEmpty());
    EXPECT_THAT(fixture.departures(), ElementsAre(sent{1, refusal(9, 1, 0xC0)}));
}

TEST(fault_pipeline, asks_for_a_goodbye_after_a_datagram) {
    pipeline_fixture fixture;
    fixture.add("goodbye @op=4");
    EXPECT_THAT(fixture.out(acceptance, 3), ElementsAre(acceptance));
    EXPECT_THAT(fixture.actions(), ElementsAre("goodbye client 3"));
    EXPECT_THAT(fixture.out(gravity, 3), ElementsAre(gravity));
    EXPECT_THAT(fixture.actions(), IsEmpty());
}

TEST(fault_pipeline, asks_for_a_restart_and_for_devices_to_come_and_go) {
    pipeline_fixture fixture;
    fixture.add("restart @nth=2");
    fixture.add("unplug 1@op=66,dir=in");
    fixture.add("plug palmetron@op=81");
    EXPECT_THAT(fixture.in(keep_alive), ElementsAre(keep_alive));
    EXPECT_THAT(fixture.actions(), IsEmpty());
    EXPECT_THAT(fixture.in(ask_gravity), ElementsAre(ask_gravity));
    EXPECT_THAT(fixture.actions(), ElementsAre("unplug 1", "restart"));
    EXPECT_THAT(fixture.out(power_supply), ElementsAre(power_supply));
    EXPECT_THAT(fixture.actions(), ElementsAre("plug 2"));
}

TEST(fault_pipeline, asks_at_once_for_what_needs_no_datagram) {
    pipeline_fixture fixture;
    fixture.add("goodbye");
    fixture.add("restart");
    fixture.add("unplug");
    fixture.add("plug orvanta3");
    EXPECT_THAT(fixture.actions(), ElementsAre("goodbye", "restart", "unplug", "plug 1"));
    EXPECT_THAT(fixture.pipeline.rules(), IsEmpty());
    EXPECT_EQ(fixture.pipeline.happened(fault_kind::unplug), 1U);
}

TEST(fault_pipeline, sends_at_once_to_every_client) {
    pipeline_fixture fixture;
    fixture.add("flood 2", {1, 2});
    EXPECT_THAT(fixture.departures(),
                ElementsAre(sent{1, filler}, sent{1, filler}, sent{2, filler}, sent{2, filler}));
}

TEST(fault_pipeline, forges_datagrams_of_another_sender) {
    const bytes added =
        datagram({{0xFF, 0x10, 0x18, 0x00, 0x00, 0xFF, 0x0F, 0x00, 0x00, 0x01, 0x00, 0xAD, 0x0B, 0, 0,
                   0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0}});
    const bytes answer = datagram({{0xFF, 0x42, 0x09, 0x00, 0x00, 0xFF, 0x0F, 0x00, 0x00, 0x00, 0, 0, 0, 0}});
    pipeline_fixture fixture;
    fixture.add("inject 4@op=4");
    fixture.pipeline.from_service(
        [] {
            simulator::outgoing_datagram datagram;
            datagram.to = peer_of(1);
            for (const std::uint8_t value : acceptance) {
                datagram.bytes.write(value);
            }
            return datagram;
        }(),
        fixture.now);
    std::vector<bool> forged;
    std::vector<bytes> contents;
    for (const simulator::departure& one : fixture.pipeline.take_departures()) {
        forged.push_back(one.forged);
        const auto* begin = reinterpret_cast<const std::uint8_t*>(one.bytes.data());
        contents.emplace_back(begin, begin + one.bytes.size());
    }
    EXPECT_THAT(forged, ElementsAre(false, true, true, true, true));
    EXPECT_THAT(contents, ElementsAre(acceptance, added, answer, goodbye_of_the_service, added));
}

TEST(fault_pipeline, tells_of_each_fault_that_happens_with_the_datagram_before_it) {
    pipeline_fixture fixture;
    std::vector<std::string> told;
    fixture.pipeline.tell([&told](const simulator::fault_note& note) {
        told.push_back(std::string(note.rule) +
                       (note.way == vantu::orvanta::communication::direction::to_client ? " out " : " in ") +
                       std::to_string(note.bytes.size()));
    });
    fixture.add("truncate 12@op=66");
    fixture.add("drop @nth=2,dir=out");
    fixture.add("delay 5@dir=in");
    (void)fixture.out(gravity);
    (void)fixture.out(power_supply);
    (void)fixture.in(keep_alive);
    EXPECT_THAT(
        told, ElementsAre("truncate 12@op=66 out 20", "drop @dir=out,nth=2 out 16", "delay 5@dir=in in 11"));
}

} // namespace
