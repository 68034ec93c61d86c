// Sessions whose thread is busy, whose service answers strangely, or that are asked for one thing while
// another is under way.
#include "scripted_session.hpp"

#include <atomic>
#include <future>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::device;
using vantu::orvanta::error_code;
using vantu::orvanta::gravity_compensation;
using vantu::orvanta::result;
using vantu::orvanta::session;

TEST(a_waiting_request, ends_when_its_time_is_up_while_a_callback_runs) {
    simulated_service service;
    std::promise<void> inside;
    std::promise<void> enough;
    session connected(options_for(service));
    connected.open(1).value();
    connected.get_orientation(1, [&](session&, const auto&) {
        inside.set_value();
        EXPECT_EQ(enough.get_future().wait_for(patience), std::future_status::ready);
    });
    inside.get_future().wait();
    EXPECT_EQ(connected.get_orientation(1, 20ms).error(), error_code::timed_out);
    enough.set_value();
}

TEST(a_session, has_the_devices_of_the_acceptance_before_it_tells_of_any_event) {
    scripted_service service;
    service.respond_with(service_of_device_5([](const bytes& request) -> std::vector<bytes> {
        std::vector<bytes> answers;
        if (request.at(7) == 3) {
            answers = service_of_device_5()(request);
            answers.push_back(datagram({op(2, 9)}));
        }
        return answers;
    }));
    std::promise<void> built;
    const std::shared_future<void> is_built = built.get_future().share();
    session::callbacks told;
    told.on_event = [&](session&, const auto&) {
        EXPECT_EQ(is_built.wait_for(patience), std::future_status::ready);
    };
    const session connected(options_for(service, std::move(told)));
    EXPECT_EQ(connected.devices().size(), 1U);
    built.set_value();
}

// The shortest of several, because the machine may be slow now and then: the thread would sleep for up to a
// second.
TEST(a_request_with_a_handler, is_told_of_its_deadline_in_time) {
    simulated_service service;
    auto options = options_for(service);
    options.probe_interval = 0ns;
    session connected(options);
    connected.open(1).value();
    service->command("drop @op=47,dir=out");
    std::chrono::nanoseconds shortest = patience;
    for (int i = 0; i < 10 && shortest > 500ms; ++i) {
        std::promise<error_code> outcome;
        std::this_thread::sleep_for(20ms); // the thread sleeps by then, until the next keep-alive
        const auto begin = std::chrono::steady_clock::now();
        connected.get_orientation(
            1, [&](session&, const auto& answer) { outcome.set_value(answer.error()); }, 50ms);
        EXPECT_EQ(outcome.get_future().get(), error_code::timed_out);
        shortest = std::min(shortest, std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin));
    }
    EXPECT_GE(shortest, 50ms);
    EXPECT_LE(shortest, 500ms);
}

TEST(two_sessions, of_one_process_do_not_touch_each_other) {
    simulated_service service;
    session first(options_for(service));
    first.open(1).value();
    std::thread ending([&] {
        for (int i = 0; i < 20; ++i) {
            session second(options_for(service));
            second.open(1).value();
        }
    });
    for (int i = 0; i < 200; ++i) {
        EXPECT_TRUE(first.get_orientation(1));
    }
    ending.join();
    EXPECT_TRUE(first.get_orientation(1));
}

TEST(a_waiting_request, may_have_no_time_or_less) {
    simulated_service service;
    session connected(options_for(service));
    connected.open(1).value();
    for (const std::chrono::nanoseconds time : {0ns, -1ns, std::chrono::nanoseconds::min()}) {
        EXPECT_NE(connected.get_orientation(1, time).error(), error_code::disconnected_from_service);
        EXPECT_NE(connected.set_scaling_factor(1, 0.5F, time).error(), error_code::disconnected_from_service);
        EXPECT_EQ(connected.wait_for_device(time, [](const device&) { return false; }).error(),
                  error_code::timed_out);
    }
    EXPECT_TRUE(connected.get_orientation(1));
}

TEST(a_waiting_request, may_have_all_the_time_there_is) {
    simulated_service service;
    session connected(options_for(service));
    constexpr auto forever = std::chrono::nanoseconds::max();
    EXPECT_TRUE(connected.open(1, forever));
    EXPECT_TRUE(connected.set_scaling_factor(1, 0.5F, forever));
    EXPECT_TRUE(connected.wait_for_device(forever));
}

TEST(a_failure, names_the_request_that_a_lost_connection_has_ended) {
    simulated_service service;
    std::promise<std::string> message;
    session connected(options_for(service));
    connected.open(1).value();
    service->command("drop @op=47,dir=out");
    connected.get_orientation(1, [&](session&, const auto& answer) { message.set_value(answer.message()); });
    service->command("quit");
    EXPECT_EQ(message.get_future().get(), "get_orientation of device 1: disconnected from the service");
}

