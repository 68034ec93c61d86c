// Prints a dictionary for the fuzzers: "wire" from the operation table, "text" from the tables of the
// simulator's words.
//
// usage: fuzz_dictionary wire|text FILE
#include "simulator/control/scenario.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/service/configuration_json.hpp"
#include "simulator/simulation/conditions.hpp"
#include "vantu/orvanta/communication/fields.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <bit>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::communication;

template <typename Record> std::string bytes_of(const Record& record) {
    std::string text(sizeof record, '\0');
    std::memcpy(text.data(), &record, sizeof record);
    return text;
}

void print(std::ostream& out, std::string_view word) {
    constexpr char digits[] = "0123456789ABCDEF";
    out << '"';
    for (const char letter : word) {
        const auto value = std::bit_cast<unsigned char>(letter);
        out << "\\x" << digits[value / 16] << digits[value % 16];
    }
    out << "\"\n";
}

void print_wire(std::ostream& out) {
    print(out, bytes_of(proto::header_magic));
    print(out, bytes_of(proto::datagram_header));
    print(out, bytes_of(proto::op_magic));
    for (const operation& row : operations) {
        out << "# " << row.name << '\n';
        print(out, bytes_of(proto::op{proto::op_magic, row.code, row.body_size, 0}));
        print(out, bytes_of(proto::op{proto::op_magic, row.code, row.body_size, 1}));
    }
}

void print_text(std::ostream& out) {
    for (const simulator::fault_row& row : simulator::faults) {
        print(out, row.name);
        print(out, row.example);
    }
    for (const simulator::selector_row& row : simulator::fault_selectors) {
        print(out, row.key);
    }
    for (const simulator::condition_row& row : simulator::conditions) {
        print(out, row.example);
    }
    for (const body_layout& layout : body_layouts) {
        for (const field& one : layout.fields) {
            print(out, one.name);
        }
    }
    for (const simulator::scenario_event_row& row : simulator::scenario_events) {
        print(out, row.name);
    }
    const auto print_all = [&out](const auto& words) {
        for (const std::string_view word : words) {
            print(out, word);
        }
    };
    print_all(simulator::scenario_members::scenario);
    print_all(simulator::scenario_members::device);
    print_all(simulator::configuration_members);
    print_all(simulator::scenario_members::step);
    print_all(simulator::scenario_members::event);
    constexpr std::string_view words[]{"@",      "nth=",        "p=",          "op=",
                                       "dir=in", "dir=out",     "\"enabled\"", "\"scaling_factor\"",
                                       "true",   "false",       "1e",          "null",
                                       "{}",     "[]",          "\":",         "plug",
                                       "unplug", "set",         "heal",        "wait",
                                       "status", "help",        "quit",        "gravity_compensation",
                                       "on",     "orvanta3",    "off",         "right",
                                       "left",   "palmetron",   "restart",     "goodbye",
                                       "--",     "\"version\"", "--rate",      "--seed",
                                       "--port", "other",       "nan",         "answer"};
    print_all(words);
}

} // namespace

int main(int argument_count, char** arguments) {
    const std::string_view kind = argument_count == 3 ? arguments[1] : "";
    if (kind != "wire" && kind != "text") {
        std::fprintf(stderr, "usage: %s wire|text FILE\n", arguments[0]);
        return 2;
    }
    std::ofstream out(arguments[2], std::ios::binary);
    kind == "wire" ? print_wire(out) : print_text(out);
    return out.flush() ? 0 : 1;
}
