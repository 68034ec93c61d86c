// The bodies of docs/protocol.md against the table of their fields.

#include "docs/markdown_table.hpp"
#include "vantu/orvanta/communication/fields.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

constexpr const char* bodies_document = DOCS_FOLDER "/protocol.md";

// Rows of offset, type and name by operation.
using documented_bodies = std::map<std::string, std::vector<table_row>>;

std::string type_text(const field& one) {
    switch (one.type) {
    case field_type::u8:
    case field_type::u16:
    case field_type::u32:
    case field_type::u64:
    case field_type::f32:
        break;
    case field_type::bytes:
        return std::to_string(one.count) + " bytes";
    case field_type::text:
        return std::to_string(one.count) + " bytes of text";
    case field_type::tail:
        return "n bytes";
    }
    const std::map<field_type, std::string> names{{field_type::u8, "u8"},
                                                  {field_type::u16, "u16"},
                                                  {field_type::u32, "u32"},
                                                  {field_type::u64, "u64"},
                                                  {field_type::f32, "f32"}};
    return (one.count == 1 ? "" : std::to_string(one.count) + ' ') + names.at(one.type);
}

documented_bodies bodies_of_table(direction way) {
    documented_bodies bodies;
    for (const body_layout& layout : body_layouts) {
        if (layout.way != way) {
            continue;
        }
        std::vector<table_row>& rows = bodies[std::string(row_of(layout.code, way).name)];
        std::size_t offset = 0;
        for (const field& one : layout.fields) {
            rows.push_back({std::to_string(offset), type_text(one), '`' + std::string(one.name) + '`'});
            offset += size_of(one);
        }
        if (rows.empty()) {
            rows.push_back({"-", "-", "-"});
        }
    }
    return bodies;
}

// The names in a cell: "`one`, `another`".
std::vector<std::string> names_in(const std::string& cell) {
    std::vector<std::string> names;
    for (auto begin = cell.find('`'); begin != std::string::npos; begin = cell.find('`', begin)) {
        const auto end = cell.find('`', begin + 1);
        names.push_back(cell.substr(begin + 1, end - begin - 1));
        begin = end + 1;
    }
    return names;
}

documented_bodies bodies_of_document(const char* heading) {
    documented_bodies bodies;
    std::vector<std::string> operations;
    for (const table_row& row : table_under(bodies_document, heading)) {
        if (row.size() < 5) {
            ADD_FAILURE() << "a row has an operation, three facts and a meaning: " << row.front();
            continue;
        }
        if (!row.front().empty()) {
            operations = names_in(row.front());
        }
        EXPECT_FALSE(row[4].empty()) << row[3] << " means nothing";
        for (const std::string& name : operations) {
            EXPECT_TRUE(row.front().empty() || !bodies.contains(name)) << name << " is there twice";
            bodies[name].push_back({row[1], row[2], row[3]});
        }
    }
    return bodies;
}

TEST(protocol_document, tells_the_fields_of_every_body) {
    EXPECT_EQ(bodies_of_document("## Bodies sent by the client"), bodies_of_table(direction::to_service));
    EXPECT_EQ(bodies_of_document("## Bodies received, and the event they fill"),
              bodies_of_table(direction::to_client));
}

TEST(protocol_document, spells_the_fields_of_a_body_as_the_wire_has_them) {
    EXPECT_THAT(bodies_of_document("## Bodies sent by the client").at("config_gravity_compensation_set"),
                testing::ElementsAre(table_row{"0", "u32", "`device_id`"}, table_row{"4", "u8", "`enabled`"},
                                     table_row{"5", "f32", "`scaling_factor`"}));
}

} // namespace
} // namespace orvanta_tests
