#include "conformance/report.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <array>
#include <nlohmann/json.hpp>

namespace vantu::orvanta::conformance {
namespace {

constexpr double ns_per_s = 1e9;

std::string escaped(std::string_view text) {
    std::string xml;
    for (const char letter : text) {
        xml += letter == '&'   ? "&amp;"
               : letter == '<' ? "&lt;"
               : letter == '"' ? "&quot;"
                               : std::string(1, letter);
    }
    return xml;
}

std::string seconds(std::int64_t time_ns) {
    return formatted("{:.3f}", static_cast<double>(time_ns) / ns_per_s);
}

// The element within a test case that tells of it; none where the rule holds.
std::string element_of(const finding& what) {
    constexpr std::array<std::string_view, 4> elements{"", "failure", "error", "skipped"};
    return what.how == outcome::holds
               ? ""
               : formatted("<{} message=\"{}\"/>", elements.at(static_cast<std::size_t>(what.how)),
                           escaped(what.text));
}

} // namespace

std::string_view word_of(outcome how) {
    constexpr std::array<std::string_view, 4> words{"ok", "FAIL", "stop", "skip"};
    return words.at(static_cast<std::size_t>(how));
}

std::string line_of(const finding& what) {
    return formatted("{:<4} {}{}{}\n", word_of(what.how), what.what->name, what.text.empty() ? "" : ": ",
                     what.text);
}

std::string summary_of(std::span<const finding> findings) {
    return formatted("{} rules: {} ok, {} failed, {} stopped, {} skipped\n", findings.size(),
                     count_of(findings, outcome::holds), count_of(findings, outcome::fails),
                     count_of(findings, outcome::stopped), count_of(findings, outcome::skipped));
}

std::string json_of(std::span<const finding> findings) {
    auto rules = nlohmann::ordered_json::array();
    for (const finding& one : findings) {
        rules.push_back({{"name", one.what->name},
                         {"outcome", word_of(one.how)},
                         {"text", one.text},
                         {"seconds", static_cast<double>(one.time_ns) / ns_per_s}});
    }
    const nlohmann::ordered_json document{{"rules", rules},
                                          {"ok", count_of(findings, outcome::holds)},
                                          {"failed", count_of(findings, outcome::fails)},
                                          {"stopped", count_of(findings, outcome::stopped)},
                                          {"skipped", count_of(findings, outcome::skipped)}};
    return document.dump() + '\n';
}

std::string junit_of(std::span<const finding> findings) {
    std::string cases;
    std::int64_t time_ns = 0;
    for (const finding& one : findings) {
        time_ns += one.time_ns;
        cases += formatted("    <testcase classname=\"conformance\" name=\"{}\" time=\"{}\">{}</testcase>\n",
                           one.what->name, seconds(one.time_ns), element_of(one));
    }
    return formatted("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<testsuites>\n"
                     "  <testsuite name=\"orvanta-conformance\" tests=\"{}\" failures=\"{}\" errors=\"{}\" "
                     "skipped=\"{}\" time=\"{}\">\n{}  </testsuite>\n</testsuites>\n",
                     findings.size(), count_of(findings, outcome::fails),
                     count_of(findings, outcome::stopped), count_of(findings, outcome::skipped),
                     seconds(time_ns), cases);
}

std::string list_of_rules() {
    std::string text;
    for (const rule& one : rules()) {
        text += formatted("{}: {}\n", one.name, one.says);
    }
    return text;
}

} // namespace vantu::orvanta::conformance
