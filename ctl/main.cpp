// orvantactl: reads the command line, runs the command, and turns its failure into an exit status.
#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/parse.hpp"
#include "ctl/report/exit_status.hpp"
#include "ctl/report/interruption.hpp"
#include "ctl/report/output.hpp"

#include <exception>

namespace vantu::orvanta::ctl {
namespace {

int status_number(exit_status status) {
    return static_cast<int>(status);
}

void execute(int argument_count, const char* const* arguments, output& out) {
    try {
        const request asked = parse(argument_count, arguments);
        asked.command->run(asked, out);
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
