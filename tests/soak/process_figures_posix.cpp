// Figures of this process as Linux shows them.
#include "soak/process_figures.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"

#include <fstream>
#include <pthread.h>
#include <stdexcept>
#include <time.h>
#include <unistd.h>

namespace orvanta_tests {

std::size_t memory_in_use() {
    std::ifstream figures("/proc/self/statm");
    std::size_t total_pages = 0;
    std::size_t resident_pages = 0;
    if (!(figures >> total_pages >> resident_pages)) {
        throw std::runtime_error("/proc/self/statm cannot be read");
    }
    return resident_pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

thread_meter::thread_meter() : thread_(static_cast<std::uintptr_t>(pthread_self())) {}

thread_meter::~thread_meter() = default;

std::int64_t thread_meter::processor_time_ns() const {
    clockid_t clock{};
    timespec time{};
    if (pthread_getcpuclockid(static_cast<pthread_t>(thread_), &clock) != 0 ||
        clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("the thread has no clock");
    }
    return static_cast<std::int64_t>(time.tv_sec) * vantu::orvanta::ns_per_second + time.tv_nsec;
}

} // namespace orvanta_tests
