// Every operation once in each direction that it travels, with its bytes written out by hand and what is to
// be seen of them.
#pragma once

#include "dissector/dissected.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <string>
#include <vector>

namespace orvanta_tests {

struct sample_field {
    std::string name;
    std::string wire;  // hexadecimal
    std::string shown; // as tshark prints it; several values are joined with ';'
};

struct sample {
    std::string name;
    vantu::orvanta::communication::direction way;
    std::string record; // hexadecimal
    std::string code;   // in the record, as tshark prints it; so are length and tag
    std::string length;
    std::string tag;
    std::vector<sample_field> fields;
};

[[nodiscard]] const std::vector<sample>& samples();

[[nodiscard]] bytes body_of(const sample& of);
// A header and the sample.
[[nodiscard]] sent_datagram datagram_of(const sample& of);

// The filter name of a field of that operation.
[[nodiscard]] std::string filter_of(const sample& of, const sample_field& field);

// All that is to be seen of a header, and of the sample's record and body as well. Without the info.
[[nodiscard]] shown_fields shown_header();
[[nodiscard]] shown_fields shown_record(const sample& of);
[[nodiscard]] shown_fields shown_whole(const sample& of);

// "0102ff", as tshark prints bytes.
[[nodiscard]] std::string plain_hex(const bytes& of);

} // namespace orvanta_tests