TEST(a_failure, says_how_the_connection_was_lost_without_a_goodbye) {
    simulated_service service;
    auto options = options_for(service);
    options.probe_interval = 100ms;
    session connected(options);
    connected.open(1).value();
    service->command("drop");
    EXPECT_EQ(
        connected.get_orientation(1).message(),
        "get_orientation of device 1: disconnected from the service: the service does not answer any more");
}

TEST(a_failure, is_never_a_success_whatever_status_the_service_sends) {
    scripted_service service;
    service.respond_with(service_of_device_5([](const bytes& request) -> std::vector<bytes> {
        if (request.at(7) == 20) {
            return {datagram({op(240, request.at(10), join({id_5, {0}}))})};
        }
        return {};
    }));
    session connected(options_for(service));
    const result<void> closed = connected.close(5);
    EXPECT_FALSE(closed);
    EXPECT_NE(closed.error(), error_code::success);
    EXPECT_NE(closed.message(), "");
}

TEST(a_waiting_request, says_so_when_the_service_acknowledges_and_sends_no_value) {
    scripted_service service;
    service.respond_with(service_of_device_5([](const bytes& request) -> std::vector<bytes> {
        if (request.at(7) == 47) {
            return {datagram({op(2, request.at(10))})};
        }
        return {};
    }));
    session connected(options_for(service));
    const auto answer = connected.get_orientation(5);
    EXPECT_EQ(answer.error(), error_code::protocol_parse_failed);
    EXPECT_EQ(answer.message(),
              "get_orientation of device 5: the service took the request and sent no value");
}

TEST(the_destructor, waits_for_the_callback_that_runs_and_no_other) {
    auto settings = simulated_service::quiet();
    settings.rate_hz = 1000;
    simulated_service service(settings);
    std::promise<void> inside;
    std::atomic<int> calls{0};
    session::callbacks callbacks;
    callbacks.on_cursor = [&](session& here, const auto&) {
        if (++calls == 1) {
            inside.set_value();
            // States pile up, until the destructor has begun.
            EXPECT_TRUE(comes_about([&] { return !here.is_connected(); }));
        }
    };
    {
        session connected(options_for(service, callbacks));
        connected.open(1).value();
        inside.get_future().wait();
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_EQ(calls, 1);
}

TEST(the_destructor, ends_requests_that_handlers_send_when_they_are_told_of_the_end) {
    simulated_service service;
    std::vector<error_code> outcomes;
    session::handler<vantu::orvanta::orientation> again = [&](session& here, const auto& answer) {
        outcomes.push_back(answer.error());
        if (outcomes.size() < 5) {
            here.get_orientation(1, again);
        }
    };
    {
        session connected(options_for(service));
        connected.open(1).value();
        service->command("drop @op=47,dir=out");
        connected.get_orientation(1, again);
    }
    EXPECT_EQ(outcomes, std::vector<error_code>(5, error_code::disconnected_from_service));
}

// A service that accepts the first connection alone, and never says a word after it.
TEST(a_session_that_reconnects, lets_nothing_wait_for_its_attempts) {
    std::atomic<int> connects{0};
    scripted_service service;
    service.respond_with([&](const bytes& request) -> std::vector<bytes> {
        return request.at(7) == 3 && ++connects == 1 ? std::vector<bytes>{acceptance()}
                                                     : std::vector<bytes>{};
    });
    std::promise<void> told;
    std::chrono::steady_clock::time_point end;
    {
        auto options = options_for(service);
        options.probe_interval = 10ms;
        options.reconnect = true;
        session connected(options);
        ASSERT_TRUE(comes_about([&] { return connects >= 2; }));
        const auto asked = std::chrono::steady_clock::now();
        EXPECT_EQ(connected.get_orientation(1).error(), error_code::disconnected_from_service);
        connected.get_orientation(1, [&](session&, const auto&) { told.set_value(); });
        told.get_future().wait();
        end = std::chrono::steady_clock::now();
        EXPECT_LE(end - asked, patience / 4); // an attempt may take an eighth of that
    }
    EXPECT_LE(std::chrono::steady_clock::now() - end, patience / 4);
}

TEST(the_constructor, waits_until_all_devices_have_arrived_that_were_listed) {
    // No details come of the second one.
    const bytes listing = acceptance_with(join({device_listed(5, 1), details_of(5), device_listed(6, 1)}));
    scripted_service service;
    service.respond_with([&](const bytes& request) -> std::vector<bytes> {
        return request.at(7) == 3 ? std::vector<bytes>{listing} : service_of_device_5()(request);
    });
    const session connected(options_for(service));
    EXPECT_EQ(connected.devices().size(), 2U);
}

TEST(a_session, lists_as_many_devices_as_there_are) {
    auto settings = simulated_service::quiet();
    settings.orvanta3_count = 40;
    simulated_service service(settings);
    const session connected(options_for(service));
    EXPECT_EQ(connected.devices().size(), 40U);
}

} // namespace
