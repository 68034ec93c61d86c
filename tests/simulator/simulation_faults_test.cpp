// What faults ask of the simulation around the service: ends, restarts, devices that come and go.
#include "simulator/simulation_bench.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>

namespace simulator_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const bytes listed_again = datagram({orvanta3_added, orvanta3_details});

void fail(simulation_bench& bench, fault_kind kind, std::string_view text) {
    bench.tested.add_fault(parse_fault(kind, text));
}

TEST(a_fault, that_restarts_the_service_does_so_behind_its_datagram) {
    simulation_bench bench;
    bench.enter(1);
    fail(bench, fault_kind::restart, "@op=18");
    EXPECT_THAT(bench.send(1, open_request(5, 1)),
                ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(bench.tested.clients(), IsEmpty());
    EXPECT_EQ(bench.tested.counters().restarts, 1U);
}

TEST(a_fault, that_says_goodbye_forgets_that_client_alone) {
    simulation_bench bench;
    bench.enter(1);
    bench.enter(2);
    fail(bench, fault_kind::goodbye, "@op=19,n=1");
    const sent_list answers = bench.send(2, open_request(5, 1));
    ASSERT_THAT(answers, SizeIs(2));
    EXPECT_EQ(answers[1], (sent{2, goodbye_of_the_service}));
    ASSERT_THAT(bench.tested.clients(), SizeIs(1));
    EXPECT_EQ(bench.tested.clients()[0].address.address.address.bytes[0], std::byte{1});
}

TEST(a_fault, that_unplugs_takes_the_device_that_it_names_or_else_the_first) {
    simulation_bench bench;
    bench.enter(1);
    fail(bench, fault_kind::unplug, "1001@op=1,n=1");
    EXPECT_THAT(bench.send(1, keep_alive),
                ElementsAre(sent{1, datagram({{0xFF, 0x11, 0x04, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00}})}));
    fail(bench, fault_kind::unplug, "@op=1,n=1");
    EXPECT_THAT(bench.send(1, keep_alive), ElementsAre(sent{1, first_removed}));
    EXPECT_THAT(bench.tested.devices(), IsEmpty());
}

TEST(a_fault, that_plugs_lists_the_device_to_all) {
    simulation_bench bench;
    bench.enter(1);
    bench.enter(2);
    bench.tested.unplug(1);
    bench.take();
    fail(bench, fault_kind::plug, "orvanta3@op=1");
    EXPECT_THAT(bench.send(1, keep_alive), ElementsAre(sent{1, listed_again}, sent{2, listed_again}));
}

TEST(faults, do_not_chase_each_other) {
    simulation_bench bench;
    bench.enter(1);
    fail(bench, fault_kind::plug, "orvanta3@op=17");
    fail(bench, fault_kind::unplug, "1@op=16");
    bench.tested.unplug(1);
    EXPECT_THAT(bench.take(), ElementsAre(sent{1, first_removed}, sent{1, listed_again}));
    EXPECT_EQ(bench.tested.faults().happened(fault_kind::plug), 1U);
    EXPECT_EQ(bench.tested.faults().happened(fault_kind::unplug), 0U);
    EXPECT_THAT(bench.wait(10 * tick_ns), IsEmpty());
}

TEST(faults, are_counted_and_healed_from_outside) {
    simulation_bench bench;
    bench.enter(1, {1});
    fail(bench, fault_kind::drop, "1@dir=out");
    EXPECT_THAT(bench.wait(ns_per_second), IsEmpty());
    EXPECT_EQ(bench.tested.faults().happened(fault_kind::drop), 100U);
    bench.tested.faults().heal();
    EXPECT_THAT(bench.wait(ns_per_second), SizeIs(100));
}

TEST(faults, that_delay_let_go_on_the_tick) {
    simulation_bench bench;
    bench.enter(1);
    fail(bench, fault_kind::delay, "20@dir=out");
    EXPECT_THAT(bench.send(1, open_request(5, 1001)), IsEmpty());
    EXPECT_THAT(bench.wait(20 * ns_per_millisecond - tick_ns), IsEmpty());
    EXPECT_THAT(bench.wait(tick_ns), SizeIs(1));
}

} // namespace
} // namespace simulator_tests
