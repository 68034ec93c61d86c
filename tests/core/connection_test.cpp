// A connection's steps, with bytes and times by hand.
#include "core/connection.hpp"

#include "support/buffer_bytes.hpp"
#include "support/service_operations.hpp"
#include "vantu/orvanta/error_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

class a_connection : public testing::Test {
  protected:
    // The code of a datagram that has just come.
    std::int32_t begin(const bytes& datagram) {
        subject.receive_buffer().reset();
        put(subject.receive_buffer(), datagram);
        return subject.begin_datagram(rejected);
    }

    // The code of the next operation, which is decoded and taken over.
    std::int32_t take() {
        EXPECT_TRUE(subject.has_operation());
        event = {};
        const std::int32_t code = subject.decode(event, rejected);
        return code == vantu_orvanta_success ? subject.apply(event) : code;
    }

    void expect_rejected(const bytes& datagram, reject_reason reason) {
        rejected = {};
        EXPECT_EQ(begin(datagram), vantu_orvanta_protocol_parse_failed) << hex(datagram);
        EXPECT_EQ(rejected.reason, reason) << hex(datagram);
        EXPECT_EQ(subject.receive_buffer().write_position, 0U);
        EXPECT_FALSE(subject.has_operation());
    }

    [[nodiscard]] std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> all(100);
        std::size_t count = all.size();
        EXPECT_TRUE(subject.devices().copy_ids(all.data(), count));
        all.resize(count);
        return all;
    }

    connection subject;
    rejection rejected;
    vantu_orvanta_event event{};
};

// The reply of a handshake that lists these devices.
handshake_reply reply_with(const std::vector<std::uint32_t>& devices, std::uint64_t client_id = 1) {
    handshake_reply reply;
    reply.client_id = client_id;
    for (const std::uint32_t device : devices) {
        vantu_orvanta_event listed{};
        listed.event_type = vantu_orvanta_event_device_added;
        listed.device_id = device;
        EXPECT_EQ(reply.devices.apply(listed), vantu_orvanta_success);
    }
    return reply;
}

