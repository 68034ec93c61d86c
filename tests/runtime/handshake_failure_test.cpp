// Connecting when something is wrong: arguments, ports, silence, refusals, and replies that make no sense.
#include "support/log_capture.hpp"
#include "support/open_handles.hpp"
#include "support/service_session.hpp"
#include "support/udp_socket.hpp"

#include <array>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::IsEmpty;

class failing_handshake : public testing::Test {
  protected:
    failing_handshake() { vantu_orvanta_init(); }
    ~failing_handshake() override { vantu_orvanta_disconnect(context); }

    std::int32_t connect_ports(const std::string& client_port, const std::string& service_port,
                               std::uint64_t timeout_ns) {
        return vantu_orvanta_connect_ports(context, client_port.c_str(), service_port.c_str(), "test client",
                                           0, 0, keep_alive_ns, timeout_ns);
    }

    // The code of a connect that is answered with one datagram.
    std::int32_t code_of_reply(const bytes& reply) {
        service.expect(connect_request()).answer(reply);
        return connect_to(service, context);
    }

    void expect_usable() {
        EXPECT_EQ(code_of_reply(acceptance()), vantu_orvanta_success);
        service.expect(goodbye()).answer(goodbye_received());
    }

    log_capture log;
    scripted_service service;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(failing_handshake, refuses_null_arguments) {
    const char* port = service.port().c_str();
    EXPECT_EQ(vantu_orvanta_connect_ports(nullptr, "0", port, "name", 0, 0, 0, 1),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_connect_ports(context, nullptr, port, "name", 0, 0, 0, 1),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", nullptr, "name", 0, 0, 0, 1),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", port, nullptr, 0, 0, 0, 1),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_connect(nullptr, "name", 0, 0, 0, 1), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_connect(context, nullptr, 0, 0, 0, 1), vantu_orvanta_invalid_argument);
    EXPECT_THAT(log.take_messages(), IsEmpty());
    expect_usable();
}

TEST_F(failing_handshake, refuses_port_texts_of_257_characters) {
    EXPECT_EQ(connect_ports("0", std::string(257, '1'), patient_timeout_ns), vantu_orvanta_invalid_argument);
    EXPECT_EQ(connect_ports(std::string(257, '1'), service.port(), patient_timeout_ns),
              vantu_orvanta_invalid_argument);
    EXPECT_THAT(log.take_messages(), IsEmpty());
    expect_usable();
}

TEST_F(failing_handshake, hands_port_texts_of_256_characters_to_the_system) {
    const std::string no_port(256, 'x');
    EXPECT_EQ(connect_ports(no_port, service.port(), patient_timeout_ns), vantu_orvanta_unexpected_error);
    auto lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, log_level::warning);
    EXPECT_THAT(lines[0].message, testing::StartsWith("message: unable to getaddrinfo for 'localhost:" +
                                                      no_port + "' with code: "));
    EXPECT_EQ(connect_ports("0", no_port, patient_timeout_ns), vantu_orvanta_unexpected_error);
    EXPECT_THAT(log.take_messages(),
                ElementsAre(testing::StartsWith("message: unable to getaddrinfo for 'localhost:" + no_port)));
    expect_usable();
}

TEST_F(failing_handshake, gives_5_when_the_local_port_is_taken) {
    const scripted_service holder;
    // On each address, where localhost has two.
    const std::array held{udp_socket::bound_to("127.0.0.1", holder.port()),
                          udp_socket::bound_to("::1", holder.port())};
    EXPECT_EQ(connect_ports(holder.port(), service.port(), patient_timeout_ns),
              vantu_orvanta_socket_bind_failed);
    EXPECT_THAT(log.take(), ElementsAre(testing::AllOf(
                                testing::Field(&log_line::level, log_level::warning),
                                testing::Field(&log_line::message, "no valid interface to bind 'localhost:" +
                                                                       holder.port() + "'"))));
    expect_usable();
}

