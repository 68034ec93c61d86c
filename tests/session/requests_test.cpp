// The requests of a session: both forms, and that each has exactly one outcome.
#include "session_fixture.hpp"

#include <atomic>
#include <cmath>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::error_code;
using vantu::orvanta::gravity_compensation;
using vantu::orvanta::handedness;
using vantu::orvanta::result;
using vantu::orvanta::session;

TEST(a_waiting_request, returns_what_the_service_answers) {
    simulated_service service;
    session connected(options_for(service));
    connected.open(1).value();
    const auto orientation = connected.get_orientation(1).value();
    EXPECT_NEAR(
        std::hypot(std::hypot(orientation.r, orientation.x), std::hypot(orientation.y, orientation.z)), 1.0,
        1e-3);
    const gravity_compensation gravity = connected.get_gravity_compensation(1).value();
    EXPECT_TRUE(gravity.enabled);
    EXPECT_EQ(gravity.scaling_factor, 0.75F);
    EXPECT_EQ(connected.set_gravity_compensation(1, {false, 0.25F}).value().scaling_factor, 0.25F);
    EXPECT_FALSE(connected.get_gravity_compensation(1).value().enabled);
    EXPECT_TRUE(connected.get_torque_scaling(1).value().enabled);
    EXPECT_FALSE(connected.set_torque_scaling(1, false).value().enabled);
    EXPECT_FALSE(connected.get_torque_scaling(1).value().enabled);
    EXPECT_EQ(connected.set_handedness(1, handedness::left).value(), handedness::left);
    EXPECT_TRUE(comes_about([&] { return connected.devices().at(0).handedness == handedness::left; }));
    EXPECT_EQ(connected.save(1).value().saved, 1);
    EXPECT_TRUE(connected.close(1));
    EXPECT_EQ(connected.get_orientation(1).error(), error_code::device_not_opened);
}

TEST(a_waiting_request, says_what_was_refused_and_what_to_do) {
    simulated_service service;
    session connected(options_for(service));
    const auto refused = connected.get_torque_scaling(1);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), error_code::device_not_opened);
    EXPECT_EQ(refused.message(), "get_torque_scaling of device 1: device was not opened: open it first");
    try {
        (void)refused.value();
        FAIL() << "a failure has no value";
    } catch (const vantu::orvanta::exception& thrown) {
        EXPECT_EQ(thrown.code(), 177U);
        EXPECT_EQ(std::string(thrown.what()), refused.message());
    }
}

TEST(a_waiting_request, ends_when_its_time_is_up_and_not_before) {
    simulated_service service;
    session connected(options_for(service));
    connected.open(1).value();
    service->command("drop @op=47,dir=out");
    // The shortest of several, because the machine may be slow now and then: the thread would sleep for up to
    // a second.
    std::chrono::nanoseconds shortest = patience;
    for (int i = 0; i < 10 && shortest > 500ms; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(connected.get_orientation(1, 50ms).error(), error_code::timed_out);
        shortest = std::min(shortest, std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin));
    }
    EXPECT_GE(shortest, 50ms);
    EXPECT_LE(shortest, 500ms);
}

TEST(a_waiting_request, refuses_device_id_0_and_no_hand) {
    simulated_service service;
    session connected(options_for(service));
    EXPECT_EQ(connected.open(0).error(), error_code::invalid_argument);
    EXPECT_EQ(connected.set_handedness(1, handedness::none).error(), error_code::invalid_argument);
}

TEST(a_waiting_request, fails_at_once_where_no_answer_can_come) {
    simulated_service service;
    std::optional<error_code> waiting;
    std::optional<error_code> device;
    diary told;
    auto callbacks = told.callbacks();
    callbacks.on_arrival = [&](session& here, const vantu::orvanta::device& one) {
        waiting = here.open(one.id).error();
        device = here.wait_for_device(patience).error();
        told.write("tried");
    };
    const session connected(options_for(service, callbacks));
    ASSERT_TRUE(told.has("tried"));
    EXPECT_EQ(waiting, error_code::invalid_argument);
    EXPECT_EQ(device, error_code::invalid_argument);
}

