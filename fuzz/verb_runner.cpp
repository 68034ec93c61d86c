#include "verb_runner.hpp"

#include "sessions/reference_writer.hpp"
#include "vantu/orvanta/common/log.hpp"

#include <stdexcept>
#include <utility>

namespace orvanta_fuzz {

using namespace vantu::orvanta::simulator;

namespace {

// Floods beyond this number fill the memory, not the code.
constexpr std::uint32_t most_in_a_flood = 50;

bool is_large_flood(std::string_view line) {
    try {
        const command parsed = parse_verb(line);
        const auto* rule = std::get_if<fault_rule>(&parsed);
        return rule != nullptr && rule->kind == fault_kind::flood &&
               rule->first.value_or(0) > most_in_a_flood;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

} // namespace

verb_runner::verb_runner(simulation_settings settings) : target_(std::move(settings)) {
    // The client's address is none that a system could write out, and says so.
    vantu::orvanta::set_log_sink([](std::uint64_t, vantu::orvanta::log_level, const std::string&,
                                    std::uint64_t, const std::string&) {});
    peer from;
    from.address.length = 1;
    target_.receive(from, orvanta_tests::reference_connect({0, 0, 0, 1, "fuzzer", "1"}));
    for (const std::uint64_t id : {1U, 1001U}) {
        target_.receive(from, orvanta_tests::reference_datagram(18, 1, {{id, 4}, {0, 2}}));
    }
    (void)target_.take_outgoing();
}

verb_result verb_runner::run(std::string_view line) {
    if (is_large_flood(line)) {
        return {};
    }
    const std::string wrong = check_verb(line);
    verb_result result = run_verb(target_, line);
    if (!wrong.empty()) {
        require(!result.good && result.text == wrong, "a line is wrong in two ways");
    }
    if (!result.good) {
        require_one_line(result.text);
    } else if (!result.text.empty()) {
        require(result.text.back() == '\n', "what is to show is no lines");
    }
    (void)target_.take_outgoing();
    return result;
}

void verb_runner::advance(std::int64_t time_ns) {
    target_.advance_to(target_.now_ns() + time_ns);
    (void)target_.take_outgoing();
}

} // namespace orvanta_fuzz
