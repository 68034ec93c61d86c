// The verb "send": datagrams of the service, by fields and by bytes.
#include "simulator/fixtures/simulation_fixture.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The datagrams that go out for a line that must be good.
sent_list sent_by(simulation_fixture& fixture, const std::string& line) {
    const verb_result result = run_verb(fixture.tested, line);
    EXPECT_TRUE(result.good) << line << ": " << result.text;
    EXPECT_EQ(result.text, "");
    return fixture.take();
}

std::string complaint_of(simulation_fixture& fixture, const std::string& line) {
    const verb_result result = run_verb(fixture.tested, line);
    EXPECT_FALSE(result.good) << line;
    EXPECT_THAT(fixture.take(), IsEmpty()) << line;
    return result.text;
}

TEST(send, composes_an_operation_of_the_fields_that_are_named) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_THAT(sent_by(fixture, "send device_block_reply tag=9 device_id=258 "
                                 "bytes=000102030405060708090a0b0c0d0eff"),
                ElementsAre(sent{1, datagram({{0xFF, 0x16, 0x14, 0x00, 0x09, 0x02, 0x01, 0x00, 0x00,
                                               0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08,
                                               0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0xFF}})}));
    EXPECT_THAT(
        sent_by(fixture, "send cursor_state_b values[1]=nan device_id=1 values[5]=-1"),
        ElementsAre(sent{1, datagram({{0xFF, 0x25, 0x1C, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
                                       0x00, 0x00, 0x00, 0x00, 0xC0, 0x7F, 0x00, 0x00, 0x00, 0x00, 0x00,
                                       0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0xBF}})}));
}

