// Open descriptors, as the system lists them.
#include "support/open_handles.hpp"

#include <filesystem>
#include <iterator>

namespace orvanta_tests {

std::size_t open_handles() {
    const std::filesystem::directory_iterator list("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(list), end(list)));
}

} // namespace orvanta_tests
