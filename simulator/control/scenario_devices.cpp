// Reading the devices of a scenario.
#include "shared/field_text.hpp"
#include "shared/located_json.hpp"
#include "shared/text_lines.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/service/configuration_json.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {
namespace {

// A device and the lines of what can clash with another's.
struct placed_device {
    device made;
    std::string place;
    std::size_t id_line;
    std::size_t short_id_line;
    std::size_t uuid_line;
};

void read_short_id(const located_value& value, const std::string& place, device& made) {
    constexpr std::size_t short_id_digits = 4;
    constexpr std::string_view right = "four hexadecimal digits as the tool shows them, as in \"3001\",";
    const std::string& text = require_string(value, place + " short_id", right);
    const auto number = whole_number("0x" + text);
    if (text.size() != short_id_digits || !number) {
        throw located_error(value.line,
                            formatted("{} short_id is \"{}\"; {} would be right", place, text, right));
    }
    made.description.short_id = static_cast<std::uint16_t>(*number);
}

void read_uuid(const located_value& value, const std::string& place, device& made) {
    constexpr std::string_view right = "32 hexadecimal digits, with or without dashes between them,";
    std::string digits = require_string(value, place + " uuid", right);
    digits.erase(std::remove(digits.begin(), digits.end(), '-'), digits.end());
    const auto bytes = bytes_of_hexadecimal(digits);
    if (!bytes || bytes->size() != sizeof made.description.uuid) {
        throw located_error(value.line,
                            formatted("{} uuid is \"{}\"; {} would be right", place, value.string, right));
    }
    std::memcpy(made.description.uuid, bytes->data(), bytes->size());
}

// Reads devices one after the other, each with the identity of its place among those of its type where the
// scenario gives it no other.
class device_reader {
  public:
    placed_device read(const located_value& value, const std::string& place) {
        require_object(value, place, scenario_members::device);
        placed_device one{next_of(required_member(value, place, "type"), place), place, value.line,
                          value.line, value.line};
        if (const located_value* id = value.find("id")) {
            one.made.id = static_cast<std::uint32_t>(
                require_whole(*id, place + " id", 1, std::numeric_limits<std::uint32_t>::max()));
            one.id_line = id->line;
        }
        if (const located_value* short_id = value.find("short_id")) {
            read_short_id(*short_id, place, one.made);
            one.short_id_line = short_id->line;
        }
        if (const located_value* uuid = value.find("uuid")) {
            read_uuid(*uuid, place, one.made);
            one.uuid_line = uuid->line;
        }
        if (const located_value* settings = value.find("configuration")) {
            read_configuration(*settings, place + " configuration", one.made.settings);
        }
        return one;
    }

  private:
    device next_of(const located_value& type, const std::string& place) {
        constexpr std::array<std::string_view, 2> types{"orvanta3", "palmetron"};
        const bool is_orvanta3 = require_word(type, place + " type", types) == 0;
        std::size_t& used = is_orvanta3 ? orvanta3_used_ : palmetron_used_;
        const auto& family = is_orvanta3 ? orvanta3_ : palmetron_;
        if (used == family.size()) {
            throw located_error(type.line, formatted("{} is one too many; {} of a type are the most", place,
                                                     most_devices_of_a_type));
        }
        return family[used++];
    }

    std::vector<device> orvanta3_{make_devices(most_devices_of_a_type, 0)};
    std::vector<device> palmetron_{make_devices(0, most_devices_of_a_type)};
    std::size_t orvanta3_used_{0};
    std::size_t palmetron_used_{0};
};

void require_new(const placed_device& one, const std::vector<placed_device>& earlier) {
    for (const placed_device& other : earlier) {
        const auto refuse = [&](std::size_t line, std::string_view what) {
            throw located_error(line, formatted("{} has the {} of {}; each device needs its own", one.place,
                                                what, other.place));
        };
        if (one.made.id == other.made.id) {
            refuse(one.id_line, "id");
        }
        if (one.made.description.short_id == other.made.description.short_id) {
            refuse(one.short_id_line, "short_id");
        }
        if (std::equal(std::begin(one.made.description.uuid), std::end(one.made.description.uuid),
                       std::begin(other.made.description.uuid))) {
            refuse(one.uuid_line, "uuid");
        }
    }
}

} // namespace

std::vector<device> read_scenario_devices(const located_value& list) {
    device_reader reader;
    std::vector<placed_device> read;
    for (const located_value& value : require_array(list, "devices")) {
        const placed_device one = reader.read(value, formatted("device {}", read.size() + 1));
        require_new(one, read);
        read.push_back(one);
    }
    std::vector<device> devices;
    devices.reserve(read.size());
    for (const placed_device& one : read) {
        devices.push_back(one.made);
    }
    std::sort(devices.begin(), devices.end(),
              [](const device& left, const device& right) { return left.id < right.id; });
    return devices;
}

} // namespace vantu::orvanta::simulator
