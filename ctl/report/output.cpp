#include "ctl/report/output.hpp"

#include "vantu/orvanta/names.h"

#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

namespace vantu::orvanta::ctl {
namespace {

using json = nlohmann::ordered_json;

// Bytes of others, such as a file's name, need not be UTF-8.
std::string line_of(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

// One call a line, so that lines of several programs on one terminal stay whole.
void complain(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr); // Windows keeps back what goes into a pipe
}

} // namespace

void output::result(const nlohmann::ordered_json& document, std::string_view text) const {
    if (in_json_) {
        write(line_of(document));
    } else {
        write(text);
    }
}

void output::write(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
        return;
    }
    // Windows calls a pipe that nobody reads an invalid argument.
    if (errno == EPIPE || errno == EINVAL) {
        throw output_closed();
    }
    throw failure_with_status(exit_status::refused,
                              "cannot write the results: " + std::generic_category().message(errno));
}

void output::note(std::string_view line) const {
    if (!in_json_) {
        complain("orvantactl: " + std::string(line) + "\n");
    }
}

void output::error(exit_status status, error_code code, std::string_view text) const {
    if (!in_json_) {
        complain("orvantactl: " + std::string(text) + "\n");
        return;
    }
    json told{{"kind", name_of(status)}, {"status", static_cast<int>(status)}};
    if (code != error_code::success) {
        told["code"] = vantu_orvanta_error_name(static_cast<std::int32_t>(code));
    }
    told["message"] = text;
    complain(line_of({{"error", std::move(told)}}));
}

} // namespace vantu::orvanta::ctl
