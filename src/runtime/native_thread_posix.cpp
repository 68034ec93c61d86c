// Threads by the POSIX interface.
#include "runtime/native_thread.hpp"

#include <csignal>
#include <pthread.h>
#include <system_error>

namespace vantu::orvanta {
namespace {

static_assert(sizeof(pthread_t) <= sizeof(std::uintptr_t));

void* run(void* record) {
    const auto* thread = static_cast<const native_thread*>(record);
    thread->body(thread->argument);
    return nullptr;
}

// All but those that a fault raises on the thread that makes it, and those of a breakpoint and a failed
// check.
sigset_t signals_of_the_program() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int of_a_fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
        sigdelset(&signals, of_a_fault);
    }
    return signals;
}

[[noreturn]] void fail(std::errc error) {
    throw std::system_error(std::make_error_code(error));
}

} // namespace

void start_thread(native_thread& thread, void (*body)(void*), void* argument) {
    thread.body = body;
    thread.argument = argument;
    const sigset_t programs = signals_of_the_program();
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, &programs, &before);
    pthread_t started{};
    const int error = pthread_create(&started, nullptr, run, &thread);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (error != 0) {
        fail(std::errc::resource_unavailable_try_again);
    }
    thread.handle = started;
    thread.id = started;
    thread.attached = true;
}

void join_thread(native_thread& thread) {
    if (!thread.attached) {
        fail(std::errc::invalid_argument);
    }
    const auto joined = static_cast<pthread_t>(thread.handle);
    if (pthread_equal(joined, pthread_self()) != 0) {
        fail(std::errc::resource_deadlock_would_occur);
    }
    if (pthread_join(joined, nullptr) != 0) {
        fail(std::errc::no_such_process);
    }
    thread.attached = false;
}

} // namespace vantu::orvanta
