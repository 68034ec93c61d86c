// The datagrams of a session, each of its requests and of what it sends by itself, written out by hand.
#include "scripted_session.hpp"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::error_code;
using vantu::orvanta::gravity_compensation;
using vantu::orvanta::handedness;
using vantu::orvanta::session;

const bytes half_on{1, 0x00, 0x00, 0x00, 0x3F};     // on, 0.5
const bytes half_off{0, 0x00, 0x00, 0x00, 0x3F};    // off, 0.5
const bytes quarter_off{0, 0x00, 0x00, 0x80, 0x3E}; // off, 0.25

// A scripted service, and the session that has connected to it. The end of the test is the goodbye.
class on_the_wire : public testing::Test {
  protected:
    on_the_wire() {
        service.expect(connect_of_a_session())
            .answer(acceptance_with(join({device_listed(5, 1), details_of(5)})));
        connected = std::make_unique<session>(options_for(service));
        service.await_script();
    }
    ~on_the_wire() override {
        service.expect(goodbye()).answer(goodbye_received());
        connected.reset();
        service.await_script();
    }

    // The next datagram, whatever its tag, and what answers it: the first request of a session has tag 1.
    void expect(std::uint8_t code, const bytes& body, std::uint8_t answer, const bytes& answer_body) {
        ++tag_;
        service.expect(datagram({op(code, tag_, body)})).answer(datagram({op(answer, tag_, answer_body)}));
    }

    scripted_service service;
    std::unique_ptr<session> connected;

  private:
    std::uint8_t tag_{0};
};

TEST_F(on_the_wire, opening_and_closing_are_18_and_20) {
    expect(18, join({id_5, {0, 0}}), 19, id_5);
    EXPECT_TRUE(connected->open(5));
    expect(20, id_5, 21, id_5);
    EXPECT_TRUE(connected->close(5));
}

TEST_F(on_the_wire, orientation_is_47) {
    expect(47, id_5, 47,
           join({id_5,
                 {0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x3F, 0x00, 0x00, 0x80, 0xBE, 0x00, 0x00, 0x00,
                  0x40}}));
    const auto answer = connected->get_orientation(5).value();
    EXPECT_EQ(answer.r, 1.0F);
    EXPECT_EQ(answer.x, 0.5F);
    EXPECT_EQ(answer.y, -0.25F);
    EXPECT_EQ(answer.z, 2.0F);
}

TEST_F(on_the_wire, gravity_compensation_is_66_and_67) {
    expect(66, id_5, 66, join({id_5, half_on}));
    EXPECT_EQ(connected->get_gravity_compensation(5)->scaling_factor, 0.5F);
    expect(67, join({id_5, quarter_off}), 66, join({id_5, quarter_off}));
    EXPECT_FALSE(connected->set_gravity_compensation(5, {false, 0.25F})->enabled);
}

TEST_F(on_the_wire, one_field_is_asked_for_and_set_and_from_then_on_set_alone) {
    expect(66, id_5, 66, join({id_5, {0, 0x00, 0x00, 0x80, 0x3F}})); // off, 1
    expect(67, join({id_5, half_off}), 66, join({id_5, half_off}));
    EXPECT_EQ(connected->set_scaling_factor(5, 0.5F)->scaling_factor, 0.5F);
    expect(67, join({id_5, half_on}), 66, join({id_5, half_on}));
    EXPECT_TRUE(connected->set_gravity_compensation_enabled(5, true)->enabled);
    // A value that another client has set is confirmed as well.
    service.push(datagram({op(66, 0, join({id_5, quarter_off}))}));
    ASSERT_TRUE(comes_about([&] { return connected->count().events >= 4; }));
    expect(67, join({id_5, {1, 0x00, 0x00, 0x80, 0x3E}}), 66, join({id_5, half_on}));
    EXPECT_TRUE(connected->set_gravity_compensation_enabled(5, true)->enabled);
}

