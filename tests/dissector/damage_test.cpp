// Each damage of a datagram has an expert info of its own, and the operations after it are read as client and
// service read them.

#include "dissector/samples.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using vantu::orvanta::communication::direction;
using vantu::orvanta::communication::find_operation;
using vantu::orvanta::communication::operations;

struct damaged_datagram {
    std::string what;
    sent_datagram datagram;
    std::string info;
    std::vector<std::string> damage; // in the order of the names
    std::string codes;
    std::string unread;
};

sent_datagram client_receives(std::string_view text) {
    return sent_to_client(from_hex(text));
}

sent_datagram service_receives(std::string_view text) {
    return sent_to_service(from_hex(text));
}

std::vector<damaged_datagram> damaged_datagrams() {
    return {
        {"a magic of another protocol",
         client_receives("E9 9F 01 00 00 00  FF 06 00 00 00"),
         "[header_magic]",
         {"header_magic"},
         "",
         ""},
        {"magic in the other order",
         service_receives("9E E9 01 00 00 00  FF 01 00 00 00"),
         "[header_magic]",
         {"header_magic"},
         "",
         ""},
        {"version 2",
         client_receives("E9 9E 02 00 00 00  FF 06 00 00 00"),
         "[header_version]",
         {"header_version"},
         "",
         ""},
        {"a reserved field that is not 0",
         client_receives("E9 9E 01 00 34 12  FF 06 00 00 00"),
         "disconnected",
         {},
         "6",
         ""},
        {"no operation", client_receives("E9 9E 01 00 00 00"), "[record_short]", {"record_short"}, "", ""},
        {"a second record with a wrong magic",
         client_receives("E9 9E 01 00 00 00  FF 13 04 00 01 07 00 00 00  FE 06 00 00 00"),
         "device_opened tag=1 device_id=7; [record_magic]",
         {"record_magic"},
         "19",
         "06000000"},
        {"four trailing bytes",
         client_receives("E9 9E 01 00 00 00  FF 06 00 00 00  FF 06 00 00"),
         "disconnected; [trailing]",
         {"trailing"},
         "6",
         "ff060000"},
        {"a trailing byte of a request",
         service_receives("E9 9E 01 00 00 00  FF 01 00 00 00  00"),
         "keep_alive; [trailing]",
         {"trailing"},
         "1",
         "00"},
        {"an unknown operation before a known one",
         client_receives("E9 9E 01 00 00 00  FF 07 02 00 05 AA BB  FF 06 00 00 00"),
         "operation 7 tag=5; [unknown_code]; disconnected",
         {"unknown_code"},
         "7;6",
         "aabb"},
        {"an unknown operation whose length is past the end",
         client_receives("E9 9E 01 00 00 00  FF 07 06 00 00 FF 06 00 00 00"),
         "operation 7; [unknown_code]; [length_past_end]",
         {"length_past_end", "unknown_code"},
         "7",
         "ff06000000"},
        {"a request that comes from the service",
         client_receives("E9 9E 01 00 00 00  FF 47 05 00 00 07 00 00 00 01  FF 06 00 00 00"),
         "config_handedness_set; [wrong_way]; disconnected",
         {"wrong_way"},
         "71;6",
         "0700000001"},
        {"an answer that comes from a client",
         service_receives("E9 9E 01 00 00 00  FF 04 01 00 00 00"),
         "connected; [wrong_way]",
         {"wrong_way"},
         "4",
         "00"},
        {"an answer from a client whose length is past the end",
         service_receives("E9 9E 01 00 00 00  FF 04 08 00 00 00"),
         "connected; [wrong_way]; [length_past_end]",
         {"length_past_end", "wrong_way"},
         "4",
         "00"},
        // A client takes what the operation needs, whatever the length field says.
        {"a length that a client does not need, too large",
         client_receives("E9 9E 01 00 00 00  FF 13 FF FF 01 07 00 00 00  FF 06 00 00 00"),
         "device_opened tag=1 device_id=7; [length_wrong]; disconnected",
         {"length_wrong"},
         "19;6",
         ""},
        {"a length that a client does not need, too small",
         client_receives("E9 9E 01 00 00 00  FF 13 00 00 01 07 00 00 00  FF 06 00 00 00"),
         "device_opened tag=1 device_id=7; [length_wrong]; disconnected",
         {"length_wrong"},
         "19;6",
         ""},
        {"a body that is too short for a client",
         client_receives("E9 9E 01 00 00 00  FF 46 05 00 01 07 00 00 00"),
         "config_handedness tag=1 device_id=7; [body_short]",
         {"body_short"},
         "70",
         ""},
        {"a tail that is too short",
         client_receives("E9 9E 01 00 00 00  FF 28 18 00 00 07 00 00 00 01"
                         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00  03 E1 E2"),
         "palmetron_state device_id=7; [tail_short]",
         {"tail_short"},
         "40",
         "e1e2"},
        {"a tail without a byte",
         client_receives("E9 9E 01 00 00 00  FF 28 16 00 00 07 00 00 00 01"
                         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00  00"),
         "palmetron_state device_id=7",
         {},
         "40",
         ""},
        // A service goes by the length field.
        {"a length that is too small for a service",
         service_receives("E9 9E 01 00 00 00  FF 14 02 00 01 07 00  FF 01 00 00 00"),
         "device_close tag=1; [body_short]; keep_alive",
         {"body_short"},
         "20;1",
         "0700"},
        {"a length that is too large for a service",
         service_receives("E9 9E 01 00 00 00  FF 14 06 00 01 07 00 00 00 AA BB  FF 01 00 00 00"),
         "device_close tag=1 device_id=7; [length_wrong]; keep_alive",
         {"length_wrong"},
         "20;1",
         "aabb"},
    };
}

std::vector<std::string> damage_in(const shown_fields& shown) {
    const std::string prefix = "orvanta.damage.";
    std::vector<std::string> names;
    for (const auto& [filter, value] : shown) {
        if (filter.starts_with(prefix)) {
            names.push_back(filter.substr(prefix.size()));
        }
    }
    return names;
}

std::string value_of(const shown_fields& shown, const std::string& filter) {
    const auto found = shown.find(filter);
    return found != shown.end() ? found->second : std::string();
}

TEST(damaged_datagrams, are_told_from_each_other) {
    const std::vector<damaged_datagram> all = damaged_datagrams();
    std::vector<sent_datagram> datagrams;
    for (const damaged_datagram& one : all) {
        datagrams.push_back(one.datagram);
    }
    const std::vector<shown_fields> shown = dissect(datagrams);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(value_of(shown[i], "info"), all[i].info) << all[i].what;
        EXPECT_EQ(damage_in(shown[i]), all[i].damage) << all[i].what;
        EXPECT_EQ(value_of(shown[i], "orvanta.op.code"), all[i].codes) << all[i].what;
        EXPECT_EQ(value_of(shown[i], "orvanta.unread"), all[i].unread) << all[i].what;
    }
}

// Each code that does not travel that way, and an operation after it that does.
TEST(damaged_datagrams, are_read_on_after_each_code_that_does_not_travel_that_way) {
    struct stray {
        std::string code;
        bool is_known;
        bool to_service;
    };
    std::vector<stray> strays;
    std::vector<sent_datagram> datagrams;
    for (const direction way : {direction::to_service, direction::to_client}) {
        const bool is_request = way == direction::to_service;
        const direction other = is_request ? direction::to_client : direction::to_service;
        for (unsigned value = 0; value < 256; ++value) {
            const auto code = static_cast<std::uint8_t>(value);
            if (find_operation(code, way) != nullptr) {
                continue;
            }
            const bytes content =
                datagram({op(code, 9, {0xAA, 0xBB, 0xCC}), is_request ? op(1, 0) : op(6, 0)});
            strays.push_back({std::to_string(value), find_operation(code, other) != nullptr, is_request});
            datagrams.push_back(is_request ? sent_to_service(content) : sent_to_client(content));
        }
    }
    ASSERT_EQ(strays.size(), 2 * 256 - operations.size());
    const std::vector<shown_fields> shown = dissect(datagrams);
    for (std::size_t i = 0; i < strays.size(); ++i) {
        const stray& one = strays[i];
        shown_fields expected = shown_header();
        expected.merge(shown_fields{
            {"orvanta.op", "1;1"},
            {"orvanta.op.magic", "0xff;0xff"},
            {"orvanta.op.code", one.code + (one.to_service ? ";1" : ";6")},
            {"orvanta.op.length", "3;0"},
            {"orvanta.op.tag", "9;0"},
            {"orvanta.unread", "aabbcc"},
            {one.to_service ? "orvanta.keep_alive" : "orvanta.disconnected", "1"},
            {one.is_known ? "orvanta.damage.wrong_way" : "orvanta.damage.unknown_code", "1"},
        });
        shown_fields got = shown[i];
        EXPECT_THAT(got["info"], testing::EndsWith(one.to_service ? "]; keep_alive" : "]; disconnected"));
        got.erase("info");
        EXPECT_EQ(got, expected) << one.code;
    }
}

TEST(damaged_datagrams, may_have_more_bytes_than_a_client_has_room_for) {
    const bytes goodbye = op(6, 0);
    bytes content = datagram({goodbye});
    while (content.size() + goodbye.size() <= 2048) {
        content.insert(content.end(), goodbye.begin(), goodbye.end());
    }
    ASSERT_EQ(content.size(), 2046U);
    bytes at_most = content;
    at_most.resize(2048);
    bytes larger = content;
    larger.resize(2049);
    const std::vector<shown_fields> shown = dissect({sent_to_client(at_most), sent_to_client(larger)});
    EXPECT_THAT(damage_in(shown[0]), testing::ElementsAre("trailing"));
    EXPECT_THAT(damage_in(shown[1]), testing::ElementsAre("too_large", "trailing"));
    EXPECT_THAT(value_of(shown[1], "info"), testing::StartsWith("[too_large]; disconnected; "));
}

// The rest of a datagram may be whole where the capture does not have it.
TEST(damaged_datagrams, are_told_from_those_that_the_capture_cuts) {
    const sent_datagram whole =
        client_receives("E9 9E 01 00 00 00  FF 13 04 00 01 07 00 00 00  FF 07 02 00 00 AA BB");
    for (const std::uint32_t missing : {1U, 2U, 6U, 8U, 14U, 18U}) {
        const shown_fields shown = dissect_captured_part(whole, missing);
        std::vector<std::string> damage = damage_in(shown);
        std::erase(damage, "unknown_code");
        EXPECT_THAT(damage, testing::ElementsAre("not_captured")) << missing;
    }
}

TEST(damaged_datagrams, register_a_filter_for_each_damage) {
    std::vector<std::string> names;
    for (const std::string& filter : registered_filters()) {
        if (filter.starts_with("orvanta.damage.")) {
            names.push_back(filter.substr(std::string("orvanta.damage.").size()));
        }
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre(
                           "header_short", "header_magic", "header_version", "record_short", "record_magic",
                           "body_short", "tail_short", "length_past_end", "length_wrong", "unknown_code",
                           "wrong_way", "trailing", "too_large", "not_captured"));
}

} // namespace
} // namespace orvanta_tests
