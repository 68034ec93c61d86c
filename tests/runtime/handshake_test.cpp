// Connecting: the request on the wire, the acceptance, and what may stand around it.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;

class handshake : public testing::Test {
  protected:
    handshake() { vantu_orvanta_init(); }
    ~handshake() override {
        std::uint32_t id = 0;
        std::size_t count = 0;
        if (vantu_orvanta_device_ids(context, &id, &count) != vantu_orvanta_invalid_connection_state) {
            service.expect(goodbye()).answer(goodbye_received());
        }
        vantu_orvanta_disconnect(context);
    }

    void connect() {
        ASSERT_EQ(connect_to(service, context), vantu_orvanta_success);
        service.await_script();
    }

    scripted_service service;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(handshake, sends_one_request_of_123_bytes) {
    const auto process = static_cast<std::uint32_t>(getpid());
    service
        .expect(join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00},             // header
                      {0xFF, 0x03, 0x70, 0x00, 0x00},                   // operation 3, 112 bytes, tag 0
                      {0x34, 0x12},                                     // value a
                      {0x78, 0x56},                                     // value b
                      {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}, // keep-alive time
                      {static_cast<std::uint8_t>(process), static_cast<std::uint8_t>(process >> 8),
                       static_cast<std::uint8_t>(process >> 16), static_cast<std::uint8_t>(process >> 24)},
                      {'D', 'e', 'v', 'i', 'c', 'e', ' ', 'C', 'o', 'n', 'f', 'i', 'g'},
                      filled(19, 0),
                      {'2', '.', '0', '.', '0', '|', '2', '.', '0', '.', '0'},
                      filled(53, 0)}))
        .answer(acceptance());
    EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "Device Config", 0x1234,
                                          0x5678, 0x0123456789ABCDEF, patient_timeout_ns),
              vantu_orvanta_success);
    service.await_script();
    EXPECT_EQ(service.last_datagram().size(), 123U);
}

TEST_F(handshake, takes_a_name_of_31_characters_and_an_empty_one) {
    for (const std::string& name : {std::string(31, 'n'), std::string()}) {
        service
            .expect(join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x03, 0x70, 0x00, 0x00},
                          filled(12, 0),
                          u32(static_cast<std::uint32_t>(getpid())),
                          text_field(name, 32),
                          text_field("2.0.0|2.0.0", 64)}))
            .answer(datagram({op(240, 0, {0, 0, 0, 0, 178})}));
        EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", service.port().c_str(), name.c_str(), 0, 0, 0,
                                              patient_timeout_ns),
                  vantu_orvanta_another_client_connected);
    }
}

TEST_F(handshake, connects_from_the_local_port_that_was_asked_for) {
    std::string port;
    {
        const scripted_service finds_a_free_port;
        port = finds_a_free_port.port();
    }
    service.expect(connect_request()).answer(acceptance());
    ASSERT_EQ(vantu_orvanta_connect_ports(context, port.c_str(), service.port().c_str(), "test client", 0, 0,
                                          keep_alive_ns, patient_timeout_ns),
              vantu_orvanta_success);
    const std::string sender = service.last_sender();
    EXPECT_EQ(sender.substr(sender.rfind(':') + 1), port);
}

TEST_F(handshake, logs_one_whole_line_with_ids_and_addresses) {
    log_capture log;
    service.expect(connect_request()).answer(acceptance());
    connect();
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, log_level::info);
    EXPECT_EQ(lines[0].message, "Connected: cid[1234605616436508552], pid:[" + std::to_string(getpid()) +
                                    "], client addr:[" + service.last_sender() +
                                    "] -> service addr:" + service.address_text());
}

