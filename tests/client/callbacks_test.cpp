// Dispatch: each of the 24 callbacks gets its events, whole, and no others.
#include "support/client_session.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using vantu::orvanta::client;

struct call {
    unsigned member; // 1 to 24, in the order of the configuration
    unsigned device_id;
    std::string record;

    bool operator==(const call&) const = default;
};

// Notes every call of every callback.
struct call_log {
    std::vector<call> calls;

    auto on_device(unsigned member) {
        return [this, member](client&, unsigned device_id) { calls.push_back({member, device_id, ""}); };
    }

    auto on_record(unsigned member) {
        return [this, member](client&, unsigned device_id, const auto& record) {
            calls.push_back({member, device_id, hex(bytes_of(record))});
        };
    }

    client::config config() {
        client::config all;
        all.on_ack = on_device(1);
        all.on_disconnected = [this](client&) { calls.push_back({2, 0, ""}); };
        all.on_device = on_record(3);
        all.on_device_removed = on_device(4);
        all.on_device_opened = on_device(5);
        all.on_device_closed = on_device(6);
        all.on_orvanta3_info = on_record(7);
        all.on_palmetron_info = on_record(8);
        all.on_device_block = on_record(9);
        all.on_cursor_state = on_record(10);
        all.on_cursor_state_b = on_record(11);
        all.on_palmetron_state = on_record(12);
        all.on_orientation = on_record(13);
        all.on_config_save = on_record(14);
        all.on_config_gravity_compensation = on_record(15);
        all.on_config_torque_scaling = on_record(16);
        all.on_config_handedness = on_record(17);
        all.on_status_motor_current = on_record(18);
        all.on_status_power_supply = on_record(19);
        all.on_service_stream_a = [this](client&, const vantu_orvanta_service_stream_a& record) {
            calls.push_back({20, 0, hex(bytes_of(record))});
        };
        all.on_service_stream_b = on_record(21);
        all.on_table_block_128 = on_record(22);
        all.on_table_block_301 = on_record(23);
        all.on_error = on_record(24);
        return all;
    }
};

struct expected_call {
    unsigned member;
    std::uint32_t event_type;
    unsigned device_id;
    bytes record; // for a payload of 0x11, 0x12 and so on
};

// A description at offset 8, the rest zero.
const bytes listed_device = join({filled(8, 0), counting(0x11, 20), filled(50, 0)});

// clang-format off
const std::vector<expected_call>& expected_calls() {
    static const std::vector<expected_call> all{
        {1, vantu_orvanta_event_ack, 5, {}},
        {2, vantu_orvanta_event_disconnected, 0, {}},
        {3, vantu_orvanta_event_device_added, 5, listed_device},
        {4, vantu_orvanta_event_device_removed, 5, {}},
        {5, vantu_orvanta_event_device_opened, 5, {}},
        {6, vantu_orvanta_event_device_closed, 5, {}},
        {7, vantu_orvanta_event_orvanta3_info, 5, counting(0x11, 9)},
        {8, vantu_orvanta_event_palmetron_info, 5, counting(0x11, 8)},
        {9, vantu_orvanta_event_device_block, 5, counting(0x11, 16)},
        {10, vantu_orvanta_event_cursor_state, 5, counting(0x11, 24)},
        {11, vantu_orvanta_event_cursor_state_b, 5, counting(0x11, 24)},
        {12, vantu_orvanta_event_palmetron_state, 5, counting(0x11, 26)},
        {13, vantu_orvanta_event_orientation, 5, counting(0x11, 16)},
        {14, vantu_orvanta_event_config_save, 5, counting(0x11, 1)},
        {15, vantu_orvanta_event_config_gravity_compensation, 5, counting(0x11, 5)},
        {16, vantu_orvanta_event_config_torque_scaling, 5, counting(0x11, 1)},
        {17, vantu_orvanta_event_config_handedness, 5, counting(0x11, 1)},
        {18, vantu_orvanta_event_status_motor_current, 5, counting(0x11, 12)},
        {19, vantu_orvanta_event_status_power_supply, 5, counting(0x11, 1)},
        {20, vantu_orvanta_event_service_stream_a, 0, counting(0x11, 12)},
        {21, vantu_orvanta_event_service_stream_b, 5, counting(0x11, 48)},
        {22, vantu_orvanta_event_table_block_128, 5, counting(0x11, 128)},
        {23, vantu_orvanta_event_table_block_301, 5, counting(0x11, 301)},
        {24, vantu_orvanta_event_error, 5, counting(0x11, 4)},
    };
    return all;
}
// clang-format on

vantu_orvanta_event full_event(std::uint32_t type, std::uint8_t tag) {
    return make_event(type, tag, counting(0x11, 301));
}

TEST(dispatch, calls_the_callback_of_each_event_once_with_its_record) {
    for (const std::uint8_t tag : {std::uint8_t{0}, std::uint8_t{9}}) {
        call_log log;
        client subject(log.config());
        for (const expected_call& expected : expected_calls()) {
            EXPECT_TRUE(subject.dispatch(full_event(expected.event_type, tag)));
            EXPECT_EQ(log.calls,
                      (std::vector<call>{{expected.member, expected.device_id, hex(expected.record)}}))
                << "event " << expected.event_type;
            log.calls.clear();
        }
    }
}