TEST(send, leaves_a_field_that_is_not_named_0) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_THAT(sent_by(fixture, "send ack"),
                ElementsAre(sent{1, datagram({{0xFF, 0x02, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(sent_by(fixture, "send table_block_128 tag=255"),
                ElementsAre(sent{1, datagram({join({{0xFF, 0x60, 0x80, 0x00, 0xFF}, bytes(128)})})}));
    EXPECT_THAT(sent_by(fixture, "send table_block_301"),
                ElementsAre(sent{1, datagram({join({{0xFF, 0x61, 0x2D, 0x01, 0x00}, bytes(301)})})}));
    EXPECT_THAT(sent_by(fixture, "send service_stream_a"),
                ElementsAre(sent{1, datagram({join({{0xFF, 0xE0, 0x0C, 0x00, 0x00}, bytes(12)})})}));
    EXPECT_THAT(sent_by(fixture, "send service_stream_b device_id=7"),
                ElementsAre(sent{1, datagram({join({{0xFF, 0xE1, 0x34, 0x00, 0x00, 0x07}, bytes(51)})})}));
}

TEST(send, counts_the_bytes_of_a_tail) {
    simulation_fixture fixture;
    fixture.enter(1);
    const bytes head = join({{0x09, 0x00, 0x00, 0x00, 0x01}, bytes(16)});
    EXPECT_THAT(
        sent_by(fixture, "send palmetron_state device_id=9 first=1 tail=0aff"),
        ElementsAre(sent{1, datagram({join({{0xFF, 0x28, 0x18, 0x00, 0x00}, head, {0x02, 0x0A, 0xFF}})})}));
    EXPECT_THAT(sent_by(fixture, "send palmetron_state device_id=9 first=1 tail_count=200"),
                ElementsAre(sent{1, datagram({join({{0xFF, 0x28, 0x16, 0x00, 0x00}, head, {0xC8}})})}));
}

TEST(send, knows_every_operation_to_clients) {
    simulation_fixture fixture;
    fixture.enter(1);
    for (const auto& row : vantu::orvanta::communication::operations) {
        if (row.way == vantu::orvanta::communication::direction::to_client) {
            const auto list = sent_by(fixture, "send " + std::string(row.name));
            ASSERT_EQ(list.size(), 1U) << row.name;
            EXPECT_EQ(list[0].content.size(), 11U + row.body_size) << row.name;
            EXPECT_EQ(list[0].content.at(7), row.code);
        }
    }
}

TEST(send, takes_bytes_as_they_are) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_THAT(sent_by(fixture, "send 00Ff7a"), ElementsAre(sent{1, {0x00, 0xFF, 0x7A}}));
    EXPECT_EQ(sent_by(fixture, "send " + std::string(2 * longest_sent_datagram, '1')).at(0).content.size(),
              longest_sent_datagram);
}

TEST(send, goes_to_all_clients_or_to_one) {
    simulation_fixture fixture;
    fixture.enter(5);
    fixture.enter(3);
    EXPECT_THAT(sent_by(fixture, "send 01"), ElementsAre(sent{5, {0x01}}, sent{3, {0x01}}));
    EXPECT_THAT(sent_by(fixture, "send 01 client=1"), ElementsAre(sent{5, {0x01}}));
    EXPECT_THAT(sent_by(fixture, "send ack client=2 tag=1").at(0).to, 3U);
    EXPECT_THAT(complaint_of(fixture, "send 01 client=3"),
                HasSubstr("there is no client 3; 1 or 2 would be right"));
}

TEST(send, means_by_client_the_number_that_a_fault_means) {
    simulation_fixture fixture;
    for (const unsigned from : {5U, 3U, 4U}) {
        fixture.enter(from);
    }
    fixture.send(5, datagram({{0xFF, 0x05, 0x00, 0x00, 0x00}}));
    EXPECT_THAT(sent_by(fixture, "send 01 client=2"), ElementsAre(sent{3, {0x01}}));
    EXPECT_THAT(sent_by(fixture, "send 01 client=3"), ElementsAre(sent{4, {0x01}}));
    EXPECT_THAT(complaint_of(fixture, "send 01 client=1"),
                HasSubstr("there is no client 1; 2 or 3 would be right"));
    fixture.enter(5);
    EXPECT_THAT(sent_by(fixture, "send 01 client=1"), ElementsAre(sent{5, {0x01}}));
    EXPECT_TRUE(run_verb(fixture.tested, "drop @client=2").good);
    EXPECT_THAT(sent_by(fixture, "send 01 client=2"), IsEmpty());
    EXPECT_THAT(status_text(fixture.tested), HasSubstr("\n  3 client "));
}

TEST(send, meets_the_faults) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_TRUE(run_verb(fixture.tested, "drop @op=ack").good);
    EXPECT_THAT(sent_by(fixture, "send ack"), IsEmpty());
    EXPECT_EQ(fixture.tested.faults().rules().at(0).happened, 1U);
}

TEST(send, that_is_wrong_says_what_would_be_right) {
    simulation_fixture fixture;
    EXPECT_THAT(complaint_of(fixture, "send ack"), HasSubstr("nobody is connected"));
    fixture.enter(1);
    EXPECT_THAT(complaint_of(fixture, "send"), HasSubstr("there is no operation"));
    EXPECT_THAT(complaint_of(fixture, "send devcie_block_reply"),
                HasSubstr("device_block_reply would be right"));
    EXPECT_THAT(complaint_of(fixture, "send device_open"), HasSubstr("'device_open' is neither"));
    EXPECT_THAT(complaint_of(fixture, "send 0102f"), HasSubstr("'0102f' is neither"));
    EXPECT_THAT(complaint_of(fixture, "send 01 tag=1"), HasSubstr("client=N alone would be right"));
    EXPECT_THAT(complaint_of(fixture, "send ack device=1"),
                HasSubstr("ack has no field 'device'; tag or client would be right"));
    EXPECT_THAT(complaint_of(fixture, "send device_removed id=1"), HasSubstr("device_id, tag or client"));
    EXPECT_THAT(complaint_of(fixture, "send device_removed device_id"), HasSubstr("whole number"));
    EXPECT_THAT(complaint_of(fixture, "send device_removed device_id=4294967296"), HasSubstr("4294967295"));
    EXPECT_THAT(complaint_of(fixture, "send ack tag=256"), HasSubstr("0 to 255"));
    EXPECT_THAT(complaint_of(fixture, "send ack client=0"), HasSubstr("1 to "));
    EXPECT_THAT(complaint_of(fixture, "send palmetron_state tail=0"), HasSubstr("255 bytes"));
    EXPECT_THAT(complaint_of(fixture, "send " + std::string(2 * longest_sent_datagram + 2, '1')),
                HasSubstr("at most 2048"));
    EXPECT_EQ(check_verb("send ack tag=1"), "");
}

} // namespace