TEST(setting_one_field, keeps_the_other_as_the_service_last_confirmed_it) {
    simulated_service service;
    session connected(options_for(service));
    connected.open(1).value();
    // Not known yet: asked for first.
    gravity_compensation now = connected.set_scaling_factor(1, 0.5F).value();
    EXPECT_TRUE(now.enabled);
    EXPECT_EQ(now.scaling_factor, 0.5F);
    now = connected.set_gravity_compensation_enabled(1, false).value();
    EXPECT_FALSE(now.enabled);
    EXPECT_EQ(now.scaling_factor, 0.5F);
    now = connected.set_scaling_factor(1, 0.25F).value();
    EXPECT_FALSE(now.enabled);
    // A refused value was not confirmed.
    EXPECT_EQ(connected.set_scaling_factor(1, 7.0F).error(), error_code::invalid_request_argument);
    now = connected.set_gravity_compensation_enabled(1, true).value();
    EXPECT_EQ(now.scaling_factor, 0.25F);
}

TEST(setting_one_field, has_one_time_for_asking_and_setting) {
    simulated_service service;
    session connected(options_for(service));
    connected.open(1).value();
    service->command("drop @op=66,dir=out");
    const auto outcome = connected.set_scaling_factor(1, 0.5F, 50ms);
    EXPECT_EQ(outcome.error(), error_code::timed_out);
    EXPECT_EQ(outcome.message(), "set_scaling_factor of device 1: operation timed out");
}

TEST(a_request_with_a_handler, is_ended_on_the_sessions_thread_one_by_one) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.open(1).value();
    std::atomic<int> inside{0};
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 20; ++i) {
        connected.get_orientation(1, [&](session&, const result<vantu::orvanta::orientation>& answer) {
            EXPECT_EQ(++inside, 1);
            EXPECT_TRUE(answer);
            {
                const std::lock_guard lock(mutex);
                threads.push_back(std::this_thread::get_id());
            }
            --inside;
            told.write("answered");
        });
    }
    ASSERT_TRUE(told.has("answered", 20));
    for (const std::thread::id& thread : threads) {
        EXPECT_EQ(thread, threads.front());
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

TEST(a_request_with_a_handler, may_be_sent_by_a_handler) {
    simulated_service service;
    diary told;
    session connected(options_for(service, told.callbacks()));
    connected.open(1, [&](session& here, const result<void>& opened) {
        EXPECT_TRUE(opened);
        here.save(1, [&](session&, const auto& saved) {
            EXPECT_TRUE(saved);
            told.write("saved");
        });
    });
    EXPECT_TRUE(told.has("saved"));
}

// Every request once, from four threads, against a service that loses, delays and refuses, and that goes away
// in the middle: the number of outcomes is the number of requests.
TEST(a_request_with_a_handler, has_exactly_one_outcome_whatever_the_service_does) {
    simulated_service service;
    constexpr int senders = 4;
    constexpr int requests_each = 200;
    std::atomic<int> outcomes{0};
    {
        auto options = options_for(service);
        options.request_timeout = 100ms;
        session connected(options);
        connected.open(1).value();
        service->command("drop 0.2");
        service->command("delay 1-50@dir=out");
        std::vector<std::thread> threads;
        for (int sender = 0; sender < senders; ++sender) {
            threads.emplace_back([&, sender] {
                for (int i = 0; i < requests_each; ++i) {
                    connected.get_torque_scaling(1, [&](session&, const auto&) { ++outcomes; });
                    if (sender == 0 && i == requests_each / 2) {
                        service->command("restart");
                    }
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    // The destructor has ended those that were still waiting.
    EXPECT_EQ(outcomes, senders * requests_each);
}

TEST(a_request_with_a_handler, is_ended_by_the_destructor) {
    simulated_service service;
    std::optional<error_code> ended_with;
    {
        session connected(options_for(service));
        connected.open(1).value();
        service->command("drop @op=47,dir=out");
        connected.get_orientation(1, [&](session&, const auto& answer) { ended_with = answer.error(); });
    }
    EXPECT_EQ(ended_with, error_code::disconnected_from_service);
}

TEST(a_session, ends_right_while_an_exception_unwinds) {
    simulated_service service;
    std::atomic<int> outcomes{0};
    EXPECT_THROW(
        {
            session connected(options_for(service));
            connected.open(1, [&](session&, const auto&) { ++outcomes; });
            throw std::runtime_error("of the program");
        },
        std::runtime_error);
    EXPECT_EQ(outcomes, 1);
}

} // namespace
