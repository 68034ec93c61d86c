// The links of all Markdown files: the files are there, and the headings that anchors name.

#include "docs/source_texts.hpp"

#include <cctype>
#include <gtest/gtest.h>
#include <map>

namespace orvanta_tests {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> documents() {
    std::vector<fs::path> found;
    for (fs::recursive_directory_iterator at(CHECKOUT), end; at != end; ++at) {
        const std::string name = at->path().filename().string();
        if (at->is_directory() && (name.starts_with('.') || name.starts_with("build"))) {
            at.disable_recursion_pending();
        } else if (at->path().extension() == ".md") {
            found.push_back(at->path());
        }
    }
    return found;
}

// The lines that are neither in a fenced block nor indented as one.
std::vector<std::string> prose_of(const fs::path& document) {
    std::istringstream text(text_of_file(document));
    std::vector<std::string> lines;
    bool fenced = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("```")) {
            fenced = !fenced;
        } else if (!fenced && !line.starts_with("    ")) {
            lines.push_back(line);
        }
    }
    return lines;
}

// The anchor of a heading: lower-case words joined by '-', other characters left out.
std::string anchor_of(const std::string& heading) {
    std::string anchor;
    for (const char character : heading.substr(heading.find_first_not_of("# "))) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == ' ') {
            anchor += '-';
        } else if (std::isalnum(byte) != 0 || character == '-' || character == '_') {
            anchor += static_cast<char>(std::tolower(byte));
        }
    }
    return anchor;
}

std::set<std::string> anchors_of(const fs::path& document) {
    std::set<std::string> anchors;
    for (const std::string& line : prose_of(document)) {
        if (line.starts_with('#')) {
            anchors.insert(anchor_of(line));
        }
    }
    return anchors;
}

// What is wrong with a link of a document; empty when nothing is.
std::string fault_of(const std::string& link, const fs::path& document) {
    const std::size_t hash = std::min(link.find('#'), link.size());
    const std::string file = link.substr(0, hash);
    const fs::path target = file.empty() ? document : document.parent_path() / file;
    if (!fs::exists(target)) {
        return "there is no such file";
    }
    if (hash < link.size() && !anchors_of(target).contains(link.substr(hash + 1))) {
        return "there is no such heading";
    }
    return {};
}

TEST(anchors, are_the_words_of_a_heading) {
    EXPECT_EQ(anchor_of("## Use it in your own tests"), "use-it-in-your-own-tests");
    EXPECT_EQ(anchor_of("# C++ & `poll_thread`, at 100%"), "c--poll_thread-at-100");
}

TEST(links, with_a_mistake_are_found) {
    const fs::path readme = CHECKOUT "/README.md";
    EXPECT_EQ(fault_of("docs/faults.md#the-faults", readme), "");
    EXPECT_EQ(fault_of("docs/faults.md#no-faults", readme), "there is no such heading");
    EXPECT_EQ(fault_of("docs/no_faults.md", readme), "there is no such file");
    EXPECT_EQ(fault_of("#no-such-heading", readme), "there is no such heading");
}

TEST(links, of_all_documents_lead_somewhere) {
    static const std::regex link(R"(\]\(([^)\s]+)\))");
    int seen = 0;
    for (const fs::path& document : documents()) {
        for (const std::string& line : prose_of(document)) {
            for (std::sregex_iterator at(line.begin(), line.end(), link), end; at != end; ++at) {
                const std::string target = (*at)[1].str();
                if (target.find("://") == std::string::npos && !target.starts_with("mailto:")) {
                    EXPECT_EQ(fault_of(target, document), "") << document << ": " << target;
                    ++seen;
                }
            }
        }
    }
    EXPECT_GE(seen, 20);
}

TEST(readme, leads_to_every_document) {
    const std::string text = text_of_file(CHECKOUT "/README.md");
    for (const auto& entry : fs::directory_iterator(DOCS_FOLDER)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() == ".md") {
            EXPECT_NE(text.find("(docs/" + name + ')'), std::string::npos) << name;
        }
    }
    for (const char* name : {"CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md", "THIRD_PARTY.md"}) {
        EXPECT_NE(text.find(std::string("(") + name + ')'), std::string::npos) << name;
    }
}

} // namespace
} // namespace orvanta_tests
