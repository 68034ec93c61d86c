// Fixed-size text fields.
#include "support/traps.hpp"
#include "vantu/orvanta/common/text_field.hpp"

#include <string>
#include <string_view>

namespace orvanta_tests {
namespace {

using vantu::orvanta::assign_text;
using vantu::orvanta::text_of;

TEST(text_field, holds_its_text_and_zeros) {
    char field[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    assign_text(field, "ab");
    EXPECT_EQ(std::string_view(field, 6), std::string_view("ab\0\0\0\0", 6));
    assign_text(field, "");
    EXPECT_EQ(std::string_view(field, 6), std::string_view("\0\0\0\0\0\0", 6));
}

TEST(text_field, holds_a_text_that_leaves_room_for_one_zero) {
    char field[6];
    assign_text(field, "abcde");
    EXPECT_EQ(std::string_view(field, 6), std::string_view("abcde\0", 6));
}

TEST(text_field, is_read_up_to_its_first_zero) {
    EXPECT_EQ(text_of({'a', 'b', '\0', 'c'}), "ab");
    EXPECT_EQ(text_of({'\0', 'b'}), "");
}

TEST(text_field, is_read_whole_when_it_has_no_zero) {
    const char field[3] = {'a', 'b', 'c'};
    EXPECT_EQ(text_of(field), "abc");
}

using text_field_death_test = death_test;

TEST_F(text_field_death_test, refuses_a_text_that_leaves_no_room_for_a_zero) {
    char field[6];
    const char* line = "ERROR utils 85 MSG assumption failed: size < N\n";
    EXPECT_TRAP(assign_text(field, "abcdef"), line);
    EXPECT_TRAP(assign_text(field, "abcdefg"), line);
}

} // namespace
} // namespace orvanta_tests
