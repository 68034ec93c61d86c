// The menu "Device Settings".
#pragma once

#include "app/session.hpp"

namespace vantu::orvanta::app {

// Serves the menu until "Return" is chosen or the device is gone. Each setting is a request whose
// answer is not awaited; throws exception when one cannot be sent.
void run_settings_menu(session& current);

} // namespace vantu::orvanta::app
