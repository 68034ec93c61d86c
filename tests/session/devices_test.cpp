// A session's list of devices: each arrives once, however the service tells of it.
#include "session_fixture.hpp"

#include <atomic>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::device;
using vantu::orvanta::device_type;
using vantu::orvanta::error_code;
using vantu::orvanta::handedness;
using vantu::orvanta::service_simulator;
using vantu::orvanta::session;

service_simulator::settings two_devices(service_simulator::announce when) {
    service_simulator::settings settings = simulated_service::quiet();
    settings.palmetron_count = 1;
    settings.devices = when;
    return settings;
}

class sessions_devices : public testing::TestWithParam<service_simulator::announce> {};

TEST_P(sessions_devices, are_listed_when_the_constructor_returns) {
    simulated_service service(two_devices(GetParam()));
    const session connected(options_for(service));
    const std::vector<device> devices = connected.devices();
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0].type, device_type::orvanta3);
    EXPECT_EQ(devices[0].id, 1U);
    EXPECT_EQ(devices[0].short_id, 0x3001);
    EXPECT_EQ(devices[0].uuid, "6e2b8410-5f3c-4d71-9a03-c53800000001");
    EXPECT_EQ(devices[0].handedness, handedness::right);
    EXPECT_EQ(devices[1].type, device_type::palmetron);
    EXPECT_EQ(devices[1].handedness, handedness::none);
}

TEST_P(sessions_devices, arrive_once_each) {
    simulated_service service(two_devices(GetParam()));
    diary told;
    session connected(options_for(service, told.callbacks()));
    ASSERT_TRUE(told.has("arrival 1"));
    ASSERT_TRUE(told.has("arrival 1001"));
    // An answer comes after all that the service had to say before.
    ASSERT_TRUE(connected.open(1));
    EXPECT_EQ(told.times("arrival 1"), 1);
    EXPECT_EQ(told.times("arrival 1001"), 1);
}

INSTANTIATE_TEST_SUITE_P(by_announcement, sessions_devices,
                         testing::Values(service_simulator::announce::before,
                                         service_simulator::announce::after),
                         [](const auto& when) {
                             return when.param == service_simulator::announce::before
                                        ? "with_the_acceptance"
                                        : "after_the_acceptance";
                         });

TEST(a_session, tells_of_a_removal_once_and_of_the_next_arrival) {
    simulated_service service;
    diary told;
    const session connected(options_for(service, told.callbacks()));
    ASSERT_TRUE(told.has("arrival 1"));
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    EXPECT_TRUE(connected.devices().empty());
    service->command("plug orvanta3");
    ASSERT_TRUE(comes_about([&] { return connected.devices().size() == 1; }));
    EXPECT_EQ(told.times("removal 1"), 1);
}

TEST(a_session, opens_a_device_again_that_was_unplugged_and_plugged_in) {
    auto settings = simulated_service::quiet();
    settings.rate_hz = 1000;
    simulated_service service(settings);
    std::atomic<std::uint64_t> samples{0};
    diary told;
    auto callbacks = told.callbacks();
    callbacks.on_cursor = [&](session&, const auto&) { ++samples; };
    session connected(options_for(service, callbacks));
    connected.open(1).value();
    ASSERT_TRUE(comes_about([&] { return samples > 0; }));
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    const std::uint64_t before = samples;
    service->command("plug orvanta3");
    EXPECT_TRUE(comes_about([&] { return samples > before; }));
}

TEST(a_session, leaves_a_device_closed_that_the_program_has_closed) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.open(1).value();
    connected.close(1).value();
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    service->command("plug orvanta3");
    const device again = connected.wait_for_device(patience).value();
    // Asked twice, so that an opening that was on its way would have been answered.
    EXPECT_EQ(connected.get_orientation(again.id).error(), error_code::device_not_opened);
    EXPECT_EQ(connected.get_orientation(again.id).error(), error_code::device_not_opened);
}

TEST(a_session, numbers_and_times_cursor_samples) {
    auto settings = simulated_service::quiet();
    settings.rate_hz = 1000;
    simulated_service service(settings);
    std::mutex mutex;
    std::vector<vantu::orvanta::cursor_sample> samples;
    session::callbacks callbacks;
    callbacks.on_cursor = [&](session&, const vantu::orvanta::cursor_sample& sample) {
        const std::lock_guard lock(mutex);
        samples.push_back(sample);
    };
    const auto before = std::chrono::steady_clock::now();
    session connected(options_for(service, callbacks));
    connected.open(1).value();
    ASSERT_TRUE(comes_about([&] {
        const std::lock_guard lock(mutex);
        return samples.size() >= 20;
    }));
    connected.close(1).value();
    const auto after = std::chrono::steady_clock::now();
    const std::lock_guard lock(mutex);
    auto last = before;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].device_id, 1U);
        EXPECT_EQ(samples[i].stream, 1);
        EXPECT_EQ(samples[i].number, i + 1);
        EXPECT_GE(samples[i].received, last);
        last = samples[i].received;
    }
    EXPECT_LE(last, after);
    EXPECT_NE(samples.front().values[0], 0.0F);
}

TEST(wait_for_device, returns_the_first_orvanta3_unless_a_predicate_asks_for_another) {
    simulated_service service(two_devices(service_simulator::announce::before));
    session connected(options_for(service));
    EXPECT_EQ(connected.wait_for_device(patience).value().id, 1U);
    const auto grip = connected.wait_for_device(
        patience, [](const device& one) { return one.type == device_type::palmetron; });
    EXPECT_EQ(grip.value().id, 1001U);
}

TEST(wait_for_device, ends_with_the_arrival_that_it_waits_for) {
    auto settings = simulated_service::quiet();
    settings.orvanta3_count = 0;
    simulated_service service(settings);
    session connected(options_for(service));
    std::thread plugging([&] {
        std::this_thread::sleep_for(20ms);
        service->command("plug orvanta3");
    });
    EXPECT_TRUE(connected.wait_for_device(patience));
    plugging.join();
}

TEST(wait_for_device, times_out) {
    auto settings = simulated_service::quiet();
    settings.orvanta3_count = 0;
    simulated_service service(settings);
    session connected(options_for(service));
    const auto found = connected.wait_for_device(20ms);
    EXPECT_EQ(found.error(), error_code::timed_out);
    EXPECT_EQ(found.message(), "wait_for_device: operation timed out");
}

} // namespace
