// The simulation's time, its repeatability, its ends of connections and what it tells observers.
#include "simulator/fixtures/simulation_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <limits>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using way = vantu::orvanta::communication::direction;

simulation_settings seeded(std::uint64_t seed) {
    simulation_settings settings;
    settings.seed = seed;
    return settings;
}

// The client id at the end of an acceptance.
bytes id_in(const sent_list& answers) {
    const bytes& content = answers.at(0).content;
    return {content.end() - 8, content.end()};
}

// The output of a small session, all in one list; the clock moves in steps of the given size.
sent_list session(std::uint64_t seed, std::int64_t step) {
    simulation_fixture fixture(seeded(seed));
    sent_list all;
    const auto add = [&all](const sent_list& list) { all.insert(all.end(), list.begin(), list.end()); };
    const auto pass = [&](std::int64_t time) {
        for (std::int64_t left = time; left > 0; left -= step) {
            add(fixture.wait(std::min(left, step)));
        }
    };
    add(fixture.send(1, datagram({connect_operation(7)})));
    add(fixture.send(1, open_request(1, 1)));
    pass(100 * ns_per_millisecond);
    add(fixture.send(2, datagram({connect_operation(8)})));
    add(fixture.send(2, open_request(1, 1001)));
    pass(ns_per_second);
    fixture.tested.restart();
    add(fixture.send(1, datagram({connect_operation(9)})));
    pass(50 * ns_per_millisecond);
    return all;
}

TEST(a_simulation, sends_the_same_bytes_for_the_same_seed_and_inputs_however_time_is_cut) {
    const sent_list whole = session(5, ns_per_second);
    EXPECT_GT(whole.size(), 200U);
    EXPECT_EQ(session(5, ns_per_second), whole);
    EXPECT_EQ(session(5, simulation_tick_ns), whole);
    EXPECT_EQ(session(5, 7 * ns_per_millisecond), whole);
    EXPECT_NE(session(6, ns_per_second), whole);
}

TEST(a_simulation, gives_ids_that_differ_from_seed_to_seed) {
    simulation_fixture one(seeded(1));
    simulation_fixture other(seeded(2));
    EXPECT_NE(id_in(one.send(1, datagram({connect_operation(0)}))),
              id_in(other.send(1, datagram({connect_operation(0)}))));
}

