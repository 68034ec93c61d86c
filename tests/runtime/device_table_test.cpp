// The device table as the operations of the service fill it, read byte by byte through the flat API.
#include "support/service_session.hpp"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;

class device_table : public testing::Test {
  protected:
    std::int32_t receive(const bytes& operation) {
        session.service.push(datagram({operation}));
        return poll_until_something(session.context).code;
    }

    // The stored record of device 5.
    std::string stored() {
        vantu_orvanta_device device;
        std::memset(&device, 0xAA, sizeof(device));
        EXPECT_EQ(vantu_orvanta_device_info(session.context, 5, &device), vantu_orvanta_success);
        return hex(bytes_of(device));
    }

    std::int32_t info_code(std::uint32_t device_id) {
        vantu_orvanta_device device{};
        return vantu_orvanta_device_info(session.context, device_id, &device);
    }

    service_session session;
};

bytes cursor(std::uint8_t first) {
    return op(33, 0, join({id_5, counting(first, 24)}));
}
bytes cursor_b(std::uint8_t first) {
    return op(37, 0, join({id_5, counting(first, 24)}));
}
bytes orvanta3_details() {
    return op(23, 0, join({id_5, counting(0x30, 8), {2}}));
}
bytes palmetron_details() {
    return op(24, 0, join({id_5, counting(0x40, 8)}));
}
bytes grip(std::uint8_t tail) {
    return op(40, 0, join({id_5, {0x5A}, counting(0x10, 16), {tail}, counting(0xE0, tail)}));
}

// Bytes 8 to 27 after device_listed.
bytes listing(std::uint8_t type) {
    return join({{type, 7, 0xEF, 0xBE}, counting(0x60, 16)});
}

TEST_F(device_table, holds_a_listing_with_an_update_count_of_1) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), filled(50, 0)})));
}

TEST_F(device_table, holds_devices_of_every_type_byte) {
    for (int type = 0; type < 256; ++type) {
        ASSERT_EQ(receive(device_listed(5, static_cast<std::uint8_t>(type))), vantu_orvanta_success);
        EXPECT_EQ(stored(), hex(join({u64(1), listing(static_cast<std::uint8_t>(type)), filled(50, 0)})));
    }
}

TEST_F(device_table, starts_a_device_afresh_when_it_is_listed_again) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    ASSERT_EQ(receive(orvanta3_details()), vantu_orvanta_success);
    ASSERT_EQ(receive(cursor(0x70)), vantu_orvanta_success);
    ASSERT_EQ(receive(device_listed(5, 2)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), filled(50, 0)})));
}

TEST_F(device_table, stores_the_details_of_an_orvanta3_without_counting_them) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    ASSERT_EQ(receive(orvanta3_details()), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), counting(0x30, 8), {2}, filled(41, 0)})));
}

TEST_F(device_table, stores_the_details_of_a_palmetron_without_counting_them) {
    ASSERT_EQ(receive(device_listed(5, 2)), vantu_orvanta_success);
    ASSERT_EQ(receive(palmetron_details()), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), counting(0x40, 8), filled(42, 0)})));
}

TEST_F(device_table, gives_7_for_details_of_another_type_and_stores_nothing) {
    EXPECT_EQ(receive(orvanta3_details()), vantu_orvanta_no_matching_device);
    EXPECT_EQ(receive(palmetron_details()), vantu_orvanta_no_matching_device);
    EXPECT_EQ(info_code(5), vantu_orvanta_no_matching_device);
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    EXPECT_EQ(receive(palmetron_details()), vantu_orvanta_no_matching_device);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), filled(50, 0)})));
    ASSERT_EQ(receive(device_listed(5, 2)), vantu_orvanta_success);
    EXPECT_EQ(receive(orvanta3_details()), vantu_orvanta_no_matching_device);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), filled(50, 0)})));
}

TEST_F(device_table, drops_the_datagram_of_details_that_match_no_device) {
    session.service.push(datagram({orvanta3_details(), op(2, 1)}));
    EXPECT_EQ(poll_until_something(session.context).code, vantu_orvanta_no_matching_device);
    EXPECT_EQ(poll_once(session.context).event.event_type, +vantu_orvanta_event_none);
}

