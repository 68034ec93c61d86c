// The main menu and its actions.
#pragma once

#include "app/session.hpp"

namespace vantu::orvanta::app {

// Serves the menu until "Exit" is chosen. Throws exception when a request cannot be sent, and what
// the prompts throw at the end of input.
void run_main_menu(session& current);

// The actions behind its rows. find_device closes the device that is open, chooses anew and asks for
// the configuration of what it opened.
void find_device(session& current);
void show_device_info(session& current);
void show_device_configuration(session& current);

} // namespace vantu::orvanta::app
