// Datagrams as text, whole and damaged.
#include "shared/datagram_text.hpp"
#include "support/bytes.hpp"

#include <gtest/gtest.h>
#include <span>

namespace orvanta_tests {
namespace {

using vantu::orvanta::communication::direction;

std::string shown(const bytes& of, direction way = direction::to_client) {
    return vantu::orvanta::datagram_text(std::as_bytes(std::span(of)), way);
}

const bytes id_7{7, 0, 0, 0};

TEST(datagram_text, shows_operations_with_tags_and_fields) {
    EXPECT_EQ(shown(datagram({op(67, 3, join({id_7, {1}, {0, 0, 0x80, 0x3F}}))}), direction::to_service),
              "config_gravity_compensation_set tag=3 device_id=7 enabled=1 scaling_factor=1");
    EXPECT_EQ(shown(datagram({op(19, 1, id_7), op(2, 9), op(6, 0)})),
              "device_opened tag=1 device_id=7; ack tag=9; disconnected");
}

TEST(datagram_text, shows_the_direction_s_own_operation) {
    const bytes request = datagram({op(66, 1, id_7)});
    EXPECT_EQ(shown(request, direction::to_service), "config_gravity_compensation_get tag=1 device_id=7");
    EXPECT_EQ(shown(request),
              "config_gravity_compensation_get tag=1 device_id=7 [body cut short: 4 of 9 bytes]");
}

TEST(datagram_text, quotes_texts) {
    EXPECT_EQ(
        shown(datagram({op(
                  3, 0,
                  join({u16(1), u16(2), u64(3), u32(4), text_field("demo", 32), text_field("1.0", 64)}))}),
              direction::to_service),
        "connect value_a=1 value_b=2 keep_alive_ns=3 process_id=4 client_name=\"demo\" version_text=\"1.0\"");
}

TEST(datagram_text, shows_the_first_bytes_of_a_block_and_the_whole_of_a_tail) {
    EXPECT_EQ(shown(datagram({op(96, 2, counting(0, 128))})),
              "table_block_128 tag=2 bytes=000102030405060708090a0b0c0d0e0f..(128 bytes)");
    EXPECT_EQ(
        shown(datagram({op(40, 0, join({id_7, {1}, filled(16, 0), {2}, {0xAB, 0xCD}}))})),
        "palmetron_state device_id=7 first=1 block=00000000000000000000000000000000 tail_count=2 tail=abcd");
}

TEST(datagram_text, tells_what_is_damaged) {
    EXPECT_EQ(shown({}), "[header cut short: 0 of 6 bytes]");
    EXPECT_EQ(shown({0xE9, 0x9E, 1}), "[header cut short: 3 of 6 bytes]");
    EXPECT_EQ(shown(datagram(std::initializer_list<bytes>{})), "[no operation]");
    EXPECT_EQ(shown({0x01, 0x02, 3, 0, 0, 0, 0xFF, 6, 0, 0, 0}),
              "[header magic 0x0201] [version 3] disconnected");
    EXPECT_EQ(shown(datagram({op(19, 1, {7, 0, 0})})), "device_opened tag=1 [body cut short: 3 of 4 bytes]");
    EXPECT_EQ(shown(datagram({op(19, 1, {7, 0, 0, 0, 5})})),
              "device_opened tag=1 device_id=7 [1 more bytes]");
    EXPECT_EQ(shown(datagram({op_of_length(19, 1, 40, id_7)})),
              "device_opened tag=1 device_id=7 [length 40: 36 past the end]");
    EXPECT_EQ(shown(datagram({op(200, 1, {1, 2}), op(2, 1)})),
              "operation 200 tag=1 [unknown, 2 bytes]; ack tag=1");
    EXPECT_EQ(shown(datagram({op(2, 1), {0xFF, 2, 0}})), "ack tag=1; [3 bytes left]");
    EXPECT_EQ(shown(datagram({op(2, 1), {0xFE, 2, 0, 0, 1}})),
              "ack tag=1; [record magic 0xFE, 5 bytes left]");
    EXPECT_EQ(
        shown(datagram({op(40, 0, join({id_7, {1}, filled(16, 0), {9}, {0xAB}}))})),
        "palmetron_state device_id=7 first=1 block=00000000000000000000000000000000 tail_count=9 tail=ab "
        "[body cut short: 23 of 31 bytes]");
    EXPECT_EQ(shown(datagram({op(40, 0, id_7)})),
              "palmetron_state device_id=7 [body cut short: 4 of 22 bytes]");
}

} // namespace
} // namespace orvanta_tests
