// Sessions that meet what few services send, and programs that ask at odd times.
#include "scripted_session.hpp"

#include <atomic>
#include <future>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::device;
using vantu::orvanta::error_code;
using vantu::orvanta::session;

TEST(a_session, knows_a_device_that_is_listed_again_for_the_same) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    session connected(options_for(service, told.callbacks()));
    ASSERT_TRUE(told.has("arrival 5"));
    service.push(datagram({device_listed(5, 1), details_of(5)}));
    EXPECT_TRUE(connected.open(5));
    EXPECT_EQ(told.lines(), std::vector<std::string>{"arrival 5"});
}

TEST(a_session, counts_details_of_an_unknown_device_as_rejected) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    session connected(options_for(service));
    service.push(datagram({details_of(9)}));
    EXPECT_TRUE(comes_about([&] { return connected.count().rejected == 1; }));
    EXPECT_TRUE(connected.open(5));
}

TEST(a_session, counts_states_that_no_callback_asks_for) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    const session connected(options_for(service));
    service.push(datagram({op(33, 0, join({id_5, bytes(24)}))}));
    EXPECT_TRUE(comes_about([&] { return connected.count().events == 1; }));
    EXPECT_EQ(connected.count().rejected, 0U);
}

// A service that answers the first opening with a removal and, where it is told, the device's return before
// it.
class a_device_gone_before_its_opening_is_answered : public testing::Test {
  protected:
    void open_and_plug_in_again(const bytes& back) {
        scripted_service service;
        service.respond_with([&](const bytes& request) -> std::vector<bytes> {
            if (request.at(7) == 18 && ++openings == 1) {
                return {datagram({op(17, 0, id_5), back, op(19, request.at(10), id_5)})};
            }
            return request.at(7) == 47 ? std::vector<bytes>{datagram({op(2, request.at(10))})}
                                       : service_of_device_5()(request);
        });
        diary told;
        session connected(options_for(service, told.callbacks()));
        EXPECT_TRUE(connected.open(5));
        if (back.empty()) {
            service.push(datagram({device_listed(5, 1), details_of(5)}));
        }
        EXPECT_TRUE(told.has("arrival 5", 2));
        // Asked twice: an opening by the session's thread comes before the second.
        EXPECT_EQ(connected.get_orientation(5).error(), error_code::protocol_parse_failed);
        EXPECT_EQ(connected.get_orientation(5).error(), error_code::protocol_parse_failed);
    }

    std::atomic<int> openings{0};
};

TEST_F(a_device_gone_before_its_opening_is_answered, is_not_kept_open) {
    open_and_plug_in_again({});
    EXPECT_EQ(openings, 1);
}

TEST_F(a_device_gone_before_its_opening_is_answered, is_kept_open_when_it_is_back) {
    open_and_plug_in_again(join({device_listed(5, 1), details_of(5)}));
    EXPECT_EQ(openings, 2);
}

TEST(a_session, takes_all_that_has_come_while_a_callback_ran) {
    constexpr int states = 600;
    scripted_service service;
    service.respond_with(service_of_device_5());
    std::promise<void> all_sent;
    diary told;
    auto callbacks = told.callbacks();
    std::uint64_t last = 0;
    callbacks.on_cursor = [&](session&, const vantu::orvanta::cursor_sample& sample) {
        if (sample.number == 1) {
            EXPECT_EQ(all_sent.get_future().wait_for(patience), std::future_status::ready);
        }
        EXPECT_EQ(sample.number, ++last);
        if (sample.number == states) {
            told.write("last state");
        }
    };
    const session connected(options_for(service, callbacks));
    const bytes state = op(33, 0, join({id_5, bytes(24)}));
    for (int i = 0; i < states / 10; ++i) {
        service.push(datagram({state, state, state, state, state, state, state, state, state, state}));
    }
    all_sent.set_value();
    EXPECT_TRUE(told.has("last state"));
}

TEST(a_lost_connection, is_noticed_when_the_service_does_not_know_the_client) {
    scripted_service service;
    service.respond_with(service_of_device_5([](const bytes& request) -> std::vector<bytes> {
        if (request.at(7) == 47) {
            return {datagram({op(240, request.at(10), join({id_5, {0xD1}}))})};
        }
        return {};
    }));
    diary told;
    session connected(options_for(service, told.callbacks()));
    EXPECT_EQ(connected.get_orientation(5).error(), error_code::unknown_client_id);
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(told.lost_with(), error_code::unknown_client_id);
}

TEST(a_lost_connection, needs_no_callback) {
    simulated_service service;
    auto options = options_for(service);
    options.reconnect = true;
    options.probe_interval = 250ms;
    session connected(options);
    service->command("restart");
    EXPECT_TRUE(comes_about([&] { return connected.count().connections == 2; }));
    EXPECT_TRUE(connected.wait_for_device(patience));
}

TEST(a_lost_connection, lets_requests_with_a_handler_fail) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    service->command("quit");
    ASSERT_TRUE(told.has("lost"));
    const session::handler<void> expected = [&](session&, const auto& outcome) {
        EXPECT_EQ(outcome.error(), error_code::disconnected_from_service);
        told.write("answered");
    };
    connected.open(1, expected);
    connected.close(1, expected);
    EXPECT_TRUE(told.has("answered", 2));
}

TEST(wait_for_device, ends_with_the_connection) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    const auto none = [&](const device&) {
        service->command("quit");
        EXPECT_TRUE(told.has("lost"));
        return false;
    };
    EXPECT_EQ(connected.wait_for_device(patience, none).error(), error_code::disconnected_from_service);
}

TEST(a_session_that_reconnects, tries_again_when_it_is_refused) {
    int connects = 0;
    scripted_service service;
    service.respond_with([&](const bytes& request) -> std::vector<bytes> {
        if (request.at(7) == 3 && ++connects == 2) {
            return {datagram({op(240, 0, {0, 0, 0, 0, 178})})};
        }
        return service_of_device_5()(request);
    });
    diary told;
    auto options = options_for(service, told.callbacks());
    options.reconnect = true;
    session connected(options);
    service.push(goodbye_received());
    ASSERT_TRUE(told.has("lost"));
    EXPECT_EQ(connected.wait_for_device(20ms).error(), error_code::timed_out);
    ASSERT_TRUE(told.has("reconnected"));
    EXPECT_EQ(connected.count().connections, 2U);
    EXPECT_TRUE(connected.open(5));
}

TEST(setting_one_field, needs_no_handler) {
    simulated_service service;
    session connected(options_for(service));
    connected.set_scaling_factor(1, 0.5F, nullptr); // refused: not open
    connected.open(1).value();
    EXPECT_EQ(connected.get_gravity_compensation(1)->scaling_factor, 0.75F);
    connected.set_scaling_factor(1, 0.5F, nullptr);
    EXPECT_TRUE(comes_about([&] { return connected.get_gravity_compensation(1)->scaling_factor == 0.5F; }));
}

TEST(closing, of_an_unknown_device_is_for_the_service_to_judge) {
    simulated_service service;
    session connected(options_for(service));
    EXPECT_EQ(connected.close(77).error(), error_code::invalid_device_id);
}

} // namespace
