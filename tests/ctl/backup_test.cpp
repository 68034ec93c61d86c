// Backups as text: what is written, what is read, and which texts are refused with which words.
#include "ctl/report/exit_status.hpp"
#include "ctl/settings/backup.hpp"
#include "ctl/support/settings_files.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

constexpr const char* desk = R"({
  "schema": "orvanta-backup",
  "version": 1,
  "device": {
    "uuid": "6e2b8410-5f3c-4d71-9a03-c53800000001",
    "type": "orvanta3",
    "short_id": "3001"
  },
  "settings": {
    "gravity-compensation": false,
    "scaling-factor": 0.1,
    "torque-scaling": true,
    "handedness": "left"
  }
}
)";

const backup desk_values{"6e2b8410-5f3c-4d71-9a03-c53800000001",
                         device_type::orvanta3,
                         0x3001,
                         {{key::gravity_compensation, false},
                          {key::scaling_factor, 0.1F},
                          {key::torque_scaling, true},
                          {key::handedness, handedness::left}}};

// The text of the desk with one piece in another's place.
std::string desk_with(const std::string& piece, const std::string& other) {
    std::string text(desk);
    const auto at = text.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    return text.replace(at, piece.size(), other);
}

std::string refusal_of(const std::string& text) {
    try {
        (void)backup_in(text);
        return "read";
    } catch (const std::runtime_error& wrong) {
        return wrong.what();
    }
}

template <typename Do> std::string failure_of(Do it) {
    try {
        it();
        return "done";
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::refused);
        return why.what();
    }
}

TEST(a_backup, is_written_as_this_text) {
    EXPECT_EQ(text_of(desk_values), desk);
}

TEST(a_backup, is_read_as_it_was_written) {
    const backup read = backup_in(desk);
    EXPECT_EQ(read.uuid, desk_values.uuid);
    EXPECT_EQ(read.type, device_type::orvanta3);
    EXPECT_EQ(read.short_id, 0x3001);
    ASSERT_EQ(read.settings.size(), 4U);
    for (const auto& [which, one] : desk_values.settings) {
        EXPECT_TRUE(are_same(read.settings.at(which), one)) << row_of(which).name;
    }
}

TEST(a_backup, of_another_schema_or_version_is_refused) {
    EXPECT_EQ(refusal_of(desk_with("orvanta-backup", "scenario")),
              "line 2: schema is \"scenario\"; \"orvanta-backup\" would be right");
    EXPECT_EQ(refusal_of(desk_with("\"version\": 1", "\"version\": 2")),
              "line 3: version is 2; 1 would be right");
    EXPECT_EQ(refusal_of(desk_with("\"version\": 1", "\"version\": \"1\"")),
              "line 3: version is \"1\"; 1 would be right");
    EXPECT_EQ(refusal_of(desk_with("  \"version\": 1,\n", "")),
              "line 1: the backup has no \"version\"; it needs one");
}

TEST(a_backup, with_a_missing_wrong_or_unknown_member_is_refused_with_its_place) {
    EXPECT_EQ(refusal_of(desk_with("    \"torque-scaling\": true,\n", "")),
              "line 9: settings has no \"torque-scaling\"; it needs one");
    EXPECT_EQ(refusal_of(desk_with("0.1", "1.5")),
              "line 11: settings scaling-factor is 1.5; a number from 0 to 1 would be right");
    EXPECT_EQ(refusal_of(desk_with("0.1", "\"0.1\"")),
              "line 11: settings scaling-factor is \"0.1\"; a number from 0 to 1 would be right");
    EXPECT_EQ(refusal_of(desk_with("false", "0")),
              "line 10: settings gravity-compensation is 0; true or false would be right");
    EXPECT_EQ(refusal_of(desk_with("\"left\"", "\"none\"")),
              "line 13: settings handedness is \"none\"; \"left\" or \"right\" would be right");
    EXPECT_EQ(refusal_of(desk_with("\"left\"", "[\"left\"]")),
              "line 13: settings handedness is an array; \"left\" or \"right\" would be right");
    EXPECT_EQ(refusal_of(desk_with("torque-scaling", "torque-scalling")),
              "line 12: settings has an unknown member \"torque-scalling\"; it may have "
              "\"gravity-compensation\", \"scaling-factor\", \"torque-scaling\" and \"handedness\"");
    EXPECT_EQ(refusal_of(desk_with("torque-scaling", "scaling-factor")),
              "line 12: \"scaling-factor\" stands twice in one object; once is right");
    EXPECT_EQ(refusal_of(desk_with("\"3001\"", "\"zebra\"")),
              "line 7: device short_id is \"zebra\"; four hexadecimal digits would be right");
    EXPECT_EQ(refusal_of(desk_with("\"orvanta3\"", "3")),
              "line 6: device type is 3; \"orvanta3\" would be right");
}

