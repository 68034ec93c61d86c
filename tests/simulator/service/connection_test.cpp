// Connecting to the service, being told of its devices, and parting.
#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <set>

namespace orvanta_tests {
namespace {

using simulator::announce_order;
using simulator::service_settings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint8_t connect_tag = 0x07;
const bytes accepted_as_1{0xFF, 0x04, 0x08, 0x00, connect_tag, 0x01, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00,        0x00};

service_settings announcing(announce_order order) {
    service_settings settings;
    settings.announce = order;
    return settings;
}

service_settings for_a_single_client() {
    service_settings settings;
    settings.single_client = true;
    return settings;
}

// How often an operation stands in a datagram, going from one to the next by their lengths.
std::size_t count_of(std::uint8_t code, const bytes& content) {
    std::size_t count = 0;
    for (std::size_t at = 6; at + 5 <= content.size();) {
        EXPECT_EQ(content[at], 0xFF);
        count += content[at + 1] == code ? 1 : 0;
        at += 5U + content[at + 2] + 256U * content[at + 3];
    }
    return count;
}

TEST(connecting, lists_the_devices_before_the_acceptance_in_its_datagram) {
    service_fixture tested(announcing(announce_order::before));
    EXPECT_THAT(tested.send(1, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{1, datagram({orvanta3_added, orvanta3_details, palmetron_added,
                                              palmetron_details, accepted_as_1})}));
}

TEST(connecting, lists_the_devices_in_a_datagram_after_the_acceptance_when_asked_to) {
    service_fixture tested(announcing(announce_order::after));
    EXPECT_THAT(tested.send(1, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{1, datagram({accepted_as_1})},
                            sent{1, datagram({orvanta3_added, orvanta3_details, palmetron_added,
                                              palmetron_details})}));
}

TEST(connecting, is_accepted_without_any_device) {
    service_fixture before(announcing(announce_order::before), 0, 0);
    EXPECT_THAT(before.send(1, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{1, datagram({accepted_as_1})}));
    service_fixture after(announcing(announce_order::after), 0, 0);
    EXPECT_THAT(after.send(1, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{1, datagram({accepted_as_1})}));
}

TEST(connecting, lists_as_many_devices_as_fit_before_the_acceptance_and_the_rest_after_it) {
    service_fixture tested(announcing(announce_order::before), 100, 0);
    const sent_list answer = tested.send(1, datagram({connect_operation(connect_tag)}));
    // 6 bytes of header, 43 devices of 29 + 18 bytes and 13 bytes of acceptance; then 43 and 14 devices.
    ASSERT_THAT(answer, SizeIs(3));
    EXPECT_EQ(answer[0].content.size(), 6U + 43 * 47 + 13);
    EXPECT_EQ(bytes(answer[0].content.end() - 13, answer[0].content.end()), accepted_as_1);
    EXPECT_EQ(answer[1].content.size(), 6U + 43 * 47);
    EXPECT_EQ(answer[2].content.size(), 6U + 14 * 47);
    for (const sent& one : answer) {
        EXPECT_EQ(count_of(16, one.content), count_of(23, one.content));
        EXPECT_EQ(one.content[6 + 1], 16);
    }
}

TEST(connecting, keeps_every_datagram_within_2048_bytes_with_all_devices_there_can_be) {
    for (const announce_order order : {announce_order::before, announce_order::after}) {
        service_fixture tested(announcing(order), 256, 256);
        std::size_t listed = 0;
        std::size_t detailed = 0;
        std::size_t accepted = 0;
        for (const sent& one : tested.send(1, datagram({connect_operation(connect_tag)}))) {
            EXPECT_LE(one.content.size(), 2048U);
            listed += count_of(16, one.content);
            detailed += count_of(23, one.content) + count_of(24, one.content);
            accepted += count_of(4, one.content);
        }
        EXPECT_EQ(listed, 512U);
        EXPECT_EQ(detailed, 512U);
        EXPECT_EQ(accepted, 1U);
    }
}

TEST(connecting, never_parts_the_details_of_a_device_from_its_listing) {
    // Behind 35 Orvanta3 and 8 Palmetrons there are 29 bytes left: room for a listing alone.
    service_fixture tested(announcing(announce_order::after), 35, 20);
    const sent_list answer = tested.send(1, datagram({connect_operation(connect_tag)}));
    ASSERT_THAT(answer, SizeIs(3));
    EXPECT_EQ(answer[1].content.size(), 6U + 35 * 47 + 8 * 46);
    EXPECT_EQ(answer[2].content.size(), 6U + 12 * 46);
    EXPECT_EQ(count_of(16, answer[2].content), 12U);
    EXPECT_EQ(count_of(24, answer[2].content), 12U);
}

TEST(connecting, gives_every_client_an_id_of_its_own_also_after_others_have_left) {
    service_fixture tested(announcing(announce_order::after), 0, 0);
    std::set<bytes> ids;
    for (unsigned number = 0; number < 200; ++number) {
        const sent_list answer = tested.send(number, datagram({connect_operation(connect_tag)}));
        ASSERT_THAT(answer, SizeIs(1));
        ids.insert(bytes(answer[0].content.end() - 8, answer[0].content.end()));
        if (number % 3 == 0) {
            tested.send(number, goodbye_of_a_client);
        }
    }
    EXPECT_THAT(ids, SizeIs(200));
    EXPECT_FALSE(ids.contains(bytes(8, 0)));
}

TEST(connecting, counts_ids_in_64_bits) {
    service_settings settings = announcing(announce_order::after);
    settings.first_client_id = 0xFFEEDDCCBBAA9988;
    service_fixture tested(settings, 0, 0);
    EXPECT_THAT(tested.send(1, datagram({connect_operation(0)})),
                ElementsAre(sent{1, datagram({{0xFF, 0x04, 0x08, 0x00, 0x00, 0x88, 0x99, 0xAA, 0xBB, 0xCC,
                                               0xDD, 0xEE, 0xFF}})}));
}

TEST(connecting, answers_a_second_connect_of_a_peer_under_its_id_with_no_device_opened) {
    service_fixture tested;
    tested.enter(1, {1});
    ASSERT_THAT(tested.wait(0), SizeIs(1)); // the streams of device 1
    EXPECT_THAT(tested.send(1, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{1, datagram({orvanta3_added, orvanta3_details, palmetron_added,
                                              palmetron_details, accepted_as_1})}));
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
    EXPECT_THAT(tested.wait(5 * ns_per_second), IsEmpty());
}

TEST(connecting, tells_peers_apart_by_the_listening_socket_too) {
    service_fixture tested(announcing(announce_order::after), 0, 0);
    tested.enter(1);
    simulator::peer other = peer_of(1);
    other.listener = 1;
    const bytes content = datagram({connect_operation(0)});
    tested.core.receive(other, std::as_bytes(std::span(content)), tested.now);
    EXPECT_THAT(tested.core.clients(), SizeIs(2));
    EXPECT_EQ(tested.core.take_outgoing().front().to.listener, 1U);
}

TEST(connecting, refuses_another_client_while_a_single_one_is_connected) {
    service_fixture tested(for_a_single_client());
    tested.enter(1);
    EXPECT_THAT(tested.send(2, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{2, refusal(connect_tag, 0, 178)}));
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
}

TEST(connecting, takes_the_next_single_client_after_a_goodbye_a_silence_or_from_the_same_peer) {
    service_fixture tested(for_a_single_client());
    tested.enter(1, {}, 1 * ns_per_second);
    EXPECT_THAT(tested.send(1, datagram({connect_operation(0, 1 * ns_per_second)})), SizeIs(1));
    EXPECT_EQ(tested.core.clients().front().id, 1U);
    tested.send(1, goodbye_of_a_client);
    tested.enter(2, {}, 1 * ns_per_second);
    EXPECT_EQ(tested.core.clients().front().id, 2U);
    tested.now += 1 * ns_per_second + 1; // without a tick in between
    tested.enter(3);
    EXPECT_EQ(tested.core.clients().front().id, 3U);
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
}

TEST(connecting, refuses_more_clients_than_it_has_room_for) {
    service_fixture tested(announcing(announce_order::after), 0, 0);
    for (unsigned number = 0; number < 256; ++number) {
        tested.enter(number);
    }
    EXPECT_THAT(tested.send(256, datagram({connect_operation(connect_tag)})),
                ElementsAre(sent{256, refusal(connect_tag, 0, 179)}));
    EXPECT_THAT(tested.send(255, datagram({connect_operation(connect_tag)})), SizeIs(1));
    EXPECT_THAT(tested.core.clients(), SizeIs(256));
}

TEST(connecting, refuses_texts_that_do_not_end_within_their_fields) {
    service_fixture tested;
    bytes name = datagram({connect_operation(connect_tag)});
    std::fill_n(name.begin() + 6 + 5 + 16, 32, std::uint8_t{'n'});
    EXPECT_THAT(tested.send(1, name), ElementsAre(sent{1, refusal(connect_tag, 0, 0xA3)}));
    bytes version = datagram({connect_operation(connect_tag)});
    std::fill_n(version.begin() + 6 + 5 + 48, 64, std::uint8_t{'v'});
    EXPECT_THAT(tested.send(1, version), ElementsAre(sent{1, refusal(connect_tag, 0, 0xA3)}));
    EXPECT_THAT(tested.core.clients(), IsEmpty());
}

TEST(connecting, tells_of_the_client_in_one_line_whatever_its_name) {
    service_fixture tested;
    bytes content = datagram({connect_operation(0)});
    content[6 + 5 + 16] = '\n';
    content[6 + 5 + 17] = 0xE4;
    tested.send(1, content);
    EXPECT_THAT(tested.lines, ElementsAre("client 1: connected, '\?\?ster', process 16909060"));
}

TEST(parting, is_confirmed_and_forgets_the_client) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    EXPECT_THAT(tested.send(1, goodbye_of_a_client), ElementsAre(sent{1, goodbye_of_the_service}));
    EXPECT_THAT(tested.core.clients(), IsEmpty());
    EXPECT_THAT(tested.wait(5 * ns_per_second), IsEmpty());
    EXPECT_THAT(tested.lines, ElementsAre("client 1: said goodbye"));
}

TEST(parting, is_confirmed_to_a_peer_that_has_parted_before) {
    service_fixture tested;
    tested.enter(1);
    tested.send(1, goodbye_of_a_client);
    EXPECT_THAT(tested.send(1, goodbye_of_a_client), ElementsAre(sent{1, goodbye_of_the_service}));
}

TEST(parting, leaves_the_other_clients_alone) {
    service_fixture tested;
    tested.enter(1);
    tested.enter(2, {1});
    tested.send(1, goodbye_of_a_client);
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
    EXPECT_THAT(tested.wait(0), SizeIs(1));
}

TEST(parting, of_the_service_is_told_to_every_client_once) {
    service_fixture tested;
    tested.enter(1);
    tested.enter(2);
    tested.core.say_goodbye();
    EXPECT_THAT(tested.take(), ElementsAre(sent{1, goodbye_of_the_service}, sent{2, goodbye_of_the_service}));
    EXPECT_THAT(tested.core.clients(), IsEmpty());
    tested.core.say_goodbye();
    EXPECT_THAT(tested.take(), IsEmpty());
}

TEST(keep_alive, has_no_answer_neither_for_a_client_nor_for_a_stranger) {
    service_fixture tested;
    tested.enter(1);
    EXPECT_THAT(tested.send(1, keep_alive), IsEmpty());
    EXPECT_THAT(tested.send(2, keep_alive), IsEmpty());
    EXPECT_THAT(tested.core.clients(), SizeIs(1));
}

} // namespace
} // namespace orvanta_tests
