// Captures played into the core, datagram by datagram, written out by hand.
#include "ctl/replay/replay.hpp"
#include "support/service_operations.hpp"
#include "vantu/orvanta/error_codes.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t millisecond = 1'000'000;

socket_place place(std::uint16_t port) {
    return {false, {std::byte{127}, {}, {}, std::byte{1}}, port};
}

bytes connect_datagram() {
    return datagram({op(3, 0, filled(112, 0))});
}

// An acceptance, after these operations.
bytes accepting(const bytes& before = {}) {
    return datagram({before, op(4, 0, u64(7))});
}

std::string event(std::uint32_t type, std::uint32_t device_id, int tag) {
    return "event " + std::to_string(type) + " of " + std::to_string(device_id) + " tag " +
           std::to_string(tag);
}

class a_played_capture : public testing::Test {
  protected:
    void play(std::uint16_t from, std::uint16_t to, const bytes& content, std::int64_t time_ns = 0) {
        captured_datagram one{time_ns, place(from), place(to), {}};
        for (const std::uint8_t byte : content) {
            one.bytes.push_back(std::byte{byte});
        }
        playing.play(one);
    }
    void to_client(const bytes& content, std::int64_t time_ns = 0) { play(54320, 54321, content, time_ns); }
    void to_service(const bytes& content, std::int64_t time_ns = 0) { play(54321, 54320, content, time_ns); }
    void connect() {
        to_service(connect_datagram());
        to_client(accepting());
        outcomes.clear();
    }

    // "connected 7: 5 6", and the others as event() and refused() have them.
    std::vector<std::string> outcomes;
    vantu_orvanta_event last{};
    capture_replay playing{[this](const replayed& one) { outcomes.push_back(text_of(one)); }};

  private:
    std::string text_of(const replayed& one) {
        if (const auto* made = std::get_if<replayed_connection>(&one.outcome)) {
            std::string ids;
            for (const std::uint32_t id : made->device_ids) {
                ids += " " + std::to_string(id);
            }
            return "connected " + std::to_string(made->client_id) + ":" + ids;
        }
        if (const auto* rejected = std::get_if<replayed_rejection>(&one.outcome)) {
            return "rejected " + std::to_string(rejected->code) + ": " + rejected->reason;
        }
        last = std::get<vantu_orvanta_event>(one.outcome);
        return "event " + std::to_string(last.event_type) + " of " + std::to_string(last.device_id) +
               " tag " + std::to_string(last.tag);
    }
};

std::string refused(std::int32_t code, const std::string& reason) {
    return "rejected " + std::to_string(code) + ": " + reason;
}
std::string not_understood(const std::string& reason) {
    return refused(vantu_orvanta_protocol_parse_failed, reason);
}

TEST_F(a_played_capture, begins_with_the_devices_of_the_handshake_and_goes_on_behind_the_acceptance) {
    to_service(connect_datagram());
    to_client(join({accepting(join({device_listed(5, 1), device_listed(6, 2)})), op(19, 3, id_5)}));
    EXPECT_THAT(outcomes, ElementsAre("connected 7: 5 6", event(vantu_orvanta_event_device_opened, 5, 3)));
}

TEST_F(a_played_capture, takes_a_connection_without_its_beginning_as_open) {
    to_client(datagram({op(19, 1, id_5)}));
    EXPECT_THAT(outcomes, ElementsAre(event(vantu_orvanta_event_device_opened, 5, 1)));
}

TEST_F(a_played_capture, finds_the_handshake_where_it_has_the_services_side_alone) {
    to_client(accepting());
    to_client(datagram({op(19, 1, id_5)}));
    EXPECT_THAT(outcomes, ElementsAre("connected 7:", event(vantu_orvanta_event_device_opened, 5, 1)));
}

TEST_F(a_played_capture, has_every_byte_of_each_event) {
    connect();
    for (const received_operation& one : received_operations()) {
        if (!one.listing.empty()) {
            to_client(datagram({one.listing}));
        }
        to_client(datagram({op(one.code, 9, one.body)}));
        bytes event(sizeof last);
        std::memcpy(event.data(), &last, sizeof last);
        EXPECT_EQ(hex(event), hex(one.event(9))) << one.name;
        if (one.event_type == vantu_orvanta_event_disconnected) {
            connect();
        }
    }
}

TEST_F(a_played_capture, has_no_event_of_an_acknowledgement_that_nobody_waits_for) {
    connect();
    to_client(datagram({op(2, 0), op(2, 1)}));
    EXPECT_THAT(outcomes, ElementsAre(event(vantu_orvanta_event_ack, 0, 1)));
}

TEST_F(a_played_capture, tells_why_a_datagram_is_rejected) {
    connect();
    to_client({1, 2, 3});
    to_client(from_hex("0000 0100 0000 FF 02 0000 01"));
    to_client(from_hex("E99E 0200 0000 FF 02 0000 01"));
    to_client(datagram({}));
    to_client(from_hex("E99E 0100 0000 FE 02 0000 01"));
    to_client(bytes(2049, 0));
    EXPECT_THAT(outcomes, ElementsAre(not_understood("it is shorter than a header"),
                                      not_understood("the header's magic differs"),
                                      not_understood("the header's version differs"),
                                      not_understood("no operation follows the header"),
                                      not_understood("an operation's magic differs"),
                                      refused(vantu_orvanta_unexpected_error,
                                              "it has 2049 bytes, and the library takes 2048")));
    EXPECT_EQ(playing.counts().rejected, 6U);
}

