#include "simulator/control/scenario.hpp"

#include "shared/located_json.hpp"
#include "simulator/service/streams.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace vantu::orvanta::simulator {
namespace {

constexpr std::uint64_t format_version = 1;
constexpr std::uint64_t greatest_port = 65535;

struct member_reader {
    std::string_view member;
    void (*read)(const located_value& value, scenario& into);
};

std::size_t count_in(const located_value& value) {
    return static_cast<std::size_t>(require_whole(value, value.name, 0, most_devices_of_a_type));
}

const std::string& file_in(const located_value& value) {
    constexpr std::string_view right = "the name of a file";
    const std::string& name = require_string(value, value.name, right);
    if (name.empty()) {
        throw located_error(value.line, formatted("{} is empty; {} would be right", value.name, right));
    }
    return name;
}

service_simulator::announce announce_in(const located_value& value) {
    constexpr std::array<std::string_view, 2> words{"before", "after"};
    return require_word(value, value.name, words) == 0 ? service_simulator::announce::before
                                                       : service_simulator::announce::after;
}

std::vector<std::string> faults_in(const located_value& list) {
    std::vector<std::string> faults;
    for (const located_value& one : require_array(list, list.name)) {
        const std::string& text = require_string(one, "a fault", "a text as \"drop 0.05\"");
        try {
            (void)initial_fault(text);
        } catch (const std::invalid_argument& wrong) {
            throw located_error(one.line, formatted("faults: {}", wrong.what()));
        }
        faults.push_back(text);
    }
    return faults;
}

// clang-format off
constexpr std::array member_readers{
    member_reader{"version",       [](const located_value& value, scenario& /*into*/) { (void)require_whole(value, value.name, format_version, format_version); }},
    member_reader{"about",         [](const located_value& value, scenario& into) { into.about = require_string(value, value.name, "a text"); }},
    member_reader{"devices",       [](const located_value& value, scenario& into) { into.devices = read_scenario_devices(value); }},
    member_reader{"for_each_client", [](const located_value& value, scenario& into) { into.for_each_client = require_flag(value, value.name); }},
    member_reader{"steps",         [](const located_value& value, scenario& into) { into.steps = read_scenario_steps(value, into.for_each_client); }},
    member_reader{"port",          [](const located_value& value, scenario& into) { into.settings.port = formatted("{}", require_whole(value, value.name, 0, greatest_port)); }},
    member_reader{"orvanta3",      [](const located_value& value, scenario& into) { into.settings.orvanta3_count = count_in(value); }},
    member_reader{"palmetron",     [](const located_value& value, scenario& into) { into.settings.palmetron_count = count_in(value); }},
    member_reader{"announce",      [](const located_value& value, scenario& into) { into.settings.devices = announce_in(value); }},
    member_reader{"single_client", [](const located_value& value, scenario& into) { into.settings.single_client = require_flag(value, value.name); }},
    member_reader{"rate",          [](const located_value& value, scenario& into) { into.settings.rate_hz = require_number(value, value.name, 0, greatest_rate_hz); }},
    member_reader{"state",         [](const located_value& value, scenario& into) { into.settings.state_path = file_in(value); }},
    member_reader{"capture",       [](const located_value& value, scenario& into) { into.settings.capture_path = file_in(value); }},
    member_reader{"faults",        [](const located_value& value, scenario& into) { into.settings.faults = faults_in(value); }},
    member_reader{"seed",          [](const located_value& value, scenario& into) { into.settings.seed = require_whole(value, value.name, 0, std::numeric_limits<std::uint64_t>::max()); }},
    member_reader{"trace",         [](const located_value& value, scenario& into) { into.trace_path = file_in(value); }},
    member_reader{"verbose",       [](const located_value& value, scenario& into) { into.verbose = require_flag(value, value.name); }},
};
// clang-format on

static_assert(std::equal(member_readers.begin(), member_readers.end(), scenario_members::scenario.begin(),
                         scenario_members::scenario.end(),
                         [](const member_reader& reader, std::string_view member) {
                             return reader.member == member;
                         }));

std::string text_of_file(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw std::runtime_error(path + ": no file of that name; the path of a scenario would be right");
    }
    std::ifstream stream(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad()) {
        throw std::runtime_error(path + ": cannot be read; a file that may be read would be right");
    }
    return text;
}

} // namespace

scenario read_scenario_text(const std::string& text) {
    const located_value whole = read_located_json(text);
    require_object(whole, "the scenario", scenario_members::scenario);
    (void)required_member(whole, "the scenario", "version");
    scenario read;
    for (const member_reader& reader : member_readers) {
        if (const located_value* value = whole.find(reader.member)) {
            reader.read(*value, read);
        }
    }
    for (const char* const count : {"orvanta3", "palmetron"}) {
        if (const located_value* value = whole.find(count); value != nullptr && read.devices) {
            throw located_error(
                value->name_line,
                formatted(R"(the scenario has "{}" and "devices"; one of the two would be right)", count));
        }
    }
    return read;
}

scenario read_scenario(const std::string& path) {
    const std::string text = text_of_file(path);
    try {
        return read_scenario_text(text);
    } catch (const located_error& wrong) {
        throw std::runtime_error(formatted("{}:{}: {}", path, wrong.line(), wrong.what()));
    }
}

} // namespace vantu::orvanta::simulator
