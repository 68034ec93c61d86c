// The callbacks of the tool.
#include "app/support/connected_client.hpp"
#include "app/support/wire.hpp"

#include <atomic>
#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace {

using namespace orvanta_tests;
using testing::StrEq;
using testing::ThrowsMessage;
using vantu::orvanta::client;
using vantu::orvanta::app::application_state;
using vantu::orvanta::app::event_fn;
using vantu::orvanta::app::event_slot;
using vantu::orvanta::app::make_callbacks;

class callbacks : public connected_client {};

TEST_F(callbacks, capture_each_kind_of_event_in_its_own_slot) {
    connect_with("");
    service.send(datagram(" FF 21 1C00 00 05000000 0000803F 00000040 00004040 00008040 0000A040 0000C040"
                          " FF 28 1600 00 05000000 07 000102030405060708090A0B0C0D0E0F 00"
                          " FF 2F 1400 00 05000000 0000003F 000080BE 0000803F 000000C0"
                          " FF 40 0500 00 05000000 01"
                          " FF 42 0900 00 05000000 01 0000403F"
                          " FF 44 0500 00 05000000 02"
                          " FF 50 1000 00 05000000 0000803F 00000040 00004040"
                          " FF 51 0500 00 05000000 03"));
    for (int i = 0; i < 8; ++i) {
        dispatch_one();
    }
    EXPECT_EQ(6.0F, float{state.cursor_state.load().values[5]});
    EXPECT_EQ(7, state.palmetron_state.load().first);
    EXPECT_EQ(15, state.palmetron_state.load().block[15]);
    EXPECT_EQ(0.5F, float{state.orientation.load().r});
    EXPECT_EQ(-2.0F, float{state.orientation.load().z});
    EXPECT_EQ(1, state.config_save.load().saved);
    EXPECT_EQ(1, state.gravity_compensation.load().enabled);
    EXPECT_EQ(0.75F, float{state.gravity_compensation.load().scaling_factor});
    EXPECT_EQ(2, state.torque_scaling.load().enabled);
    EXPECT_EQ(3.0F, float{state.motor_current.load().values[2]});
    EXPECT_EQ(3, state.power_supply.load().state);
}

TEST_F(callbacks, open_the_chosen_device_when_it_is_listed_again) {
    connect_with("");
    state.current_device_id = 5;
    service.send(datagram(device_added(5, 1, 0x1A2B, 0)));
    dispatch_one();
    EXPECT_TRUE(state.device_connected);
    EXPECT_EQ(datagram(" FF 12 0600 00 05000000 0000"), service.next(18));
}

TEST_F(callbacks, leave_other_devices_and_an_open_one_alone_when_listed) {
    connect_with("");
    state.current_device_id = 5;
    service.send(datagram(device_added(6, 1, 0x1A2B, 0)));
    dispatch_one();
    EXPECT_FALSE(state.device_connected);
    state.device_connected = true;
    service.send(datagram(device_added(5, 1, 0x1A2B, 0)));
    dispatch_one();
    vantu_orvanta_device_close(client.context(), 5, 0);
    EXPECT_EQ(datagrams{datagram(" FF 14 0400 00 05000000")}, requests(1));
}

TEST_F(callbacks, note_that_the_chosen_device_was_removed) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    service.send(datagram(" FF 11 0400 00 06000000"));
    dispatch_one();
    EXPECT_TRUE(state.device_connected);
    service.send(datagram(" FF 11 0400 00 05000000"));
    dispatch_one();
    EXPECT_FALSE(state.device_connected);
    EXPECT_EQ(5U, state.current_device_id);
}

TEST_F(callbacks, print_the_text_of_an_error_to_the_error_stream) {
    connect_with("");
    service.send(datagram(" FF F0 0500 00 05000000 B1"));
    dispatch_one();
    EXPECT_EQ("\nError from on_error: device was not opened\n", diagnostics.errors());
    EXPECT_EQ("", diagnostics.output());
}

TEST_F(callbacks, print_an_unassigned_error_as_unknown) {
    connect_with("");
    service.send(datagram(" FF F0 0500 00 05000000 64"
                          " FF F0 0500 00 05000000 B4"));
    dispatch_one();
    dispatch_one();
    EXPECT_EQ("\nError from on_error: unknown\n\nError from on_error: an internal request queue is empty\n",
              diagnostics.errors());
}

TEST_F(callbacks, print_errors_without_taking_the_mutex) {
    connect_with("");
    const std::lock_guard held(state.app_mutex);
    service.send(datagram(" FF F0 0500 00 05000000 A3"));
    dispatch_one();
    EXPECT_EQ("\nError from on_error: invalid argument\n", diagnostics.errors());
}

