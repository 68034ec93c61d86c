// The library's version record.
#include "common/version_test.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <gtest/gtest.h>
#include <string>

namespace orvanta_tests {
namespace {

using vantu::orvanta::version;
using vantu::orvanta::version_record;

// Built before this file's tests are registered, as a file's own initialisers run in order.
const std::string text_before_main = version.version_text;

TEST(version_record, joins_its_two_versions_with_a_bar) {
    EXPECT_EQ(version.version_text, "2.0.0|2.0.0");
    EXPECT_EQ(version.version_text.size(), 11U);
    EXPECT_STREQ(version_record::left_version, "2.0.0");
    EXPECT_STREQ(version_record::right_version, "2.0.0");
}

TEST(version_record, names_the_library_and_its_build_time) {
    EXPECT_EQ(version.name, "vantu-orvanta-sdk");
    EXPECT_EQ(version.build_time, "2024-02-05T15:29:01Z");
}

TEST(version_record, is_complete_before_main) {
    EXPECT_EQ(text_before_main, "2.0.0|2.0.0");
}

TEST(version_record, is_each_source_files_own) {
    EXPECT_EQ(version_text_of_the_other_file(), version.version_text);
    EXPECT_NE(&version_text_of_the_other_file(), &version.version_text);
}

} // namespace
} // namespace orvanta_tests
