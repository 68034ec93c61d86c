// The menus as they stand on the screen.
#pragma once

#include <string>

namespace orvanta_tests {

inline const std::string main_menu = "\n"
                                     "0   Find Orvanta3\n"
                                     "1   Get Device Info\n"
                                     "2   Get Device Configuration\n"
                                     "3   Device Settings\n"
                                     "4   Exit\n"
                                     "Select option: \t";

inline const std::string settings_options = "\t0   Disable Gravity Compensation\n"
                                            "\t1   Enable Gravity Compensation\n"
                                            "\t2   Change Gravity Compensation Scaling\n"
                                            "\t3   Disable Torque Scaling\n"
                                            "\t4   Enable Torque Scaling\n"
                                            "\t5   Set Device to Left Handed\n"
                                            "\t6   Set Device to Right Handed\n"
                                            "\t7   Save Configuration\n"
                                            "\t8   Return\n"
                                            "Select option: \t";

inline const std::string settings_menu = "\n" + settings_options;

inline const std::string scaling_prompt =
    "\t\tProvide a new scaling factor (default = 0.75) [type 'cancel' to cancel]:\t";

inline const std::string no_device_connected = "No device connected - try using 'Find Orvanta3'\n";

inline const std::string banner = "Vantu Orvanta Command Line Interface\n"
                                  "Please make sure to start with the 'Find device'\n";

} // namespace orvanta_tests
