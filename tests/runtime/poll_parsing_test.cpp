// The poll on datagrams that are malformed, unknown, packed or special in another way.
#include "support/log_capture.hpp"
#include "support/service_operations.hpp"
#include "support/service_session.hpp"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::IsEmpty;

class poll_parsing : public testing::Test {
  protected:
    // The code of the next poll, and that another one finds nothing.
    std::int32_t code_of(const bytes& datagram) {
        session.service.push(datagram);
        const std::int32_t code = poll_once(session.context).code;
        const polled after = poll_once(session.context);
        EXPECT_EQ(after.code, vantu_orvanta_success);
        EXPECT_EQ(after.event.event_type, +vantu_orvanta_event_none);
        return code;
    }

    void expect_rejected(const bytes& datagram, std::uint64_t line, const char* message) {
        EXPECT_EQ(code_of(datagram), vantu_orvanta_protocol_parse_failed);
        EXPECT_THAT(log.take(), ElementsAre(log_line{log_level::info, "hardware-api-service/src/runtime/lib",
                                                     line, message}));
    }

    void expect_event(std::uint32_t type) {
        const polled result = poll_once(session.context);
        EXPECT_EQ(result.code, vantu_orvanta_success);
        EXPECT_EQ(result.event.event_type, type);
    }

    service_session session;
    log_capture log;
};

TEST_F(poll_parsing, finds_nothing_and_logs_nothing_on_a_quiet_connection) {
    const polled result = poll_once(session.context);
    EXPECT_EQ(result.code, vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(result.event)), hex(filled(310, 0)));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(poll_parsing, zeroes_the_event_it_is_given) {
    vantu_orvanta_event event;
    std::memset(&event, 0xAA, sizeof(event));
    EXPECT_EQ(vantu_orvanta_poll(session.context, &event), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(filled(310, 0)));
    std::memset(&event, 0xAA, sizeof(event));
    session.service.push(datagram({op(64, 1, join({id_5, {1}}))}));
    EXPECT_EQ(vantu_orvanta_poll(session.context, &event), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(join({u32(64), id_5, {1, 1}, filled(300, 0)})));
}

TEST_F(poll_parsing, refuses_null_arguments) {
    vantu_orvanta_event event;
    EXPECT_EQ(vantu_orvanta_poll(nullptr, &event), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_poll(session.context, nullptr), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_poll(nullptr, nullptr), vantu_orvanta_invalid_argument);
}

TEST_F(poll_parsing, cannot_read_a_header_of_less_than_6_bytes) {
    const bytes header{0xE9, 0x9E, 1, 0, 0, 0};
    for (std::ptrdiff_t size = 0; size < 6; ++size) {
        expect_rejected(bytes(header.begin(), header.begin() + size), 1181,
                        "vantu_orvanta_poll: Cannot read header");
    }
}

TEST_F(poll_parsing, refuses_another_magic) {
    expect_rejected({0xE8, 0x9E, 1, 0, 0, 0, 0xFF, 2, 0, 0, 1}, 1188,
                    "vantu_orvanta_poll: Header magic mismatch");
    expect_rejected({0xE9, 0x9F, 1, 0, 0, 0, 0xFF, 2, 0, 0, 1}, 1188,
                    "vantu_orvanta_poll: Header magic mismatch");
    expect_rejected({0x9E, 0xE9, 2, 0, 0, 0}, 1188, "vantu_orvanta_poll: Header magic mismatch");
}

TEST_F(poll_parsing, refuses_another_version) {
    for (const bytes& version : {bytes{0, 0}, bytes{2, 0}, bytes{1, 1}, bytes{0, 1}}) {
        expect_rejected(join({{0xE9, 0x9E}, version, {0, 0, 0xFF, 2, 0, 0, 1}}), 1193,
                        "vantu_orvanta_poll: Header version mismatch");
    }
}

TEST_F(poll_parsing, takes_any_value_in_the_reserved_field) {
    session.service.push({0xE9, 0x9E, 1, 0, 0xFF, 0xFF, 0xFF, 2, 0, 0, 1});
    expect_event(vantu_orvanta_event_ack);
}

TEST_F(poll_parsing, cannot_read_an_operation_of_less_than_5_bytes) {
    const bytes record{0xFF, 2, 0, 0, 1};
    for (std::ptrdiff_t size = 0; size < 5; ++size) {
        expect_rejected(join({{0xE9, 0x9E, 1, 0, 0, 0}, bytes(record.begin(), record.begin() + size)}), 1199,
                        "vantu_orvanta_poll: Cannot read communication::proto::op");
    }
}

TEST_F(poll_parsing, refuses_another_operation_magic_and_drops_the_rest) {
    expect_rejected(datagram({{0xFE, 2, 0, 0, 1}, op(2, 1)}), 1207,
                    "vantu_orvanta_poll: communication::proto::op magic mismatch");
    expect_rejected(datagram({{0x00, 0, 0, 0, 0}}), 1207,
                    "vantu_orvanta_poll: communication::proto::op magic mismatch");
}

TEST_F(poll_parsing, checks_the_header_of_each_datagram_once) {
    session.service.push(datagram({op(2, 1), op(2, 2), op(2, 3)}));
    session.service.push(datagram({op(2, 4)}));
    for (std::uint8_t tag = 1; tag <= 4; ++tag) {
        const polled result = poll_once(session.context);
        EXPECT_EQ(result.code, vantu_orvanta_success);
        EXPECT_EQ(result.event.event_type, +vantu_orvanta_event_ack);
        EXPECT_EQ(result.event.tag, tag);
    }
}

