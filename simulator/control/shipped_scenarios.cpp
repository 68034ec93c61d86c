#include "simulator/control/shipped_scenarios.hpp"

#include "shared/text_lines.hpp"
#include "simulator/control/scenario.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <map>
#include <stdexcept>

namespace vantu::orvanta::simulator {
namespace {

namespace files = std::filesystem;

files::path shipped_folder() {
    return (folder_of_program() / SCENARIOS_BESIDE_PROGRAM).lexically_normal();
}

} // namespace

std::string scenario_path_of(const std::string& text) {
    std::error_code error;
    const files::path wanted(text);
    if (text.empty() || files::exists(wanted, error) || wanted.has_parent_path()) {
        return text;
    }
    files::path shipped = shipped_folder() / wanted;
    if (shipped.extension() != ".json") {
        shipped += ".json";
    }
    return files::exists(shipped, error) ? shipped.string() : text;
}

std::string list_of_scenarios() {
    std::error_code error;
    std::map<std::string, std::string> abouts;
    for (const files::directory_entry& entry : files::directory_iterator(shipped_folder(), error)) {
        if (entry.path().extension() == ".json") {
            abouts[entry.path().stem().string()] = read_scenario(entry.path().string()).about;
        }
    }
    if (abouts.empty()) {
        throw std::runtime_error(formatted("no scenarios are in {}", shipped_folder().string()));
    }
    std::string text;
    for (const auto& [name, about] : abouts) {
        text += formatted("{:<25} {}\n", name, without_control_characters(about));
    }
    return text;
}

} // namespace vantu::orvanta::simulator
