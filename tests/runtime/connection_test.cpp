// The life of a connection under the poll: keep-alives, the service's goodbye, its death, and disconnecting.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" int orvanta_c11_calls_without_a_connection(void);

namespace {

using namespace orvanta_tests;
using clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint64_t tick_ns = 200'000;

// Polls, as the polling thread would, until the condition holds.
template <typename Condition> void poll_until(vantu_orvanta_context* context, Condition condition) {
    const auto deadline = clock::now() + seconds(30);
    while (!condition()) {
        ASSERT_LT(clock::now(), deadline);
        ASSERT_EQ(poll_once(context).code, vantu_orvanta_success);
        vantu_orvanta_sleep(tick_ns);
    }
}

TEST(keep_alive, goes_out_once_a_second_and_no_more) {
    const auto before_connect = clock::now();
    service_session session;
    poll_until(session.context, [&] { return session.service.keep_alives().size() == 3; });
    const auto elapsed = clock::now() - before_connect;
    EXPECT_GE(elapsed, seconds(3));
    EXPECT_LE(elapsed, seconds(10));
}

TEST(keep_alive, goes_out_at_once_when_a_second_passed_without_a_poll) {
    service_session session;
    vantu_orvanta_sleep(1'000'000'000);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_TRUE(wait_until([&] { return session.service.keep_alives().size() == 1; }));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_EQ(session.service.keep_alives().size(), 1U);
}

TEST(keep_alive, is_put_off_by_a_request_for_a_full_second) {
    service_session session;
    const auto start = clock::now();
    clock::time_point last_request;
    while (clock::now() - start < milliseconds(1600)) {
        session.service.expect(datagram({op(64, 1, {5, 0, 0, 0})}));
        last_request = clock::now();
        ASSERT_EQ(vantu_orvanta_config_save_request(session.context, 5, 1), vantu_orvanta_success);
        ASSERT_EQ(poll_once(session.context).code, vantu_orvanta_success);
        vantu_orvanta_sleep(50'000'000);
    }
    EXPECT_EQ(session.service.keep_alives().size(), 0U);
    poll_until(session.context, [&] { return !session.service.keep_alives().empty(); });
    EXPECT_GE(session.service.keep_alives().front() - last_request, seconds(1));
}

TEST(keep_alive, is_put_off_by_no_failed_request) {
    service_session session;
    vantu_orvanta_sleep(1'000'000'000);
    EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 0, 1), vantu_orvanta_invalid_argument);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_TRUE(wait_until([&] { return session.service.keep_alives().size() == 1; }));
}

TEST(goodbye_of_the_service, is_event_2_once_and_then_3_for_every_call) {
    service_session session;
    session.service.push(datagram({op(6, 9), op(2, 1)}));
    const polled last = poll_until_something(session.context);
    EXPECT_EQ(last.code, vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(last.event)), hex(join({u32(2), filled(306, 0)})));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_device_open(session.context, 5, 0, 0), vantu_orvanta_invalid_connection_state);
    std::uint32_t id = 0;
    std::size_t count = 1;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, &id, &count), vantu_orvanta_invalid_connection_state);
    vantu_orvanta_device device{};
    EXPECT_EQ(vantu_orvanta_device_info(session.context, 5, &device), vantu_orvanta_invalid_connection_state);
}

TEST(goodbye_of_the_service, drops_what_followed_it_before_the_next_connect) {
    service_session session;
    session.service.push(datagram({op(6, 0), op(2, 1)}));
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
    session.service.expect(connect_request()).answer(acceptance());
    ASSERT_EQ(connect_to(session.service, session.context), vantu_orvanta_success);
    EXPECT_EQ(poll_once(session.context).event.event_type, +vantu_orvanta_event_none);
}

TEST(an_unconnected_context, answers_a_poll_with_3) {
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
    vantu_orvanta_disconnect(context);
}

TEST(disconnect, says_goodbye_and_returns_when_the_service_answers) {
    service_session session;
    session.service.expect(goodbye()).answer(datagram({op(81, 0, {5, 0, 0, 0, 1}), op(6, 0)}));
    vantu_orvanta_disconnect(session.context);
    session.context = nullptr;
}

TEST(disconnect, waits_about_100_ms_for_a_silent_service) {
    service_session session;
    session.service.expect(goodbye());
    const auto start = clock::now();
    vantu_orvanta_disconnect(session.context);
    session.context = nullptr;
    const auto elapsed = clock::now() - start;
    EXPECT_GE(elapsed, milliseconds(100));
    EXPECT_LE(elapsed, seconds(2));
}

TEST(disconnect, does_not_wait_once_an_answer_makes_no_sense) {
    service_session session;
    const log_capture quiet;
    session.service.expect(goodbye()).answer({1, 2, 3});
    vantu_orvanta_disconnect(session.context);
    session.context = nullptr;
}

TEST(disconnect, says_nothing_after_the_goodbye_of_the_service) {
    service_session session;
    session.service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
    vantu_orvanta_disconnect(session.context);
    session.context = nullptr;
}

TEST(disconnect, frees_a_context_that_never_connected) {
    vantu_orvanta_disconnect(vantu_orvanta_context_create());
}

TEST(disconnect, ignores_null) {
    vantu_orvanta_disconnect(nullptr);
}

TEST(sleep, lasts_at_least_its_duration) {
    const auto start = clock::now();
    EXPECT_EQ(vantu_orvanta_sleep(3'000'000), 0);
    EXPECT_GE(clock::now() - start, milliseconds(3));
}

TEST(sleep, returns_at_once_for_0) {
    EXPECT_EQ(vantu_orvanta_sleep(0), 0);
}

TEST(flat_api, is_compiled_as_c11_and_every_function_answers_there) {
    EXPECT_EQ(orvanta_c11_calls_without_a_connection(), 0) << "the line of flat_api_c11.c that failed";
}

} // namespace
