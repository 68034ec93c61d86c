// The simulator's command line, its arguments parted by line feeds: any gives settings that are in range, a
// text to show, or one line that says what is wrong.
#include "simulator/control/options.hpp"
#include "script.hpp"
#include "simulator/service/device.hpp"
#include "text_checks.hpp"

#include <cstdint>
#include <string>
#include <vector>

using namespace vantu::orvanta::simulator;
using orvanta_fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orvanta_fuzz::script input(data, size);
    std::vector<std::string> texts{"orvanta-simulator"};
    while (!input.has_ended() && texts.size() < 64) {
        const std::string_view line = input.line();
        texts.emplace_back(line.substr(0, line.find('\0')));
    }
    std::vector<const char*> arguments;
    for (const std::string& text : texts) {
        arguments.push_back(text.c_str());
    }
    const parse_outcome parsed = parse_options(static_cast<int>(arguments.size()), arguments.data());
    switch (parsed.verdict) {
    case parse_verdict::wrong:
        orvanta_fuzz::require_one_line(parsed.text);
        break;
    case parse_verdict::show:
        require(!parsed.text.empty() && parsed.text.back() == '\n', "what is to show is no lines");
        break;
    case parse_verdict::run:
        require(parsed.chosen.simulated.rate_hz.value_or(0) >= 0 &&
                    parsed.chosen.simulated.rate_hz.value_or(0) <= 10'000,
                "a rate out of range");
        require(parsed.chosen.simulated.orvanta3_count.value_or(0) <= most_devices_of_a_type &&
                    parsed.chosen.simulated.palmetron_count.value_or(0) <= most_devices_of_a_type,
                "too many devices");
        break;
    }
    return 0;
}
