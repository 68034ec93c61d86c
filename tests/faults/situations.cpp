// The five situations in which a client meets a fault.
#include "faults/situations.hpp"

#include "faults/fault_bench.hpp"
#include "faults/times.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gtest/gtest.h>

namespace fault_tests {
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

// What an earlier session leaves behind for a stale answer: one of each kind.
void live_an_earlier_session(fault_bench& bench) {
    bench.enter();
    bench.ask();
    bench.pass(ns_per_millisecond, 1);
    bench.leave();
}

void open(fault_bench& bench, const matrix_row& row) {
    bench.tell(row.rule);
    // Where no answer is to come any time is enough, else none is too long.
    const std::int32_t code = bench.connect(row.seen.starts_with("connect 4") ? timeout_ns : patience_ns);
    bench.notes.insert(bench.notes.begin(), "connect " + std::to_string(code));
    bench.pass(10 * ns_per_millisecond, 15);
}

void idle(fault_bench& bench, const matrix_row& row) {
    EXPECT_EQ(bench.connect(patience_ns), 0);
    bench.take();
    bench.tell(row.rule);
    EXPECT_NE(bench.simulated.plug(vantu_orvanta_device_type_orvanta3), 0U);
    bench.pass(10 * ns_per_millisecond, 15);
}

void stream(fault_bench& bench, const matrix_row& row) {
    bench.enter();
    bench.tell(row.rule);
    bench.pass(10 * ns_per_millisecond, 3);
}

void request(fault_bench& bench, const matrix_row& row) {
    bench.enter();
    bench.tell(row.rule);
    bench.ask();
    bench.pass(10 * ns_per_millisecond, 15);
}

void disconnect(fault_bench& bench, const matrix_row& row) {
    constexpr std::int64_t longest_goodbye_ns = 100 * ns_per_millisecond;
    EXPECT_EQ(bench.connect(patience_ns), 0);
    bench.take();
    bench.tell(row.rule);
    const std::int64_t took_ns = bench.leave();
    // What is held back comes in the end, however slow the machine.
    bench.pass(ns_per_millisecond, 150);
    std::string note = bench.simulated.clients().empty() ? "goodbye taken" : "goodbye lost";
    // That it takes no longer than that cannot be told from a busy machine.
    if (row.seen.find(gives_up) != std::string_view::npos) {
        EXPECT_GE(took_ns, longest_goodbye_ns) << row.rule;
        note += gives_up;
    }
    bench.notes.push_back(note);
}

} // namespace

observed_row play(situation when, const matrix_row& row) {
    fault_bench bench(when == situation::streaming ? rate_hz : 0);
    const fault_kind kind = kind_of(row);
    if (kind == fault_kind::stale) {
        live_an_earlier_session(bench);
    }
    (void)bench.seen();
    (void)bench.logged();
    switch (when) {
    case situation::opening:
        open(bench, row);
        break;
    case situation::idle:
        idle(bench, row);
        break;
    case situation::streaming:
        stream(bench, row);
        break;
    case situation::requesting:
        request(bench, row);
        break;
    case situation::disconnecting:
        disconnect(bench, row);
        break;
    }
    observed_row observed;
    observed.seen = bench.seen();
    observed.logged = bench.logged();
    observed.happened = static_cast<unsigned>(bench.simulated.faults().happened(kind));
    observed.next = bench.next();
    return observed;
}

void play_to_the_end(const matrix_row& row) {
    fault_bench bench;
    vantu_orvanta_log_sink_set(nullptr);
    open(bench, row);
}

} // namespace fault_tests
