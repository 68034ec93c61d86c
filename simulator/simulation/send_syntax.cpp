// Reading what the verb "send" says: a datagram of the service, by an operation's fields or by its bytes.
#include "shared/field_text.hpp"
#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/fields.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;
using sent_bytes = std::vector<std::byte>;

constexpr std::string_view example_of_send = "as in 'send device_block_reply device_id=1'";

[[noreturn]] void refuse_to_send(const std::string& what) {
    throw std::invalid_argument("send: " + what);
}

std::uint64_t number_of(std::string_view key, std::string_view text, std::uint64_t least,
                        std::uint64_t greatest) {
    const auto number = whole_number(text);
    if (!number || *number < least || *number > greatest) {
        refuse_to_send(
            formatted("{} is '{}'; a whole number from {} to {} would be right", key, text, least, greatest));
    }
    return *number;
}

const operation& operation_to_clients(std::string_view name) {
    std::vector<std::string_view> names;
    for (const operation& row : operations) {
        if (row.way == direction::to_client) {
            if (row.name == name) {
                return row;
            }
            names.push_back(row.name);
        }
    }
    refuse_to_send(formatted("'{}' is neither bytes in hexadecimal nor an operation to clients{}, {}", name,
                             hint_for(name, names), example_of_send));
}

std::string names_of(std::span<const field> fields) {
    std::string names = "tag or client";
    for (const field& one : fields) {
        names.insert(0, formatted("{}, ", one.name));
    }
    return names;
}

void write_tail(const operation& row, std::string_view text, sent_bytes& body) {
    const auto tail = bytes_of_hexadecimal(text);
    if (!tail || tail->size() > std::numeric_limits<std::uint8_t>::max()) {
        refuse_to_send(formatted("tail is '{}'; at most 255 bytes in hexadecimal would be right", text));
    }
    body.resize(row.body_size);
    body.back() = static_cast<std::byte>(tail->size());
    body.insert(body.end(), tail->begin(), tail->end());
}

void write_field(const operation& row, std::string_view name, std::string_view text, sent_bytes& body) {
    const auto fields = fields_of(row.code, row.way);
    const auto found = named_value(fields, name);
    if (!found) {
        refuse_to_send(
            formatted("{} has no field '{}'; {} would be right", row.name, name, names_of(fields)));
    }
    if (found->what.type == field_type::tail) {
        return write_tail(row, text, body);
    }
    try {
        write_value(found->what, text, std::span(body).subspan(found->offset, size_of(found->what)));
    } catch (const std::invalid_argument& wrong) {
        refuse_to_send(wrong.what());
    }
}

sent_bytes datagram_of(const operation& row, std::uint8_t tag, const sent_bytes& body) {
    const proto::op record{proto::op_magic, row.code, static_cast<std::uint16_t>(body.size()), tag};
    sent_bytes datagram(sizeof proto::datagram_header + sizeof record);
    std::memcpy(datagram.data(), &proto::datagram_header, sizeof proto::datagram_header);
    std::memcpy(datagram.data() + sizeof proto::datagram_header, &record, sizeof record);
    datagram.insert(datagram.end(), body.begin(), body.end());
    return datagram;
}

} // namespace

send_command read_send(std::string_view rest) {
    const std::string_view first = take_word(rest);
    if (first.empty()) {
        refuse_to_send(
            formatted("there is no operation; one of those to clients would be right, {}", example_of_send));
    }
    send_command made;
    const auto raw = bytes_of_hexadecimal(first);
    const operation* const row = raw ? nullptr : &operation_to_clients(first);
    sent_bytes body(row != nullptr ? row->body_size : 0);
    std::uint8_t tag = 0;
    for (std::string_view word = take_word(rest); !word.empty(); word = take_word(rest)) {
        const auto [key, given] = parted(word, '=');
        const std::string_view value = given.value_or("");
        if (key == "client") {
            made.client = number_of(key, value, 1, std::numeric_limits<std::uint32_t>::max());
        } else if (row == nullptr) {
            refuse_to_send(formatted("'{}' is too much; after bytes client=N alone would be right", word));
        } else if (key == "tag") {
            tag =
                static_cast<std::uint8_t>(number_of(key, value, 0, std::numeric_limits<std::uint8_t>::max()));
        } else {
            write_field(*row, key, value, body);
        }
    }
    made.datagram = raw ? *raw : datagram_of(*row, tag, body);
    if (made.datagram.size() > longest_sent_datagram) {
        refuse_to_send(formatted("these are {} bytes; at most {} would be right", made.datagram.size(),
                                 longest_sent_datagram));
    }
    return made;
}

} // namespace vantu::orvanta::simulator
