// Devices that a session keeps open: opened again whenever they come back, until they are closed.
#include "scripted_session.hpp"

#include <atomic>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::device;
using vantu::orvanta::error_code;
using vantu::orvanta::session;

bool is_opened_by_itself(session& connected, std::uint32_t device_id) {
    return comes_about([&] { return connected.get_orientation(device_id).has_value(); });
}

TEST(a_device, stays_closed_that_was_closed_while_its_opening_was_under_way) {
    diary told;
    std::uint8_t opening_tag = 0;
    scripted_service service;
    // The opening is answered after the closing.
    service.respond_with([&, others = service_of_device_5()](const bytes& request) -> std::vector<bytes> {
        const std::uint8_t tag = request.at(10);
        switch (request.at(7)) {
        case 18:
            told.write("asked to open");
            opening_tag = tag;
            return {};
        case 20:
            return {datagram({op(21, tag, id_5), op(19, opening_tag, id_5)})};
        case 47:
            return {datagram({op(240, tag, join({id_5, {0xB1}}))})};
        default:
            return others(request);
        }
    });
    session connected(options_for(service, told.callbacks()));
    connected.open(5, [&](session&, const auto& opened) {
        EXPECT_TRUE(opened);
        told.write("opened");
    });
    connected.close(5).value();
    ASSERT_TRUE(told.has("opened"));
    service.push(datagram({op(17, 0, id_5), device_listed(5, 1), details_of(5)}));
    ASSERT_TRUE(told.has("arrival 5", 2));
    // Asked twice: an opening by the session's thread would have come before the second.
    EXPECT_EQ(connected.get_orientation(5).error(), error_code::device_not_opened);
    EXPECT_EQ(connected.get_orientation(5).error(), error_code::device_not_opened);
    EXPECT_EQ(told.times("asked to open"), 1);
}

TEST(a_device, is_kept_open_that_was_opened_after_it_was_closed) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.close(1, nullptr);
    connected.open(1).value();
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    service->command("plug orvanta3");
    EXPECT_TRUE(is_opened_by_itself(connected, connected.wait_for_device(patience).value().id));
}

TEST(a_device, is_kept_open_that_was_opened_before_it_had_arrived) {
    auto settings = simulated_service::quiet();
    settings.orvanta3_count = 0;
    simulated_service service(settings);
    diary told;
    auto callbacks = told.callbacks();
    callbacks.on_event = [&](session& here, const vantu_orvanta_event& event) {
        if (event.event_type == vantu_orvanta_event_device_added && told.times("listed") == 0) {
            here.open(event.device_id, [&](session&, const auto& opened) {
                EXPECT_TRUE(opened);
                told.write("opened");
            });
            told.write("listed");
        }
    };
    service->command("patch op.code=other@op=23");
    session connected(options_for(service, callbacks));
    service->command("plug orvanta3");
    // Without its details it would arrive later; the opening is answered before.
    ASSERT_TRUE(told.has("opened"));
    service->command("heal");
    const device first = connected.wait_for_device(patience).value();
    service->command("unplug " + std::to_string(first.id));
    ASSERT_TRUE(told.has("removal " + std::to_string(first.id)));
    service->command("plug orvanta3");
    EXPECT_TRUE(is_opened_by_itself(connected, connected.wait_for_device(patience).value().id));
}

TEST(a_device, is_opened_again_when_a_request_for_that_was_lost) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.request_timeout = 50ms;
    session connected(options);
    connected.open(1, patience).value();
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    service->command("drop @op=18,dir=in");
    service->command("plug orvanta3");
    const device again = connected.wait_for_device(patience).value();
    // More often than a session gives up after.
    EXPECT_EQ(connected.get_orientation(again.id, patience).error(), error_code::device_not_opened);
    std::this_thread::sleep_for(500ms);
    service->command("heal");
    EXPECT_TRUE(is_opened_by_itself(connected, again.id));
}

TEST(a_device, is_not_opened_again_after_it_was_closed_meanwhile) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.request_timeout = 50ms;
    session connected(options);
    connected.open(1, patience).value();
    service->command("unplug 1");
    ASSERT_TRUE(told.has("removal 1"));
    service->command("drop @op=18,dir=in");
    service->command("plug orvanta3");
    const device again = connected.wait_for_device(patience).value();
    EXPECT_FALSE(connected.close(again.id, patience)); // it was not open yet
    service->command("heal");
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(connected.get_orientation(again.id, patience).error(), error_code::device_not_opened);
}

TEST(another_device, that_is_listed_under_an_id_in_use_arrives_after_the_removal_of_the_first) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    const session connected(options_for(service, told.callbacks()));
    ASSERT_TRUE(told.has("arrival 5"));
    const std::string first = connected.devices().at(0).uuid;
    bytes other = device_listed(5, 1);
    other.back() = 0xAA;
    service.push(datagram({other, details_of(5)}));
    ASSERT_TRUE(told.has("arrival 5", 2));
    EXPECT_EQ(told.lines(), (std::vector<std::string>{"arrival 5", "removal 5", "arrival 5"}));
    EXPECT_NE(connected.devices().at(0).uuid, first);
}

} // namespace
