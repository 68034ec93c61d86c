#include "simulator/faults/fault_patch.hpp"

#include "shared/field_text.hpp"
#include "simulator/faults/fault_fit.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>
#include <stdexcept>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

using enum field_type;

constexpr std::string_view any_other = "other";
constexpr std::string_view code_field = "op.code";

struct framing_field {
    field what;
    field_place place;
    std::size_t offset;
};

constexpr std::array framing_fields{
    framing_field{{"header.magic", u16}, field_place::header, offsetof(proto::header, magic)},
    framing_field{{"header.version", u16}, field_place::header, offsetof(proto::header, version)},
    framing_field{{"header.reserved", u16}, field_place::header, offsetof(proto::header, reserved)},
    framing_field{{"op.magic", u8}, field_place::record, offsetof(proto::op, magic)},
    framing_field{{code_field, u8}, field_place::record, offsetof(proto::op, code)},
    framing_field{{"op.length", u16}, field_place::record, offsetof(proto::op, length)},
    framing_field{{"tag", u8}, field_place::record, offsetof(proto::op, tag)},
};

std::string_view name_in(const fault_rule& rule) {
    const std::string_view name = std::string_view(rule.text).substr(0, rule.text.find('='));
    return name == "device" ? body_fields::device_id.name : name;
}

std::string_view value_in(const fault_rule& rule) {
    return std::string_view(rule.text).substr(rule.text.find('=') + 1);
}

std::uint8_t unknown_code(fault_random& chance) {
    std::vector<std::uint8_t> unknown;
    for (unsigned code = 0; code <= std::numeric_limits<std::uint8_t>::max(); ++code) {
        const auto candidate = static_cast<std::uint8_t>(code);
        if (find_operation(candidate, direction::to_client) == nullptr &&
            find_operation(candidate, direction::to_service) == nullptr) {
            unknown.push_back(candidate);
        }
    }
    return unknown[chance.below(unknown.size())];
}

// Each value becomes any but the one that it is.
void put_another(const field& what, std::span<std::byte> bytes, fault_random& chance) {
    if (what.name == code_field) {
        bytes.front() = std::byte{unknown_code(chance)};
        return;
    }
    const std::size_t size = value_size_of(what.type);
    const std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max() >> (64 - 8 * size);
    for (std::size_t i = 0; i + size <= bytes.size(); i += size) {
        std::uint64_t is = 0; // in the order of the wire, which is that of every system this runs on
        std::memcpy(&is, bytes.data() + i, size);
        std::uint64_t drawn = chance.below(greatest);
        drawn += drawn < is ? 0U : 1U;
        std::memcpy(bytes.data() + i, &drawn, size);
    }
}

std::size_t start_of(field_place place, const operation_place& which) {
    switch (place) {
    case field_place::header:
        return 0;
    case field_place::record:
        return which.record;
    case field_place::body:
        return which.body();
    }
    return 0;
}

} // namespace

std::optional<patch_field> patched_field(const fault_rule& rule, std::uint8_t code, direction way) {
    const std::string_view name = name_in(rule);
    for (const framing_field& one : framing_fields) {
        if (one.what.name == name) {
            return patch_field{{one.what, one.offset}, one.place};
        }
    }
    const auto found = named_value(fields_of(code, way), name);
    return found && found->what.type != tail ? std::optional(patch_field{*found}) : std::nullopt;
}

std::vector<std::string_view> fields_to_patch(std::uint8_t code, direction way) {
    std::vector<std::string_view> names;
    names.reserve(framing_fields.size() + fields_of(code, way).size());
    for (const framing_field& one : framing_fields) {
        names.push_back(one.what.name);
    }
    for (const field& one : fields_of(code, way)) {
        names.push_back(one.name);
    }
    return names;
}

bool holds_patched_field(const fault_rule& rule, const operation_place& place, direction way) {
    const auto found = patched_field(rule, place.code, way);
    return found && (found->place != field_place::body ||
                     found->field.offset + size_of(found->field.what) <= place.body_size);
}

std::string complaint_about_value(const fault_rule& rule) {
    std::string complaint;
    for (const operation& row : operations) {
        const auto found = is_about(rule, row) ? patched_field(rule, row.code, row.way) : std::nullopt;
        if (!found) {
            continue;
        }
        if (value_in(rule) == any_other) {
            return {};
        }
        try {
            std::vector<std::byte> value(size_of(found->field.what));
            write_value(found->field.what, value_in(rule), value);
            return {};
        } catch (const std::invalid_argument& wrong) {
            complaint = wrong.what();
        }
    }
    return complaint;
}

std::optional<operation_place> operation_to_patch(const fault_rule& rule, std::span<const std::byte> datagram,
                                                  direction way) {
    if (!name_in(rule).starts_with("header.") || rule.code || rule.device) {
        return chosen_operation(rule, datagram, way);
    }
    return datagram.size() >= sizeof(proto::header) ? std::optional(operation_place{}) : std::nullopt;
}

bool patch(const fault_rule& rule, datagram_bytes& datagram, direction way, fault_random& chance) {
    const auto which = operation_to_patch(rule, datagram, way);
    const auto found = which ? patched_field(rule, which->code, way) : std::nullopt;
    if (!found) {
        return false;
    }
    const datagram_bytes before = datagram;
    const auto bytes = std::span(datagram).subspan(start_of(found->place, *which) + found->field.offset,
                                                   size_of(found->field.what));
    if (value_in(rule) == any_other) {
        put_another(found->field.what, bytes, chance);
        return true;
    }
    try {
        write_value(found->field.what, value_in(rule), bytes);
    } catch (const std::invalid_argument&) {
        return false; // right for another operation that has a field of this name
    }
    return datagram != before;
}

} // namespace vantu::orvanta::simulator
