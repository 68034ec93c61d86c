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

TEST(poll_conformance, covers_every_operation_that_the_client_receives) {
    std::set<int> covered;
    for (const received_operation& row : received_operations()) {
        EXPECT_TRUE(covered.insert(row.code).second) << row.name << " has two rows";
    }
    using vantu::orvanta::communication::direction;
    for (const auto& operation : vantu::orvanta::communication::operations) {
        const bool received =
            operation.way == direction::to_client && operation.event_type != vantu_orvanta_event_none;
        EXPECT_TRUE(!received || covered.erase(operation.code) == 1)
            << "received_operations() in tests/support/service_operations.cpp has no row for "
            << operation.name;
    }
    EXPECT_TRUE(covered.empty()) << "the client receives no operation " << *covered.begin();
}

const bytes id{0xD4, 0xC3, 0xB2, 0xA1};

class received : public testing::TestWithParam<received_operation> {
  protected:
    void list_device() {
        if (!GetParam().listing.empty()) {
            session.service.push(datagram({GetParam().listing}));
            EXPECT_EQ(poll_until_something(session.context).event.event_type,
                      +vantu_orvanta_event_device_added);
        }
    }

    void expect_event(std::uint8_t tag) {
        const polled result = poll_once(session.context);
        EXPECT_EQ(result.code, vantu_orvanta_success);
        EXPECT_EQ(hex(bytes_of(result.event)), hex(GetParam().event(tag)));
    }

    void expect_nothing_more() {
        const polled result = poll_once(session.context);
        if (GetParam().code == 6) {
            EXPECT_EQ(result.code, vantu_orvanta_invalid_connection_state);
            return;
        }
        EXPECT_EQ(result.code, vantu_orvanta_success);
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
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take_messages(),
                ElementsAre("vantu_orvanta_poll: communication::proto::op magic mismatch"));
    expect_nothing_more();
}

TEST_P(received, lets_the_operation_after_it_through) {
    list_device();
    session.service.push(datagram({op(GetParam().code, 255, GetParam().body), op(81, 9, join({id, {7}}))}));
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
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    expect_nothing_more();
}

TEST_P(received_with_body, is_refused_with_no_body_at_all) {
    list_device();
    log_capture log;
    session.service.push(datagram({op_of_length(GetParam().code, 255, 400, {})}));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    EXPECT_THAT(log.take(), IsEmpty());
    expect_nothing_more();
}

TEST_P(received_with_body, is_not_understood_cut_short_but_the_next_datagram_is) {
    list_device();
    const bytes& body = GetParam().body;
    session.service.push(datagram({op(GetParam().code, 1, bytes(body.begin(), body.end() - 1))}));
    session.service.push(datagram({op(GetParam().code, 2, body)}));
    EXPECT_EQ(poll_once(session.context).code, vantu_orvanta_protocol_parse_failed);
    expect_event(2);
}

std::vector<received_operation> rows_with_body() {
    std::vector<received_operation> rows;
    for (const received_operation& row : received_operations()) {
        if (!row.body.empty()) {
            rows.push_back(row);
        }
    }
    return rows;
}

const auto name_of = [](const auto& row) { return row.param.name; };

INSTANTIATE_TEST_SUITE_P(each, received, testing::ValuesIn(received_operations()), name_of);
INSTANTIATE_TEST_SUITE_P(each, received_with_body, testing::ValuesIn(rows_with_body()), name_of);

} // namespace
