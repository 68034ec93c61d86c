// A second source file that includes the version record.
#include "common/version_test.hpp"
#include "vantu/orvanta/common/version.hpp"

namespace orvanta_tests {

const std::string& version_text_of_the_other_file() {
    return vantu::orvanta::version.version_text;
}

} // namespace orvanta_tests
