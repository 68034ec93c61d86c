// Datagrams as tshark shows them with the dissector in its folder of plugins: no option names it.
#pragma once

#include "support/bytes.hpp"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvanta_tests {

// A datagram on its way, by default from the first client's port to the service's.
struct sent_datagram {
    bytes content;
    std::uint16_t from{54321};
    std::uint16_t to{54320};
    std::int64_t time_ns{0};
};
[[nodiscard]] sent_datagram sent_to_service(bytes content, std::int64_t time_ns = 0);
[[nodiscard]] sent_datagram sent_to_client(bytes content, std::int64_t time_ns = 0);

// The values of each field that a datagram has, by filter name; several are joined with ';'. A field that is
// a heading or a damage has the value "1". "info" is the text of the column.
using shown_fields = std::map<std::string, std::string>;

struct registered_field {
    std::string filter;
    std::string label;
    std::string type; // as in "FT_UINT8"
};

// The fields that the dissector registers, as tshark lists them, and their filter names.
[[nodiscard]] const std::vector<registered_field>& registered_fields();
[[nodiscard]] const std::vector<std::string>& registered_filters();

// Each of these throws std::runtime_error when tshark fails, complains, or tells of an error in Lua.

// A row for each datagram, with every field that is registered or with those that are named. Frames count
// from 1.
[[nodiscard]] std::vector<shown_fields> dissect(
    const std::vector<sent_datagram>& datagrams, const std::vector<std::string>& options = {},
    const std::vector<std::string>& filters = registered_filters());

// The same for a capture, which is alone in its folder.
[[nodiscard]] std::vector<shown_fields> dissect_file(
    const std::string& path, const std::vector<std::string>& options = {},
    const std::vector<std::string>& filters = registered_filters());
// The same for a datagram whose last bytes the capture leaves out.
[[nodiscard]] shown_fields dissect_captured_part(const sent_datagram& whole, std::uint32_t missing);

// The whole trees as text, as the program's window shows them.
[[nodiscard]] std::string trees_of(const std::vector<sent_datagram>& datagrams);

} // namespace orvanta_tests