TEST(time, moves_by_whole_ticks_and_never_back) {
    simulation_fixture fixture;
    EXPECT_EQ(fixture.tested.now_ns(), 0);
    fixture.tested.advance_to(199'999);
    EXPECT_EQ(fixture.tested.now_ns(), 100'000);
    fixture.tested.advance_to(50'000);
    EXPECT_EQ(fixture.tested.now_ns(), 100'000);
    fixture.tested.advance_to(3 * ns_per_second);
    EXPECT_EQ(fixture.tested.now_ns(), 3'000'000'000);
}

TEST(time, has_nothing_due_ever_without_clients) {
    simulation_fixture fixture;
    EXPECT_EQ(fixture.tested.next_due_ns(), std::numeric_limits<std::int64_t>::max());
    fixture.enter(1);
    EXPECT_EQ(fixture.tested.next_due_ns(), std::numeric_limits<std::int64_t>::max());
}

TEST(time, brings_the_first_state_a_tick_after_the_opening) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_THAT(fixture.send(1, open_request(1, 1)), SizeIs(1));
    EXPECT_EQ(fixture.tested.next_due_ns(), fixture.tested.now_ns() + simulation_tick_ns);
    EXPECT_THAT(fixture.wait(simulation_tick_ns - 1), IsEmpty());
    EXPECT_THAT(fixture.wait(simulation_tick_ns), SizeIs(1));
    // The rate is kept from the opening on.
    EXPECT_EQ(fixture.tested.next_due_ns(),
              fixture.tested.now_ns() - simulation_tick_ns + 10 * ns_per_millisecond);
}

TEST(time, that_passes_at_once_misses_no_state) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    EXPECT_THAT(fixture.wait(10 * ns_per_second), SizeIs(1000));
}

TEST(time, forgets_a_silent_client_at_the_first_tick_after_its_keep_alive_time) {
    simulation_fixture fixture;
    fixture.enter(1, {}, 5 * ns_per_second);
    fixture.tested.advance_to(5 * ns_per_second);
    EXPECT_THAT(fixture.tested.clients(), SizeIs(1));
    fixture.wait(simulation_tick_ns);
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
}

TEST(a_restart, forgets_all_clients_without_a_word_and_gives_new_ids) {
    simulation_fixture fixture;
    const bytes before = id_in(fixture.send(1, datagram({connect_operation(0)})));
    fixture.send(1, open_request(0, 1));
    fixture.take();
    fixture.tested.restart();
    EXPECT_THAT(fixture.take(), IsEmpty());
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
    EXPECT_EQ(fixture.tested.counters().restarts, 1U);
    EXPECT_THAT(fixture.wait(ns_per_second), IsEmpty());
    EXPECT_THAT(fixture.send(1, request_of(0x2F, 9, 1)), ElementsAre(sent{1, refusal(9, 1, 0xB0)}));
    EXPECT_NE(id_in(fixture.send(1, datagram({connect_operation(0)}))), before);
}

TEST(a_goodbye, goes_to_all_clients_and_forgets_them) {
    simulation_fixture fixture;
    fixture.enter(1);
    fixture.enter(2);
    fixture.tested.say_goodbye();
    EXPECT_THAT(fixture.take(),
                ElementsAre(sent{1, goodbye_of_the_service}, sent{2, goodbye_of_the_service}));
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
}

TEST(a_service, says_goodbye_to_one_client_and_keeps_the_others) {
    service_fixture core;
    core.enter(1);
    core.enter(2);
    core.core.say_goodbye_to(peer_of(1));
    core.core.say_goodbye_to(peer_of(3));
    EXPECT_THAT(core.take(), ElementsAre(sent{1, goodbye_of_the_service}));
    ASSERT_THAT(core.core.clients(), SizeIs(1));
    EXPECT_EQ(core.core.clients().front().id, 2U);
}

TEST(counters, tell_of_datagrams_in_and_out) {
    simulation_fixture fixture;
    fixture.send(1, datagram({connect_operation(0)}));
    fixture.send(1, {0x00});
    fixture.send(1, open_request(0, 1));
    EXPECT_EQ(fixture.tested.counters().received, 3U);
    EXPECT_EQ(fixture.tested.counters().sent, 2U);
    fixture.wait(20 * ns_per_millisecond);
    EXPECT_EQ(fixture.tested.counters().sent, 5U);
}

struct seen {
    way direction;
    int code;
    bool operator==(const seen&) const = default;
};

TEST(an_observer, is_told_of_each_operation_in_and_out_in_order) {
    simulation_fixture fixture;
    std::vector<seen> list;
    fixture.tested.observe([&](const observed_operation& one) { list.push_back({one.way, one.code}); });
    fixture.send(1, datagram({connect_operation(0)}));
    fixture.send(1, open_request(1, 1));
    EXPECT_THAT(list,
                ElementsAre(seen{way::to_service, 3}, seen{way::to_client, 16}, seen{way::to_client, 23},
                            seen{way::to_client, 16}, seen{way::to_client, 24}, seen{way::to_client, 4},
                            seen{way::to_service, 18}, seen{way::to_client, 19}));
}

TEST(an_observer, is_not_told_of_what_is_no_operation) {
    simulation_fixture fixture;
    std::vector<int> told;
    fixture.tested.observe([&](const observed_operation& one) {
        if (one.way == way::to_service) {
            told.push_back(one.code);
        }
    });
    fixture.send(1, {});
    fixture.send(1, {0xE9, 0x9E, 0x01, 0x00, 0x00});
    fixture.send(1, {0xE8, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00});
    fixture.send(1, {0xE9, 0x9E, 0x02, 0x00, 0x00, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00});
    fixture.send(1, datagram({{0xFE, 0x01, 0x00, 0x00, 0x00}}));
    fixture.send(1, datagram({{0xFF, 0x01, 0x01, 0x00, 0x00}}));
    EXPECT_THAT(told, IsEmpty());
    fixture.send(1, datagram({{0xFF, 0x01, 0x00, 0x00, 0x00}, {0xFF, 0x01, 0x00}}));
    EXPECT_THAT(told, ElementsAre(1));
}

TEST(an_observer, may_call_back) {
    simulation_fixture fixture;
    fixture.tested.observe([&](const observed_operation& one) {
        if (one.way == way::to_service && one.code == 3) {
            fixture.tested.unplug(1);
        }
        if (one.way == way::to_client && one.code == 17) {
            fixture.tested.plug(1);
        }
    });
    const sent_list answers = fixture.send(1, datagram({connect_operation(0)}));
    ASSERT_THAT(answers, SizeIs(3));
    EXPECT_EQ(answers[1], (sent{1, datagram({{0xFF, 0x11, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_EQ(answers[2], (sent{1, datagram({orvanta3_added, orvanta3_details})}));
}

TEST(a_simulation, tells_what_happens_to_it) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fixture.tested.unplug(1);
    fixture.tested.plug(1);
    fixture.tested.restart();
    EXPECT_THAT(fixture.lines, ElementsAre("device 1: unplugged", "device 1: plugged in",
                                           "restarted, clients forgotten: 1"));
}

} // namespace
} // namespace orvanta_tests
