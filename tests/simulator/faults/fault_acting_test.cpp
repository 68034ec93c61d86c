// That no fault of the table is a name alone: each changes what the simulation sends, as a rule and at once.
#include "simulator/fixtures/simulation_fixture.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;

const bytes connect_request = datagram({connect_operation(0)});
const bytes gravity_request = request_of(0x42, 5, 1);

// The argument of the row's example, without its selectors.
std::string argument_of(const fault_row& row) {
    return row.argument == fault_argument::none ? ""
                                                : std::string(row.example.substr(0, row.example.find('@')));
}

// The datagrams that a client in its second session is sent: at once after the fault has been added, for a
// new connect, for a request, and a little later.
std::vector<sent_list> trace_with(const fault_row* row, const std::string& text) {
    simulation_settings settings;
    settings.rate_hz = 0;
    simulation_fixture fixture(settings);
    fixture.enter(1, {1});
    fixture.send(1, gravity_request);
    fixture.enter(1, {1});
    if (row != nullptr) {
        fixture.tested.add_fault(parse_fault(row->kind, text));
    }
    std::vector<sent_list> trace{fixture.take(), fixture.send(1, connect_request),
                                 fixture.send(1, open_request(4, 1)), fixture.send(1, gravity_request),
                                 fixture.wait(simulation_tick_ns)};
    if (row != nullptr) {
        EXPECT_GT(fixture.tested.faults().happened(row->kind), 0U) << row->name;
    }
    return trace;
}

TEST(every_fault, changes_what_is_sent) {
    const auto untouched = trace_with(nullptr, "");
    for (const fault_row& row : faults) {
        const std::string argument = row.kind == fault_kind::patch ? "op.code=other" : argument_of(row);
        EXPECT_TRUE(trace_with(&row, argument + "@p=1") != untouched) << row.name << " does nothing";
    }
}

TEST(every_fault, acts_at_once_where_its_row_says_so) {
    const auto untouched = trace_with(nullptr, "");
    for (const fault_row& row : faults) {
        if (row.at_once) {
            EXPECT_TRUE(trace_with(&row, argument_of(row)) != untouched)
                << row.name << " does nothing at once";
        }
    }
}

} // namespace
} // namespace orvanta_tests
