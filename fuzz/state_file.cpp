// The simulator's state file: any text is refused in one line, or read as configurations that are written and
// read again as they are.
#include "simulator/service/saved_state.hpp"
#include "text_checks.hpp"

#include <cstdint>

using namespace vantu::orvanta::simulator;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::map<std::string, configuration> kept;
    try {
        kept = read_state_text(text);
    } catch (const std::runtime_error& refused) {
        orvanta_fuzz::require_one_line(refused.what());
        return 0;
    }
    orvanta_fuzz::require(read_state_text(state_text_of(kept)) == kept,
                          "a state file is read otherwise than it was written");
    for (const auto& [uuid, settings] : kept) {
        orvanta_fuzz::require(is_scaling_factor(settings.scaling_factor) &&
                                  is_handedness(settings.handedness),
                              "a configuration that no device takes");
    }
    return 0;
}
