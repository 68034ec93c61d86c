// The goodbye and the wait for its confirmation.
#include "runtime/goodbye.hpp"

#include "runtime/poll.hpp"
#include "runtime/tick.hpp"
#include "runtime/transmit.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"

namespace vantu::orvanta {

void say_goodbye(vantu_orvanta_context& context) {
    using communication::op_code::disconnect;
    if (transmit_operation<disconnect>(context, 0, {}) == vantu_orvanta_success) {
        const std::int64_t deadline_ns = platform::steady_now_ns() + goodbye_timeout_ns;
        vantu_orvanta_event event{};
        while (platform::steady_now_ns() < deadline_ns && poll(context, event) == vantu_orvanta_success &&
               event.event_type != vantu_orvanta_event_disconnected) {
            if (event.event_type == vantu_orvanta_event_none) {
                platform::sleep_until_ns(platform::steady_now_ns() + tick_ns);
            }
        }
    }
    const std::lock_guard lock(context.mutex);
    context.connection.close();
}

} // namespace vantu::orvanta
