// Values of fields as text, both ways.
#include "shared/field_text.hpp"
#include "support/bytes.hpp"

#include <gtest/gtest.h>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using communication::field;
using communication::field_type;

struct sample {
    field what;
    bytes value;
    std::string text;
};

std::string shown(const field& what, const bytes& value) {
    return value_text(what, std::as_bytes(std::span(value)));
}

const std::vector<sample> samples{
    {{"a", field_type::u8, 1}, {0xFF}, "255"},
    {{"a", field_type::u16, 1}, {0x34, 0x12}, "4660"},
    {{"a", field_type::u32, 1}, {0xFF, 0xFF, 0xFF, 0xFF}, "4294967295"},
    {{"a", field_type::u64, 1}, {0, 0, 0, 0, 0, 0, 0, 0x80}, "9223372036854775808"},
    {{"a", field_type::f32, 1}, {0, 0, 0, 0x3F}, "0.5"},
    {{"a", field_type::f32, 1}, {0xCD, 0xCC, 0xCC, 0x3D}, "0.1"},
    {{"a", field_type::f32, 1}, {0, 0, 0x80, 0x7F}, "inf"},
    {{"a", field_type::f32, 1}, {0, 0, 0x80, 0xFF}, "-inf"},
    {{"a", field_type::f32, 1}, {0, 0, 0xC0, 0x7F}, "nan"},
    {{"a", field_type::f32, 3}, {0, 0, 0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0xC0}, "1,0,-2"},
    {{"a", field_type::bytes, 3}, {0x0A, 0xFF, 0x00}, "0aff00"},
    {{"a", field_type::tail, 0}, {0x01, 0x02}, "0102"},
    {{"a", field_type::text, 5}, {'d', 'e', 'm', 'o', 0}, "demo"},
};

TEST(value_text, shows_each_type) {
    for (const sample& one : samples) {
        EXPECT_EQ(shown(one.what, one.value), one.text);
    }
}

TEST(value_text, shows_a_text_up_to_its_first_zero_and_no_control_characters) {
    EXPECT_EQ(shown({"a", field_type::text, 4}, {'a', 0x1B, 0, 'b'}), "a?");
    EXPECT_EQ(shown({"a", field_type::text, 2}, {'a', 'b'}), "ab");
}

TEST(write_value, writes_what_value_text_shows) {
    for (const sample& one : samples) {
        bytes value(one.value.size(), 0x55);
        write_value(one.what, one.text, std::as_writable_bytes(std::span(value)));
        EXPECT_EQ(value, one.value) << one.text;
    }
}

TEST(write_value, takes_hexadecimal_numbers_and_blanks_between_several) {
    bytes value(2);
    write_value({"a", field_type::u16, 1}, "0xBEEF", std::as_writable_bytes(std::span(value)));
    EXPECT_EQ(value, (bytes{0xEF, 0xBE}));
    write_value({"a", field_type::u8, 2}, "1, 2", std::as_writable_bytes(std::span(value)));
    EXPECT_EQ(value, (bytes{1, 2}));
}

struct refusal {
    field what;
    std::size_t size;
    std::string text;
    std::string message;
};

TEST(write_value, refuses_what_does_not_fit_and_leaves_the_value) {
    const std::vector<refusal> refusals{
        {{"state", field_type::u8, 1},
         1,
         "256",
         "state is '256'; a whole number from 0 to 255 would be right"},
        {{"state", field_type::u8, 1}, 1, "-1", "state is '-1'; a whole number from 0 to 255 would be right"},
        {{"state", field_type::u8, 1}, 1, "", "state is ''; a whole number from 0 to 255 would be right"},
        {{"id", field_type::u32, 1},
         4,
         "4294967296",
         "id is '4294967296'; a whole number from 0 to 4294967295 would be right"},
        {{"r", field_type::f32, 1}, 4, "1e99", "r is '1e99'; a number, nan, inf or -inf would be right"},
        {{"r", field_type::f32, 1}, 4, "0.5x", "r is '0.5x'; a number, nan, inf or -inf would be right"},
        {{"values", field_type::f32, 3},
         12,
         "1,2",
         "values is '1,2'; 3 numbers with commas between them would be right"},
        {{"values", field_type::f32, 3},
         12,
         "1,2,3,4",
         "values is '1,2,3,4'; 3 numbers with commas between them would be right"},
        {{"values", field_type::f32, 3},
         12,
         "1,2,",
         "values is ''; a number, nan, inf or -inf would be right"},
        {{"uuid", field_type::bytes, 2}, 2, "0aff0", "uuid is '0aff0'; 4 hexadecimal digits would be right"},
        {{"uuid", field_type::bytes, 2}, 2, "0agf", "uuid is '0agf'; 4 hexadecimal digits would be right"},
        {{"name", field_type::text, 4},
         4,
         "demo",
         "name is 'demo'; a text of at most 3 bytes would be right"},
    };
    for (const refusal& one : refusals) {
        bytes value(one.size, 0x55);
        try {
            write_value(one.what, one.text, std::as_writable_bytes(std::span(value)));
            ADD_FAILURE() << one.text << " was taken";
        } catch (const std::invalid_argument& wrong) {
            EXPECT_EQ(wrong.what(), one.message);
        }
        EXPECT_EQ(value, bytes(one.size, 0x55)) << one.text;
    }
}

TEST(named_value, finds_a_field_or_one_value_of_several) {
    using communication::direction;
    const auto cursor = communication::fields_of(33, direction::to_client);
    EXPECT_EQ(named_value(cursor, "values")->what.count, 6);
    const auto third = named_value(cursor, "values[2]");
    ASSERT_TRUE(third.has_value());
    EXPECT_EQ(third->offset, 12U);
    EXPECT_EQ(third->what.count, 1);
    for (const std::string_view wrong : {"values[6]", "values[]", "values[1", "device_id[0]", "value", ""}) {
        EXPECT_FALSE(named_value(cursor, wrong).has_value()) << wrong;
    }
}

} // namespace

TEST(bytes, are_read_from_two_hexadecimal_digits_each) {
    const std::vector<std::byte> wanted{std::byte{0xFF}, std::byte{0x57}, std::byte{0x0A}};
    EXPECT_EQ(bytes_of_hexadecimal("fF570a"), wanted);
    EXPECT_EQ(bytes_of_hexadecimal(""), std::vector<std::byte>{});
    for (const char* wrong : {"f", "ff5", "0x", "fg", "-1", "f f "}) {
        EXPECT_EQ(bytes_of_hexadecimal(wrong), std::nullopt) << wrong;
    }
}

} // namespace orvanta_tests