TEST_F(failing_handshake, gives_4_when_a_silent_service_has_let_the_time_pass) {
    service.expect(connect_request());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(connect_ports("0", service.port(), 60'000'000), vantu_orvanta_timed_out);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    expect_usable();
}

TEST_F(failing_handshake, gives_4_after_the_whole_time_when_no_service_is_there) {
    const std::string port = service.port();
    service.close();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(connect_ports("0", port, 60'000'000), vantu_orvanta_timed_out);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_THAT(log.take_messages(), IsEmpty());
}

TEST_F(failing_handshake, looks_once_with_a_time_out_below_a_millisecond) {
    service.expect(connect_request());
    EXPECT_EQ(connect_ports("0", service.port(), 999'999), vantu_orvanta_os_socket_error);
    expect_usable();
}

TEST_F(failing_handshake, gives_178_for_another_client) {
    EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, 178})})),
              vantu_orvanta_another_client_connected);
    expect_usable();
}

TEST_F(failing_handshake, gives_9_for_a_full_service) {
    EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, 179})})), vantu_orvanta_buffer_full_or_empty);
    expect_usable();
}

TEST_F(failing_handshake, gives_6_for_every_other_refusal) {
    for (int status = 0; status < 256; ++status) {
        if (status != 178 && status != 179) {
            const auto byte = static_cast<std::uint8_t>(status);
            EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, byte})})),
                      vantu_orvanta_protocol_parse_failed)
                << status;
        }
    }
    EXPECT_THAT(log.take_messages(), IsEmpty());
}

TEST_F(failing_handshake, gives_6_without_a_line_for_a_reply_that_is_no_datagram_of_the_service) {
    const bytes good = acceptance();
    for (std::size_t size = 0; size < 11; ++size) {
        EXPECT_EQ(code_of_reply(bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size))),
                  vantu_orvanta_protocol_parse_failed)
            << size;
    }
    for (const std::size_t place : {0U, 1U, 2U, 3U, 6U}) {
        bytes bad = good;
        bad[place] = static_cast<std::uint8_t>(bad[place] ^ 0x10U);
        EXPECT_EQ(code_of_reply(bad), vantu_orvanta_protocol_parse_failed) << "byte " << place;
    }
    EXPECT_THAT(log.take_messages(), IsEmpty());
    expect_usable();
}