TEST_F(poll_parsing, skips_each_unknown_operation_and_delivers_the_next) {
    std::set<int> known;
    for (const received_operation& row : received_operations()) {
        known.insert(row.code);
    }
    for (int code = 0; code < 256; ++code) {
        if (known.count(code) == 0) {
            session.service.push(datagram({op(static_cast<std::uint8_t>(code), 1, {0xFF, 2, 0}), op(2, 1)}));
            EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed) << code;
            expect_event(vantu_orvanta_event_ack);
        }
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(poll_parsing, skips_an_unknown_operation_without_a_body) {
    session.service.push(datagram({op(241, 1), op(2, 1)}));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    expect_event(vantu_orvanta_event_ack);
}

TEST_F(poll_parsing, drops_the_datagram_of_an_unknown_operation_that_is_cut_short) {
    EXPECT_EQ(code_of(datagram({op_of_length(241, 1, 11, {1, 2, 3, 4, 5}), op(2, 1)})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of(datagram({op_of_length(241, 1, 0xFFFF, {}), op(2, 1)})),
              vantu_orvanta_protocol_parse_failed);
    session.service.push(datagram({op_of_length(241, 1, 10, {1, 2, 3, 4, 5}), op(2, 1)}));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed)
        << "the length covers all of it";
    expect_event(vantu_orvanta_event_none);
}

TEST_F(poll_parsing, does_not_take_an_acceptance_outside_the_handshake) {
    EXPECT_EQ(code_of(datagram({op(4, 0, u64(1))})), vantu_orvanta_protocol_parse_failed);
}

TEST_F(poll_parsing, yields_no_event_for_an_acknowledgement_with_tag_0_and_goes_on_after_it) {
    session.service.push(datagram({op(2, 0), op(2, 7)}));
    expect_event(vantu_orvanta_event_none);
    expect_event(vantu_orvanta_event_ack);
}

TEST_F(poll_parsing, refuses_a_handedness_of_0_but_not_what_follows) {
    session.service.push(datagram({op(70, 1, join({id_5, {0}})), op(70, 1, join({id_5, {255}}))}));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_invalid_argument);
    const polled next = poll_once(session.context);
    EXPECT_EQ(next.code, vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(next.event)), hex(join({u32(67), id_5, {1, 255}, filled(300, 0)})));
}

TEST_F(poll_parsing, maps_every_service_status_of_an_error) {
    const std::set<int> kept{0, 160, 161, 162, 163, 176, 177, 178, 192, 193, 194, 195, 208, 209};
    for (int status = 0; status < 256; ++status) {
        std::uint32_t expected = kept.count(status) != 0 ? static_cast<std::uint32_t>(status) : 255;
        expected = status == 179 ? 9 : status == 180 ? 10 : status == 181 ? 11 : expected;
        session.service.push(datagram({op(240, 4, join({id_5, {static_cast<std::uint8_t>(status)}}))}));
        const polled result = poll_once(session.context);
        EXPECT_EQ(result.code, vantu_orvanta_success);
        EXPECT_EQ(hex(bytes_of(result.event)),
                  hex(join({u32(255), id_5, {4}, u32(expected), filled(297, 0)})))
            << status;
    }
}

TEST_F(poll_parsing, takes_a_grip_state_without_a_tail_as_exactly_22_bytes) {
    session.service.push(datagram({op(40, 1, join({id_5, {9}, counting(1, 16), {0}})), op(2, 1)}));
    const polled result = poll_once(session.context);
    EXPECT_EQ(hex(bytes_of(result.event)),
              hex(join({u32(50), id_5, {0, 9}, counting(1, 16), filled(284, 0)})));
    expect_event(vantu_orvanta_event_ack);
}

TEST_F(poll_parsing, takes_a_grip_state_with_the_longest_tail) {
    session.service.push(
        datagram({op(40, 1, join({id_5, {9}, counting(1, 16), {255}, counting(1, 255)})), op(2, 1)}));
    const polled result = poll_once(session.context);
    EXPECT_EQ(hex(bytes_of(result.event)),
              hex(join({u32(50), id_5, {0, 9}, counting(1, 16), {255}, counting(1, 255), filled(28, 0)})));
    expect_event(vantu_orvanta_event_ack);
}

TEST_F(poll_parsing, refuses_a_grip_state_with_less_tail_than_it_counts) {
    EXPECT_EQ(code_of(datagram({op(40, 1, join({id_5, {9}, counting(1, 16), {6}, counting(1, 5)}))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of(datagram({op(40, 1, join({id_5, {9}, counting(1, 16), {255}, counting(1, 254)}))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(code_of(datagram({op(40, 1, join({id_5, {9}, counting(1, 16)}))})),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(poll_parsing, takes_a_datagram_of_2048_bytes) {
    bytes longest = datagram({op(2, 1), op(241, 0, filled(2032, 1))});
    ASSERT_EQ(longest.size(), 2048U);
    session.service.push(longest);
    expect_event(vantu_orvanta_event_ack);
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(poll_parsing, gives_1_and_a_warning_for_a_larger_datagram_and_drops_it) {
    for (const std::size_t spare : {2033U, 9000U, 60000U}) {
        EXPECT_EQ(code_of(datagram({op(2, 1), op(241, 0, filled(spare, 1))})), vantu_orvanta_unexpected_error)
            << spare;
        const auto lines = log.take();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].level, log_level::warning);
        EXPECT_THAT(lines[0].message, testing::StartsWith("message: unable to recv packet with code: "));
    }
    session.service.push(datagram({op(2, 1)}));
    expect_event(vantu_orvanta_event_ack);
}

} // namespace
