// Decoding one operation's body: whole, cut short, with bytes to spare, and unknown.
#include "core/operation_decoder.hpp"

#include "support/buffer_bytes.hpp"
#include "support/service_operations.hpp"
#include "vantu/orvanta/error_codes.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using communication::proto::op_magic;

class decoding : public testing::Test {
  protected:
    // Decodes an operation with these bytes after its record.
    std::int32_t decode(std::uint8_t code, std::uint8_t tag, const bytes& body, std::uint16_t length = 0) {
        buffer.reset();
        put(buffer, body);
        event = {};
        return decode_operation(buffer, {op_magic, code, length, tag}, event);
    }

    byte_buffer buffer{constants::mode_read};
    vantu_orvanta_event event{};
};

class decoding_each : public decoding, public testing::WithParamInterface<received_operation> {};

TEST_P(decoding_each, fills_the_event_for_every_tag) {
    for (const std::uint8_t tag : {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{255}}) {
        EXPECT_EQ(decode(GetParam().code, tag, GetParam().body), vantu_orvanta_success);
        EXPECT_EQ(hex(bytes_of(event)), hex(GetParam().event(tag))) << "tag " << +tag;
        EXPECT_EQ(buffer.read_len(), 0U);
    }
}

TEST_P(decoding_each, goes_by_the_bytes_that_are_there_and_not_by_the_stated_length) {
    EXPECT_EQ(decode(GetParam().code, 9, GetParam().body, 0xFFFF), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(GetParam().event(9)));
}

TEST_P(decoding_each, leaves_what_follows_the_body_unread) {
    EXPECT_EQ(decode(GetParam().code, 9, join({GetParam().body, {0xAB, 0xCD}})), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(GetParam().event(9)));
    ASSERT_EQ(buffer.read_len(), 2U);
    EXPECT_EQ(buffer.unread()[0], std::byte{0xAB});
}

INSTANTIATE_TEST_SUITE_P(each, decoding_each, testing::ValuesIn(received_operations()),
                         [](const auto& row) { return row.param.name; });

TEST_F(decoding, refuses_each_body_cut_short_anywhere_and_empties_the_buffer) {
    for (const received_operation& row : received_operations()) {
        for (auto end = row.body.begin(); end != row.body.end(); ++end) {
            EXPECT_EQ(decode(row.code, 9, bytes(row.body.begin(), end)), vantu_orvanta_protocol_parse_failed)
                << row.name << " of " << end - row.body.begin() << " bytes";
            EXPECT_EQ(buffer.write_position, 0U) << row.name;
        }
    }
}

TEST_F(decoding, skips_the_whole_body_of_an_unknown_operation) {
    std::set<int> known;
    for (const received_operation& row : received_operations()) {
        known.insert(row.code);
    }
    for (int code = 0; code < 256; ++code) {
        if (known.count(code) == 0) {
            EXPECT_EQ(decode(static_cast<std::uint8_t>(code), 1, {1, 2, 3, 4}, 3),
                      vantu_orvanta_protocol_parse_failed)
                << code;
            EXPECT_EQ(buffer.read_len(), 1U) << code;
        }
    }
}

TEST_F(decoding, skips_an_unknown_body_that_ends_with_the_datagram) {
    EXPECT_EQ(decode(241, 1, {1, 2, 3}, 3), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(buffer.read_len(), 0U);
    EXPECT_EQ(buffer.read_position, 3U);
}

TEST_F(decoding, empties_the_buffer_for_an_unknown_body_cut_short) {
    EXPECT_EQ(decode(241, 1, {1, 2, 3}, 4), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(buffer.write_position, 0U);
}

TEST_F(decoding, does_not_know_an_acceptance) {
    EXPECT_EQ(decode(4, 0, u64(1), 8), vantu_orvanta_protocol_parse_failed);
}

TEST_F(decoding, refuses_a_handedness_of_0_after_it_has_read_it) {
    EXPECT_EQ(decode(70, 1, join({id_5, {0}, {0xAB}})), vantu_orvanta_invalid_argument);
    EXPECT_EQ(buffer.read_len(), 1U);
    EXPECT_EQ(decode(70, 1, join({id_5, {255}})), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)),
              hex(join({u32(vantu_orvanta_event_config_handedness), id_5, {1, 255}, filled(300, 0)})));
}

TEST_F(decoding, takes_a_grip_state_with_a_tail_of_0_and_of_255_bytes) {
    const bytes head = join({id_5, {0x5A}, counting(0x10, 16)});
    const bytes start = join({u32(vantu_orvanta_event_palmetron_state), id_5, {0, 0x5A}, counting(0x10, 16)});
    EXPECT_EQ(decode(40, 1, join({head, {0}, {0xAB}})), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(join({start, filled(284, 0)})));
    EXPECT_EQ(buffer.read_len(), 1U);
    EXPECT_EQ(decode(40, 1, join({head, {255}, counting(1, 255), {0xAB}})), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(join({start, {255}, counting(1, 255), filled(28, 0)})));
    EXPECT_EQ(buffer.read_len(), 1U);
}

TEST_F(decoding, refuses_a_grip_state_with_less_tail_than_it_counts) {
    const bytes head = join({id_5, {0x5A}, counting(0x10, 16)});
    EXPECT_EQ(decode(40, 1, join({head, {6}, counting(1, 5)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(buffer.write_position, 0U);
    EXPECT_EQ(decode(40, 1, join({head, {255}, counting(1, 254)})), vantu_orvanta_protocol_parse_failed);
}

TEST_F(decoding, gives_an_error_the_code_of_the_client) {
    EXPECT_EQ(decode(240, 4, join({id_5, {181}})), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)), hex(join({u32(vantu_orvanta_event_error),
                                              id_5,
                                              {4},
                                              u32(vantu_orvanta_request_queue_full),
                                              filled(297, 0)})));
}

} // namespace
} // namespace orvanta_tests
