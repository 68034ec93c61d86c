// Each operation, field by field, as tshark shows it.

#include "dissector/samples.hpp"
#include "vantu/orvanta/communication/fields.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

std::string tag_and_device(const sample& of) {
    std::string text = of.tag == "0" ? "" : " tag=" + of.tag;
    for (const sample_field& field : of.fields) {
        text += field.name == "device_id" ? " device_id=" + field.shown : "";
    }
    return text;
}

TEST(dissected_operations, have_a_sample_each_with_the_fields_of_the_table) {
    ASSERT_EQ(samples().size(), operations.size());
    for (std::size_t i = 0; i < operations.size(); ++i) {
        const sample& one = samples()[i];
        EXPECT_EQ(one.name, operations[i].name);
        EXPECT_EQ(one.way, operations[i].way) << one.name;
        EXPECT_EQ(one.code, std::to_string(operations[i].code)) << one.name;
        std::vector<std::string> in_table;
        for (const field& row : body_layouts[i].fields) {
            in_table.emplace_back(row.name);
        }
        std::vector<std::string> in_sample;
        for (const sample_field& field : one.fields) {
            in_sample.push_back(field.name);
        }
        EXPECT_EQ(in_sample, in_table) << one.name;
    }
}

TEST(dissected_operations, show_every_field_and_no_other) {
    std::vector<sent_datagram> datagrams;
    for (const sample& one : samples()) {
        datagrams.push_back(datagram_of(one));
    }
    const std::vector<shown_fields> shown = dissect(datagrams);
    ASSERT_EQ(shown.size(), 37U);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const sample& one = samples()[i];
        shown_fields expected = shown_whole(one);
        expected["info"] = one.name + tag_and_device(one);
        shown_fields got = shown[i];
        // That is for tests of their own.
        for (const char* link : {"orvanta.response_in", "orvanta.request_in", "orvanta.response_time"}) {
            got.erase(link);
        }
        EXPECT_EQ(got, expected) << one.name;
    }
}

TEST(dissected_operations, register_a_filter_for_each_operation_and_field) {
    std::set<std::string> expected;
    for (const sample& one : samples()) {
        expected.insert("orvanta." + one.name);
        for (const sample_field& field : one.fields) {
            expected.insert(filter_of(one, field));
        }
    }
    for (const char* name :
         {"header", "header.magic", "header.version", "header.reserved", "op", "op.magic", "op.code",
          "op.length", "op.tag", "unread", "response_in", "request_in", "response_time"}) {
        expected.insert(std::string("orvanta.") + name);
    }
    std::set<std::string> registered;
    for (const std::string& filter : registered_filters()) {
        if (!filter.starts_with("orvanta.damage.")) {
            EXPECT_TRUE(registered.insert(filter).second) << filter << " is registered twice";
        }
    }
    EXPECT_EQ(registered, expected);
}

TEST(dissected_operations, follow_each_other_in_one_datagram) {
    const shown_fields shown = dissect({sent_to_client(from_hex("E9 9E 01 00 00 00"
                                                                "FF 11 04 00 00 01 00 00 00"
                                                                "FF 13 04 00 05 02 00 00 00"
                                                                "FF 51 05 00 00 02 00 00 00 01"
                                                                "FF 11 04 00 00 E9 03 00 00"
                                                                "FF 06 00 00 00"))})
                                   .at(0);
    EXPECT_EQ(shown.at("info"),
              "device_removed device_id=1; device_opened tag=5 device_id=2; "
              "status_power_supply device_id=2; device_removed device_id=1001; disconnected");
    EXPECT_EQ(shown.at("orvanta.op.code"), "17;19;81;17;6");
    EXPECT_EQ(shown.at("orvanta.op.length"), "4;4;5;4;0");
    EXPECT_EQ(shown.at("orvanta.op.tag"), "0;5;0;0;0");
    EXPECT_EQ(shown.at("orvanta.device_id"), "1;2;2;1001");
    EXPECT_EQ(shown.at("orvanta.device_removed"), "1;1");
    EXPECT_EQ(shown.at("orvanta.status_power_supply.state"), "1");
}