TEST_F(device_table, stores_cursor_states_and_their_kind_and_counts_them) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    ASSERT_EQ(receive(orvanta3_details()), vantu_orvanta_success);
    ASSERT_EQ(receive(cursor(0x70)), vantu_orvanta_success);
    EXPECT_EQ(
        stored(),
        hex(join({u64(2), listing(1), counting(0x30, 8), {2}, filled(16, 0), {1}, counting(0x70, 24)})));
    ASSERT_EQ(receive(cursor_b(0x90)), vantu_orvanta_success);
    EXPECT_EQ(
        stored(),
        hex(join({u64(3), listing(1), counting(0x30, 8), {2}, filled(16, 0), {2}, counting(0x90, 24)})));
}

TEST_F(device_table, makes_an_entry_without_a_type_for_a_cursor_state_of_an_unlisted_device) {
    ASSERT_EQ(receive(cursor(0x70)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), filled(45, 0), {1}, counting(0x70, 24)})));
    EXPECT_EQ(receive(orvanta3_details()), vantu_orvanta_no_matching_device) << "its type is not known yet";
}

TEST_F(device_table, makes_an_entry_without_a_type_for_the_other_cursor_state_too) {
    ASSERT_EQ(receive(cursor_b(0x70)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), filled(45, 0), {2}, counting(0x70, 24)})));
}

TEST_F(device_table, stores_26_bytes_of_the_grip_state_of_a_palmetron) {
    ASSERT_EQ(receive(device_listed(5, 2)), vantu_orvanta_success);
    ASSERT_EQ(receive(palmetron_details()), vantu_orvanta_success);
    ASSERT_EQ(receive(grip(8)), vantu_orvanta_success);
    const bytes head = join({listing(2), counting(0x40, 8)});
    EXPECT_EQ(stored(),
              hex(join({u64(2), head, {0x5A}, counting(0x10, 16), {8}, counting(0xE0, 8), filled(16, 0)})));
    ASSERT_EQ(receive(grip(20)), vantu_orvanta_success);
    EXPECT_EQ(stored(),
              hex(join({u64(3), head, {0x5A}, counting(0x10, 16), {20}, counting(0xE0, 8), filled(16, 0)})));
    ASSERT_EQ(receive(grip(2)), vantu_orvanta_success);
    EXPECT_EQ(stored(),
              hex(join({u64(4), head, {0x5A}, counting(0x10, 16), {2, 0xE0, 0xE1}, filled(22, 0)})));
}

TEST_F(device_table, only_counts_a_grip_state_of_a_device_that_is_no_palmetron) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    ASSERT_EQ(receive(grip(8)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(2), listing(1), filled(50, 0)})));
}

TEST_F(device_table, makes_no_entry_for_a_grip_state) {
    ASSERT_EQ(receive(grip(8)), vantu_orvanta_success);
    EXPECT_EQ(info_code(5), vantu_orvanta_no_matching_device);
}

TEST_F(device_table, is_not_touched_by_bodies_that_are_cut_short) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    EXPECT_EQ(receive(op(33, 0, join({id_5, filled(23, 1)}))), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(receive(op(37, 0, join({id_5, filled(23, 1)}))), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(receive(op(23, 0, join({id_5, filled(8, 1)}))), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(receive(op(16, 0, join({id_5, filled(19, 1)}))), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(receive(op(17, 0, {5, 0, 0})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(receive(op(40, 0, join({id_5, filled(17, 1), {3, 1, 1}}))),
              vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), filled(50, 0)})));
}

TEST_F(device_table, forgets_a_removed_device) {
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    ASSERT_EQ(receive(op(17, 0, id_5)), vantu_orvanta_success);
    EXPECT_EQ(info_code(5), vantu_orvanta_no_matching_device);
    EXPECT_EQ(receive(op(17, 0, id_5)), vantu_orvanta_success)
        << "a device that is not there can be removed as well";
    EXPECT_EQ(receive(cursor(1)), vantu_orvanta_success);
    EXPECT_EQ(info_code(5), vantu_orvanta_success);
}

TEST_F(device_table, takes_a_device_with_id_0_that_no_reader_can_ask_for) {
    ASSERT_EQ(receive(device_listed(0, 1)), vantu_orvanta_success);
    std::uint32_t only = 99;
    std::size_t count = 1;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, &only, &count), vantu_orvanta_success);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(only, 0U);
    EXPECT_EQ(info_code(0), vantu_orvanta_invalid_argument);
}