TEST_F(handshake, takes_device_notices_before_the_acceptance_into_the_device_table) {
    service.expect(connect_request())
        .answer(
            datagram({device_listed(5, 1), op(23, 0, join({u32(5), counting(0x30, 8), {2}})),
                      device_listed(6, 2), op(24, 0, join({u32(6), counting(0x40, 8)})), op(4, 0, u64(1))}));
    connect();
    vantu_orvanta_device device{};
    ASSERT_EQ(vantu_orvanta_device_info(context, 5, &device), vantu_orvanta_success);
    EXPECT_EQ(
        hex(bytes_of(device)),
        hex(join({u64(1), {1, 7, 0xEF, 0xBE}, counting(0x60, 16), counting(0x30, 8), {2}, filled(41, 0)})));
    ASSERT_EQ(vantu_orvanta_device_info(context, 6, &device), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(device)),
              hex(join({u64(1), {2, 7, 0xEF, 0xBE}, counting(0x60, 16), counting(0x40, 8), filled(42, 0)})));
    EXPECT_EQ(poll_once(context).event.event_type, +vantu_orvanta_event_none)
        << "a notice of the handshake is no event";
}

TEST_F(handshake, leaves_what_follows_the_acceptance_to_the_polls) {
    service.expect(connect_request())
        .answer(datagram({op(4, 0, u64(1)), device_listed(5, 1), op(81, 3, join({u32(5), {9}}))}));
    connect();
    const polled listed = poll_once(context);
    EXPECT_EQ(listed.code, vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(listed.event)),
              hex(join({u32(16), u32(5), {0}, {1, 7, 0xEF, 0xBE}, counting(0x60, 16), filled(281, 0)})));
    const polled power = poll_once(context);
    EXPECT_EQ(power.code, vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(power.event)), hex(join({u32(81), u32(5), {3, 9}, filled(300, 0)})));
    const polled nothing = poll_once(context);
    EXPECT_EQ(nothing.code, vantu_orvanta_success);
    EXPECT_EQ(nothing.event.event_type, +vantu_orvanta_event_none);
}

TEST_F(handshake, ignores_the_reserved_field_the_lengths_and_the_tag_of_the_reply) {
    service.expect(connect_request())
        .answer(join({{0xE9, 0x9E, 0x01, 0x00, 0xAB, 0xCD}, op_of_length(4, 200, 0, u64(1))}));
    connect();
}

TEST_F(handshake, waits_without_limit_for_a_time_out_of_zero) {
    service.expect(connect_request()).answer(acceptance());
    EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                          keep_alive_ns, 0),
              vantu_orvanta_success);
}

TEST_F(handshake, refuses_a_second_connect_and_sends_nothing_for_it) {
    service.expect(connect_request()).answer(acceptance());
    connect();
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_connect(context, "test client", 0, 0, keep_alive_ns, 1'000'000),
              vantu_orvanta_invalid_connection_state);
}

TEST_F(handshake, looks_at_the_connection_before_it_looks_at_the_ports) {
    service.expect(connect_request()).answer(acceptance());
    connect();
    const std::string too_long(257, '1');
    EXPECT_EQ(vantu_orvanta_connect_ports(context, too_long.c_str(), too_long.c_str(), "test client", 0, 0,
                                          keep_alive_ns, patient_timeout_ns),
              vantu_orvanta_invalid_connection_state);
}

TEST_F(handshake, brings_the_devices_of_its_own_session_alone) {
    const bytes first = datagram({device_listed(5, 1), device_listed(6, 2), op(4, 0, u64(1))});
    service.expect(connect_request()).answer(first);
    connect();
    service.push(datagram({device_listed(7, 1), op(6, 0)}));
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_device_added);
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_disconnected);
    service.expect(connect_request()).answer(datagram({device_listed(8, 1), op(4, 0, u64(2))}));
    connect();
    std::uint32_t ids[4]{};
    std::size_t count = 4;
    EXPECT_EQ(vantu_orvanta_device_ids(context, ids, &count), vantu_orvanta_success);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(ids[0], 8U);
}

TEST_F(handshake, works_again_after_the_service_said_goodbye) {
    service.expect(connect_request()).answer(acceptance());
    connect();
    service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_disconnected);
    service.expect(connect_request()).answer(acceptance());
    connect();
    service.push(datagram({op(81, 0, join({u32(5), {9}}))}));
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_status_power_supply);
}

} // namespace
