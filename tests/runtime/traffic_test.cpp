// The datagrams of which the traffic sink is told.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"
#include "support/told_traffic.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::string sent(const bytes& content) {
    return "> " + hex(content);
}

std::string came(const bytes& content) {
    return "< " + hex(content);
}

std::uint64_t system_now_ns() {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count());
}

// A context that is not connected yet, with a sink.
class traffic : public testing::Test {
  protected:
    traffic() {
        vantu_orvanta_init();
        told.listen_to(context);
    }
    ~traffic() override { disconnect(); }

    void connect() {
        service.expect(connect_request()).answer(acceptance());
        ASSERT_EQ(connect_to(service, context), vantu_orvanta_success);
    }
    void disconnect() {
        if (is_connected()) {
            service.expect(goodbye()).answer(goodbye_received());
        }
        vantu_orvanta_disconnect(context);
        context = nullptr;
    }
    [[nodiscard]] bool is_connected() const {
        std::uint32_t id = 0;
        std::size_t count = 1;
        return context != nullptr && vantu_orvanta_device_ids(context, &id, &count) == vantu_orvanta_success;
    }
    std::int32_t poll_after(const bytes& content) {
        service.push(content);
        return poll_until_something(context).code;
    }

    const log_capture log;
    scripted_service service;
    told_traffic told;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(traffic, is_told_byte_by_byte_from_the_connect_to_the_answer_to_the_goodbye) {
    const bytes listing = datagram({device_listed(5, 1), op(2, 9)});
    const bytes opening = datagram({op(18, 7, {5, 0, 0, 0, 0, 0})});
    const bytes opened = datagram({op(19, 7, {5, 0, 0, 0})});
    connect();
    service.push(listing);
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_device_added);
    EXPECT_EQ(poll_once(context).event.event_type, +vantu_orvanta_event_ack);
    service.expect(opening).answer(opened);
    EXPECT_EQ(vantu_orvanta_device_open(context, 5, 7, 0), vantu_orvanta_success);
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_device_opened);
    disconnect();
    EXPECT_THAT(told.lines(),
                ElementsAre(sent(connect_request()), came(acceptance()), came(listing), sent(opening),
                            came(opened), sent(goodbye()), came(goodbye_received())));
}

TEST_F(traffic, has_the_keep_alives) {
    connect();
    vantu_orvanta_sleep(1'000'000'000);
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_success);
    EXPECT_EQ(told.lines().back(), "> E9 9E 01 00 00 00 FF 01 00 00 00");
}

