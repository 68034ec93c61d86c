#include "shared/near_word.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace vantu::orvanta {
namespace {

// A longer text is near no word.
constexpr std::size_t longest = 64;

// Letters added, left out and replaced, and neighbours that changed places.
std::size_t changes_between(std::string_view left, std::string_view right) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> above;
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        before = std::exchange(above, row);
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t replaced = above[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, row[j - 1] + 1, above[j] + 1});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

} // namespace

std::string_view near_word(std::string_view text, std::span<const std::string_view> words) {
    if (text.size() > longest) {
        return {};
    }
    std::string_view nearest;
    std::size_t least = text.size() / 3 + 1;
    for (const std::string_view word : words) {
        if (const std::size_t changes = changes_between(text, word); changes < least) {
            least = changes;
            nearest = word;
        }
    }
    return nearest;
}

std::string hint_for(std::string_view text, std::span<const std::string_view> words) {
    const std::string_view nearest = near_word(text, words);
    return nearest.empty() ? std::string() : formatted("; {} would be right", nearest);
}

} // namespace vantu::orvanta
