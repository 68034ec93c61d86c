// Whether a text is well-formed XML of the kind that pictures are: elements, attributes in double quotes, the
// three entities, no comments.
#pragma once

#include <regex>
#include <string>
#include <vector>

namespace orvanta_tests {

// The first fault; empty when there is none.
inline std::string fault_in_xml(const std::string& text) {
    static const std::regex declaration(R"(<\?xml( [a-z]+="[^"<>]*")+\?>)");
    static const std::regex tag(R"(</?([a-zA-Z]+)( [a-zA-Z0-9:-]+="[^"<>&]*")*/?>)");
    static const std::regex words(R"(([^<>&]|&lt;|&gt;|&amp;)*)");
    std::vector<std::string> open;
    int roots = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '<') {
            const std::size_t end = std::min(text.find('<', at), text.size());
            const std::string piece = text.substr(at, end - at);
            if (!std::regex_match(piece, words)) {
                return "text " + piece;
            }
            at = end;
            continue;
        }
        // A '>' within quotes is not the end of the tag.
        bool quoted = false;
        std::size_t end = at;
        for (; end < text.size() && (quoted || text[end] != '>'); ++end) {
            quoted = quoted != (text[end] == '"');
        }
        const std::string piece = text.substr(at, end + 1 - at);
        at = end + 1;
        if (roots == 0 && std::regex_match(piece, declaration)) {
            continue;
        }
        std::smatch parts;
        // The shape of long paths is checked by hand: expressions go deep.
        const std::string head =
            piece.size() < 400 ? piece : std::regex_replace(piece, std::regex(" d=\"[MLh0-9. -]*\""), "");
        if (!std::regex_match(head, parts, tag)) {
            return "tag " + piece;
        }
        if (piece.rfind("</", 0) == 0) {
            if (open.empty() || open.back() != parts[1]) {
                return "</" + parts[1].str() + "> ends <" + (open.empty() ? "" : open.back()) + ">";
            }
            open.pop_back();
            continue;
        }
        if (open.empty() && ++roots > 1) {
            return "more than one root";
        }
        if (piece.size() < 2 || piece[piece.size() - 2] != '/') {
            open.push_back(parts[1]);
        }
    }
    return open.empty() ? "" : "<" + open.back() + "> does not end";
}

} // namespace orvanta_tests
