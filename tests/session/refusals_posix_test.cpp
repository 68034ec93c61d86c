// Sessions whose system refuses what they need of it.
#include "scripted_session.hpp"
#include "support/system_calls.hpp"

#include <cerrno>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::error_code;
using vantu::orvanta::session;

// As many failures in a row end the connection.
constexpr int too_many = 100;

// Nothing is sent but what the test asks for, and nothing is logged to standard output.
session::options quiet_options_for(const scripted_service& service, diary& told) {
    auto options = options_for(service, told.callbacks());
    options.keep_alive = 1h;
    options.log = [](vantu_orvanta_log_level, const char*) {};
    options.callbacks.on_lost = [&told](session&, const session::loss& why) {
        EXPECT_EQ(why.code, error_code::unexpected_error);
        told.write(why.message);
    };
    return options;
}

TEST(a_session, works_without_anything_to_wait_with) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    scripted_calls calls;
    calls.fail(system_call::epoll_create1, EMFILE, 1, scripted_calls::always);
    session connected(quiet_options_for(service, told));
    EXPECT_TRUE(connected.open(5));
    EXPECT_EQ(connected.get_orientation(5, 20ms).error(), error_code::timed_out);
    EXPECT_TRUE(connected.close(5));
    EXPECT_GE(calls.count(system_call::epoll_create1), 1);
}

TEST(a_session, is_lost_when_the_system_refuses_to_receive_again_and_again) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    const session connected(quiet_options_for(service, told));
    scripted_calls calls;
    calls.fail(system_call::recvfrom, ENOMEM, 1, scripted_calls::always);
    service.push(datagram({op(17, 0, id_5)}));
    EXPECT_TRUE(told.has("connection lost: the system refuses to receive"));
    EXPECT_GE(calls.count(system_call::recvfrom), too_many);
    EXPECT_FALSE(connected.is_connected());
}

TEST(a_session, outlives_refusals_to_receive_that_are_fewer) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    session connected(quiet_options_for(service, told));
    scripted_calls calls;
    for (int i = 1; i <= 2; ++i) {
        calls.fail(system_call::recvfrom, ENOMEM, 1, too_many - 1);
        service.push(datagram({op(17, 0, id_5), device_listed(5, 1), details_of(5)}));
        ASSERT_TRUE(told.has("removal 5", i));
    }
    EXPECT_GE(calls.count(system_call::recvfrom), 2 * (too_many - 1));
    EXPECT_TRUE(connected.open(5));
}

TEST(a_session_that_reconnects, tries_again_when_the_system_refuses_a_socket) {
    scripted_service service;
    service.respond_with(service_of_device_5());
    diary told;
    auto options = options_for(service, told.callbacks());
    options.reconnect = true;
    const session connected(options);
    scripted_calls calls;
    calls.fail(system_call::socket, EMFILE);
    service.push(goodbye_received());
    EXPECT_TRUE(told.has("reconnected"));
    EXPECT_GE(calls.count(system_call::socket), 2);
    EXPECT_EQ(told.times("lost"), 1);
}

} // namespace
