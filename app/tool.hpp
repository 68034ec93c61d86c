// The whole tool, from connecting to "Exit".
#pragma once

#include "app/console.hpp"

namespace vantu::orvanta::app {

// Connects to the service, serves the user and returns 0 after "Exit". Throws exception, labelled
// "client.connect", when there is no connection; otherwise as run_main_menu. The polling thread
// still runs when it throws: let the exception end the process.
int run_tool(console& terminal);

} // namespace vantu::orvanta::app
