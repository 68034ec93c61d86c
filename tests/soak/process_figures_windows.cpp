// Figures of this process as Windows shows them.
#include "soak/process_figures.hpp"

#include <stdexcept>
#include <windows.h>

#include <psapi.h>

namespace orvanta_tests {

std::size_t memory_in_use() {
    PROCESS_MEMORY_COUNTERS figures{};
    if (K32GetProcessMemoryInfo(GetCurrentProcess(), &figures, sizeof figures) == 0) {
        throw std::runtime_error("the system does not tell this process's memory");
    }
    return figures.WorkingSetSize;
}

thread_meter::thread_meter()
    : thread_(reinterpret_cast<std::uintptr_t>(
          OpenThread(THREAD_QUERY_INFORMATION, FALSE, GetCurrentThreadId()))) {
    if (thread_ == 0) {
        throw std::runtime_error("the thread cannot be opened");
    }
}

thread_meter::~thread_meter() {
    CloseHandle(reinterpret_cast<HANDLE>(thread_));
}

std::int64_t thread_meter::processor_time_ns() const {
    FILETIME begin{};
    FILETIME end{};
    FILETIME in_kernel{};
    FILETIME in_program{};
    if (GetThreadTimes(reinterpret_cast<HANDLE>(thread_), &begin, &end, &in_kernel, &in_program) == 0) {
        throw std::runtime_error("the thread has no times");
    }
    constexpr std::int64_t ns_per_unit = 100;
    const auto units = [](const FILETIME& time) {
        return static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime);
    };
    return (units(in_kernel) + units(in_program)) * ns_per_unit;
}

} // namespace orvanta_tests
