// The outcome of one check of the doctor: what was seen, and what to do about it.
#pragma once

#include "ctl/report/exit_status.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vantu::orvanta::ctl {

enum class check_outcome : std::uint8_t { ok, warning, failed, skipped };

// "ok", "warning", "failed" or "skipped".
const char* name_of(check_outcome of) noexcept;

struct finding {
    const char* check; // its name, as in "service-port"
    check_outcome outcome{check_outcome::ok};
    std::string seen;                                      // one line, without a full stop
    std::string remedy;                                    // one line; empty when there is nothing to do
    exit_status status{exit_status::done};                 // of the command, when this is its first failure
    std::vector<std::pair<const char*, double>> figures{}; // what was measured, by name
};

finding passed(const char* check, std::string seen);
finding warned(const char* check, std::string seen, std::string remedy);
finding failed(const char* check, exit_status status, std::string seen, std::string remedy);
// The check did not run, for this reason.
finding skipped(const char* check, std::string reason);

// Whether what builds on this check can run.
[[nodiscard]] bool is_usable(const finding& of) noexcept;

// The first that failed, or null.
[[nodiscard]] const finding* first_failure(std::span<const finding> findings) noexcept;

// "ok       loopback      localhost is 127.0.0.1", and what to do on an indented line of its own.
[[nodiscard]] std::string text_of(const finding& of, bool coloured);

// {"checks": [{"name", "outcome", "seen", "remedy", "figures"}], "outcome"}; there is a remedy where
// something is to be done, and figures where something was measured. The outcome of all is the worst of ok,
// warning and failed.
[[nodiscard]] nlohmann::ordered_json document_of(std::span<const finding> findings);

} // namespace vantu::orvanta::ctl
