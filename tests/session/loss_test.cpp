// The end of a session's connection: noticed whatever ends it, told once, and mended where that was asked
// for.
#include "session_fixture.hpp"
#include "support/service_session.hpp"

#include <atomic>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::error_code;
using vantu::orvanta::session;

// A service that is merely slow still answers within three of these.
constexpr auto often = 250ms;

TEST(a_lost_connection, is_told_once_after_a_goodbye) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.open(1).value();
    service->command("drop @op=47,dir=out");
    connected.get_orientation(1, [&](session&, const auto& answer) {
        EXPECT_EQ(answer.error(), error_code::disconnected_from_service);
        told.write("answered");
    });
    service->command("quit");
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(told.lost_with(), error_code::disconnected_from_service);
    const auto lines = told.lines();
    EXPECT_EQ(lines, (std::vector<std::string>{"arrival 1", "answered", "lost"}));
    EXPECT_FALSE(connected.is_connected());
    EXPECT_TRUE(connected.devices().empty());
    EXPECT_EQ(connected.get_orientation(1).error(), error_code::disconnected_from_service);
    EXPECT_EQ(connected.wait_for_device(patience).error(), error_code::disconnected_from_service);
}

// A request whose failure is to be the first sign of the loss.
class a_request_that_is_lost : public testing::Test {
  protected:
    void ask(error_code expected) {
        connected_.get_orientation(1, [this, expected](session& same, const auto& answer) {
            EXPECT_EQ(answer.error(), expected);
            EXPECT_FALSE(same.is_connected());
            EXPECT_TRUE(same.devices().empty());
            told_.write("answered");
        });
    }
    void expect_the_loss_after_the_answer() {
        ASSERT_TRUE(told_.has("lost"));
        EXPECT_EQ(told_.lines(), (std::vector<std::string>{"arrival 1", "answered", "lost"}));
    }

    simulated_service service;

  private:
    diary told_;
    session connected_{options_for(service, told_.callbacks())};
};

TEST_F(a_request_that_is_lost, finds_no_connection_when_the_goodbye_fails_it) {
    service->command("drop @op=47");
    ask(error_code::disconnected_from_service);
    service->command("goodbye");
    expect_the_loss_after_the_answer();
}

TEST_F(a_request_that_is_lost, finds_no_connection_when_the_service_knows_the_client_no_more) {
    service->command("restart");
    ask(error_code::client_not_connected);
    expect_the_loss_after_the_answer();
}

TEST(a_lost_connection, is_noticed_when_the_service_was_started_anew) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.probe_interval = often;
    const session connected(options);
    service->command("restart");
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(told.lost_with(), error_code::client_not_connected);
}

TEST(a_lost_connection, is_noticed_when_the_service_was_started_anew_while_no_device_is_there) {
    auto settings = simulated_service::quiet();
    settings.orvanta3_count = 0;
    simulated_service service(settings);
    diary told;
    auto options = options_for(service, told.callbacks());
    options.probe_interval = often;
    const session connected(options);
    service->command("restart");
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(told.lost_with(), error_code::client_not_connected);
}

TEST(a_lost_connection, is_noticed_when_the_service_falls_silent) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.probe_interval = 50ms;
    const session connected(options);
    service->command("drop");
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(told.lost_with(), error_code::timed_out);
}

TEST(a_lost_connection, is_noticed_when_the_service_is_killed) {
    diary told;
    std::optional<scripted_service> service(std::in_place);
    service->respond_with([](const bytes& request) {
        return request.size() > 100 ? std::vector<bytes>{acceptance()} : std::vector<bytes>{};
    });
    session::options options;
    options.name = "session test";
    options.callbacks = told.callbacks();
    options.service_port = service->port();
    options.probe_interval = 50ms;
    const session connected(options);
    service->close();
    ASSERT_TRUE(told.has("lost"));
    // The system tells of the closed port, or, as Wine does, does not.
    EXPECT_TRUE(told.lost_with() == error_code::disconnected_from_service ||
                told.lost_with() == error_code::timed_out);
}

TEST(a_connection, outlives_silence_of_a_service_that_answers_probes) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.probe_interval = often;
    session connected(options);
    // Each answer is an event. Without them the fourth question would never be asked.
    ASSERT_TRUE(comes_about([&] { return connected.count().events > 4; }));
    EXPECT_TRUE(connected.open(1));
    EXPECT_EQ(told.times("lost"), 0);
}

TEST(a_connection, outlives_datagrams_that_make_no_sense) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.open(1).value();
    service->command("truncate 3@op=47,dir=out");
    EXPECT_EQ(connected.get_orientation(1, 50ms).error(), error_code::timed_out);
    service->command("heal");
    EXPECT_TRUE(connected.get_orientation(1));
    EXPECT_GE(connected.count().rejected, 1U);
    EXPECT_EQ(told.times("lost"), 0);
}

TEST(a_session_that_reconnects, brings_devices_and_openings_back) {
    auto settings = simulated_service::quiet();
    settings.rate_hz = 1000;
    simulated_service service(settings);
    std::atomic<std::uint64_t> samples{0};
    diary told;
    auto options = options_for(service, told.callbacks());
    options.callbacks.on_cursor = [&](session&, const auto&) { ++samples; };
    options.probe_interval = often;
    options.reconnect = true;
    session connected(options);
    connected.open(1).value();
    ASSERT_TRUE(comes_about([&] { return samples > 0; }));
    service->command("restart");
    ASSERT_TRUE(told.has("lost"));
    const std::uint64_t before = samples;
    ASSERT_TRUE(told.has("reconnected"));
    ASSERT_TRUE(told.has("arrival 1", 2));
    EXPECT_TRUE(comes_about([&] { return samples > before; }));
    EXPECT_TRUE(connected.get_orientation(1));
    EXPECT_EQ(connected.count().connections, 2U);
}

TEST(a_session_that_reconnects, asks_anew_for_what_the_lost_service_had_confirmed) {
    simulated_service service;
    diary told;
    auto options = options_for(service, told.callbacks());
    options.probe_interval = often;
    options.reconnect = true;
    session connected(options);
    connected.open(1).value();
    EXPECT_FALSE(connected.set_gravity_compensation(1, {false, 0.25F}).value().enabled);
    service->command("restart");
    ASSERT_TRUE(told.has("reconnected"));
    ASSERT_TRUE(told.has("arrival 1", 2));
    connected.open(1).value();
    EXPECT_TRUE(connected.set_scaling_factor(1, 0.5F).value().enabled);
}

TEST(a_session, says_what_to_do_when_no_service_is_there) {
    session::options options;
    options.name = "session test";
    options.connect_timeout = 20ms;
    options.service_port = scripted_service().port(); // closed again
    try {
        const session connected(options);
        FAIL() << "there is no service";
    } catch (const vantu::orvanta::exception& thrown) {
        EXPECT_EQ(thrown.code(), std::uint32_t{vantu_orvanta_timed_out});
        EXPECT_EQ(std::string(thrown.what()),
                  "connect: operation timed out: no service answers on port " + options.service_port);
    }
}

TEST(a_session, cuts_a_name_that_the_service_has_no_room_for) {
    simulated_service service;
    auto options = options_for(service);
    options.name = std::string(100, 'n');
    const session connected(options);
    EXPECT_NE(service->status().find("'" + std::string(31, 'n') + "'"), std::string::npos);
}

} // namespace
