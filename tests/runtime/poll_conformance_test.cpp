// Every received operation through the poll: the whole body, one byte short, with bytes to spare, and the
// tags 0 and 255. Bodies and events are written out from the protocol's tables.
#include "support/log_capture.hpp"
#include "support/service_session.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using testing::IsEmpty;

struct received_operation {
    std::uint8_t code;
    std::string name;
    bytes body;
    std::uint32_t event_type;
    bool copies_tag;
    bytes event_device; // 4 bytes
    bytes payload;      // the bytes that are not zero by rule
    bytes listing;      // operations that have to come first
};

const bytes id{0xD4, 0xC3, 0xB2, 0xA1};
const bytes no_id{0, 0, 0, 0};

bytes with_id(const bytes& rest) {
    return join({id, rest});
}

const bytes listed_orvanta3 = device_listed(0xA1B2C3D4, 1);
const bytes listed_palmetron = device_listed(0xA1B2C3D4, 2);
const bytes quaternion{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x3F,
                       0x00, 0x00, 0x80, 0xBE, 0x00, 0x00, 0x00, 0x40}; // 1, 0.5, -0.25, 2
const bytes currents{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x40, 0x00, 0x00, 0x40, 0x40}; // 1, 2, 3
const bytes grip_state = join({{0x5A}, counting(0x10, 16), {3, 0xE1, 0xE2, 0xE3}});

const std::vector<received_operation>& table() {
    static const std::vector<received_operation> rows{
        {2, "ack", {}, 1, true, no_id, {}, {}},
        {6, "disconnected", {}, 2, false, no_id, {}, {}},
        {16, "device_added", with_id(counting(0x01, 20)), 16, false, id, counting(0x01, 20), {}},
        {17, "device_removed", id, 17, false, id, {}, {}},
        {19, "device_opened", id, 18, true, id, {}, {}},
        {21, "device_closed", id, 19, true, id, {}, {}},
        {22, "device_block_reply", with_id(counting(0x20, 16)), 32, true, id, counting(0x20, 16), {}},
        {23, "device_info_orvanta3", with_id(join({counting(0x30, 8), {2}})), 20, false, id,
         join({counting(0x30, 8), {2}}), listed_orvanta3},
        {24, "device_info_palmetron", with_id(counting(0x30, 8)), 21, false, id, counting(0x30, 8),
         listed_palmetron},
        {33, "cursor_state", with_id(counting(0x40, 24)), 48, false, id, counting(0x40, 24), {}},
        {37, "cursor_state_b", with_id(counting(0x50, 24)), 49, false, id, counting(0x50, 24), {}},
        {40, "palmetron_state", with_id(grip_state), 50, false, id, grip_state, {}},
        {47, "orientation_get", with_id(quaternion), 51, true, id, quaternion, {}},
        {64, "config_save", with_id({1}), 64, true, id, {1}, {}},
        {66, "config_gravity_compensation_get", with_id(gravity_bytes), 65, true, id, gravity_bytes, {}},
        {68, "config_torque_scaling_get", with_id({1}), 66, true, id, {1}, {}},
        {70, "config_handedness", with_id({2}), 67, true, id, {2}, {}},
        {80, "status_motor_current", with_id(currents), 80, true, id, currents, {}},
        {81, "status_power_supply", with_id({3}), 81, true, id, {3}, {}},
        {96, "table_block_128", counting(0x01, 128), 112, true, no_id, counting(0x01, 128), {}},
        {97, "table_block_301", counting(0x01, 301), 113, true, no_id, counting(0x01, 301), {}},
        {224, "service_stream_a", counting(0x60, 12), 96, false, no_id, counting(0x60, 12), {}},
        {225, "service_stream_b", with_id(counting(0x70, 48)), 97, false, id, counting(0x70, 48), {}},
        {240, "service_error", with_id({0xB1}), 255, true, id, {0xB1, 0, 0, 0}, {}},
    };
    return rows;
}

TEST(poll_conformance, covers_every_operation_that_yields_an_event) {
    std::set<int> codes;
    for (const received_operation& row : table()) {
        codes.insert(row.code);
    }
    for (const auto& operation : vantu::orvanta::communication::operations) {
        if (operation.event_type != 0) {
            EXPECT_EQ(codes.count(operation.code), 1U) << operation.name;
        }
    }
    EXPECT_EQ(codes.size(), 24U);
}

class received : public testing::TestWithParam<received_operation> {
  protected:
    void list_device() {
        if (!GetParam().listing.empty()) {
            session.service.push(datagram({GetParam().listing}));
            EXPECT_EQ(poll_until_something(session.context).event.event_type, 16U);
        }
    }

