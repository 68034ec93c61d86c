// Every request of a client and its answer, byte by byte.
#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cmath>
#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(opening, is_confirmed_with_the_request_s_tag) {
    service_fixture tested;
    tested.enter(1);
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x12, 0x06, 0x00, 0x21, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x21, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: opened device 1"));
}

TEST(opening, of_a_palmetron_with_any_argument_is_confirmed) {
    service_fixture tested;
    tested.enter(1);
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x12, 0x06, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0xFF, 0xFF}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00}})}));
}

TEST(opening, twice_is_confirmed_twice_and_streams_once) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.wait(0), SizeIs(1));
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x12, 0x06, 0x00, 0x22, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x13, 0x04, 0x00, 0x22, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(tested.wait(0), IsEmpty());
}

TEST(opening, of_a_device_by_several_clients_is_allowed) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.enter(2, {1});
    const sent_list streams = tested.wait(0);
    ASSERT_THAT(streams, SizeIs(2));
    EXPECT_EQ(streams[0].content, streams[1].content);
}

TEST(closing, is_confirmed_and_ends_the_streams_of_that_device_alone) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x14, 0x04, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x15, 0x04, 0x00, 0xFF, 0x01, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: closed device 1"));
    const sent_list streams = tested.wait(ns_per_second);
    ASSERT_THAT(streams, SizeIs(1));
    EXPECT_EQ(streams[0].content[6 + 1], 40); // the Palmetron's state, nothing before it
}

TEST(closing, and_opening_again_starts_the_streams_anew) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.wait(0);
    tested.send(1, datagram({{0xFF, 0x14, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}}));
    EXPECT_THAT(tested.wait(ns_per_second), IsEmpty());
    tested.send(1, datagram({{0xFF, 0x12, 0x06, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    EXPECT_THAT(tested.wait(0), SizeIs(1));
}

TEST(the_orientation, is_told_as_a_unit_quaternion) {
    service_fixture tested;
    tested.enter(1, {1});
    const sent_list answer =
        tested.send(1, datagram({{0xFF, 0x2F, 0x04, 0x00, 0x30, 0x01, 0x00, 0x00, 0x00}}));
    ASSERT_THAT(answer, SizeIs(1));
    const bytes& content = answer[0].content;
    ASSERT_EQ(content.size(), 6U + 5 + 20);
    EXPECT_EQ(bytes(content.begin(), content.begin() + 15),
              datagram({{0xFF, 0x2F, 0x14, 0x00, 0x30, 0x01, 0x00, 0x00, 0x00}}));
    float length = 0;
    for (std::size_t place = 15; place < 31; place += 4) {
        length += float_at(content, place) * float_at(content, place);
    }
    EXPECT_NEAR(std::sqrt(length), 1.0F, 1e-6F);
}

TEST(gravity_compensation, is_at_first_on_with_a_factor_of_three_quarters) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x42, 0x04, 0x00, 0x31, 0x01, 0x00, 0x00, 0x00}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x42, 0x09, 0x00, 0x31, 0x01, 0x00, 0x00, 0x00, 0x01,
                                               0x00, 0x00, 0x40, 0x3F}})}));
}

TEST(gravity_compensation, is_set_and_answered_under_the_code_of_the_query) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x43, 0x09, 0x00, 0x32, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
                                          0x00, 0x00, 0x3F}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x42, 0x09, 0x00, 0x32, 0x01, 0x00, 0x00, 0x00, 0x00,
                                               0x00, 0x00, 0x00, 0x3F}})}));
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x42, 0x04, 0x00, 0x33, 0x01, 0x00, 0x00, 0x00}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x42, 0x09, 0x00, 0x33, 0x01, 0x00, 0x00, 0x00, 0x00,
                                               0x00, 0x00, 0x00, 0x3F}})}));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: set gravity compensation of device 1 off, factor 0.5"));
}

TEST(gravity_compensation, takes_both_ends_of_the_factor_s_range) {
    service_fixture tested;
    tested.enter(1, {1});
    for (const bytes& factor : {bytes{0x00, 0x00, 0x00, 0x00}, bytes{0x00, 0x00, 0x80, 0x3F}}) {
        const bytes record = join({{0x01, 0x00, 0x00, 0x00, 0x01}, factor});
        EXPECT_THAT(tested.send(1, datagram({join({{0xFF, 0x43, 0x09, 0x00, 0x00}, record})})),
                    ElementsAre(sent{1, datagram({join({{0xFF, 0x42, 0x09, 0x00, 0x00}, record})})}));
    }
}