// The lines of a tree that begin with the text, from there on.
std::vector<std::string> lines_with(const std::string& tree, const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = tree.find(' ' + text); at != std::string::npos;
         at = tree.find(' ' + text, at + 1)) {
        lines.push_back(tree.substr(at + 1, tree.find('\n', at) - at - 1));
    }
    return lines;
}

TEST(dissected_operations, name_their_values) {
    std::vector<sent_datagram> datagrams;
    const std::vector<std::uint8_t> statuses{0,    0xA0, 0xA1, 0xA2, 0xA3, 0xB0, 0xB1, 0xB2, 0xB3, 0xB4,
                                             0xB5, 0xC0, 0xC1, 0xC2, 0xC3, 0xD0, 0xD1, 0xFF, 0x7F};
    for (const std::uint8_t status : statuses) {
        datagrams.push_back(sent_to_client(datagram({op(240, 0, {7, 0, 0, 0, status})})));
    }
    for (const std::uint8_t type : bytes{0, 1, 2, 3}) {
        datagrams.push_back(sent_to_client(datagram({op(16, 0, join({{7, 0, 0, 0, type}, filled(19, 0)}))})));
    }
    for (const std::uint8_t hand : bytes{0, 1, 2, 3}) {
        datagrams.push_back(sent_to_client(datagram({op(70, 0, {7, 0, 0, 0, hand})})));
    }
    for (const std::uint8_t enabled : bytes{0, 1, 2}) {
        datagrams.push_back(sent_to_service(datagram({op(69, 0, {7, 0, 0, 0, enabled})})));
    }
    const std::string tree = trees_of(datagrams);
    EXPECT_THAT(
        lines_with(tree, "status: "),
        testing::ElementsAre(
            "status: nil (0)", "status: invalid version (160)", "status: invalid operation (161)",
            "status: invalid body (162)", "status: invalid argument (163)",
            "status: client is not connected (176)", "status: device was not opened (177)",
            "status: another client is already connected (178)",
            "status: an internal buffer is either full or empty (179)",
            "status: an internal request queue is empty (180)",
            "status: an internal request queue is full (181)", "status: invalid device identifier (192)",
            "status: invalid device type (193)", "status: service does not support device model (194)",
            "status: service cannot parse the device pointer (195)",
            "status: communication error with device (208)", "status: client id (cid) doesn't exist (209)",
            "status: unknown (255)", "status: Unknown (127)"));
    EXPECT_THAT(lines_with(tree, "device_type: "),
                testing::ElementsAre("device_type: none (0)", "device_type: orvanta3 (1)",
                                     "device_type: palmetron (2)", "device_type: Unknown (3)"));
    EXPECT_THAT(lines_with(tree, "handedness: "),
                testing::ElementsAre("handedness: none (0)", "handedness: right (1)", "handedness: left (2)",
                                     "handedness: Unknown (3)"));
    EXPECT_THAT(lines_with(tree, "enabled: "),
                testing::ElementsAre("enabled: off (0)", "enabled: on (1)", "enabled: Unknown (2)"));
    EXPECT_THAT(lines_with(tree, "Code: "), testing::Contains("Code: service_error (240)").Times(19));
}

TEST(dissected_operations, show_texts_up_to_the_first_zero_whatever_their_bytes) {
    const bytes head = from_hex("01 00 02 00 00 00 00 00 00 00 00 00 03 00 00 00");
    const auto connect_of = [&head](const bytes& name, const bytes& version) {
        return sent_to_service(datagram({op(3, 0, join({head, name, version}))}));
    };
    const std::vector<shown_fields> shown =
        dissect({connect_of(join({{'a', 0, 'b'}, filled(29, 'c')}), filled(64, 0)),
                 connect_of(filled(32, 'n'), filled(64, 'v')), connect_of(filled(32, 0xFF), filled(64, 0))});
    const std::string name = "orvanta.connect.client_name";
    const std::string version = "orvanta.connect.version_text";
    EXPECT_EQ(shown.at(0).at(name), "a");
    EXPECT_EQ(shown.at(0).count(version), 0U);
    EXPECT_EQ(shown.at(1).at(name), std::string(32, 'n'));
    EXPECT_EQ(shown.at(1).at(version), std::string(64, 'v'));
    EXPECT_THAT(shown.at(2).at(name), testing::StartsWith("\xEF\xBF\xBD")); // the sign for what is no letter
}

} // namespace
} // namespace orvanta_tests
