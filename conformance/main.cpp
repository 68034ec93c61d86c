// The conformance kit: options, the look at the rules, the report, the exit status.
#include "conformance/options.hpp"
#include "conformance/report.hpp"
#include "vantu/orvanta/common/log.hpp"

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::conformance;

enum exit_status : int {
    status_all_hold = 0,
    status_some_fail = 1,
    status_wrong_usage = 2,
    status_no_service = 3,
};

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0) {
        throw std::runtime_error("standard output cannot be written");
    }
}

int complain(const std::string& line, exit_status status) {
    std::fputs(("orvanta-conformance: " + line + '\n').c_str(), stderr);
    return status;
}

int judge(const options& chosen) {
    // A port that is taken is no news.
    set_log_sink([](std::uint64_t, log_level, const std::string&, std::uint64_t, const std::string&) {});
    socket_startup();
    surroundings around = surroundings_of(chosen.port);
    around.answer_time_ns = chosen.answer_time_ns;
    around.may_save = chosen.may_save;
    try {
        expect_service(around);
    } catch (const std::runtime_error& why) {
        return complain("port " + chosen.port + ": " + why.what(), status_no_service);
    }
    const auto findings = look_at(chosen.rules, around, [&chosen](const finding& one) {
        if (!chosen.in_json) {
            print(line_of(one));
        }
    });
    print(chosen.in_json ? json_of(findings) : summary_of(findings));
    if (!chosen.junit_path.empty() &&
        !(std::ofstream(chosen.junit_path) << junit_of(findings) << std::flush)) {
        return complain(chosen.junit_path + " cannot be written", status_some_fail);
    }
    return all_hold(findings) ? status_all_hold : status_some_fail;
}

} // namespace

int main(int argument_count, char** arguments) {
    try {
        const parse_outcome outcome = parse_options(argument_count, arguments);
        switch (outcome.verdict) {
        case parse_verdict::show:
            print(outcome.text);
            return status_all_hold;
        case parse_verdict::wrong:
            return complain(outcome.text, status_wrong_usage);
        case parse_verdict::run:
            break;
        }
        return judge(outcome.chosen);
    } catch (const std::exception& failure) {
        return complain(failure.what(), status_some_fail);
    }
}