TEST(torque_scaling, is_at_first_on) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x44, 0x04, 0x00, 0x34, 0x01, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x44, 0x05, 0x00, 0x34, 0x01, 0x00, 0x00, 0x00, 0x01}})}));
}

TEST(torque_scaling, is_set_and_answered_under_the_code_of_the_query) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x45, 0x05, 0x00, 0x35, 0x01, 0x00, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x44, 0x05, 0x00, 0x35, 0x01, 0x00, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x44, 0x04, 0x00, 0x36, 0x01, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x44, 0x05, 0x00, 0x36, 0x01, 0x00, 0x00, 0x00, 0x00}})}));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: set torque scaling of device 1 off"));
}

TEST(handedness, is_set_and_all_clients_get_the_device_s_details_anew) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.enter(2);
    const bytes left_handed{0xFF, 0x17, 0x0D, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                            0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x02};
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x47, 0x05, 0x00, 0x37, 0x01, 0x00, 0x00, 0x00, 0x02}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x46, 0x05, 0x00, 0x37, 0x01, 0x00, 0x00, 0x00, 0x02}})},
                            sent{1, datagram({left_handed})}, sent{2, datagram({left_handed})}));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: set device 1 left-handed"));
}

TEST(handedness, is_set_back_and_told_to_clients_that_connect_later) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.send(1, datagram({{0xFF, 0x47, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02}}));
    const sent_list later = tested.send(2, datagram({connect_operation(0)}));
    ASSERT_THAT(later, SizeIs(1));
    EXPECT_EQ(later[0].content[6 + 29 + 17], 0x02);
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x47, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01}})),
                ElementsAre(sent{1, datagram({{0xFF, 0x46, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01}})},
                            sent{1, datagram({orvanta3_details})}, sent{2, datagram({orvanta3_details})}));
}

TEST(saving, is_confirmed_with_1_once_the_configuration_is_kept) {
    service_fixture tested;
    tested.enter(1, {1});
    EXPECT_THAT(
        tested.send(1, datagram({{0xFF, 0x40, 0x04, 0x00, 0x38, 0x01, 0x00, 0x00, 0x00}})),
        ElementsAre(sent{1, datagram({{0xFF, 0x40, 0x05, 0x00, 0x38, 0x01, 0x00, 0x00, 0x00, 0x01}})}));
    EXPECT_THAT(tested.saved, ElementsAre(1U));
    EXPECT_THAT(tested.lines, ElementsAre("client 1: saved the configuration of device 1"));
}

TEST(saving, that_fails_is_a_communication_error_with_the_device) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.saving_works = false;
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x40, 0x04, 0x00, 0x38, 0x01, 0x00, 0x00, 0x00}})),
                ElementsAre(sent{1, refusal(0x38, 1, 0xD0)}));
}

TEST(saving, succeeds_where_configurations_are_kept_nowhere) {
    simulator::service core({}, simulator::make_devices(1, 0));
    const bytes content = datagram({connect_operation(0),
                                    {0xFF, 0x12, 0x06, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00},
                                    {0xFF, 0x40, 0x04, 0x00, 0x38, 0x01, 0x00, 0x00, 0x00}});
    core.receive(peer_of(1), std::as_bytes(std::span(content)), 0);
    const auto answers = core.take_outgoing();
    ASSERT_THAT(answers, SizeIs(3));
    EXPECT_EQ(answers[2].bytes.bytes[7], std::byte{64});
}

TEST(saving, is_done_by_nothing_but_the_request_for_it) {
    service_fixture tested;
    tested.enter(1, {1});
    tested.send(1, datagram({{0xFF, 0x45, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00},
                             {0xFF, 0x47, 0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02},
                             {0xFF, 0x14, 0x04, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00},
                             {0xFF, 0x05, 0x00, 0x00, 0x00}}));
    tested.core.say_goodbye();
    EXPECT_THAT(tested.saved, IsEmpty());
}

TEST(requests, change_the_device_that_they_name_and_no_other) {
    service_fixture tested({}, 2, 0);
    tested.enter(1, {1, 2});
    tested.send(1, datagram({{0xFF, 0x45, 0x05, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00}}));
    EXPECT_TRUE(tested.core.devices()[0].settings.torque_scaling);
    EXPECT_FALSE(tested.core.devices()[1].settings.torque_scaling);
}

} // namespace
} // namespace orvanta_tests
