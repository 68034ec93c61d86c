// The fields of bodies, against places that are written out by hand.
#include "vantu/orvanta/communication/fields.hpp"

#include <gtest/gtest.h>
#include <set>
#include <string_view>

namespace {

using namespace vantu::orvanta::communication;

void expect_place(std::uint8_t code, direction way, std::string_view name, std::size_t offset,
                  field_type type, std::size_t size) {
    const auto found = find_field(fields_of(code, way), name);
    ASSERT_TRUE(found.has_value()) << name;
    EXPECT_EQ(found->offset, offset) << name;
    EXPECT_EQ(found->what.type, type) << name;
    EXPECT_EQ(size_of(found->what), size) << name;
}

TEST(fields_of_bodies, stand_where_the_protocol_has_them) {
    constexpr auto in = direction::to_service;
    constexpr auto out = direction::to_client;
    expect_place(3, in, "value_a", 0, field_type::u16, 2);
    expect_place(3, in, "value_b", 2, field_type::u16, 2);
    expect_place(3, in, "keep_alive_ns", 4, field_type::u64, 8);
    expect_place(3, in, "process_id", 12, field_type::u32, 4);
    expect_place(3, in, "client_name", 16, field_type::text, 32);
    expect_place(3, in, "version_text", 48, field_type::text, 64);
    expect_place(4, out, "client_id", 0, field_type::u64, 8);
    expect_place(16, out, "device_id", 0, field_type::u32, 4);
    expect_place(16, out, "device_type", 4, field_type::u8, 1);
    expect_place(16, out, "second_byte", 5, field_type::u8, 1);
    expect_place(16, out, "short_id", 6, field_type::u16, 2);
    expect_place(16, out, "uuid", 8, field_type::bytes, 16);
    expect_place(18, in, "value", 4, field_type::u16, 2);
    expect_place(23, out, "information", 4, field_type::bytes, 8);
    expect_place(23, out, "handedness", 12, field_type::u8, 1);
    expect_place(33, out, "values", 4, field_type::f32, 24);
    expect_place(37, out, "values", 4, field_type::f32, 24);
    expect_place(40, out, "first", 4, field_type::u8, 1);
    expect_place(40, out, "block", 5, field_type::bytes, 16);
    expect_place(40, out, "tail_count", 21, field_type::u8, 1);
    expect_place(40, out, "tail", 22, field_type::tail, 0);
    expect_place(47, out, "r", 4, field_type::f32, 4);
    expect_place(47, out, "x", 8, field_type::f32, 4);
    expect_place(47, out, "y", 12, field_type::f32, 4);
    expect_place(47, out, "z", 16, field_type::f32, 4);
    expect_place(64, out, "saved", 4, field_type::u8, 1);
    expect_place(66, out, "enabled", 4, field_type::u8, 1);
    expect_place(66, out, "scaling_factor", 5, field_type::f32, 4);
    expect_place(67, in, "scaling_factor", 5, field_type::f32, 4);
    expect_place(71, in, "handedness", 4, field_type::u8, 1);
    expect_place(80, out, "values", 4, field_type::f32, 12);
    expect_place(81, out, "state", 4, field_type::u8, 1);
    expect_place(97, out, "bytes", 0, field_type::bytes, 301);
    expect_place(225, out, "bytes", 4, field_type::bytes, 48);
    expect_place(240, out, "status", 4, field_type::u8, 1);
}

TEST(fields_of_bodies, have_each_a_name_of_its_own) {
    for (const body_layout& layout : body_layouts) {
        std::set<std::string_view> names;
        for (const field& one : layout.fields) {
            EXPECT_TRUE(names.insert(one.name).second) << one.name << " of " << int{layout.code};
        }
    }
}

TEST(fields_of_bodies, are_none_for_an_operation_that_does_not_go_that_way) {
    EXPECT_TRUE(fields_of(67, direction::to_client).empty());
    EXPECT_TRUE(fields_of(255, direction::to_client).empty());
    EXPECT_FALSE(find_field(fields_of(19, direction::to_client), "status").has_value());
}

} // namespace