TEST_F(traffic, has_the_datagrams_that_are_not_understood) {
    const bytes strange = datagram({op(241, 0, {1, 2})});
    connect();
    EXPECT_EQ(poll_after({1, 2, 3}), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(poll_after({}), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(poll_after(strange), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(poll_after(datagram({op(16, 0, {1})})), vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(told.lines(), ElementsAre(sent(connect_request()), came(acceptance()), came({1, 2, 3}),
                                          came({}), came(strange), came(datagram({op(16, 0, {1})}))));
}

TEST_F(traffic, has_the_first_2048_bytes_of_a_datagram_that_is_dropped_for_its_length) {
    const bytes largest = join({datagram({op(2, 1)}), counting(0, 2037)});
    const bytes larger = join({largest, filled(952, 1)});
    connect();
    EXPECT_EQ(poll_after(larger), vantu_orvanta_unexpected_error);
    EXPECT_EQ(poll_after(largest), vantu_orvanta_success);
    const auto entries = told.entries();
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(hex(entries[2].content), hex(largest));
    EXPECT_THAT(entries[2].record.whole_length, AnyOf(3000U, 0U)) << "Windows does not tell";
    EXPECT_EQ(text_of(entries[2].record.peer), service.address_text());
    EXPECT_EQ(hex(entries[3].content), hex(largest));
    EXPECT_EQ(entries[3].record.whole_length, 2048U);
}

TEST_F(traffic, has_the_request_of_a_connect_that_is_not_answered) {
    service.expect(connect_request());
    EXPECT_EQ(vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                          keep_alive_ns, 20'000'000),
              vantu_orvanta_timed_out);
    service.await_script();
    EXPECT_THAT(told.lines(), ElementsAre(sent(connect_request())));
}

TEST_F(traffic, has_the_replies_of_connects_that_fail) {
    const bytes refusal = datagram({op(240, 0, {0, 0, 0, 0, 178})});
    const bytes larger = filled(2049, 7);
    service.expect(connect_request()).answer(refusal);
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_another_client_connected);
    service.expect(connect_request()).answer({1, 2, 3});
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_protocol_parse_failed);
    service.expect(connect_request()).answer(larger);
    EXPECT_EQ(connect_to(service, context), vantu_orvanta_unexpected_error);
    EXPECT_THAT(told.lines(), ElementsAre(sent(connect_request()), came(refusal), sent(connect_request()),
                                          came({1, 2, 3}), sent(connect_request()), came(filled(2048, 7))));
}

TEST_F(traffic, has_nothing_of_calls_that_send_nothing) {
    EXPECT_EQ(vantu_orvanta_device_open(context, 5, 1, 0), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
    EXPECT_THAT(told.lines(), IsEmpty());
}

TEST_F(traffic, goes_on_in_the_next_connection) {
    connect();
    EXPECT_EQ(poll_after(goodbye_received()), vantu_orvanta_success);
    connect();
    EXPECT_THAT(told.lines(),
                ElementsAre(sent(connect_request()), came(acceptance()), came(goodbye_received()),
                            sent(connect_request()), came(acceptance())));
}

TEST_F(traffic, has_the_addresses_of_both_ends) {
    connect();
    service.expect(datagram({op(64, 1, id_5)})).answer(datagram({op(2, 1)}));
    EXPECT_EQ(vantu_orvanta_config_save_request(context, 5, 1), vantu_orvanta_success);
    EXPECT_EQ(poll_until_something(context).code, vantu_orvanta_success);
    const auto entries = told.entries();
    ASSERT_EQ(entries.size(), 4U);
    for (const auto& one : entries) {
        EXPECT_EQ(text_of(one.record.local), service.last_sender());
        EXPECT_EQ(text_of(one.record.peer), service.address_text());
        EXPECT_EQ(one.record.local.reserved + one.record.peer.reserved, 0);
        EXPECT_EQ(one.record.size, sizeof(vantu_orvanta_traffic));
    }
}

TEST_F(traffic, has_a_stranger_as_the_sender_of_its_datagram) {
    connect();
    const udp_socket stranger = udp_socket::bound_to("localhost", "0").value();
    udp_address client;
    {
        const udp_socket asked = udp_socket::bound_to("localhost", "0").value();
        // The client's address, as any socket of this machine has it.
        client = asked.address();
        const std::uint16_t port = told.entries().front().record.local.port;
        client.storage[2] = static_cast<std::byte>(port >> 8);
        client.storage[3] = static_cast<std::byte>(port & 0xFF);
    }
    ASSERT_EQ(text_of_address(client), text_of(told.entries().front().record.local));
    ASSERT_TRUE(stranger.send(datagram({op(2, 1)}), client));
    EXPECT_EQ(poll_until_something(context).event.event_type, +vantu_orvanta_event_ack);
    EXPECT_EQ(text_of(told.entries().back().record.peer), text_of_address(stranger.address()));
}

TEST_F(traffic, has_the_time_of_each_datagram_on_both_clocks) {
    const auto steady_before = static_cast<std::uint64_t>(vantu::orvanta::platform::steady_now_ns());
    const std::uint64_t system_before = system_now_ns();
    connect();
    EXPECT_EQ(poll_after(datagram({op(2, 1)})), vantu_orvanta_success);
    service.expect(datagram({op(64, 1, id_5)}));
    EXPECT_EQ(vantu_orvanta_config_save_request(context, 5, 1), vantu_orvanta_success);
    const auto steady_after = static_cast<std::uint64_t>(vantu::orvanta::platform::steady_now_ns());
    const auto entries = told.entries();
    ASSERT_EQ(entries.size(), 4U);
    std::uint64_t steady_last = steady_before;
    std::uint64_t system_last = system_before;
    for (const auto& one : entries) {
        EXPECT_LE(steady_last, one.record.steady_ns);
        EXPECT_LE(system_last, one.record.system_ns);
        steady_last = one.record.steady_ns;
        system_last = one.record.system_ns;
    }
    EXPECT_LE(steady_last, steady_after);
    EXPECT_LE(system_last, system_now_ns());
}

} // namespace
} // namespace orvanta_tests
