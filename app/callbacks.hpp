// The callbacks that the tool registers with its client.
#pragma once

#include "app/console.hpp"
#include "app/state.hpp"

#include "vantu/orvanta/client.hpp"

namespace vantu::orvanta::app {

// They run on the polling thread and refer to the state and the console, which must outlive the
// client. The one for a listed device opens the chosen device again and throws exception, labelled
// "client.device_open", when that request cannot be sent.
[[nodiscard]] client::config make_callbacks(application_state& state, console& terminal);

} // namespace vantu::orvanta::app
