#include "simulator/service/streams.hpp"

#include "simulator/service/motion.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <cmath>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

constexpr std::int64_t status_period_ns = ns_per_second;

// The first multiple of the period after the due time that is still to come: times that were missed
// are not made up for.
std::int64_t next_after(std::int64_t due_ns, std::int64_t period_ns, std::int64_t now_ns) {
    return now_ns + period_ns - (now_ns - due_ns) % period_ns;
}

void pack_state(outbox& out, const peer& to, const device& which, std::int64_t now_ns) {
    if (which.is_orvanta3()) {
        out.pack<op_code::cursor_state>(to, 0, {which.id, cursor_at(which, now_ns)});
    } else {
        const grip_state grip = grip_at(which, now_ns);
        out.pack_palmetron_state(to, {which.id, grip.head}, grip.tail);
    }
}

void pack_status(outbox& out, const peer& to, const device& which, std::int64_t now_ns) {
    if (which.is_orvanta3()) {
        out.pack<op_code::status_motor_current>(to, 0, {which.id, motor_current_at(which, now_ns)});
    }
    out.pack<op_code::status_power_supply>(to, 0, {which.id, power_supply_of(which)});
}

} // namespace

std::int64_t state_period_of(double rate_hz) noexcept {
    if (!(rate_hz > 0)) {
        return 0;
    }
    // A rate next to nothing has a period that no clock reaches.
    constexpr double longest_s = 1e9;
    return static_cast<std::int64_t>(std::llround(std::min(1 / rate_hz, longest_s) * 1e9));
}

void start_streams(open_device& opened, std::int64_t state_period_ns, std::int64_t now_ns) noexcept {
    opened.next_state_ns = state_period_ns == 0 ? never_ns : now_ns;
    opened.next_status_ns = now_ns;
}

void send_due(outbox& out, client& to, std::span<device> devices, std::int64_t state_period_ns,
              std::int64_t now_ns) {
    out.seal();
    for (open_device& opened : to.opened) {
        const device* which = find_device(devices, opened.id);
        if (which == nullptr) {
            continue;
        }
        if (opened.next_state_ns <= now_ns) {
            pack_state(out, to.address, *which, now_ns);
            opened.next_state_ns = next_after(opened.next_state_ns, state_period_ns, now_ns);
        }
        if (opened.next_status_ns <= now_ns) {
            pack_status(out, to.address, *which, now_ns);
            opened.next_status_ns = next_after(opened.next_status_ns, status_period_ns, now_ns);
        }
    }
    out.seal();
}

std::int64_t next_due_of(const client& to) noexcept {
    std::int64_t soonest = never_ns;
    for (const open_device& opened : to.opened) {
        soonest = std::min({soonest, opened.next_state_ns, opened.next_status_ns});
    }
    return soonest;
}

} // namespace vantu::orvanta::simulator
