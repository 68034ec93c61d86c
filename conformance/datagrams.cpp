#include "conformance/datagrams.hpp"

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/fields.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta::conformance {

using namespace communication;

namespace {

void append(bytes& to, std::span<const std::byte> more) {
    to.insert(to.end(), more.begin(), more.end());
}

bool names_a_device(std::uint8_t code, direction way) {
    return find_field(fields_of(code, way), "device_id").has_value();
}

template <typename Number> Number number_at(std::span<const std::byte> from, std::size_t offset = 0) {
    Number value{};
    std::memcpy(&value, from.data() + offset, sizeof value);
    return value;
}

// The bytes that a body needs by its operation's row, its tail counted; nothing where they are not there.
std::optional<std::size_t> need_of(const operation& row, std::span<const std::byte> rest) {
    std::size_t need = row.body_size;
    if (rest.size() >= need && row.rule == body_rule::minimum) {
        need += static_cast<std::size_t>(rest[need - 1]);
    }
    return rest.size() >= need ? std::optional(need) : std::nullopt;
}

// Reads the operation that the rest begins with and takes it off; false where a client reads no further.
bool read_operation(std::span<const std::byte>& rest, reading& into) {
    if (rest.size() < sizeof(proto::op)) {
        into.damages.push_back({damage::not_whole, formatted("{} bytes after an operation", rest.size())});
        return false;
    }
    const auto record = number_at<proto::op>(rest);
    rest = rest.subspan(sizeof record);
    if (record.magic != proto::op_magic) {
        into.damages.push_back(
            {damage::record_magic, formatted("an operation record that begins with 0x{:02X}", record.magic)});
        return false;
    }
    const std::uint16_t length = record.length;
    const operation* const row = find_operation(record.code, direction::to_client);
    if (row == nullptr) {
        into.damages.push_back({damage::unknown_code, formatted("an operation {}", record.code)});
        if (length <= rest.size()) {
            rest = rest.subspan(length);
            return true;
        }
        return false;
    }
    const std::optional<std::size_t> need = need_of(*row, rest);
    if (length > rest.size()) {
        into.damages.push_back({damage::not_whole, formatted("{} with {} of {} bytes of its body", row->name,
                                                             rest.size(), length)});
    } else if (need != length) {
        into.damages.push_back(
            {damage::body_length, formatted("{} with a body of {} bytes", row->name, length)});
    }
    if (!need) {
        return false;
    }
    const auto body = rest.first(*need);
    into.operations.push_back({record.code, record.tag, {body.begin(), body.end()}});
    rest = rest.subspan(*need);
    return true;
}

} // namespace

bytes datagram_of(std::uint8_t code, std::uint8_t tag, std::span<const std::byte> body) {
    bytes datagram = bytes_of(proto::datagram_header);
    append(datagram,
           bytes_of(proto::op{proto::op_magic, code, static_cast<std::uint16_t>(body.size()), tag}));
    append(datagram, body);
    return datagram;
}

bytes device_request(std::uint8_t code, std::uint8_t tag, std::uint32_t device_id,
                     std::span<const std::byte> argument) {
    bytes body = bytes_of(device_id);
    append(body, argument);
    return datagram_of(code, tag, body);
}

std::vector<operation> device_requests() {
    std::vector<operation> chosen;
    std::copy_if(operations.begin(), operations.end(), std::back_inserter(chosen), [](const operation& row) {
        return row.way == direction::to_service && names_a_device(row.code, row.way);
    });
    return chosen;
}

std::uint32_t seen_operation::device_id() const {
    return names_a_device(code, direction::to_client) ? number_at<std::uint32_t>(body) : 0;
}

bytes seen_operation::record() const {
    const std::size_t named = names_a_device(code, direction::to_client) ? sizeof(std::uint32_t) : 0;
    return {body.begin() + static_cast<std::ptrdiff_t>(named), body.end()};
}

std::string text_of(const std::optional<seen_operation>& seen) {
    if (!seen) {
        return "nothing";
    }
    std::string text(row_of(seen->code, direction::to_client).name);
    if (seen->code == op_code::service_error) {
        const auto status = static_cast<std::uint8_t>(seen->body.back());
        text += formatted(" {} ({})", status, service_status_message(static_cast<std::int8_t>(status)));
    }
    text += formatted(", tag {}", seen->tag);
    if (names_a_device(seen->code, direction::to_client)) {
        text += formatted(", device {}", seen->device_id());
    }
    return text;
}

reading read_datagram(std::span<const std::byte> datagram) {
    reading read;
    if (datagram.size() < sizeof(proto::header) + sizeof(proto::op)) {
        read.damages.push_back({damage::not_whole, formatted("a datagram of {} bytes", datagram.size())});
        return read;
    }
    const auto header = number_at<proto::header>(datagram);
    const std::uint16_t magic = header.magic;
    const std::uint16_t version = header.version;
    const std::uint16_t reserved = header.reserved;
    if (magic != proto::header_magic || version != proto::protocol_version) {
        read.damages.push_back(
            {damage::header, formatted("a header with magic 0x{:04X}, version {}", magic, version)});
        return read;
    }
    if (reserved != 0) {
        read.damages.push_back({damage::reserved, formatted("a header with {} in its last field", reserved)});
    }
    for (auto rest = datagram.subspan(sizeof header); !rest.empty() && read_operation(rest, read);) {
    }
    return read;
}

} // namespace vantu::orvanta::conformance
