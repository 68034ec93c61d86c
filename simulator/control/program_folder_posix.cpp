// The folder of the program on Linux.
#include "simulator/control/shipped_scenarios.hpp"

namespace vantu::orvanta::simulator {

std::filesystem::path folder_of_program() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

} // namespace vantu::orvanta::simulator