TEST_F(callbacks, do_nothing_for_opened_and_closed_devices_and_for_a_goodbye) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    service.send(datagram(" FF 13 0400 00 05000000"
                          " FF 15 0400 00 05000000"
                          " FF 06 0000 00"));
    dispatch_one();
    dispatch_one();
    dispatch_one();
    EXPECT_TRUE(state.device_connected);
    EXPECT_EQ(5U, state.current_device_id);
    EXPECT_EQ("", diagnostics.transcript());
}

// Runs a callback on another thread while this one holds the mutex: it must not be over before the mutex is
// free. One that does not wait is over well within the time that is watched here.
void expect_to_wait_for(std::mutex& app_mutex, const std::function<void()>& callback) {
    std::unique_lock held(app_mutex);
    std::atomic<bool> is_over{false};
    std::thread polling([&] {
        callback();
        is_over = true;
    });
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    while (!is_over && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(is_over) << "it does not take the mutex";
    held.unlock();
    polling.join();
}

TEST(event_fn, copies_the_whole_record_into_its_slot) {
    event_slot<vantu_orvanta_orientation> slot;
    std::mutex app_mutex;
    client unconnected{{}};
    event_fn(&slot, app_mutex)(unconnected, 5, {0.25F, -1.0F, 2.0F, 3.5F});
    const vantu_orvanta_orientation seen = slot.load();
    EXPECT_EQ(0.25F, float{seen.r});
    EXPECT_EQ(-1.0F, float{seen.x});
    EXPECT_EQ(2.0F, float{seen.y});
    EXPECT_EQ(3.5F, float{seen.z});
}

TEST(event_fn, keeps_the_second_of_two_events) {
    event_slot<vantu_orvanta_config_gravity_compensation> slot;
    std::mutex app_mutex;
    client unconnected{{}};
    const auto capture = event_fn(&slot, app_mutex);
    capture(unconnected, 5, {1, 0.5F});
    capture(unconnected, 5, {0, 0.75F});
    EXPECT_EQ(0, slot.load().enabled);
    EXPECT_EQ(0.75F, float{slot.load().scaling_factor});
}

TEST(event_fn, takes_events_of_any_device) {
    event_slot<vantu_orvanta_config_torque_scaling> slot;
    std::mutex app_mutex;
    client unconnected{{}};
    const auto capture = event_fn(&slot, app_mutex);
    capture(unconnected, 5, {1});
    capture(unconnected, 6, {3});
    EXPECT_EQ(3, slot.load().enabled);
}

TEST(event_fn, waits_for_the_mutex_that_readers_do_not_need) {
    event_slot<vantu_orvanta_status_power_supply> slot;
    std::mutex app_mutex;
    client unconnected{{}};
    expect_to_wait_for(app_mutex, [&] {
        EXPECT_EQ(0, slot.load().state);
        event_fn(&slot, app_mutex)(unconnected, 5, {9});
    });
    EXPECT_EQ(9, slot.load().state);
}

TEST_F(callbacks, for_a_listed_device_waits_for_the_mutex) {
    connect_with("");
    state.current_device_id = 5;
    service.send(datagram(device_added(5, 1, 0x1A2B, 0)));
    expect_to_wait_for(state.app_mutex, [this] { dispatch_one(); });
    EXPECT_TRUE(state.device_connected);
}

TEST_F(callbacks, for_a_removed_device_waits_for_the_mutex) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    service.send(datagram(" FF 11 0400 00 05000000"));
    expect_to_wait_for(state.app_mutex, [this] { dispatch_one(); });
    EXPECT_FALSE(state.device_connected);
}

TEST(callbacks_of_an_unconnected_client, throw_what_opening_the_device_gives) {
    application_state state;
    recording_console diagnostics;
    client unconnected{{}};
    const auto config = make_callbacks(state, diagnostics.terminal());
    state.current_device_id = 5;
    EXPECT_THAT(
        [&] { config.on_device(unconnected, 5, {}); },
        ThrowsMessage<vantu::orvanta::exception>(StrEq("client.device_open: invalid connection state")));
    EXPECT_TRUE(state.device_connected);
    EXPECT_TRUE(state.app_mutex.try_lock());
    state.app_mutex.unlock();
}

TEST(callbacks_of_the_tool, are_registered_for_the_events_it_uses_and_no_other) {
    application_state state;
    recording_console diagnostics;
    const auto config = make_callbacks(state, diagnostics.terminal());
    EXPECT_TRUE(config.on_disconnected && config.on_device && config.on_device_removed &&
                config.on_device_opened && config.on_device_closed && config.on_cursor_state &&
                config.on_palmetron_state && config.on_orientation && config.on_config_save &&
                config.on_config_gravity_compensation && config.on_config_torque_scaling &&
                config.on_status_motor_current && config.on_status_power_supply && config.on_error);
    EXPECT_FALSE(config.on_ack || config.on_orvanta3_info || config.on_palmetron_info ||
                 config.on_device_block || config.on_cursor_state_b || config.on_config_handedness ||
                 config.on_service_stream_a || config.on_service_stream_b || config.on_table_block_128 ||
                 config.on_table_block_301);
}

} // namespace
