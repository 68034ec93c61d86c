// The actions that faults ask of the simulation around the service: ends, restarts, devices that come and go.
#include "simulator/fixtures/simulation_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const bytes listed_again = datagram({orvanta3_added, orvanta3_details});

void fail(simulation_fixture& fixture, fault_kind kind, std::string_view text) {
    fixture.tested.add_fault(parse_fault(kind, text));
}

TEST(a_fault, that_restarts_the_service_does_so_after_its_datagram) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::restart, "@op=18");
    EXPECT_THAT(fixture.send(1, open_request(5, 1)),
                ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
    EXPECT_EQ(fixture.tested.counters().restarts, 1U);
}

TEST(a_fault, that_says_goodbye_forgets_that_client_alone) {
    simulation_fixture fixture;
    fixture.enter(1);
    fixture.enter(2);
    fail(fixture, fault_kind::goodbye, "@op=19,nth=1");
    const sent_list answers = fixture.send(2, open_request(5, 1));
    ASSERT_THAT(answers, SizeIs(2));
    EXPECT_EQ(answers[1], (sent{2, goodbye_of_the_service}));
    ASSERT_THAT(fixture.tested.clients(), SizeIs(1));
    EXPECT_EQ(fixture.tested.clients()[0].address.address.address.bytes[0], std::byte{1});
}

TEST(a_fault, that_unplugs_takes_the_device_that_it_names_or_else_the_first) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::unplug, "1001@op=1,nth=1");
    EXPECT_THAT(fixture.send(1, keep_alive),
                ElementsAre(sent{1, datagram({{0xFF, 0x11, 0x04, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00}})}));
    fail(fixture, fault_kind::unplug, "@op=1,nth=1");
    EXPECT_THAT(fixture.send(1, keep_alive), ElementsAre(sent{1, first_removed}));
    EXPECT_THAT(fixture.tested.devices(), IsEmpty());
}

TEST(a_fault, that_sends_more_than_is_taken_loses_what_a_full_system_would) {
    constexpr std::size_t most_bytes = 64U << 20U;
    constexpr std::size_t greatest_datagram = 65'507;
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fail(fixture, fault_kind::flood, "30@p=1");
    fail(fixture, fault_kind::extend, "65507");
    std::size_t bytes = 0;
    const std::uint64_t sent_before = fixture.tested.counters().sent;
    const sent_list taken = fixture.wait(ns_per_second); // a hundred states
    for (const sent& one : taken) {
        bytes += one.content.size();
    }
    EXPECT_GE(bytes, most_bytes);
    EXPECT_LT(bytes, most_bytes + greatest_datagram);
    EXPECT_EQ(fixture.tested.counters().sent - sent_before, taken.size());
}

const bytes first_opened = datagram({{0xFF, 0x13, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00}});

TEST(the_end_of_the_service, sends_what_is_delayed_and_then_the_goodbye) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::delay, "1000@dir=out");
    fail(fixture, fault_kind::delay, "2000@dir=out");
    EXPECT_THAT(fixture.send(1, open_request(5, 1)), IsEmpty());
    fixture.tested.say_goodbye();
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, first_opened}, sent{1, goodbye_of_the_service}));
    EXPECT_EQ(fixture.tested.faults().next_due_ns(), never_ns);
}

TEST(the_end_of_the_service, lets_the_goodbye_pass_what_waits_to_be_overtaken) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::reorder, "5@dir=out");
    EXPECT_THAT(fixture.send(1, open_request(5, 1)), IsEmpty());
    fixture.tested.say_goodbye();
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, goodbye_of_the_service}, sent{1, first_opened}));
}

TEST(the_end_of_the_service, sends_a_goodbye_that_a_fault_holds_back) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::reorder, "5@dir=out");
    fixture.tested.say_goodbye();
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, goodbye_of_the_service}));
}

TEST(a_fault, that_plugs_lists_the_device_to_all) {
    simulation_fixture fixture;
    fixture.enter(1);
    fixture.enter(2);
    fixture.tested.unplug(1);
    fixture.take();
    fail(fixture, fault_kind::plug, "orvanta3@op=1");
    EXPECT_THAT(fixture.send(1, keep_alive), ElementsAre(sent{1, listed_again}, sent{2, listed_again}));
}

TEST(faults, do_not_chase_each_other) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::plug, "orvanta3@op=17");
    fail(fixture, fault_kind::unplug, "1@op=16");
    fixture.tested.unplug(1);
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, first_removed}, sent{1, listed_again}));
    EXPECT_EQ(fixture.tested.faults().happened(fault_kind::plug), 1U);
    EXPECT_EQ(fixture.tested.faults().happened(fault_kind::unplug), 0U);
    EXPECT_THAT(fixture.wait(10 * simulation_tick_ns), IsEmpty());
}

TEST(faults, are_counted_and_healed_from_outside) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fail(fixture, fault_kind::drop, "1@dir=out");
    EXPECT_THAT(fixture.wait(ns_per_second), IsEmpty());
    EXPECT_EQ(fixture.tested.faults().happened(fault_kind::drop), 100U);
    fixture.tested.faults().heal();
    EXPECT_THAT(fixture.wait(ns_per_second), SizeIs(100));
}

TEST(faults, that_delay_let_go_on_the_tick) {
    simulation_fixture fixture;
    fixture.enter(1);
    fail(fixture, fault_kind::delay, "20@dir=out");
    EXPECT_THAT(fixture.send(1, open_request(5, 1001)), IsEmpty());
    EXPECT_THAT(fixture.wait(20 * ns_per_millisecond - simulation_tick_ns), IsEmpty());
    EXPECT_THAT(fixture.wait(simulation_tick_ns), SizeIs(1));
}

} // namespace
} // namespace orvanta_tests
