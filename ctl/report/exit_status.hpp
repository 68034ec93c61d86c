// The exit status of orvantactl, and the failure that carries it to main.
#pragma once

#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/result.hpp"

#include <stdexcept>
#include <string>

namespace vantu::orvanta::ctl {

// A script's contract: the numbers stand in the manual page.
enum class exit_status : int {
    done = 0,
    refused = 1,       // by the service or the device, or a file that cannot be read or written
    wrong_usage = 2,   // nothing was sent
    no_service = 3,    // nobody to talk to, or it does not accept this client
    no_device = 4,     // none, or more than one where one is needed
    timed_out = 5,     // no answer in time
    lost = 6,          // the connection, on the way
    interrupted = 130, // by Ctrl-C
};

// "done", "refused", ...: the kind of an error in JSON.
const char* name_of(exit_status status) noexcept;

// The status of a request that failed with this code, once there was a connection.
exit_status status_of(error_code code) noexcept;

// A request's failure for people who do not know the library: its message, or what a refusal means here.
std::string text_of(const failure& why);

// Ends the command. The text is one line, without a full stop, and says what to do where that is known.
class failure_with_status : public std::runtime_error {
  public:
    failure_with_status(exit_status status, const std::string& text, error_code code = error_code::success)
        : std::runtime_error(text), status_(status), code_(code) {}
    // A request's failure: its status follows from its code.
    explicit failure_with_status(const failure& why)
        : std::runtime_error(text_of(why)), status_(status_of(why.code)), code_(why.code) {}

    [[nodiscard]] exit_status status() const noexcept { return status_; }
    // error_code::success where no request failed.
    [[nodiscard]] error_code code() const noexcept { return code_; }

  private:
    exit_status status_;
    error_code code_;
};

} // namespace vantu::orvanta::ctl