TEST_F(on_the_wire, one_field_is_asked_for_again_after_a_removal) {
    expect(66, id_5, 66, join({id_5, half_on}));
    EXPECT_TRUE(connected->get_gravity_compensation(5));
    service.push(datagram({op(17, 0, id_5), device_listed(5, 1), details_of(5)}));
    ASSERT_TRUE(comes_about([&] { return connected->count().events >= 4; }));
    expect(66, id_5, 66, join({id_5, half_off}));
    expect(67, join({id_5, quarter_off}), 66, join({id_5, quarter_off}));
    EXPECT_FALSE(connected->set_scaling_factor(5, 0.25F)->enabled);
}

TEST_F(on_the_wire, torque_scaling_is_68_and_69) {
    expect(68, id_5, 68, join({id_5, {1}}));
    EXPECT_TRUE(connected->get_torque_scaling(5)->enabled);
    expect(69, join({id_5, {0}}), 68, join({id_5, {0}}));
    EXPECT_FALSE(connected->set_torque_scaling(5, false)->enabled);
    expect(69, join({id_5, {1}}), 68, join({id_5, {1}}));
    EXPECT_TRUE(connected->set_torque_scaling(5, true)->enabled);
}

TEST_F(on_the_wire, handedness_is_71_and_saving_64) {
    expect(71, join({id_5, {2}}), 70, join({id_5, {2}}));
    EXPECT_EQ(connected->set_handedness(5, handedness::left).value(), handedness::left);
    expect(64, id_5, 64, join({id_5, {1}}));
    EXPECT_EQ(connected->save(5)->saved, 1);
}

TEST_F(on_the_wire, a_request_that_is_refused_before_it_is_sent_sends_nothing) {
    EXPECT_EQ(connected->open(0).error(), error_code::invalid_argument);
    EXPECT_EQ(connected->set_handedness(5, handedness::none).error(), error_code::invalid_argument);
}

TEST(on_the_wire_of_a_session_with_a_traffic_sink, each_datagram_is_told_in_each_connection) {
    const bytes opening = datagram({op(18, 1, join({id_5, {0, 0}}))});
    const bytes opened = datagram({op(19, 1, id_5)});
    const bytes listing = join({device_listed(5, 1), details_of(5)});
    scripted_service service;
    std::mutex mutex;
    std::multimap<std::uint64_t, std::string> told; // by the time of the datagram
    const auto is_told = [&](const std::string& line) {
        const std::lock_guard lock(mutex);
        return std::any_of(told.begin(), told.end(), [&](const auto& one) { return one.second == line; });
    };
    auto options = options_for(service);
    options.reconnect = true;
    options.probe_interval = 0s;
    options.traffic = [&](const vantu_orvanta_traffic& one) {
        const std::string line = (one.way == vantu_orvanta_traffic_sent ? "> " : "< ") +
                                 hex(bytes(one.bytes, one.bytes + one.length));
        if (line == "> " + hex(opening)) {
            // The other thread may tell the answer before this one tells the request.
            EXPECT_TRUE(comes_about([&] { return is_told("< " + hex(opened)); }));
        }
        const std::lock_guard lock(mutex);
        told.emplace(one.steady_ns, line);
    };
    service.expect(connect_of_a_session()).answer(acceptance_with(listing));
    {
        session connected(options);
        service.expect(opening).answer(opened);
        EXPECT_TRUE(connected.open(5).has_value());
        service.expect(connect_of_a_session()).answer(acceptance_with({}));
        service.push(goodbye_received());
        EXPECT_TRUE(comes_about([&] { return connected.count().connections == 2; }));
        service.expect(goodbye()).answer(goodbye_received());
    }
    std::vector<std::string> lines;
    for (const auto& [time, line] : told) {
        if (line != "> E9 9E 01 00 00 00 FF 01 00 00 00") { // a keep-alive
            lines.push_back(line);
        }
    }
    const std::vector<std::string> expected{"> " + hex(connect_of_a_session()),
                                            "< " + hex(acceptance_with(listing)),
                                            "> " + hex(opening),
                                            "< " + hex(opened),
                                            "< " + hex(goodbye_received()),
                                            "> " + hex(connect_of_a_session()),
                                            "< " + hex(acceptance_with({})),
                                            "> " + hex(goodbye()),
                                            "< " + hex(goodbye_received())};
    EXPECT_EQ(lines, expected);
}

