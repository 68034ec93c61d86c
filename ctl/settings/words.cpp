#include "ctl/settings/words.hpp"

#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::ctl {
namespace {

[[noreturn]] void fail(const std::string& text) {
    throw failure_with_status(exit_status::wrong_usage, text);
}

std::string names_of_keys(bool only_what_can_be_set) {
    std::string text;
    for (const key_row& row : keys()) {
        if (row.can_be_set || !only_what_can_be_set) {
            text += text.empty() ? "" : ", ";
            text += row.name;
        }
    }
    return text;
}

const key_row& row_called(const std::string& name, bool to_be_set) {
    const key_row* row = find_key(name);
    if (row == nullptr) {
        fail("no key is called '" + name + "'; the keys are: " + names_of_keys(to_be_set));
    }
    if (to_be_set && !row->can_be_set) {
        fail(name + " cannot be set; these keys can: " + names_of_keys(true));
    }
    return *row;
}

} // namespace

std::vector<key> keys_in(const std::vector<std::string>& words) {
    std::vector<key> read;
    for (const std::string& word : words) {
        const key id = row_called(word, false).id;
        if (std::find(read.begin(), read.end(), id) != read.end()) {
            fail(word + " is given twice");
        }
        read.push_back(id);
    }
    if (words.empty()) {
        for (const key_row& row : keys()) {
            read.push_back(row.id);
        }
    }
    return read;
}

value_set assignments_in(const std::vector<std::string>& words) {
    value_set read;
    for (const std::string& word : words) {
        const auto sign = word.find('=');
        if (sign == std::string::npos) {
            fail("'" + word + "' is no KEY=VALUE, such as scaling-factor=0.5");
        }
        const std::string name = word.substr(0, sign);
        const std::string text = word.substr(sign + 1);
        const key_row& row = row_called(name, true);
        const auto meant = value_of(row.kind, text);
        if (!meant) {
            fail(formatted("{} is {}, not '{}'", name, description_of(row.kind), text));
        }
        if (!read.emplace(row.id, *meant).second) {
            fail(name + " is given twice");
        }
    }
    return read;
}

} // namespace vantu::orvanta::ctl
