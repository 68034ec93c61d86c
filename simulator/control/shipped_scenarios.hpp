// The scenarios that are installed with the program, by their names.
#pragma once

#include <filesystem>
#include <string>

namespace vantu::orvanta::simulator {

// The folder in which the program lies; empty where the system does not tell. One source file a platform
// implements it.
[[nodiscard]] std::filesystem::path folder_of_program();

// The path of the scenario that a user means: the file of that name, else the shipped scenario of that name,
// for which ".json" may be left out. The text as it is where there is neither, and where it names a folder.
[[nodiscard]] std::string scenario_path_of(const std::string& text);

// A line for each shipped scenario: its name and what it shows. Throws std::runtime_error with one line when
// there are none.
[[nodiscard]] std::string list_of_scenarios();

} // namespace vantu::orvanta::simulator
