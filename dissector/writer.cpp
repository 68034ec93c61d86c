// Writes the dissector for Wireshark: the tables of operations, fields and names as Lua, and the hand-written
// parts after them, in one file.
//
// usage: orvanta_dissector_writer OUTPUT PART...

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/fields.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/communication/service_status.hpp"
#include "vantu/orvanta/names.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::communication;

// A code that travels both ways has one name, as the dissector has one list of names.
consteval bool codes_have_one_name() {
    for (const operation& row : operations) {
        for (const operation& other : operations) {
            if (row.code == other.code && row.name != other.name) {
                return false;
            }
        }
    }
    return true;
}
static_assert(codes_have_one_name());

std::string_view name_of(field_type type) {
    switch (type) {
    case field_type::u8:
        return "u8";
    case field_type::u16:
        return "u16";
    case field_type::u32:
        return "u32";
    case field_type::u64:
        return "u64";
    case field_type::f32:
        return "f32";
    case field_type::bytes:
        return "bytes";
    case field_type::text:
        return "text";
    case field_type::tail:
        return "tail";
    }
    throw std::logic_error("a field has no type");
}

// The fields are in the order of the table, which is that of the wire.
std::string operation_text(const operation& row) {
    std::string text =
        formatted("        [{}] = {{name = \"{}\", size = {}", row.code, row.name, row.body_size);
    if (row.answered_by != op_code::none) {
        text += formatted(", answer = {}", row.answered_by);
    }
    if (row.tag == tag_rule::copied) {
        text += ", copies_tag = true";
    }
    text += ", fields = {\n";
    for (const field& one : fields_of(row.code, row.way)) {
        text += formatted("            {{name = \"{}\", type = \"{}\", count = {}, size = {}}},\n", one.name,
                          name_of(one.type), one.count, value_size_of(one.type));
    }
    return text + "        }},\n";
}

std::string operations_text(std::string_view name, direction way) {
    std::string text = formatted("    {} = {{\n", name);
    for (const operation& row : operations) {
        if (row.way == way) {
            text += operation_text(row);
        }
    }
    return text + "    },\n";
}

// The names of all values of a byte that have one.
template <typename Name>
std::string names_text(std::string_view name, Name name_of_value, std::string_view nameless) {
    std::string text = formatted("    {} = {{\n", name);
    for (unsigned value = 0; value < 256; ++value) {
        const std::string_view known = name_of_value(static_cast<std::uint8_t>(value));
        if (known != nameless) {
            text += formatted("        [{}] = \"{}\",\n", value, known);
        }
    }
    return text + "    },\n";
}

const char* status_name(std::uint8_t status) {
    return service_status_message(static_cast<std::int8_t>(status));
}

std::string tables_text() {
    return "-- Made by the build from the tables of the library; changes here are lost.\n"
           "local wire = {\n" +
           formatted("    header_size = {}, header_magic = {}, version = {},\n", sizeof(proto::header),
                     proto::header_magic, proto::protocol_version) +
           formatted("    record_size = {}, record_magic = {},\n", sizeof(proto::op), proto::op_magic) +
           formatted("    ack = {}, service_error = {},\n", op_code::ack, op_code::service_error) +
           operations_text("to_service", direction::to_service) +
           operations_text("to_client", direction::to_client) +
           names_text("statuses", status_name, "undefined") +
           names_text("device_types", vantu_orvanta_device_type_name, "unknown") +
           names_text("handednesses", vantu_orvanta_handedness_name, "unknown") + "}\n";
}

std::string text_of_file(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file || text.empty()) {
        throw std::runtime_error(std::string("cannot be read: ") + path);
    }
    return text;
}

void write_dissector(int count, char** arguments) {
    if (count < 3) {
        throw std::runtime_error("usage: orvanta_dissector_writer OUTPUT PART...");
    }
    std::string text = tables_text();
    for (int part = 2; part < count; ++part) {
        text += '\n' + text_of_file(arguments[part]);
    }
    std::ofstream output(arguments[1], std::ios::binary);
    output << text;
    output.close();
    if (!output) {
        throw std::runtime_error(std::string("cannot be written: ") + arguments[1]);
    }
}

} // namespace

int main(int count, char** arguments) {
    try {
        write_dissector(count, arguments);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvanta_dissector_writer: %s\n", error.what());
        return 1;
    }
}
