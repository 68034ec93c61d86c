// Candidates for the last word of a command line, as shells are told them.
#include "ctl/arguments/command_table.hpp"
#include "ctl/completion/candidates.hpp"
#include "ctl/settings/keys.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;
using word_list = std::vector<std::string>;

device a_device_called(std::uint32_t id, device_type type, std::uint16_t short_id, const char* uuid) {
    device one;
    one.id = id;
    one.type = type;
    one.short_id = short_id;
    one.uuid = uuid;
    return one;
}

std::vector<device> two_devices() {
    return {a_device_called(1, device_type::orvanta3, 0x3001, "6e2b8410-5f3c-4d71-9a03-c53800000001"),
            a_device_called(1001, device_type::palmetron, 0x5001, "b1470d29-e862-4a15-8c90-7ed400000001")};
}

std::vector<device> asked_in_vain() {
    ADD_FAILURE() << "no device is to be named";
    return {};
}

word_list words_in(const candidates& found) {
    word_list all;
    for (const candidate& one : found.words) {
        EXPECT_NE(one.meaning, "") << one.word;
        all.push_back(one.word);
    }
    return all;
}

word_list completed(const word_list& line) {
    const candidates found = candidates_for(line, asked_in_vain);
    EXPECT_FALSE(found.files);
    return words_in(found);
}

word_list devices_completed(const word_list& line) {
    return words_in(candidates_for(line, two_devices));
}

bool files_complete(const word_list& line) {
    const candidates found = candidates_for(line, asked_in_vain);
    EXPECT_TRUE(found.words.empty());
    return found.files;
}

TEST(candidates, are_all_commands_at_first) {
    word_list names;
    for (const command_row& row : commands()) {
        names.emplace_back(row.name);
    }
    EXPECT_EQ(completed({}), names);
    EXPECT_EQ(completed({""}), names);
    EXPECT_EQ(completed({"--json", ""}), names);
    EXPECT_EQ(completed({"--timeout", "2s", "ve"}), word_list{"version"});
    EXPECT_EQ(completed({"x"}), word_list{});
}

TEST(candidates, are_the_options_that_go_with_the_command) {
    EXPECT_EQ(completed({"-"}), (word_list{"--help", "--timeout", "--json", "-v", "--version"}));
    EXPECT_EQ(completed({"list", "-"}), (word_list{"--help", "--capture", "--timeout", "--json", "-v"}));
    EXPECT_EQ(completed({"restore", "--d"}), (word_list{"--device", "--dry-run"}));
    EXPECT_EQ(completed({"wait", "--f"}), word_list{"--for"});
    EXPECT_EQ(completed({"wait", "--", "--f"}), word_list{});
}

TEST(candidates, are_ids_of_devices_and_other_names_once_they_are_begun) {
    EXPECT_EQ(devices_completed({"info", "--device", ""}), (word_list{"1", "1001"}));
    EXPECT_EQ(devices_completed({"info", "--device", "3"}), word_list{"3001"});
    EXPECT_EQ(devices_completed({"info", "--device", "b"}),
              word_list{"b1470d29-e862-4a15-8c90-7ed400000001"});
    EXPECT_EQ(devices_completed({"info", "--device="}), (word_list{"--device=1", "--device=1001"}));
    EXPECT_EQ(devices_completed({"info", "--device=6e"}),
              word_list{"--device=6e2b8410-5f3c-4d71-9a03-c53800000001"});
    EXPECT_EQ(candidates_for({"info", "--device", "1"}, two_devices).words.front().meaning,
              "orvanta3 3001 6e2b8410-5f3c-4d71-9a03-c53800000001");
}

TEST(candidates, are_the_keys_that_are_not_there_yet) {
    word_list names;
    for (const key_row& row : keys()) {
        names.emplace_back(row.name);
    }
    EXPECT_EQ(completed({"get", ""}), names);
    EXPECT_EQ(completed({"get", "handedness", "--device", "1", "o"}), word_list{"orientation"});
    EXPECT_EQ(completed({"get", "handedness", "h"}), word_list{});
}

TEST(candidates, are_keys_with_their_words_where_values_are_set) {
    EXPECT_EQ(completed({"set", ""}),
              (word_list{"gravity-compensation=", "scaling-factor=", "torque-scaling=", "handedness="}));
    EXPECT_EQ(completed({"set", "handedness=left", "--save", "h"}), word_list{});
    EXPECT_EQ(completed({"set", "handedness="}), (word_list{"handedness=left", "handedness=right"}));
    EXPECT_EQ(completed({"set", "torque-scaling=of"}), word_list{"torque-scaling=off"});
    EXPECT_EQ(completed({"set", "scaling-factor="}), word_list{});
    EXPECT_EQ(completed({"set", "orientation="}), word_list{});
}

TEST(candidates, are_left_to_the_shell_where_they_are_files) {
    EXPECT_TRUE(files_complete({"backup", ""}));
    EXPECT_TRUE(files_complete({"restore", "--save", "ba"}));
    EXPECT_TRUE(files_complete({"diff", "--", "-"}));
    EXPECT_FALSE(files_complete({"backup", "file", ""}));
}

TEST(candidates, are_the_formats_to_watch_in) {
    EXPECT_EQ(completed({"watch", "--format", ""}), (word_list{"live", "lines", "csv", "json"}));
    EXPECT_EQ(completed({"watch", "--format=l"}), (word_list{"--format=live", "--format=lines"}));
    EXPECT_TRUE(files_complete({"watch", "--plot", ""}));
    EXPECT_EQ(completed({"watch", "--rate", ""}), word_list{});
}

TEST(candidates, are_the_events_to_wait_for) {
    EXPECT_EQ(completed({"wait", ""}), (word_list{"device", "removal", "service"}));
    EXPECT_EQ(completed({"wait", "--for", "10s", "r"}), word_list{"removal"});
    EXPECT_EQ(completed({"wait", "device", ""}), word_list{});
}

TEST(candidates, are_missing_where_a_value_is_free) {
    EXPECT_EQ(completed({"wait", "--for", ""}), word_list{});
    EXPECT_EQ(completed({"list", "--timeout="}), word_list{});
    EXPECT_EQ(completed({"list", "--unknown="}), word_list{});
    EXPECT_EQ(completed({"list", ""}), word_list{});
}

} // namespace
