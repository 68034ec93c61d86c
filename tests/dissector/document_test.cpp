// The tables of docs/capturing.md against what the dissector registers.

#include "dissector/samples.hpp"
#include "docs/markdown_table.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace orvanta_tests {
namespace {

constexpr const char* document = DOCS_FOLDER "/capturing.md";
constexpr std::string_view damage_prefix = "orvanta.damage.";

bool is_of_an_operation(const std::string& filter) {
    for (const sample& one : samples()) {
        const std::string name = "orvanta." + one.name;
        if (filter == name || filter.starts_with(name + '.')) {
            return true;
        }
    }
    return false;
}

std::string type_in_document(const std::string& type) {
    static const std::map<std::string, std::string> names{
        {"FT_NONE", "heading"}, {"FT_UINT8", "u8"},       {"FT_UINT16", "u16"},         {"FT_UINT32", "u32"},
        {"FT_BYTES", "bytes"},  {"FT_FRAMENUM", "frame"}, {"FT_RELATIVE_TIME", "time"},
    };
    return names.at(type);
}

// The rows under a heading without their last cell.
std::vector<table_row> documented(const char* heading) {
    std::vector<table_row> rows = table_under(document, heading);
    for (table_row& row : rows) {
        EXPECT_EQ(row.size(), 3U);
        row.pop_back();
    }
    return rows;
}

TEST(capturing_document, lists_every_filter_that_is_not_of_an_operation) {
    std::vector<table_row> rows;
    for (const registered_field& field : registered_fields()) {
        if (!field.filter.starts_with(damage_prefix) && !is_of_an_operation(field.filter)) {
            rows.push_back({'`' + field.filter + '`', type_in_document(field.type)});
        }
    }
    EXPECT_THAT(documented("## Filters"), testing::UnorderedElementsAreArray(rows));
}

TEST(capturing_document, lists_every_damage_with_its_message) {
    std::vector<table_row> rows;
    for (const registered_field& field : registered_fields()) {
        if (field.filter.starts_with(damage_prefix)) {
            rows.push_back({'`' + field.filter + '`', field.label});
        }
    }
    EXPECT_THAT(documented("## Damage"), testing::UnorderedElementsAreArray(rows));
}

TEST(capturing_document, says_how_severe_a_damage_is) {
    const std::map<std::string, std::string> damaged{
        {"header_short", "E9 9E 01"},
        {"header_magic", "E9 9F 01 00 00 00"},
        {"header_version", "E9 9E 02 00 00 00"},
        {"record_short", "E9 9E 01 00 00 00"},
        {"record_magic", "E9 9E 01 00 00 00 00 06 00 00 00"},
        {"body_short", "E9 9E 01 00 00 00 FF 11 04 00 00"},
        {"tail_short", "E9 9E 01 00 00 00 FF 28 16 00 00 07 00 00 00 01"
                       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01"},
        {"unknown_code", "E9 9E 01 00 00 00 FF 07 00 00 00"},
        {"wrong_way", "E9 9E 01 00 00 00 FF 01 00 00 00"},
        {"length_wrong", "E9 9E 01 00 00 00 FF 11 00 00 00 07 00 00 00"},
        {"trailing", "E9 9E 01 00 00 00 FF 06 00 00 00 00"},
    };
    std::vector<sent_datagram> datagrams;
    for (const auto& [name, content] : damaged) {
        datagrams.push_back(sent_to_client(from_hex(content)));
    }
    const std::vector<shown_fields> shown = dissect(datagrams, {}, {"_ws.expert.severity"});
    std::map<std::string, std::string> documented_severity;
    for (const table_row& row : table_under(document, "## Damage")) {
        documented_severity[row.front()] = row.back();
    }
    const std::map<std::string, std::string> severities{{"6291456", "warning"}, {"8388608", "error"}};
    auto one = shown.begin();
    for (const auto& [name, content] : damaged) {
        EXPECT_EQ(documented_severity.at("`orvanta.damage." + name + '`'),
                  severities.at((one++)->at("_ws.expert.severity")))
            << name;
    }
}

} // namespace
} // namespace orvanta_tests
