// The version record that another source file of the test program holds.
#pragma once

#include <string>

namespace orvanta_tests {

[[nodiscard]] const std::string& version_text_of_the_other_file();

} // namespace orvanta_tests
