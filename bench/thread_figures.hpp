// Figures that the system keeps of a thread of this process: CPU time and sleeps.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <sys/types.h>

namespace vantu::orvanta::bench {

struct thread_figures {
    std::uint64_t cpu_ns{0};
    std::uint64_t sleeps{0}; // times the thread gave up the processor of its own accord
};

[[nodiscard]] inline thread_figures figures_of(pid_t thread) {
    const std::string folder = "/proc/self/task/" + std::to_string(thread);
    thread_figures figures;
    std::ifstream(folder + "/schedstat") >> figures.cpu_ns;
    std::ifstream status(folder + "/status");
    for (std::string word; status >> word;) {
        if (word == "voluntary_ctxt_switches:") {
            status >> figures.sleeps;
        }
    }
    return figures;
}

} // namespace vantu::orvanta::bench
