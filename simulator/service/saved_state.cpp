#include "simulator/service/saved_state.hpp"

#include "shared/durable_file.hpp"
#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {
namespace {

using json = nlohmann::ordered_json;

constexpr int format_version = 1;

// One line, whatever names the file holds.
[[noreturn]] void refuse(std::string_view reason) {
    throw std::runtime_error(without_control_characters(reason));
}

// The value, which must be an object of exactly these members.
const json& object_of(const json& value, const std::string& place,
                      std::initializer_list<const char*> members) {
    if (!value.is_object()) {
        refuse(formatted("{} is no object", place));
    }
    for (const char* member : members) {
        if (!value.contains(member)) {
            refuse(formatted("{} has no \"{}\"", place, member));
        }
    }
    for (const auto& [name, ignored] : value.items()) {
        bool known = false;
        for (const char* member : members) {
            known = known || name == member;
        }
        if (!known) {
            refuse(formatted("{} has an unknown member \"{}\"", place, name));
        }
    }
    return value;
}

bool flag_of(const json& value, const std::string& place) {
    if (!value.is_boolean()) {
        refuse(formatted("{} is neither true nor false", place));
    }
    return value.get<bool>();
}

float factor_of(const json& value, const std::string& place) {
    // Compared as it stands: a number beyond the range of float has no conversion to it.
    if (!value.is_number() || !(value.get<double>() >= static_cast<double>(least_scaling_factor)) ||
        !(value.get<double>() <= static_cast<double>(greatest_scaling_factor))) {
        refuse(
            formatted("{} is no number from {} to {}", place, least_scaling_factor, greatest_scaling_factor));
    }
    return value.get<float>();
}

std::uint8_t handedness_of(const json& value, const std::string& place) {
    if (value == "right") {
        return vantu_orvanta_handedness_right;
    }
    if (value == "left") {
        return vantu_orvanta_handedness_left;
    }
    refuse(formatted("{} is neither \"right\" nor \"left\"", place));
}

configuration configuration_of(const json& value, const std::string& place) {
    object_of(value, place, {"gravity_compensation", "torque_scaling", "handedness"});
    const json& gravity = object_of(value["gravity_compensation"], place + " gravity_compensation",
                                    {"enabled", "scaling_factor"});
    const json& torque = object_of(value["torque_scaling"], place + " torque_scaling", {"enabled"});
    return {flag_of(gravity["enabled"], place + " gravity_compensation enabled"),
            factor_of(gravity["scaling_factor"], place + " gravity_compensation scaling_factor"),
            flag_of(torque["enabled"], place + " torque_scaling enabled"),
            handedness_of(value["handedness"], place + " handedness")};
}

bool is_uuid_text(std::string_view text) {
    constexpr std::size_t uuid_digits = 32;
    return text.size() == uuid_digits && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Follows the parser to where it stops, as the names that lead there.
class stopping_place final : public nlohmann::json_sax<json> {
  public:
    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(number_integer_t /*value*/) override { return true; }
    bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
    bool string(string_t& /*value*/) override { return true; }
    bool binary(binary_t& /*value*/) override { return true; }
    bool start_array(std::size_t /*size*/) override { return true; }
    bool end_array() override { return true; }
    bool start_object(std::size_t /*size*/) override {
        names_.emplace_back();
        return true;
    }
    bool key(string_t& name) override {
        names_.back() = name;
        return true;
    }
    bool end_object() override {
        names_.pop_back();
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

    [[nodiscard]] std::string text() const {
        std::string text;
        for (const std::string& name : names_) {
            text += text.empty() ? name : ' ' + name;
        }
        const bool is_a_device = names_.size() > 1 && names_.front() == "devices";
        return text.empty()  ? "the whole"
               : is_a_device ? "device" + text.substr(names_.front().size())
                             : text;
    }

  private:
    std::vector<std::string> names_;
};

json parsed(const std::string& text) {
    try {
        return json::parse(text);
    } catch (const json::parse_error& error) {
        // Without the name that the parser gives the kind of error.
        const std::string reason = error.what();
        const auto end_of_name = reason.find("] ");
        refuse("no JSON text: " +
               (end_of_name == std::string::npos ? reason : reason.substr(end_of_name + 2)));
    } catch (const json::out_of_range&) {
        stopping_place place;
        (void)json::sax_parse(text, &place);
        refuse(place.text() + " is a number out of range");
    }
}

} // namespace

std::string state_text_of(const std::map<std::string, configuration>& kept) {
    json devices = json::object();
    for (const auto& [uuid, settings] : kept) {
        devices[uuid] = {
            {"gravity_compensation",
             {{"enabled", settings.gravity_compensation}, {"scaling_factor", settings.scaling_factor}}},
            {"torque_scaling", {{"enabled", settings.torque_scaling}}},
            {"handedness", settings.handedness == vantu_orvanta_handedness_left ? "left" : "right"}};
    }
    return json{{"version", format_version}, {"devices", devices}}.dump(2) + '\n';
}

std::map<std::string, configuration> read_state_text(const std::string& text) {
    const json whole = parsed(text);
    object_of(whole, "the whole", {"version", "devices"});
    if (whole["version"] != format_version) {
        refuse(formatted("version is not {}", format_version));
    }
    const json& devices = whole["devices"];
    if (!devices.is_object()) {
        refuse("devices is no object");
    }
    std::map<std::string, configuration> kept;
    for (const auto& [uuid, value] : devices.items()) {
        if (!is_uuid_text(uuid)) {
            refuse(formatted("\"{}\" is no device: 32 hexadecimal digits in lower case name one", uuid));
        }
        kept.emplace(uuid, configuration_of(value, "device " + uuid));
    }
    return kept;
}

saved_state::saved_state(std::string path) : path_(std::move(path)) {
    std::error_code error;
    const std::filesystem::path file(path_);
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    if (!std::filesystem::is_directory(folder, error)) {
        refuse(formatted("{}: its folder is not there", path_));
    }
    const auto kind = std::filesystem::status(file, error).type();
    if (kind == std::filesystem::file_type::not_found) {
        return;
    }
    if (kind != std::filesystem::file_type::regular) {
        refuse(formatted("{}: no regular file", path_));
    }
    std::ifstream stream(path_, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad()) {
        refuse(formatted("{}: cannot be read", path_));
    }
    try {
        kept_ = read_state_text(text);
    } catch (const std::runtime_error& wrong) {
        refuse(formatted("{}: {}", path_, wrong.what()));
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
    std::string failure = replace_file(path_, state_text_of(changed));
    if (failure.empty()) {
        kept_ = std::move(changed);
    }
    return failure;
}

} // namespace vantu::orvanta::simulator
