#include "poll_thread.hpp"

#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <memory>
#include <new>

namespace vantu::orvanta {
namespace {

struct polling_system {
    vantu_orvanta_poll_thread& thread;

    static std::int64_t now_ns() { return platform::steady_now_ns(); }
    static void sleep_until_ns(std::int64_t time_ns) { platform::sleep_until_ns(time_ns); }
    [[nodiscard]] bool is_stopped() const { return thread.stop.load(std::memory_order_acquire) != 0; }
    [[nodiscard]] poll_step poll() const { return run_poll_step(thread); }
};

void run_polling_thread(void* record) {
    platform::make_sleeps_precise();
    polling_system system{*static_cast<vantu_orvanta_poll_thread*>(record)};
    run_poll_loop(system);
}

void run_idle_task(const vantu_orvanta_poll_thread& thread) {
    const idle_task* task = thread.context->when_idle.load(std::memory_order_acquire);
    if (task != nullptr && task->user == thread.user) {
        task->run(task->user);
    }
}

} // namespace

void set_idle_task(vantu_orvanta_context& context, const idle_task* task) {
    context.when_idle.store(task, std::memory_order_release);
}

poll_step run_poll_step(vantu_orvanta_poll_thread& thread) {
    vantu_orvanta_event event;
    const std::int32_t code = vantu_orvanta_poll(thread.context, &event);
    if (code != vantu_orvanta_success) {
        thread.result.store(static_cast<std::uint32_t>(code), std::memory_order_release);
        return poll_step::finished;
    }
    if (event.event_type == vantu_orvanta_event_none) {
        run_idle_task(thread);
        return poll_step::idle;
    }
    thread.handler(thread.user, &event);
    return poll_step::handled;
}

} // namespace vantu::orvanta

using namespace vantu::orvanta;

vantu_orvanta_poll_thread* vantu_orvanta_poll_thread_start(vantu_orvanta_context* context,
                                                           vantu_orvanta_event_handler handler, void* user) {
    if (context == nullptr || handler == nullptr) {
        return nullptr;
    }
    std::unique_ptr<vantu_orvanta_poll_thread> thread(new (std::nothrow)
                                                          vantu_orvanta_poll_thread{context, handler, user});
    if (thread == nullptr) {
        return nullptr;
    }
    try {
        start_thread(thread->thread, run_polling_thread, thread.get());
    } catch (const std::bad_alloc&) {
        return nullptr; // no memory for the exception that says why
    }
    return thread.release();
}

std::uint32_t vantu_orvanta_poll_thread_result(const vantu_orvanta_poll_thread* thread) {
    return thread == nullptr ? 0 : thread->result.load(std::memory_order_acquire);
}

void vantu_orvanta_poll_thread_stop(vantu_orvanta_poll_thread* thread) {
    if (thread == nullptr) {
        return;
    }
    thread->stop.store(1, std::memory_order_release);
    join_thread(thread->thread);
    delete thread;
}