TEST(dispatch, is_held_to_every_event_of_the_wire) {
    for (const auto& row : vantu::orvanta::communication::operations) {
        const auto is_expected = [&](const expected_call& expected) {
            return expected.event_type == row.event_type;
        };
        EXPECT_TRUE(row.event_type == vantu_orvanta_event_none ||
                    std::any_of(expected_calls().begin(), expected_calls().end(), is_expected))
            << "expected_calls has no row for the event of " << row.name;
    }
}

// Each callback is a std::function, and the tests above name each once.
TEST(dispatch, is_held_to_every_callback) {
    std::set<unsigned> members;
    for (const expected_call& expected : expected_calls()) {
        members.insert(expected.member);
    }
    constexpr std::size_t callbacks = sizeof(client::config) / sizeof(client::signal_callback);
    EXPECT_EQ(members.size(), callbacks) << "expected_calls lacks a callback";
}

TEST(dispatch, returns_false_for_an_empty_event_only) {
    call_log log;
    client subject(log.config());
    EXPECT_FALSE(subject.dispatch(make_event(vantu_orvanta_event_none, 9)));
    EXPECT_THAT(log.calls, ElementsAre());
}

TEST(dispatch, returns_true_for_types_it_does_not_know_and_calls_nothing) {
    call_log log;
    client subject(log.config());
    std::set<std::uint32_t> unknown{256, 257, 0x0101, 0x10001, 0xFFFFFFFF};
    for (std::uint32_t type = 1; type < 256; ++type) {
        unknown.insert(type);
    }
    for (const expected_call& expected : expected_calls()) {
        unknown.erase(expected.event_type);
    }
    for (const std::uint32_t type : unknown) {
        EXPECT_TRUE(subject.dispatch(full_event(type, 0))) << type;
    }
    EXPECT_THAT(log.calls, ElementsAre());
}

TEST(dispatch, returns_true_for_events_that_nobody_wants) {
    client subject({});
    for (const expected_call& expected : expected_calls()) {
        EXPECT_TRUE(subject.dispatch(full_event(expected.event_type, 0)));
        EXPECT_TRUE(subject.dispatch(full_event(expected.event_type, 9)));
    }
}

TEST(dispatch, hands_callbacks_the_client_itself) {
    client* seen = nullptr;
    client::config config;
    config.on_disconnected = [&](client& from) { seen = &from; };
    config.on_ack = [&](client& from, unsigned) { seen = &from; };
    client subject(std::move(config));
    subject.dispatch(make_event(vantu_orvanta_event_disconnected));
    EXPECT_EQ(seen, &subject);
    seen = nullptr;
    subject.dispatch(make_event(vantu_orvanta_event_ack, 3));
    EXPECT_EQ(seen, &subject);
}

TEST(dispatch, lets_out_what_a_callback_throws_and_works_afterwards) {
    client::config config;
    int calls = 0;
    config.on_config_save = [&](client&, unsigned, const auto&) {
        if (++calls == 1) {
            throw std::runtime_error("from the callback");
        }
    };
    client subject(std::move(config));
    EXPECT_THROW(subject.dispatch(make_event(vantu_orvanta_event_config_save)), std::runtime_error);
    EXPECT_TRUE(subject.dispatch(make_event(vantu_orvanta_event_config_save)));
    EXPECT_EQ(calls, 2);
}

TEST(dispatch, lets_a_callback_dispatch_another_event) {
    client::config config;
    std::vector<int> order;
    config.on_config_save = [&](client& from, unsigned, const auto&) {
        order.push_back(1);
        from.dispatch(make_event(vantu_orvanta_event_status_power_supply));
        order.push_back(3);
    };
    config.on_status_power_supply = [&](client&, unsigned, const auto&) { order.push_back(2); };
    client subject(std::move(config));
    EXPECT_TRUE(subject.dispatch(make_event(vantu_orvanta_event_config_save)));
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(dispatch_event, dispatches_to_the_client_it_is_given) {
    call_log log;
    client subject(log.config());
    const vantu_orvanta_event event = full_event(vantu_orvanta_event_status_power_supply, 0);
    client::dispatch_event(&subject, &event);
    EXPECT_EQ(log.calls, (std::vector<call>{{19, 5, "11"}}));
}

TEST(a_client, owns_its_callbacks_until_it_is_destroyed) {
    const auto owned = std::make_shared<int>(1);
    client::config config;
    config.on_ack = [owned](client&, unsigned) {};
    {
        const client subject(std::move(config));
        EXPECT_EQ(owned.use_count(), 2);
    }
    EXPECT_EQ(owned.use_count(), 1);
}

TEST(a_client, has_a_context_that_is_not_connected) {
    const client subject({});
    ASSERT_NE(subject.context(), nullptr);
    EXPECT_EQ(poll_once(subject.context()).code, vantu_orvanta_invalid_connection_state);
}

TEST(a_client, says_goodbye_when_it_is_destroyed) {
    client_session session;
    session.destroy_client(); // scripts the goodbye
    session.service().await_script();
    EXPECT_EQ(hex(session.service().last_datagram()), "E9 9E 01 00 00 00 FF 05 00 00 00");
}

} // namespace
