#include "shared/datagram_text.hpp"

#include "shared/datagram_operations.hpp"
#include "shared/field_text.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cstring>
#include <vector>

namespace vantu::orvanta {
namespace {

using namespace communication;

constexpr std::size_t most_shown = 16;

std::string shown(const field& what, std::span<const std::byte> value) {
    const bool is_cut = what.type == field_type::bytes && value.size() > most_shown;
    const std::string text = value_text(what, is_cut ? value.first(most_shown) : value);
    if (what.type == field_type::text) {
        return formatted("{}=\"{}\"", what.name, text);
    }
    return formatted("{}={}{}", what.name, text,
                     is_cut ? formatted("..({} bytes)", value.size()) : std::string());
}

std::string body_text(const operation& row, std::span<const std::byte> body) {
    std::string text;
    std::size_t at = 0;
    std::size_t needed = row.body_size;
    for (const field& one : fields_of(row.code, row.way)) {
        std::size_t size = size_of(one);
        if (one.type == field_type::tail && at <= body.size()) {
            const auto count = std::to_integer<std::size_t>(body[at - 1]);
            needed += count;
            size = std::min(count, body.size() - at);
        }
        if (at + size > body.size()) {
            break;
        }
        text += ' ' + shown(one, body.subspan(at, size));
        at += size;
    }
    if (body.size() < needed) {
        text += formatted(" [body cut short: {} of {} bytes]", body.size(), needed);
    } else if (body.size() > needed) {
        text += formatted(" [{} more bytes]", body.size() - needed);
    }
    return text;
}

std::string operation_text(std::span<const std::byte> datagram, const operation_place& place, direction way) {
    const operation* const row = find_operation(place.code, way);
    std::string text = row != nullptr ? std::string(row->name) : formatted("operation {}", place.code);
    if (place.tag != 0) {
        text += formatted(" tag={}", place.tag);
    }
    if (row != nullptr) {
        text += body_text(*row, datagram.subspan(place.body(), place.body_size));
    } else {
        text += formatted(" [unknown, {} bytes]", place.body_size);
    }
    if (place.length > place.body_size) {
        text += formatted(" [length {}: {} past the end]", place.length, place.length - place.body_size);
    }
    return text;
}

std::string header_damage(std::span<const std::byte> datagram) {
    proto::header header{};
    std::memcpy(&header, datagram.data(), sizeof header);
    std::string text;
    if (header.magic != proto::header_magic) {
        text += formatted("[header magic 0x{:04X}] ", std::uint16_t{header.magic});
    }
    if (header.version != proto::protocol_version) {
        text += formatted("[version {}] ", std::uint16_t{header.version});
    }
    return text;
}

std::string remainder_text(std::span<const std::byte> rest) {
    if (rest.empty()) {
        return {};
    }
    if (rest.size() < sizeof(proto::op)) {
        return formatted("[{} bytes left]", rest.size());
    }
    return formatted("[record magic 0x{:02X}, {} bytes left]", std::to_integer<unsigned>(rest.front()),
                     rest.size());
}

} // namespace

std::string datagram_text(std::span<const std::byte> datagram, direction way) {
    if (datagram.size() < sizeof(proto::header)) {
        return formatted("[header cut short: {} of {} bytes]", datagram.size(), sizeof(proto::header));
    }
    std::string text = header_damage(datagram);
    std::size_t end = sizeof(proto::header);
    for (const operation_place& place : operations_in(datagram)) {
        text += operation_text(datagram, place, way) + "; ";
        end = place.end();
    }
    text += remainder_text(datagram.subspan(end));
    if (text.empty()) {
        return "[no operation]";
    }
    return text.substr(0, text.find_last_not_of("; ") + 1);
}

} // namespace vantu::orvanta
