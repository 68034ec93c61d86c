// All that orvantactl prints: results on standard output, everything else on standard error.
#pragma once

#include "ctl/report/exit_status.hpp"

#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace vantu::orvanta::ctl {

// Thrown when nobody reads standard output any more: the program ends quietly.
struct output_closed {};

class output {
  public:
    explicit output(bool in_json) : in_json_(in_json) {}

    [[nodiscard]] bool in_json() const noexcept { return in_json_; }

    // One document a line in JSON, else the text as it stands, which ends with a newline. Throws
    // output_closed.
    void result(const nlohmann::ordered_json& document, std::string_view text) const;

    // The text as it stands, in either kind: a sample of a stream, or a picture on a terminal. Throws
    // output_closed, and failure_with_status (refused) where the system refuses, as on a full disk.
    static void write(std::string_view text);

    // A line for people, on standard error; nothing in JSON.
    void note(std::string_view line) const;

    // The error's line on standard error, or its document: {"error": {"kind", "code", "message"}}.
    void error(exit_status status, error_code code, std::string_view text) const;

  private:
    bool in_json_;
};

} // namespace vantu::orvanta::ctl