    [[nodiscard]] static std::string expected_event(std::uint8_t tag) {
        const received_operation& row = GetParam();
        if (row.code == 2 && tag == 0) {
            return hex(filled(310, 0));
        }
        const std::uint8_t event_tag = row.copies_tag ? tag : std::uint8_t{0};
        return hex(join({u32(row.event_type),
                         row.event_device,
                         {event_tag},
                         row.payload,
                         filled(301 - row.payload.size(), 0)}));
    }

    void expect_event(std::uint8_t tag) {
        const polled result = poll_once(session.context);
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(hex(bytes_of(result.event)), expected_event(tag));
    }

    void expect_nothing_more() {
        const polled result = poll_once(session.context);
        if (GetParam().code == 6) {
            EXPECT_EQ(result.code, 3);
            return;
        }
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(hex(bytes_of(result.event)), hex(filled(310, 0)));
    }

    service_session session;
};

TEST_P(received, yields_its_event_with_tag_0) {
    list_device();
    session.service.push(datagram({op(GetParam().code, 0, GetParam().body)}));
    expect_event(0);
    expect_nothing_more();
}

TEST_P(received, yields_its_event_with_tag_255) {
    list_device();
    session.service.push(datagram({op(GetParam().code, 255, GetParam().body)}));
    expect_event(255);
    expect_nothing_more();
}

TEST_P(received, goes_by_the_bytes_that_are_there_and_not_by_the_stated_length) {
    list_device();
    session.service.push(datagram({op_of_length(GetParam().code, 255, 0, GetParam().body)}));
    expect_event(255);
    if (GetParam().code != 6) {
        session.service.push(datagram({op_of_length(GetParam().code, 255, 0xFFFF, GetParam().body)}));
        expect_event(255);
    }
}

TEST_P(received, leaves_up_to_4_spare_bytes_unread) {
    list_device();
    session.service.push(datagram({op(GetParam().code, 255, join({GetParam().body, filled(4, 0)}))}));
    expect_event(255);
    expect_nothing_more();
}

TEST_P(received, takes_5_spare_bytes_for_the_next_operation) {
    if (GetParam().code == 6) {
        session.service.push(datagram({op(6, 255, filled(5, 0))}));
        expect_event(255);
        expect_nothing_more();
        return;
    }
    list_device();
    session.service.push(datagram({op(GetParam().code, 255, join({GetParam().body, filled(5, 0)}))}));
    expect_event(255);
    log_capture log;
    EXPECT_EQ(poll_once(session.context).code, 6);
    EXPECT_THAT(log.take_messages(),
                ElementsAre("vantu_orvanta_poll: communication::proto::op magic mismatch"));
    expect_nothing_more();
}

TEST_P(received, lets_the_operation_behind_it_through) {
    list_device();
    session.service.push(datagram({op(GetParam().code, 255, GetParam().body), op(81, 9, with_id({7}))}));
    expect_event(255);
    if (GetParam().code != 6) {
        EXPECT_EQ(hex(bytes_of(poll_once(session.context).event)),
                  hex(join({u32(81), id, {9, 7}, filled(300, 0)})));
    }
    expect_nothing_more();
}

class received_with_body : public received {};

TEST_P(received_with_body, is_refused_one_byte_short_and_the_buffer_is_emptied) {
    list_device();
    const bytes& body = GetParam().body;
    const log_capture silent;
    session.service.push(datagram({op(GetParam().code, 255, bytes(body.begin(), body.end() - 1))}));
    EXPECT_EQ(poll_once(session.context).code, 6);
    expect_nothing_more();
}

TEST_P(received_with_body, is_refused_with_no_body_at_all) {
    list_device();
    log_capture log;
    session.service.push(datagram({op_of_length(GetParam().code, 255, 400, {})}));
    EXPECT_EQ(poll_once(session.context).code, 6);
    EXPECT_THAT(log.take(), IsEmpty());
    expect_nothing_more();
}

TEST_P(received_with_body, is_not_understood_cut_short_but_the_next_datagram_is) {
    list_device();
    const bytes& body = GetParam().body;
    session.service.push(datagram({op(GetParam().code, 1, bytes(body.begin(), body.end() - 1))}));
    session.service.push(datagram({op(GetParam().code, 2, body)}));
    EXPECT_EQ(poll_once(session.context).code, 6);
    expect_event(2);
}

std::vector<received_operation> rows_with_body() {
    std::vector<received_operation> rows;
    for (const received_operation& row : table()) {
        if (!row.body.empty()) {
            rows.push_back(row);
        }
    }
    return rows;
}

const auto name_of = [](const auto& row) { return row.param.name; };

INSTANTIATE_TEST_SUITE_P(each, received, testing::ValuesIn(table()), name_of);
INSTANTIATE_TEST_SUITE_P(each, received_with_body, testing::ValuesIn(rows_with_body()), name_of);

} // namespace
