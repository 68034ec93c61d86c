// The client library when Windows refuses, and when it reports closed ports: every refusal becomes a code,
// and the context stays usable.
#include "support/log_capture.hpp"
#include "support/open_handles.hpp"
#include "support/service_session.hpp"
#include "support/winsock_calls.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <system_error>
#include <winsock2.h>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

void ignore_event(void*, const vantu_orvanta_event*) {}

TEST(a_refused_send, gives_a_request_the_code_of_its_status_and_the_next_one_goes_out) {
    service_session session;
    log_capture log;
    for (const auto& [error, code] : std::map<int, int>{{WSAEWOULDBLOCK, vantu_orvanta_os_socket_error},
                                                        {WSAEAFNOSUPPORT, vantu_orvanta_socket_bind_failed},
                                                        {WSAEADDRINUSE, vantu_orvanta_socket_bind_failed},
                                                        {WSAENETUNREACH, vantu_orvanta_unexpected_error},
                                                        {WSAEACCES, vantu_orvanta_unexpected_error}}) {
        const std::vector<std::string> earlier = log.take_messages();
        {
            scripted_winsock calls;
            calls.fail(winsock_call::sendto, error, 1, scripted_winsock::always);
            EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 1), code) << error;
        }
        if (code == vantu_orvanta_unexpected_error) {
            EXPECT_THAT(log.take_messages(),
                        ElementsAre(StartsWith("message: unable to send packet with code: ")));
        } else {
            EXPECT_THAT(log.take_messages(), IsEmpty());
        }
        session.service.expect(datagram({op(64, 1, {5, 0, 0, 0})}));
        EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 1), vantu_orvanta_success);
        session.service.await_script();
    }
}

TEST(a_refused_receive, is_the_code_of_its_poll_and_the_datagram_comes_with_the_next) {
    service_session session;
    log_capture log;
    session.service.push(datagram({op(2, 7)}));
    for (const auto& [error, code] :
         std::map<int, int>{{WSAENETDOWN, vantu_orvanta_unexpected_error},
                            {WSAECONNRESET, vantu_orvanta_disconnected_from_service}}) {
        scripted_winsock calls;
        calls.fail(winsock_call::recvfrom, error);
        EXPECT_EQ(poll_once(session.context).code, code);
    }
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith("message: unable to recv packet with code: ")));
    EXPECT_EQ(poll_until_something(session.context).event.tag, 7);
}

class a_connect : public testing::Test {
  protected:
    static void SetUpTestSuite() { EXPECT_EQ(vantu_orvanta_init(), 0); }
    ~a_connect() override { vantu_orvanta_disconnect(context); }

    std::int32_t connect(std::uint64_t timeout_ns) {
        return vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                           keep_alive_ns, timeout_ns);
    }

    // Connects while a call fails, and looks for handles that it has left open.
    std::int32_t connect_without(winsock_call call, int error) {
        std::int32_t code = 0;
        const auto connect_once = [&] {
            scripted_winsock calls;
            calls.fail(call, error, 1, scripted_winsock::always);
            code = connect(20'000'000);
        };
        EXPECT_EQ(handles_left_by(connect_once), 0);
        EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
        return code;
    }

    log_capture log;
    scripted_service service;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(a_connect, gives_5_when_no_socket_can_be_made_or_bound) {
    EXPECT_EQ(connect_without(winsock_call::open, WSAEMFILE), vantu_orvanta_socket_bind_failed);
    EXPECT_EQ(connect_without(winsock_call::bind, WSAEACCES), vantu_orvanta_socket_bind_failed);
}

TEST_F(a_connect, gives_the_code_of_its_send_and_of_its_receive) {
    EXPECT_EQ(connect_without(winsock_call::sendto, WSAEWOULDBLOCK), vantu_orvanta_os_socket_error);
    EXPECT_EQ(connect_without(winsock_call::sendto, WSAEAFNOSUPPORT), vantu_orvanta_socket_bind_failed);
    EXPECT_EQ(connect_without(winsock_call::sendto, WSAENETUNREACH), vantu_orvanta_unexpected_error);
    service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    EXPECT_EQ(connect_without(winsock_call::start_receive, WSAENOBUFS), vantu_orvanta_unexpected_error);
}

// A report of Windows that nobody listens on a port is no answer of the service.
TEST_F(a_connect, takes_no_report_of_a_closed_port_for_an_answer) {
    service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    for (const auto& [call, error] : {std::pair(winsock_call::start_receive, WSAECONNRESET),
                                      std::pair(winsock_call::get_result, int{ERROR_PORT_UNREACHABLE})}) {
        scripted_winsock calls;
        calls.fail(call, static_cast<int>(error));
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(connect(30'000'000), vantu_orvanta_timed_out);
        EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
    }
    EXPECT_THAT(log.take_messages(), IsEmpty());
}

TEST_F(a_connect, takes_the_answer_that_follows_the_report_of_a_closed_port) {
    service.expect(connect_request()).answer(acceptance());
    {
        scripted_winsock calls;
        calls.fail(winsock_call::start_receive, WSAECONNRESET);
        EXPECT_EQ(connect(patient_timeout_ns), vantu_orvanta_success);
    }
    service.expect(goodbye()).answer(goodbye_received());
}

TEST_F(a_connect, that_times_out_takes_its_receive_back_before_closing_its_socket) {
    service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    scripted_winsock calls;
    bool closed_first = false;
    calls.before(winsock_call::cancel, 1, [&] { closed_first = calls.count(winsock_call::close) != 0; });
    EXPECT_EQ(connect(5'000'000), vantu_orvanta_timed_out);
    EXPECT_EQ(calls.count(winsock_call::cancel), 1);
    EXPECT_EQ(calls.count(winsock_call::close), 1);
    EXPECT_FALSE(closed_first);
}

TEST_F(a_connect, that_only_looks_takes_its_receive_back_as_well) {
    service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    scripted_winsock calls;
    EXPECT_EQ(connect(1), vantu_orvanta_os_socket_error);
    EXPECT_EQ(calls.count(winsock_call::cancel), 1);
}

TEST(poll_thread_start, throws_when_the_system_starts_no_thread) {
    service_session session;
    scripted_winsock calls;
    calls.fail(winsock_call::start_thread, ERROR_NOT_ENOUGH_MEMORY);
    try {
        static_cast<void>(vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr));
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::resource_unavailable_try_again);
    }
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
}

TEST(poll_thread_without_a_service, ends_with_8) {
    service_session session;
    auto* thread = vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr);
    {
        scripted_winsock calls;
        calls.fail(winsock_call::recvfrom, WSAECONNRESET);
        EXPECT_TRUE(wait_until([&] {
            return vantu_orvanta_poll_thread_result(thread) == vantu_orvanta_disconnected_from_service;
        }));
    }
    vantu_orvanta_poll_thread_stop(thread);
}

TEST(poll_threads, leave_no_handle_open) {
    service_session session;
    const auto run_one = [&] {
        vantu_orvanta_poll_thread_stop(
            vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr));
    };
    EXPECT_EQ(handles_left_by(run_one), 0);
}

} // namespace
