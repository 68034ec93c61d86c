// orvantactl wait: until a device is there or gone, or a service answers.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/report/interruption.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/connection.hpp"
#include "ctl/service/device_choice.hpp"
#include "ctl/service/device_text.hpp"

#include <algorithm>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <thread>

namespace vantu::orvanta::ctl {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr nanoseconds between_attempts = 250ms;
// The least that a session takes.
constexpr nanoseconds shortest_attempt = 16ms;
constexpr nanoseconds first_attempt = 250ms;

// The end of all waiting, as --for has it.
class time_limit {
  public:
    explicit time_limit(std::optional<nanoseconds> duration) {
        if (duration) {
            end_ = std::chrono::steady_clock::now() + *duration;
        }
    }

    // The rest of the limit, at most this much.
    [[nodiscard]] nanoseconds at_most(nanoseconds wanted) const {
        const nanoseconds left = end_ ? *end_ - std::chrono::steady_clock::now() : wanted;
        return std::clamp(left, nanoseconds::zero(), wanted);
    }

    // Throws failure_with_status: interrupted, or timed_out with this text.
    void check(const std::string& text) const {
        end_when_interrupted();
        if (end_ && std::chrono::steady_clock::now() >= *end_) {
            throw failure_with_status(exit_status::timed_out, text);
        }
    }

  private:
    std::optional<std::chrono::steady_clock::time_point> end_;
};

void sleep_within(nanoseconds time, const time_limit& limit, const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
        limit.check(text);
        std::this_thread::sleep_for(limit.at_most(look_for_interruption));
    }
    limit.check(text);
}

// Short attempts at first, so that Ctrl-C is noticed soon; longer ones later, for a service that is slow.
std::unique_ptr<connection> await_service(const request& asked, const time_limit& limit) {
    for (nanoseconds longest = first_attempt;; longest *= 2) {
        longest = std::min(longest, asked.timeout);
        request attempt = asked;
        attempt.timeout = std::max(limit.at_most(longest), shortest_attempt);
        try {
            return std::make_unique<connection>(attempt);
        } catch (const failure_with_status& why) {
            if (why.status() != exit_status::no_service) {
                throw;
            }
            sleep_within(between_attempts, limit, std::string("no service answered in time: ") + why.what());
        }
    }
}

device await_device(const request& asked, const time_limit& limit) {
    const auto is_wanted = [&asked](const device& one) { return is_meant(one, asked.device); };
    const std::string wanted = asked.device.empty() ? "no Orvanta3" : "no device '" + asked.device + "'";
    for (;;) {
        const std::unique_ptr<connection> to = await_service(asked, limit);
        while (to->service().is_connected()) {
            const result<device> found = to->service().wait_for_device(look_for_interruption, is_wanted);
            if (found) {
                return *found;
            }
            limit.check(wanted + " came in time");
        }
    }
}

// Devices that went, also those that have come back since.
class removals {
  public:
    void add(std::uint32_t id) {
        const std::lock_guard lock(mutex_);
        ids_.insert(id);
    }
    [[nodiscard]] bool have(std::uint32_t id) {
        const std::lock_guard lock(mutex_);
        return ids_.count(id) != 0;
    }

  private:
    std::mutex mutex_;
    std::set<std::uint32_t> ids_;
};

device await_removal(const request& asked, const time_limit& limit, const output& out) {
    removals seen;
    session::callbacks told;
    told.on_removal = [&seen](session&, const device& gone) { seen.add(gone.id); };
    connection to(asked, std::move(told));
    device chosen = to.choose();
    if (asked.verbose) {
        out.note("device " + std::to_string(chosen.id) + " is there");
    }
    while (!seen.have(chosen.id)) {
        if (!to.service().is_connected()) {
            throw failure_with_status(exit_status::lost, "the connection to the service is lost");
        }
        limit.check("device " + std::to_string(chosen.id) + " was still there when the time was up");
        std::this_thread::sleep_for(limit.at_most(look_for_interruption));
    }
    return chosen;
}

} // namespace

void wait_for_event(const request& asked, output& out) {
    const time_limit limit(asked.duration);
    const std::string event = asked.words.empty() ? "device" : asked.words.front();
    if (event == "service") {
        await_service(asked, limit);
        out.result({{"awaited", event}}, "the service answers\n");
        return;
    }
    const device one = event == "removal" ? await_removal(asked, limit, out) : await_device(asked, limit);
    out.result({{"awaited", event}, {"device", document_of(one)}}, line_of(one) + "\n");
}

} // namespace vantu::orvanta::ctl
