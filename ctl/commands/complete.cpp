// orvantactl complete: prints candidates for the shells, a line each: the word, a tabulator, its meaning.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/completion/candidates.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/connection.hpp"

namespace vantu::orvanta::ctl {
namespace {

// Nobody waits longer for a shell's answer.
constexpr auto longest_wait = std::chrono::milliseconds(300);

std::vector<device> devices_there() {
    request quick;
    quick.timeout = longest_wait;
    try {
        return connection(quick).service().devices();
    } catch (const failure_with_status&) {
        return {};
    }
}

} // namespace

void print_candidates(const request& asked, output&) {
    const candidates found = candidates_for(asked.words, devices_there);
    std::string text;
    for (const candidate& one : found.words) {
        text += one.word + "\t" + one.meaning + "\n";
    }
    // No candidate is called so.
    output::write(text + (found.files ? ":files\n" : ""));
}

} // namespace vantu::orvanta::ctl
