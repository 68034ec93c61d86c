// The client library when the system refuses: every refusal becomes a code, and the context stays usable.
#include "core/service_codes.hpp"
#include "runtime/context.hpp"
#include "runtime/socket_codes.hpp"
#include "support/log_capture.hpp"
#include "support/service_session.hpp"
#include "support/system_calls.hpp"
#include "support/told_traffic.hpp"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <system_error>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

int failing_thread_calls = 0;

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_pthread_join(pthread_t, void**);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* user) {
    if (failing_thread_calls > 0) {
        --failing_thread_calls;
        return EAGAIN;
    }
    return __real_pthread_create(thread, attributes, body, user);
}

int __wrap_pthread_join(pthread_t thread, void** result) {
    if (failing_thread_calls > 0) {
        --failing_thread_calls;
        return ESRCH;
    }
    return __real_pthread_join(thread, result);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

void ignore_event(void*, const vantu_orvanta_event*) {}

TEST(client_codes, follow_the_status_table_for_every_byte) {
    const std::map<int, std::int32_t> table{{0, 0},    {16, 4},   {17, 5},   {18, 254}, {19, 8},
                                            {20, 178}, {21, 9},   {22, 6},   {26, 10},  {27, 11},
                                            {28, 209}, {29, 176}, {30, 192}, {31, 177}, {254, 1}};
    for (int status = 0; status < 256; ++status) {
        const auto row = table.find(status);
        EXPECT_EQ(vantu::orvanta::client_code_from_socket_status(static_cast<std::uint8_t>(status)),
                  row == table.end() ? 255 : row->second)
            << status;
    }
}

TEST(a_refused_send, is_not_told_to_the_traffic_sink) {
    service_session session;
    const log_capture quiet;
    told_traffic told;
    told.listen_to(session.context);
    scripted_calls calls;
    calls.fail(system_call::sendto, EPERM, 1, scripted_calls::always);
    EXPECT_EQ(vantu_orvanta_config_save_request(session.context, 5, 1), vantu_orvanta_unexpected_error);
    session.context->connection.note_send(0);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_unexpected_error);
    EXPECT_THAT(told.lines(), IsEmpty());
    EXPECT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
}

TEST(a_refused_send, gives_a_request_the_code_of_its_status_and_the_next_one_goes_out) {
    service_session session;
    log_capture log;
    for (const auto& [error, code] : std::map<int, int>{{EAGAIN, vantu_orvanta_os_socket_error},
                                                        {EAFNOSUPPORT, vantu_orvanta_socket_bind_failed},
                                                        {EADDRINUSE, vantu_orvanta_socket_bind_failed},
                                                        {ENETUNREACH, vantu_orvanta_unexpected_error},
                                                        {EPERM, vantu_orvanta_unexpected_error}}) {
        const std::vector<std::string> earlier = log.take_messages();
        {
            scripted_calls calls;
            calls.fail(system_call::sendto, error, 1, scripted_calls::always);
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

TEST(a_refused_keep_alive, is_the_code_of_its_poll_and_goes_out_with_the_next) {
    service_session session;
    vantu_orvanta_sleep(1'000'000'000);
    {
        scripted_calls calls;
        calls.fail(system_call::sendto, EAGAIN, 1, scripted_calls::always);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_os_socket_error);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_os_socket_error) << "it is still due";
    }
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
    EXPECT_TRUE(wait_until([&] { return session.service.keep_alives().size() == 1; }));
}

TEST(a_refused_receive, is_the_code_of_its_poll_and_the_datagram_comes_with_the_next) {
    service_session session;
    log_capture log;
    session.service.push(datagram({op(2, 7)}));
    {
        scripted_calls calls;
        calls.fail(system_call::recvfrom, EIO);
        EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_unexpected_error);
    }
    EXPECT_THAT(log.take_messages(), ElementsAre(StartsWith("message: unable to recv packet with code: ")));
    EXPECT_EQ(poll_once(session.context).event.tag, 7);
}

class a_refused_connect : public testing::Test {
  protected:
    ~a_refused_connect() override { vantu_orvanta_disconnect(context); }

    // Connects while a call fails; the descriptors are those of before.
    std::int32_t connect_without(system_call call, int error, int first = 1) {
        const auto before = open_descriptors();
        std::int32_t code = 0;
        {
            scripted_calls calls;
            calls.fail(call, error, first, scripted_calls::always);
            code = vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                               keep_alive_ns, 20'000'000);
        }
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
        return code;
    }

    log_capture log;
    scripted_service service;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(a_refused_connect, gives_5_when_no_socket_can_be_made_or_bound) {
    EXPECT_EQ(connect_without(system_call::socket, EMFILE), vantu_orvanta_socket_bind_failed);
    EXPECT_EQ(connect_without(system_call::bind, EACCES), vantu_orvanta_socket_bind_failed);
}

TEST_F(a_refused_connect, gives_the_code_of_its_send) {
    EXPECT_EQ(connect_without(system_call::sendto, EAGAIN), vantu_orvanta_os_socket_error);
    EXPECT_EQ(connect_without(system_call::sendto, EAFNOSUPPORT), vantu_orvanta_socket_bind_failed);
    EXPECT_EQ(connect_without(system_call::sendto, ENETUNREACH), vantu_orvanta_unexpected_error);
}

TEST(a_connection_without_an_address_text, is_a_connection_all_the_same) {
    log_capture log;
    scripted_service service;
    service.expect(connect_request()).answer(acceptance());
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    {
        scripted_calls calls;
        calls.fail(system_call::getsockname, ENOBUFS, 1, scripted_calls::always);
        EXPECT_EQ(connect_to(service, context), vantu_orvanta_success);
    }
    EXPECT_THAT(log.take_messages(),
                testing::Contains(testing::HasSubstr("client addr:[] -> service addr:")));
    service.expect(goodbye()).answer(goodbye_received());
    vantu_orvanta_disconnect(context);
}

TEST(a_disconnect_whose_goodbye_is_refused, does_not_wait) {
    service_session session;
    {
        scripted_calls calls;
        calls.fail(system_call::sendto, EAGAIN, 1, scripted_calls::always);
        vantu_orvanta_disconnect(session.context);
        EXPECT_EQ(calls.count(system_call::recvfrom), 0) << "nothing was waited for";
    }
    session.context = nullptr;
}

TEST(poll_thread_start, throws_when_the_system_starts_no_thread) {
    service_session session;
    failing_thread_calls = 1;
    try {
        static_cast<void>(vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr));
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::resource_unavailable_try_again);
    }
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_success);
}

TEST(poll_thread_stop, throws_when_the_thread_cannot_be_joined_and_can_be_called_again) {
    service_session session;
    auto* thread = vantu_orvanta_poll_thread_start(session.context, ignore_event, nullptr);
    failing_thread_calls = 1;
    try {
        vantu_orvanta_poll_thread_stop(thread);
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::no_such_process);
    }
    vantu_orvanta_poll_thread_stop(thread);
}

} // namespace
