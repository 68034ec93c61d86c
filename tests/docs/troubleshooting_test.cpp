// The texts of docs/troubleshooting.md against those of the code.

#include "docs/markdown_table.hpp"
#include "docs/source_texts.hpp"
#include "vantu/orvanta/orvanta.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace orvanta_tests {
namespace {

constexpr const char* troubleshooting = DOCS_FOLDER "/troubleshooting.md";
const std::filesystem::path sources = SOURCES_FOLDER;

std::string without_backquotes(std::string text) {
    std::erase(text, '`');
    return text;
}

std::set<std::string> first_cells_under(const std::string& heading) {
    std::set<std::string> cells;
    for (const table_row& row : table_under(troubleshooting, heading)) {
        EXPECT_TRUE(cells.insert(without_backquotes(row.front())).second) << row.front() << " is there twice";
    }
    return cells;
}

// The name of a text that is defined elsewhere, as unable_to_send; empty where a call has none.
std::string named_text_in(const std::string& call) {
    static const std::regex name(R"(\b(unable_to_\w+|no_valid_\w+))");
    std::smatch found;
    return std::regex_search(call, found, name) ? found[1].str() : std::string();
}

// All that the socket layer's shared files define under such a name.
std::map<std::string, std::string> named_texts() {
    static const std::regex constant(R"re((unable_to_\w+) = "([^"]*)")re");
    static const std::regex function(
        R"re((unable_to_\w+|no_valid_\w+)\([^)]*\) \{\s*return formatted\("([^"]*)")re");
    const std::string source =
        text_of_file(sources / "network/socket_shared.hpp") + text_of_file(sources / "network/socket.cpp");
    std::map<std::string, std::string> texts;
    for (const std::regex& definition : {constant, function}) {
        for (std::sregex_iterator at(source.begin(), source.end(), definition), end; at != end; ++at) {
            texts[(*at)[1].str()] = (*at)[2].str();
        }
    }
    return texts;
}

void note_texts_of(const std::string& call, const std::map<std::string, std::string>& named,
                   std::set<std::string>& texts) {
    if (const std::string name = named_text_in(call); !name.empty()) {
        ASSERT_TRUE(named.contains(name)) << name << " is defined nowhere";
        texts.insert(without_formats(named.at(name)));
        return;
    }
    const std::vector<std::string> literals = literals_in(call);
    if (!literals.empty()) {
        texts.insert(without_formats(literals.front()));
        return;
    }
    // These two hand on what they are given; their callers are read themselves.
    EXPECT_NE(call.find("std::string(message)"), std::string::npos) << call << " has a text of no known form";
}

std::set<std::string> logged_texts() {
    const std::map<std::string, std::string> named = named_texts();
    std::set<std::string> texts{"message: {} with code: {}", "assumption failed: {}"};
    for (const auto& path : sources_in(sources)) {
        if (path.filename() == "log.hpp" || path.filename() == "log.cpp") {
            continue;
        }
        const std::string source = text_of_file(path);
        for (const char* name : {"log_here", "log_or_drop", "log_poll"}) {
            for (const std::string& call : calls_of(name, source)) {
                note_texts_of(call, named, texts);
            }
        }
    }
    return texts;
}

TEST(troubleshooting, has_every_log_line_of_the_library_and_no_other) {
    const std::set<std::string> logged = logged_texts();
    EXPECT_GE(logged.size(), 20U);
    EXPECT_THAT(first_cells_under("## Log lines"), testing::ContainerEq(logged));
}

TEST(troubleshooting, has_the_text_of_every_code_and_no_other) {
    std::map<int, std::string> texts;
    for (int code = 0; code < 256; ++code) {
        const std::string text = vantu_orvanta_error_message(code);
        if (text != "undefined" && (text != "unknown" || code == 255)) {
            texts[code] = text;
        }
    }
    std::map<int, std::string> documented;
    for (const table_row& row : table_under(troubleshooting, "## Error codes")) {
        EXPECT_EQ(row.size(), 4U) << row.front();
        documented[std::atoi(row.front().c_str())] = row.at(1);
    }
    EXPECT_THAT(documented, testing::ContainerEq(texts));
}

TEST(troubleshooting, has_every_message_of_a_session_and_no_other) {
    std::set<std::string> texts{"the session ended"};
    for (const std::string& text : literals_in(text_of_file(sources / "session/failures.cpp"))) {
        // The others join the parts of a sentence, or are a file's name.
        if (text.size() > 7 && text.find(".h") == std::string::npos) {
            texts.insert(trimmed(text.starts_with(": ") ? text.substr(2) : text));
        }
    }
    for (const auto& path : sources_in(sources / "session")) {
        for (const std::string& call : calls_of("note_loss", text_of_file(path))) {
            for (const std::string& text : literals_in(call)) {
                texts.insert(text);
            }
        }
    }
    texts.insert("connection lost:");
    EXPECT_NE(text_of_file(sources / "session/session_connection.cpp").find("\"connection lost: {}\""),
              std::string::npos);
    EXPECT_NE(text_of_file(sources / "session/session_thread.cpp").find("\"the session ended\""),
              std::string::npos);
    EXPECT_THAT(first_cells_under("## Messages of a session"), testing::ContainerEq(texts));
}

} // namespace
} // namespace orvanta_tests
