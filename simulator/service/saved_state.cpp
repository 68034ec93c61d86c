#include "simulator/service/saved_state.hpp"

#include "shared/durable_file.hpp"
#include "shared/located_json.hpp"
#include "shared/text_lines.hpp"
#include "simulator/service/configuration_json.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

constexpr std::uint64_t format_version = 1;
constexpr std::array<std::string_view, 2> members{"version", "devices"};

[[noreturn]] void refuse(const std::string& path, std::string_view reason) {
    throw std::runtime_error(without_control_characters(formatted("{}: {}", path, reason)));
}

bool is_uuid_text(std::string_view text) {
    constexpr std::size_t uuid_digits = 32;
    return text.size() == uuid_digits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

} // namespace

std::string state_text_of(const std::map<std::string, configuration>& kept) {
    std::string text = formatted("{{\n  \"version\": {},\n  \"devices\": {{", format_version);
    std::string_view separator = "\n";
    for (const auto& [uuid, settings] : kept) {
        text += formatted("{}    \"{}\": {}", separator, uuid, configuration_json(settings));
        separator = ",\n";
    }
    return text + "\n  }\n}\n";
}

std::map<std::string, configuration> read_state_text(const std::string& text) {
    const located_value whole = read_located_json(text);
    require_object(whole, "the whole", members);
    (void)require_whole(required_member(whole, "the whole", "version"), "version", format_version,
                        format_version);
    const located_value& devices = required_member(whole, "the whole", "devices");
    if (devices.kind != json_kind::object) {
        throw located_error(devices.line,
                            formatted("devices is {}; an object would be right", description_of(devices)));
    }
    std::map<std::string, configuration> kept;
    for (const located_value& one : devices.items) {
        if (!is_uuid_text(one.name)) {
            throw located_error(
                one.name_line,
                formatted("\"{}\" is no device; 32 hexadecimal digits in lower case would be right",
                          one.name));
        }
        read_configuration(one, "device " + one.name, kept[one.name]);
    }
    return kept;
}

saved_state::saved_state(std::string path) : path_(std::move(path)) {
    std::error_code error;
    const std::filesystem::path file(path_);
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    if (!std::filesystem::is_directory(folder, error)) {
        refuse(path_, "its folder is not there");
    }
    const auto kind = std::filesystem::status(file, error).type();
    if (kind == std::filesystem::file_type::not_found) {
        return;
    }
    if (kind != std::filesystem::file_type::regular) {
        refuse(path_, "no regular file");
    }
    std::ifstream stream(path_, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad()) {
        refuse(path_, "cannot be read");
    }
    try {
        kept_ = read_state_text(text);
    } catch (const located_error& wrong) {
        throw std::runtime_error(formatted("{}:{}: {}", path_, wrong.line(), wrong.what()));
    }
}

void saved_state::apply_to(std::span<device> devices) const {
    for (device& one : devices) {
        if (const auto found = kept_.find(uuid_text(one)); found != kept_.end()) {
            one.settings = found->second;
        }
    }
}

std::string saved_state::keep(const device& which) {
    auto changed = kept_;
    changed[uuid_text(which)] = which.settings;
    std::string failure = path_.empty() ? "" : replace_file(path_, state_text_of(changed));
    if (failure.empty()) {
        kept_ = std::move(changed);
    }
    return failure;
}

} // namespace vantu::orvanta::simulator