TEST(a_backup, that_is_no_json_of_ours_is_refused) {
    const std::string whole(desk);
    for (std::size_t size = 0; size + 2 < whole.size(); ++size) {
        EXPECT_NE(refusal_of(whole.substr(0, size)), "read") << size;
    }
    EXPECT_EQ(refusal_of(whole + "1").substr(0, 8), "line 16:");
    EXPECT_EQ(refusal_of(std::string(100'000, '[')), "line 1: nested too deep; 16 levels are the most");
    for (const char* number : {"NaN", "nan", "Infinity", "1e999", "-", "00.1", "0x1"}) {
        EXPECT_EQ(refusal_of(desk_with("0.1", number)).substr(0, 8), "line 11:") << number;
    }
    EXPECT_EQ(refusal_of(desk_with("left", "\xFF\xFE")).substr(0, 8), "line 13:");
    EXPECT_EQ(refusal_of(desk_with("left", std::string(1, '\0'))).substr(0, 8), "line 13:");
    EXPECT_EQ(refusal_of("[]").substr(0, 36), "line 1: the backup is an array; an o");
    EXPECT_EQ(refusal_of("null").substr(0, 36), "line 1: the backup is null; an objec");
}

// A fault of the reader that passes a wrong byte shows as a value that no device can have.
TEST(a_backup, with_any_byte_changed_is_refused_or_holds_values_that_can_be_set) {
    const std::string whole(desk);
    std::size_t refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '"', '}', '9', '-', '\x80', 'e', ','}) {
            std::string text = whole;
            text[at] = byte;
            try {
                const backup read = backup_in(text);
                ASSERT_EQ(read.settings.size(), 4U);
                const float factor = std::get<float>(read.settings.at(key::scaling_factor));
                EXPECT_TRUE(factor >= 0 && factor <= 1) << factor;
            } catch (const std::runtime_error& wrong) {
                EXPECT_EQ(std::string(wrong.what()).substr(0, 5), "line ");
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, whole.size() * 4);
}

TEST(a_backup_file, is_written_and_read) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    write_backup(path, desk_values);
    EXPECT_EQ(content_of(path), desk);
    EXPECT_EQ(read_backup(path).uuid, desk_values.uuid);
    // Nothing else is left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(a_backup_file, is_not_written_when_it_could_not_be_restored) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    write_file(path, "old");
    backup unknown = desk_values;
    unknown.settings.at(key::handedness) = handedness::none;
    EXPECT_EQ(failure_of([&] { write_backup(path, unknown); }),
              path + ": not written, as it could not be restored: line 13: settings handedness is \"none\"; "
                     "\"left\" or \"right\" would be right");
    EXPECT_EQ(content_of(path), "old");
}

TEST(a_backup_file, that_cannot_be_written_says_so) {
    const scratch_folder folder;
    const std::string path = folder.file("none/desk.json");
    EXPECT_EQ(failure_of([&] { write_backup(path, desk_values); }).substr(0, 14), "cannot create ");
    EXPECT_EQ(failure_of([&] { write_backup(folder.path().string(), desk_values); }),
              folder.path().string() + ": this is no regular file");
}

TEST(a_backup_file, that_is_not_there_or_too_large_or_wrong_is_named) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    EXPECT_EQ(failure_of([&] { (void)read_backup(path); }), path + ": there is no such file");
    EXPECT_EQ(failure_of([&] { (void)read_backup(folder.path().string()); }),
              folder.path().string() + ": this is no regular file");
    write_file(path, std::string(desk) + std::string(65536, ' '));
    EXPECT_EQ(failure_of([&] { (void)read_backup(path); }),
              path + ": this is no backup, it has more than 64 KiB");
    write_file(path, desk_with("0.1", "2"));
    EXPECT_EQ(failure_of([&] { (void)read_backup(path); }),
              path + ": line 11: settings scaling-factor is 2; a number from 0 to 1 would be right");
}

} // namespace