TEST_F(a_connection, has_nothing_at_first) {
    EXPECT_EQ(subject.client_id(), 0U);
    EXPECT_FALSE(subject.has_operation());
    EXPECT_FALSE(subject.is_over());
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(a_connection, takes_over_what_the_handshake_told) {
    subject.accept(reply_with({7, 5}, 0x1122334455667788), 3'000);
    EXPECT_EQ(subject.client_id(), 0x1122334455667788U);
    EXPECT_EQ(subject.due_ns(), 1'000'003'000);
    EXPECT_THAT(ids(), ElementsAre(7U, 5U));
}

TEST_F(a_connection, forgets_the_devices_of_the_session_before) {
    subject.accept(reply_with({7, 5}), 0);
    subject.accept(reply_with({6}, 2), 0);
    EXPECT_EQ(subject.client_id(), 2U);
    EXPECT_THAT(ids(), ElementsAre(6U));
    subject.accept(reply_with({}), 0);
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(a_connection, owes_a_keep_alive_one_second_after_the_last_send) {
    subject.accept(reply_with({}), 5);
    EXPECT_EQ(subject.due_ns(), 1'000'000'005);
    subject.note_send(700'000'000);
    EXPECT_EQ(subject.due_ns(), 1'700'000'000);
}

TEST_F(a_connection, takes_the_operations_of_a_datagram_one_by_one) {
    ASSERT_EQ(begin(datagram({op(2, 1), op(2, 2), op(81, 3, join({id_5, {9}}))})), vantu_orvanta_success);
    for (const std::uint8_t tag : {std::uint8_t{1}, std::uint8_t{2}}) {
        EXPECT_EQ(take(), vantu_orvanta_success);
        EXPECT_EQ(+event.event_type, +vantu_orvanta_event_ack);
        EXPECT_EQ(event.tag, tag);
    }
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_EQ(hex(bytes_of(event)),
              hex(join({u32(vantu_orvanta_event_status_power_supply), id_5, {3, 9}, filled(300, 0)})));
    EXPECT_FALSE(subject.has_operation());
}

TEST_F(a_connection, takes_any_value_in_the_reserved_field) {
    EXPECT_EQ(begin({0xE9, 0x9E, 1, 0, 0xFF, 0xFF, 0xFF, 2, 0, 0, 1}), vantu_orvanta_success);
    EXPECT_EQ(rejected.reason, reject_reason::none);
}

TEST_F(a_connection, rejects_a_header_cut_short) {
    const bytes header{0xE9, 0x9E, 1, 0, 0, 0};
    for (std::ptrdiff_t size = 0; size < 6; ++size) {
        expect_rejected(bytes(header.begin(), header.begin() + size), reject_reason::header_length);
    }
}

TEST_F(a_connection, rejects_another_magic) {
    expect_rejected({0xE8, 0x9E, 1, 0, 0, 0, 0xFF, 2, 0, 0, 1}, reject_reason::header_magic);
    expect_rejected({0xE9, 0x9F, 1, 0, 0, 0, 0xFF, 2, 0, 0, 1}, reject_reason::header_magic);
    expect_rejected({0x9E, 0xE9, 2, 0, 0, 0}, reject_reason::header_magic);
}

TEST_F(a_connection, rejects_another_version) {
    for (const bytes& version : {bytes{0, 0}, bytes{2, 0}, bytes{1, 1}, bytes{0, 1}}) {
        expect_rejected(join({{0xE9, 0x9E}, version, {0, 0, 0xFF, 2, 0, 0, 1}}),
                        reject_reason::header_version);
    }
}

TEST_F(a_connection, rejects_an_operation_record_cut_short) {
    const bytes record{0xFF, 2, 0, 0, 1};
    for (std::ptrdiff_t size = 0; size < 5; ++size) {
        expect_rejected(datagram({bytes(record.begin(), record.begin() + size)}),
                        reject_reason::operation_length);
    }
}

TEST_F(a_connection, rejects_another_operation_magic_and_drops_the_rest) {
    ASSERT_EQ(begin(datagram({op(2, 1), {0xFE, 2, 0, 0, 2}, op(2, 3)})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(rejected.reason, reject_reason::operation_magic);
    EXPECT_FALSE(subject.has_operation());
}

TEST_F(a_connection, goes_on_after_an_operation_that_it_does_not_know) {
    ASSERT_EQ(begin(datagram({op(241, 1, {1, 2, 3}), op(2, 4)})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(rejected.reason, reject_reason::none) << "nothing is logged";
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_EQ(event.tag, 4);
}

TEST_F(a_connection, leaves_less_than_an_operation_record_unread) {
    ASSERT_EQ(begin(datagram({op(2, 1), {0xFF, 2, 0, 0}})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_FALSE(subject.has_operation());
}

TEST_F(a_connection, keeps_the_devices_that_the_service_lists) {
    ASSERT_EQ(begin(datagram({device_listed(9, 1), device_listed(5, 2)})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_THAT(ids(), ElementsAre(9U, 5U));
}

TEST_F(a_connection, drops_the_rest_after_details_that_match_no_device) {
    ASSERT_EQ(begin(datagram({op(23, 0, join({id_5, filled(9, 1)})), op(2, 1)})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_no_matching_device);
    EXPECT_FALSE(subject.has_operation());
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(a_connection, is_over_with_the_goodbye_of_the_service_until_the_next_acceptance) {
    ASSERT_EQ(begin(datagram({op(2, 1), op(6, 0), op(2, 2)})), vantu_orvanta_success);
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_FALSE(subject.is_over());
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_EQ(+event.event_type, +vantu_orvanta_event_disconnected);
    EXPECT_TRUE(subject.is_over());
    EXPECT_EQ(take(), vantu_orvanta_success);
    EXPECT_TRUE(subject.is_over());
    subject.accept(reply_with({}), 0);
    EXPECT_FALSE(subject.is_over());
}

} // namespace
} // namespace orvanta_tests