TEST_F(failing_handshake, gives_6_when_the_datagram_ends_after_a_notice) {
    EXPECT_EQ(code_of_reply(datagram({device_listed(5, 1)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of_reply(datagram({device_listed(5, 1), {0xFF, 4, 8, 0}})),
              vantu_orvanta_protocol_parse_failed);
    expect_usable();
}

TEST_F(failing_handshake, logs_an_operation_that_has_no_place_in_a_reply) {
    EXPECT_EQ(code_of_reply(datagram({op(33, 0, filled(28, 0)), op(4, 0, u64(1))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take(),
                ElementsAre(log_line{log_level::warning, "hardware-api-service/src/runtime/lib", 1082,
                                     "vantu_orvanta_connect_ports cannot handle op [0x21]"}));
    EXPECT_EQ(code_of_reply(datagram({op(2, 0)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take_messages(), ElementsAre("vantu_orvanta_connect_ports cannot handle op [0x2]"));
    EXPECT_EQ(code_of_reply(datagram({op(255, 0)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take_messages(), ElementsAre("vantu_orvanta_connect_ports cannot handle op [0xff]"));
    EXPECT_EQ(code_of_reply(datagram({op(0, 0)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take_messages(), ElementsAre("vantu_orvanta_connect_ports cannot handle op [0x0]"));
    expect_usable();
}

TEST_F(failing_handshake, logs_every_other_received_operation_as_out_of_place) {
    for (const int code : {2, 6, 17, 19, 21, 22, 33, 37, 40, 47, 64, 66, 68, 70, 80, 81, 96, 97, 224, 225}) {
        EXPECT_EQ(code_of_reply(datagram({op(static_cast<std::uint8_t>(code), 0, filled(301, 0))})),
                  vantu_orvanta_protocol_parse_failed)
            << code;
        EXPECT_EQ(log.take().size(), 1U) << code;
    }
}

TEST_F(failing_handshake, gives_6_for_a_notice_that_is_cut_short) {
    EXPECT_EQ(code_of_reply(datagram({op(16, 0, filled(23, 1))})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of_reply(datagram({device_listed(5, 1), op(23, 0, join({u32(5), filled(8, 1)}))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of_reply(datagram({device_listed(5, 2), op(24, 0, join({u32(5), filled(7, 1)}))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take_messages(), IsEmpty());
    expect_usable();
}

TEST_F(failing_handshake, gives_7_for_details_of_a_device_that_was_not_listed_with_that_type) {
    const bytes orvanta3 = op(23, 0, join({u32(77), filled(9, 1)}));
    const bytes palmetron = op(24, 0, join({u32(77), filled(8, 1)}));
    EXPECT_EQ(code_of_reply(datagram({orvanta3, op(4, 0, u64(1))})), vantu_orvanta_no_matching_device);
    EXPECT_EQ(code_of_reply(datagram({device_listed(77, 2), orvanta3, op(4, 0, u64(1))})),
              vantu_orvanta_no_matching_device);
    EXPECT_EQ(code_of_reply(datagram({device_listed(77, 1), palmetron, op(4, 0, u64(1))})),
              vantu_orvanta_no_matching_device);
    expect_usable();
}

TEST_F(failing_handshake, leaves_no_descriptor_open) {
    const scripted_service holder;
    const auto fail_in_every_way = [&] {
        EXPECT_EQ(connect_ports(holder.port(), service.port(), patient_timeout_ns),
                  vantu_orvanta_socket_bind_failed);
        EXPECT_EQ(connect_ports("0", "no port", patient_timeout_ns), vantu_orvanta_unexpected_error);
        EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, 178})})),
                  vantu_orvanta_another_client_connected);
        EXPECT_EQ(code_of_reply(datagram({op(2, 0)})), vantu_orvanta_protocol_parse_failed);
        service.expect(connect_request());
        EXPECT_EQ(connect_ports("0", service.port(), 2'000'000), vantu_orvanta_timed_out);
    };
    EXPECT_EQ(handles_left_by(fail_in_every_way), 0);
}

TEST_F(failing_handshake, keeps_nothing_of_the_failed_reply_for_the_next_polls) {
    EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, 178}), op(81, 0, join({u32(5), {1}}))})),
              vantu_orvanta_another_client_connected);
    EXPECT_EQ(code_of_reply(acceptance()), vantu_orvanta_success);
    EXPECT_EQ(poll_once(context).event.event_type, +vantu_orvanta_event_none);
    service.expect(goodbye()).answer(goodbye_received());
}

TEST_F(failing_handshake, lists_nothing_of_what_came_before_the_refusal) {
    const bytes devices = join({device_listed(5, 1), device_listed(6, 2)});
    EXPECT_EQ(code_of_reply(datagram({devices, op(240, 0, {0, 0, 0, 0, 178})})),
              vantu_orvanta_another_client_connected);
    EXPECT_EQ(code_of_reply(datagram({devices, op(2, 0)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of_reply(datagram({devices})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of_reply(datagram({devices, op(23, 0, join({u32(9), filled(9, 1)}))})),
              vantu_orvanta_no_matching_device);
    EXPECT_EQ(code_of_reply(acceptance()), vantu_orvanta_success);
    std::uint32_t id = 99;
    std::size_t count = 1;
    EXPECT_EQ(vantu_orvanta_device_ids(context, &id, &count), vantu_orvanta_success);
    EXPECT_EQ(count, 0U);
    service.expect(goodbye()).answer(goodbye_received());
}

TEST_F(failing_handshake, leaves_the_context_unconnected) {
    EXPECT_EQ(code_of_reply(datagram({op(240, 0, {0, 0, 0, 0, 178})})),
              vantu_orvanta_another_client_connected);
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_device_open(context, 5, 0, 0), vantu_orvanta_invalid_connection_state);
}

} // namespace
