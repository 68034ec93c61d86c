// The simulator's console: any lines, with a little time after each. Each line is answered once.
#include "simulator/control/console.hpp"
#include "script.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "verb_runner.hpp"

#include <cstdint>

using namespace vantu::orvanta::simulator;
using orvanta_fuzz::require;

namespace {

// An empty line and a comment ask for nothing.
bool asks(std::string_view line) {
    const auto first = line.find_first_not_of(" \t\r");
    return first != std::string_view::npos && line[first] != '#';
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::int64_t a_while_ns = 2'000'000;
    orvanta_fuzz::script input(data, size);
    simulation_settings settings;
    settings.devices = make_devices(2, 1);
    orvanta_fuzz::verb_runner target(std::move(settings));
    const bool prompts = input.byte() % 2 != 0;
    std::size_t answered = 0;
    std::size_t asked = 0;
    std::string printed;
    console lines([&](std::string_view line) { return target.run(line); },
                  [&](std::string_view line, const verb_result& result) {
                      return ++answered, text_answer(line, result);
                  },
                  [&](std::string_view text) { printed += text; }, prompts);
    std::int64_t now_ns = 0;
    std::size_t taken = 0;
    for (; !input.has_ended() && taken < 100 && !lines.has_quit(); ++taken) {
        const std::string line(input.line());
        asked += asks(line) ? 1 : 0;
        lines.take(line);
        lines.attend(now_ns);
        if (lines.is_waiting()) {
            now_ns += static_cast<std::int64_t>(longest_wait_ms) * vantu::orvanta::ns_per_millisecond;
            lines.attend(now_ns);
            require(!lines.is_waiting(), "a wait that is over waits on");
        }
        target.advance(a_while_ns);
        now_ns += a_while_ns;
        require(answered == asked, "a line was not answered, or twice");
    }
    lines.end_of_input();
    lines.attend(now_ns);
    require(lines.has_quit() || !prompts, "the end of what is typed is not the end");
    require(printed.empty() == (asked == 0 && !prompts), "a line without an answer, or an answer to none");
    return 0;
}
