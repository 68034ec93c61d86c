#include "ctl/arguments/near_word.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta::ctl {
namespace {

// A longer text is near no word.
constexpr std::size_t longest = 64;

} // namespace

std::string_view near_word(std::string_view text, std::span<const std::string_view> words) {
    if (text.size() > longest) {
        return {};
    }
    std::string_view nearest;
    std::size_t least = text.size() / 3 + 1;
    for (const std::string_view word : words) {
        if (const std::size_t changes = orvanta::changes_between(text, word); changes < least) {
            least = changes;
            nearest = word;
        }
    }
    return nearest;
}

std::string hint_for(std::string_view text, std::span<const std::string_view> words) {
    const std::string_view near = near_word(text, words);
    return near.empty() ? std::string() : formatted("; {} would be right", near);
}

} // namespace vantu::orvanta::ctl
