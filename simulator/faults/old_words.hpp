// The fault words of earlier versions, and their spelling now.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace vantu::orvanta::simulator {

struct old_word {
    std::string_view name; // a fault, or a selector with its '='
    std::string_view now;
};

// clang-format off
inline constexpr std::array old_words{
    old_word{"late",              "delay 250@dir=answer"},
    old_word{"empty",             "truncate 0"},
    old_word{"oversize",          "extend 2049"},
    old_word{"bad-magic",         "patch header.magic=other"},
    old_word{"bad-version",       "patch header.version=other"},
    old_word{"bad-operation",     "patch op.magic=other"},
    old_word{"unknown-operation", "patch op.code=other"},
    old_word{"lying-operation",   "patch op.length=65535"},
    old_word{"short-body",        "cut 1"},
    old_word{"bad-between",       "insert ff57000000"},
    old_word{"retag",             "patch tag=other@dir=answer"},
    old_word{"readdress",         "patch device=other@dir=answer"},
    old_word{"refuse",            "error 0xB2@op=connect"},
    old_word{"short-acceptance",  "cut 5@op=connected"},
    old_word{"n=",                "nth="},
};
// clang-format on

// The row of that name, or null.
[[nodiscard]] constexpr const old_word* find_old_word(std::string_view name) {
    const auto* const found = std::find_if(old_words.begin(), old_words.end(),
                                           [name](const old_word& one) { return one.name == name; });
    return found != old_words.end() ? found : nullptr;
}

} // namespace vantu::orvanta::simulator
