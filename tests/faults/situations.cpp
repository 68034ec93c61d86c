// The five situations in which a client meets a fault.
#include "faults/situations.hpp"

#include "faults/fault_fixture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using vantu::orvanta::ns_per_millisecond;

constexpr std::uint64_t timeout_ns = 50'000'000;
constexpr double rate_hz = 100;

constexpr std::string_view gives_up = " after 100 ms";

fault_kind kind_of(const matrix_row& row) {
    const fault_row* const fault = find_fault(row.rule.substr(0, row.rule.find(' ')));
    EXPECT_NE(fault, nullptr) << row.rule;
    return fault != nullptr ? fault->kind : fault_kind::drop;
}

// Leaves the answers of an earlier session for a stale answer: one of each kind.
void live_an_earlier_session(fault_fixture& fixture) {
    fixture.enter();
    fixture.ask();
    fixture.pass(ns_per_millisecond, 1);
    fixture.leave();
}

void open(fault_fixture& fixture, const matrix_row& row) {
    fixture.tell(row.rule);
    // Where no answer is to come any time is enough, else none is too long.
    const std::int32_t code = fixture.connect(row.seen.starts_with("connect 4") ? timeout_ns : patience_ns);
    fixture.notes.insert(fixture.notes.begin(), "connect " + std::to_string(code));
    fixture.pass(10 * ns_per_millisecond, 15);
}

void idle(fault_fixture& fixture, const matrix_row& row) {
    EXPECT_EQ(fixture.connect(patience_ns), 0);
    fixture.take();
    fixture.tell(row.rule);
    EXPECT_NE(fixture.simulated.plug(vantu_orvanta_device_type_orvanta3), 0U);
    fixture.pass(10 * ns_per_millisecond, 15);
}

void stream(fault_fixture& fixture, const matrix_row& row) {
    fixture.enter();
    fixture.tell(row.rule);
    fixture.pass(10 * ns_per_millisecond, 3);
}

void request(fault_fixture& fixture, const matrix_row& row) {
    fixture.enter();
    fixture.tell(row.rule);
    fixture.ask();
    fixture.pass(10 * ns_per_millisecond, 15);
}

void disconnect(fault_fixture& fixture, const matrix_row& row) {
    constexpr std::int64_t longest_goodbye_ns = 100 * ns_per_millisecond;
    EXPECT_EQ(fixture.connect(patience_ns), 0);
    fixture.take();
    fixture.tell(row.rule);
    const std::int64_t took_ns = fixture.leave();
    // A datagram that is held comes in the end, however slow the machine.
    fixture.pass(ns_per_millisecond, 150);
    std::string note = fixture.simulated.clients().empty() ? "goodbye taken" : "goodbye lost";
    // That it takes no longer than that cannot be told from a busy machine.
    if (row.seen.find(gives_up) != std::string_view::npos) {
        EXPECT_GE(took_ns, longest_goodbye_ns) << row.rule;
        note += gives_up;
    }
    fixture.notes.push_back(note);
}

} // namespace

observed_row play(situation when, const matrix_row& row) {
    fault_fixture fixture(when == situation::streaming ? rate_hz : 0);
    const fault_kind kind = kind_of(row);
    if (kind == fault_kind::stale) {
        live_an_earlier_session(fixture);
    }
    (void)fixture.seen();
    (void)fixture.logged();
    switch (when) {
    case situation::opening:
        open(fixture, row);
        break;
    case situation::idle:
        idle(fixture, row);
        break;
    case situation::streaming:
        stream(fixture, row);
        break;
    case situation::requesting:
        request(fixture, row);
        break;
    case situation::disconnecting:
        disconnect(fixture, row);
        break;
    }
    observed_row observed;
    observed.seen = fixture.seen();
    observed.logged = fixture.logged();
    observed.happened = static_cast<unsigned>(fixture.simulated.faults().happened(kind));
    observed.next = fixture.next();
    return observed;
}

void play_to_the_end(const matrix_row& row) {
    fault_fixture fixture;
    vantu_orvanta_log_sink_set(nullptr);
    open(fixture, row);
}

} // namespace orvanta_tests
