#include "ctl/settings/backup.hpp"

#include "ctl/report/exit_status.hpp"
#include "ctl/service/device_text.hpp"
#include "shared/durable_file.hpp"
#include "shared/located_json.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <span>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::string_view schema = "orvanta-backup";
constexpr std::uint64_t version = 1;
// Far more than any backup has.
constexpr std::size_t greatest_size = 65536;

constexpr std::array<std::string_view, 4> members{"schema", "version", "device", "settings"};
constexpr std::array<std::string_view, 3> device_members{"uuid", "type", "short_id"};

[[noreturn]] void refuse(const std::string& path, std::string_view what) {
    throw failure_with_status(exit_status::refused, formatted("{}: {}", path, what));
}

[[noreturn]] void refuse(const located_value& one, std::string_view place, std::string_view right) {
    throw located_error(one.line,
                        formatted("{} is {}; {} would be right", place, description_of(one), right));
}

const std::string& text_in(const located_value& object, std::string_view place, std::string_view member,
                           std::string_view right) {
    const std::string name = formatted("{} {}", place, member);
    return require_string(required_member(object, place, member), name, right);
}

std::uint16_t short_id_in(const located_value& described) {
    constexpr std::string_view right = "four hexadecimal digits";
    constexpr std::size_t digits = 4;
    constexpr int base = 16;
    const std::string& text = text_in(described, "device", "short_id", right);
    std::uint16_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc{} || stop != end || text.size() != digits) {
        refuse(*described.find("short_id"), "device short_id", right);
    }
    return number;
}

device_type type_in(const located_value& described) {
    const std::string& text = text_in(described, "device", "type", "\"orvanta3\"");
    for (const device_type one : {device_type::orvanta3, device_type::palmetron}) {
        if (text == name_of(one)) {
            return one;
        }
    }
    refuse(*described.find("type"), "device type", "\"orvanta3\"");
}

value setting_in(const located_value& settings, const key_row& row) {
    const located_value& one = required_member(settings, "settings", row.name);
    const std::string place = formatted("settings {}", row.name);
    switch (row.kind) {
    case value_kind::on_off:
        if (one.kind == json_kind::boolean) {
            return one.boolean;
        }
        refuse(one, place, "true or false");
    case value_kind::fraction:
        if (const auto factor = factor_of(one.number); factor && one.kind == json_kind::number) {
            return *factor;
        }
        refuse(one, place, description_of(row.kind));
    case value_kind::hand:
        if (const auto hand = value_of(row.kind, one.string); hand && one.kind == json_kind::string) {
            return *hand;
        }
        refuse(one, place, "\"left\" or \"right\"");
    case value_kind::quaternion:
    case value_kind::currents:
    case value_kind::state:
        break;
    }
    throw std::logic_error("a setting of a kind that cannot be set");
}

backup backup_of(const located_value& whole) {
    require_object(whole, "the backup", members);
    if (text_in(whole, "the backup", "schema", formatted("\"{}\"", schema)) != schema) {
        refuse(*whole.find("schema"), "schema", formatted("\"{}\"", schema));
    }
    (void)require_whole(required_member(whole, "the backup", "version"), "version", version, version);
    const located_value& described = required_member(whole, "the backup", "device");
    require_object(described, "device", device_members);
    backup read;
    read.uuid = text_in(described, "device", "uuid", "a text");
    read.type = type_in(described);
    read.short_id = short_id_in(described);
    const located_value& settings = required_member(whole, "the backup", "settings");
    std::vector<std::string_view> names;
    for (const key_row& row : keys()) {
        if (row.can_be_set) {
            names.push_back(row.name);
        }
    }
    require_object(settings, "settings", names);
    for (const key_row& row : keys()) {
        if (row.can_be_set) {
            read.settings.emplace(row.id, setting_in(settings, row));
        }
    }
    return read;
}

} // namespace

std::string text_of(const backup& kept) {
    device described;
    described.short_id = kept.short_id;
    nlohmann::ordered_json settings = nlohmann::ordered_json::object();
    for (const auto& [which, one] : kept.settings) {
        settings[std::string(row_of(which).name)] = json_of(one);
    }
    const nlohmann::ordered_json document{
        {"schema", schema},
        {"version", version},
        {"device",
         {{"uuid", kept.uuid}, {"type", name_of(kept.type)}, {"short_id", short_id_text(described)}}},
        {"settings", std::move(settings)}};
    constexpr int indent = 2;
    return document.dump(indent) + "\n";
}

backup backup_in(const std::string& text) {
    try {
        return backup_of(read_located_json(text));
    } catch (const located_error& wrong) {
        throw std::runtime_error(formatted("line {}: {}", wrong.line(), wrong.what()));
    }
}

backup read_backup(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        refuse(path, "there is no such file");
    }
    if (!std::filesystem::is_regular_file(path, error)) {
        refuse(path, "this is no regular file");
    }
    std::ifstream stream(path, std::ios::binary);
    std::string text(greatest_size + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream.is_open() || stream.bad()) {
        refuse(path, "the file cannot be read");
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > greatest_size) {
        refuse(path, "this is no backup, it has more than 64 KiB");
    }
    try {
        return backup_in(text);
    } catch (const std::runtime_error& wrong) {
        refuse(path, wrong.what());
    }
}

void require_file_or_nothing(const std::string& path) {
    std::error_code error;
    // A file is written beside the path and takes its place: that of a link too, which may be the system's.
    const auto kind = std::filesystem::symlink_status(path, error).type();
    if (kind == std::filesystem::file_type::symlink) {
        refuse(path, "this is a link; name the file itself");
    }
    if (kind != std::filesystem::file_type::regular && kind != std::filesystem::file_type::not_found) {
        refuse(path, "this is no regular file");
    }
}

void write_backup(const std::string& path, const backup& kept) {
    require_file_or_nothing(path);
    const std::string text = text_of(kept);
    try {
        (void)backup_in(text);
    } catch (const std::runtime_error& wrong) {
        refuse(path, formatted("not written, as it could not be restored: {}", wrong.what()));
    }
    if (const std::string failed = replace_file(path, text); !failed.empty()) {
        throw failure_with_status(exit_status::refused, failed);
    }
}

} // namespace vantu::orvanta::ctl
