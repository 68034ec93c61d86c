// A thread of the operating system's own; one source file a platform.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

// The record must stay in place while its thread runs.
struct native_thread {
    std::uintptr_t handle{0};
    std::uintptr_t id{0};
    bool attached{false};
    void (*body)(void*){nullptr};
    void* argument{nullptr};
};

// Starts a thread that runs body(argument) and takes none of the program's signals; those of its own
// faults and breakpoints stay open to the program's handlers and to a debugger. Throws
// std::system_error (resource_unavailable_try_again) when the system starts none.
void start_thread(native_thread& thread, void (*body)(void*), void* argument);

// Waits for a thread's end and detaches it from the record. Throws std::system_error:
// invalid_argument when no thread is attached, resource_deadlock_would_occur when called from that
// very thread, no_such_process when the system cannot join it.
void join_thread(native_thread& thread);

} // namespace vantu::orvanta