TEST(on_the_wire_of_a_silent_service, the_session_asks_for_the_orientation_of_the_first_device) {
    scripted_service service;
    // Further questions may come before the goodbye.
    service.respond_with(service_of_device_5());
    service.expect(connect_of_a_session())
        .answer(acceptance_with(join({device_listed(5, 1), details_of(5)})));
    service.expect_any_tag(datagram({op(47, 1, id_5)})).answer(datagram({op(240, 1, join({id_5, {0xB1}}))}));
    service.expect_any_tag(datagram({op(47, 2, id_5)}));
    auto options = options_for(service);
    options.probe_interval = 100ms;
    const auto begin = std::chrono::steady_clock::now();
    {
        const session connected(options);
        service.await_script();
        EXPECT_TRUE(connected.is_connected());
        EXPECT_GE(std::chrono::steady_clock::now() - begin, 200ms);
    }
}

TEST(on_the_wire_of_a_silent_service, the_session_asks_for_device_1_when_there_is_none) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    service.expect(connect_of_a_session()).answer(acceptance());
    service.expect_any_tag(datagram({op(47, 1, u32(1))}));
    auto options = options_for(service);
    options.probe_interval = 100ms;
    const session connected(options);
    service.await_script();
}

TEST(on_the_wire_of_a_silent_service, the_session_sends_keep_alives_and_nothing_else_without_a_probe) {
    scripted_service service;
    service.expect(connect_of_a_session()).answer(acceptance());
    {
        const session connected(options_for(service));
        service.await_script();
        EXPECT_TRUE(comes_about([&] { return service.keep_alives().size() >= 2; }));
        service.expect(goodbye()).answer(goodbye_received());
    }
    service.await_script();
}

TEST(a_device_that_has_not_arrived, is_removed_without_a_word) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    const session connected(options_for(service, told.callbacks()));
    ASSERT_TRUE(told.has("arrival 5"));
    service.push(datagram({device_listed(6, 1), op(17, 0, u32(6)), op(17, 0, id_5)}));
    ASSERT_TRUE(told.has("removal 5"));
    EXPECT_EQ(told.lines(), (std::vector<std::string>{"arrival 5", "removal 5"}));
}

TEST(the_events_of_a_session, come_with_the_values_of_the_wire) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    auto callbacks = told.callbacks();
    callbacks.on_cursor = [&](session&, const vantu::orvanta::cursor_sample& sample) {
        EXPECT_EQ(sample.device_id, 5U);
        EXPECT_EQ(sample.values, (std::array<float, 6>{1, 2, 3, 0.5F, -1, 0}));
        told.write("cursor " + std::to_string(sample.stream) + ' ' + std::to_string(sample.number));
    };
    callbacks.on_motor_current = [&](session&, const vantu::orvanta::motor_current& current) {
        EXPECT_EQ(current.device_id, 5U);
        EXPECT_EQ(current.values, (std::array<float, 3>{1, 2, 3}));
        told.write("current");
    };
    callbacks.on_power_supply = [&](session&, const vantu::orvanta::power_supply& supply) {
        EXPECT_EQ(supply.device_id, 5U);
        EXPECT_EQ(supply.state, 9);
        told.write("supply");
    };
    callbacks.on_event = [&](session&, const vantu_orvanta_event& event) {
        told.write("event " + std::to_string(event.event_type));
    };
    const session connected(options_for(service, callbacks));
    ASSERT_TRUE(told.has("arrival 5"));
    const bytes three{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x40, 0x00, 0x00, 0x40, 0x40};
    const bytes six = join({three, {0x00, 0x00, 0x00, 0x3F, 0x00, 0x00, 0x80, 0xBF, 0, 0, 0, 0}});
    service.push(datagram({op(33, 0, join({id_5, six})), op(37, 0, join({id_5, six})),
                           op(80, 0, join({id_5, three})), op(81, 0, join({id_5, {9}}))}));
    ASSERT_TRUE(told.has("supply"));
    EXPECT_EQ(told.lines(),
              (std::vector<std::string>{"arrival 5", "event 48", "cursor 1 1", "event 49", "cursor 2 2",
                                        "event 80", "current", "event 81", "supply"}));
    EXPECT_EQ(connected.count().events, 4U);
}

} // namespace
