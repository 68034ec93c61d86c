// Threads by the C runtime of Windows.
#include "runtime/native_thread.hpp"

#include <process.h>
#include <system_error>
#include <windows.h>

namespace vantu::orvanta {
namespace {

unsigned __stdcall run(void* record) {
    const auto* thread = static_cast<const native_thread*>(record);
    thread->body(thread->argument);
    return 0;
}

[[noreturn]] void fail(std::errc error) {
    throw std::system_error(std::make_error_code(error));
}

} // namespace

void start_thread(native_thread& thread, void (*body)(void*), void* argument) {
    thread.body = body;
    thread.argument = argument;
    unsigned id = 0;
    const std::uintptr_t started = _beginthreadex(nullptr, 0, run, &thread, 0, &id);
    if (started == 0) {
        fail(std::errc::resource_unavailable_try_again);
    }
    thread.handle = started;
    thread.id = id;
    thread.attached = true;
}

void join_thread(native_thread& thread) {
    if (!thread.attached) {
        fail(std::errc::invalid_argument);
    }
    if (thread.id == GetCurrentThreadId()) {
        fail(std::errc::resource_deadlock_would_occur);
    }
    auto* joined = reinterpret_cast<HANDLE>(thread.handle);
    if (WaitForSingleObject(joined, INFINITE) != WAIT_OBJECT_0) {
        fail(std::errc::no_such_process);
    }
    CloseHandle(joined);
    thread.attached = false;
}

} // namespace vantu::orvanta
