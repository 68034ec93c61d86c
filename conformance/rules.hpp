// The rules of a service, as docs/protocol.md has them: a table with a row for each. The program, its help,
// the documents and the tests go by it.
#pragma once

#include "conformance/surroundings.hpp"

#include <span>
#include <string_view>

namespace vantu::orvanta::conformance {

// Without it the rule is skipped.
enum class need : std::uint8_t {
    nothing,
    device,
    orvanta3,
    palmetron,
    second_client, // a service that serves two at once
    save,          // an Orvanta3, and the option --save
};

struct rule {
    std::string_view name;
    std::string_view says;
    need what;
    void (*look)(surroundings& around); // returns when it holds, throws verdict when not
};

[[nodiscard]] std::span<const rule> rules();

// Null where there is none of that name.
[[nodiscard]] const rule* find_rule(std::string_view name);

} // namespace vantu::orvanta::conformance