TEST_F(device_table, lists_its_ids) {
    std::vector<std::uint32_t> ids(4, 99);
    std::size_t count = ids.size();
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count), vantu_orvanta_success);
    EXPECT_EQ(count, 0U);
    for (const std::uint32_t device : {7U, 0xFFFFFFFFU, 9U}) {
        ASSERT_EQ(receive(device_listed(device, 1)), vantu_orvanta_success);
    }
    count = 4;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count), vantu_orvanta_success);
    EXPECT_EQ(count, 3U);
    EXPECT_THAT(ids, ElementsAre(7U, 0xFFFFFFFFU, 9U, 99U)) << "in the order of announcement";
    count = 3;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count), vantu_orvanta_success)
        << "just enough room";
    EXPECT_EQ(count, 3U);
}

TEST_F(device_table, lists_exactly_256_devices_in_an_array_for_256_and_255_in_one_for_255) {
    std::vector<std::uint32_t> announced;
    for (std::uint32_t device = 1256; device > 1000; --device) {
        announced.push_back(device);
        ASSERT_EQ(receive(device_listed(device, 1)), vantu_orvanta_success);
    }
    std::vector<std::uint32_t> ids(256);
    std::size_t count = 256;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count), vantu_orvanta_success);
    EXPECT_EQ(count, 256U);
    EXPECT_EQ(ids, announced);
    ids.back() = 99;
    count = 255;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count),
              vantu_orvanta_buffer_full_or_empty);
    EXPECT_EQ(count, 255U);
    EXPECT_EQ(ids.back(), 99U);
    announced.back() = 99;
    EXPECT_EQ(ids, announced);
}

TEST_F(device_table, fills_an_array_that_is_too_small_and_says_9) {
    for (const std::uint32_t device : {7U, 8U, 9U}) {
        ASSERT_EQ(receive(device_listed(device, 1)), vantu_orvanta_success);
    }
    std::vector<std::uint32_t> all(3);
    std::size_t count = 3;
    ASSERT_EQ(vantu_orvanta_device_ids(session.context, all.data(), &count), vantu_orvanta_success);
    std::vector<std::uint32_t> some(3, 99);
    count = 2;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, some.data(), &count),
              vantu_orvanta_buffer_full_or_empty);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(some, (std::vector<std::uint32_t>{all[0], all[1], 99}));
}

TEST_F(device_table, says_9_and_a_count_of_0_for_no_room_only_when_there_is_a_device) {
    std::uint32_t none = 99;
    std::size_t count = 0;
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, &none, &count), vantu_orvanta_success);
    EXPECT_EQ(count, 0U);
    ASSERT_EQ(receive(device_listed(5, 1)), vantu_orvanta_success);
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, &none, &count), vantu_orvanta_buffer_full_or_empty);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(none, 99U);
}

TEST_F(device_table, holds_a_thousand_devices) {
    for (std::uint32_t device = 1; device <= 1000; ++device) {
        ASSERT_EQ(receive(device_listed(device, 1)), vantu_orvanta_success);
    }
    std::vector<std::uint32_t> ids(1000);
    std::size_t count = ids.size();
    EXPECT_EQ(vantu_orvanta_device_ids(session.context, ids.data(), &count), vantu_orvanta_success);
    std::sort(ids.begin(), ids.end());
    for (std::uint32_t device = 1; device <= 1000; ++device) {
        EXPECT_EQ(ids[device - 1], device);
        EXPECT_EQ(info_code(device), vantu_orvanta_success);
    }
}

TEST_F(device_table, readers_check_arguments_first_and_the_connection_then) {
    vantu_orvanta_device device{};
    std::uint32_t only = 0;
    std::size_t count = 1;
    vantu_orvanta_context* unconnected = vantu_orvanta_context_create();
    EXPECT_EQ(vantu_orvanta_device_ids(nullptr, &only, &count), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_ids(unconnected, nullptr, &count), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_ids(unconnected, &only, nullptr), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_ids(unconnected, &only, &count), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_device_info(nullptr, 5, &device), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_info(unconnected, 0, &device), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_info(unconnected, 5, nullptr), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_device_info(unconnected, 5, &device), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(vantu_orvanta_device_info(session.context, 5, &device), vantu_orvanta_no_matching_device);
    vantu_orvanta_disconnect(unconnected);
}

} // namespace