TEST_F(a_played_capture, tells_why_an_operation_is_rejected_and_goes_on_behind_it) {
    connect();
    to_client(datagram({op(241, 0, {1, 2}), op(2, 1)}));
    to_client(datagram({op(4, 0, u64(7))}));
    to_client(datagram({op(19, 0, {5, 0})}));
    to_client(datagram({op(70, 1, join({id_5, {0}})), op(2, 2)}));
    to_client(datagram({op(40, 0, join({id_5, filled(17, 1), {9, 1, 2}}))}));
    to_client(datagram({op(23, 0, join({id_5, filled(9, 1)})), op(2, 3)}));
    EXPECT_THAT(outcomes,
                ElementsAre(not_understood("operation 241 is none that a connected client receives"),
                            event(vantu_orvanta_event_ack, 0, 1),
                            not_understood("operation 4 is none that a connected client receives"),
                            not_understood("device_opened is cut short: 2 of 4 bytes"),
                            refused(vantu_orvanta_invalid_argument, "config_handedness has no hand"),
                            event(vantu_orvanta_event_ack, 0, 2),
                            not_understood("palmetron_state is cut short in its tail"),
                            refused(vantu_orvanta_no_matching_device,
                                    "device 5 is not listed with the type of its details")));
}

TEST_F(a_played_capture, tells_why_a_connect_is_refused) {
    for (const bytes& answer :
         {datagram({op(240, 0, {0, 0, 0, 0, 178})}), datagram({op(240, 0, {0, 0, 0, 0, 179})}),
          datagram({op(2, 0)}), datagram({op(23, 0, join({id_5, filled(9, 1)}))}), bytes{1, 2, 3}}) {
        to_service(connect_datagram());
        to_client(answer);
    }
    EXPECT_THAT(
        outcomes,
        ElementsAre(
            refused(vantu_orvanta_another_client_connected, "the service serves another client only"),
            refused(vantu_orvanta_buffer_full_or_empty, "the service has no room for one more client"),
            not_understood("operation 2 has no place in the answer to a connect"),
            refused(vantu_orvanta_no_matching_device, "a device is not listed with the type of its details"),
            not_understood("the answer to the connect is not understood")));
}

TEST_F(a_played_capture, survives_an_answer_over_which_the_library_ends_its_process) {
    const std::string reason =
        "an acceptance or a refusal is cut short, over which the library ends its process";
    for (const bytes& answer :
         {datagram({op(4, 0, filled(7, 0))}), datagram({op(240, 0, filled(4, 0))}),
          datagram({op_of_length(16, 0, 0, join({id_5, {1, 7}, filled(18, 0)})), op(4, 0)})}) {
        to_service(connect_datagram());
        to_client(answer);
        EXPECT_EQ(outcomes.back(), not_understood(reason));
    }
}

TEST_F(a_played_capture, has_nothing_after_the_goodbye_of_the_service) {
    connect();
    to_client(datagram({op(6, 0), op(2, 1)}));
    to_client(datagram({op(2, 1)}));
    EXPECT_THAT(outcomes,
                ElementsAre(event(vantu_orvanta_event_disconnected, 0, 0),
                            refused(vantu_orvanta_invalid_connection_state, "the client has no connection")));
}

TEST_F(a_played_capture, keeps_events_to_itself_after_the_goodbye_of_the_client) {
    connect();
    to_service(datagram({op(5, 0)}), millisecond);
    to_client(datagram({op(19, 1, id_5), op(6, 0), op(2, 1)}), 2 * millisecond);
    EXPECT_THAT(outcomes, IsEmpty());
    EXPECT_EQ(playing.counts().discarded, 2U);
}

TEST_F(a_played_capture, waits_100_ms_for_the_answer_to_a_goodbye) {
    connect();
    to_service(datagram({op(5, 0)}), 50 * millisecond);
    to_client(datagram({op(19, 1, id_5)}), 149 * millisecond);
    EXPECT_THAT(outcomes, IsEmpty());
    to_client(datagram({op(6, 0)}), 150 * millisecond);
    EXPECT_EQ(outcomes.size(), 1U);
}

TEST_F(a_played_capture, has_the_devices_of_the_latest_connection) {
    connect();
    to_client(datagram({device_listed(5, 1), op(6, 0)}));
    connect();
    to_client(datagram({op(23, 0, join({id_5, filled(9, 1)}))}));
    EXPECT_THAT(outcomes, ElementsAre(refused(vantu_orvanta_no_matching_device,
                                              "device 5 is not listed with the type of its details")));
}

TEST_F(a_played_capture, finds_a_service_at_another_port_and_hears_strangers) {
    play(40001, 40000, connect_datagram());
    play(40000, 40001, accepting());
    play(40002, 40001, datagram({op(2, 1)}));
    EXPECT_THAT(outcomes, ElementsAre("connected 7:", event(vantu_orvanta_event_ack, 0, 1)));
}

TEST_F(a_played_capture, keeps_two_clients_apart_and_counts_others) {
    play(40001, 54320, connect_datagram());
    play(40002, 54320, connect_datagram());
    play(54320, 40001, accepting());
    play(54320, 40002, datagram({op(240, 0, {0, 0, 0, 0, 178})}));
    play(54320, 40001, datagram({op(2, 1)}));
    play(53, 40003, {1, 2, 3});
    play(40003, 53, filled(112, 0));
    EXPECT_EQ(outcomes.size(), 3U);
    EXPECT_EQ(outcomes.back(), event(vantu_orvanta_event_ack, 0, 1));
    EXPECT_EQ(playing.counts().datagrams, 3U);
    EXPECT_EQ(playing.counts().others, 2U);
}

} // namespace
