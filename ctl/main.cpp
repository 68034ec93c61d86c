// orvantactl: reads the command line, runs the command, and turns its failure into an exit status.
#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/parse.hpp"
#include "ctl/report/exit_status.hpp"
#include "ctl/report/interruption.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/traffic_recorder.hpp"

#include <exception>
#include <memory>

namespace vantu::orvanta::ctl {
namespace {

int status_number(exit_status status) {
    return static_cast<int>(status);
}

// A capture that fails is the command's failure, unless it has one of its own.
void run_with_capture(request& asked, output& out) {
    asked.recorder = std::make_shared<traffic_recorder>(asked.capture);
    try {
        asked.command->run(asked, out);
    } catch (...) {
        if (const auto failed = asked.recorder->finish()) {
            out.note(*failed);
        }
        throw;
    }
    if (const auto failed = asked.recorder->finish()) {
        throw failure_with_status(exit_status::refused, *failed);
    }
}

void execute(int argument_count, const char* const* arguments, output& out) {
    try {
        request asked = parse(argument_count, arguments);
        if (asked.capture.empty()) {
            asked.command->run(asked, out);
        } else {
            run_with_capture(asked, out);
        }
    } catch (const help_asked& shown) {
        output::write(shown.text);
    }
}

int run(int argument_count, const char* const* arguments) {
    output out(asks_for_json(argument_count, arguments));
    try {
        watch_for_interruption();
        execute(argument_count, arguments, out);
        return status_number(exit_status::done);
    } catch (const output_closed&) {
        return status_number(exit_status::done);
    } catch (const failure_with_status& why) {
        out.error(why.status(), why.code(), why.what());
        return status_number(why.status());
    } catch (const std::exception& why) {
        out.error(exit_status::refused, error_code::unexpected_error, why.what());
        return status_number(exit_status::refused);
    }
}

} // namespace
} // namespace vantu::orvanta::ctl

int main(int argument_count, char** arguments) {
    return vantu::orvanta::ctl::run(argument_count, arguments);
}
