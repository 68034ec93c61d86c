#include "goodbye.hpp"

#include "core/poll_loop.hpp"
#include "poll.hpp"
#include "send.hpp"
#include "vantu/orvanta/common/platform.hpp"

namespace vantu::orvanta {
namespace {

struct goodbye_system {
    vantu_orvanta_context& context;

    static std::int64_t now_ns() { return platform::steady_now_ns(); }
    static void sleep_until_ns(std::int64_t time_ns) { platform::sleep_until_ns(time_ns); }

    [[nodiscard]] poll_step poll() const {
        vantu_orvanta_event event{};
        if (vantu::orvanta::poll(context, event) != vantu_orvanta_success ||
            event.event_type == vantu_orvanta_event_disconnected) {
            return poll_step::finished;
        }
        return event.event_type == vantu_orvanta_event_none ? poll_step::idle : poll_step::handled;
    }
};

} // namespace

void say_goodbye(vantu_orvanta_context& context) {
    using communication::op_code::disconnect;
    if (send_operation<disconnect>(context, 0, {}) == vantu_orvanta_success) {
        goodbye_system system{context};
        await_goodbye(system);
    }
    const std::lock_guard lock(context.mutex);
    context.close_under_lock();
}

} // namespace vantu::orvanta
