// A session for one command: connected, with one time for all that the command does, and its device.
#pragma once

#include "ctl/arguments/request.hpp"
#include "ctl/report/exit_status.hpp"
#include "ctl/report/interruption.hpp"
#include "vantu/orvanta/session.hpp"

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace vantu::orvanta::ctl {

// All functions throw failure_with_status. The waits look at Ctrl-C.
class connection {
  public:
    // The library's log goes to standard error with -v, else nowhere.
    explicit connection(const request& asked, session::callbacks told = {});

    [[nodiscard]] session& service() noexcept { return *session_; }

    // The rest of the command's time; at least a millisecond, so that a late request is told of its time-out.
    [[nodiscard]] std::chrono::nanoseconds time_left() const;

    // From here on what is asked has this time, whatever was used before.
    void restart_time(std::chrono::nanoseconds time);

    // From here on an interruption ends no request: what was begun is put back. A second one ends the
    // program.
    void outlast_interruption() noexcept { outlasts_interruption_ = true; }

    // The device that the command line names, or the only one: see device_choice.hpp.
    [[nodiscard]] device choose() const;
    // The same, opened.
    device open_chosen();
    void open(const device& chosen);
    // The device as it is listed now; throws (lost) when it is gone.
    [[nodiscard]] device look_up(std::uint32_t device_id) const;

    // Sends a request by its form with a handler and waits for the answer:
    //     ask<orientation>([&](session& to, auto done, auto time) { to.get_orientation(id, done, time); })
    template <typename Value, typename Send> Value ask(Send send) {
        result<Value> answer = try_to_ask<Value>(std::move(send));
        if (!answer) {
            throw failure_with_status(failure{answer.error(), answer.message()});
        }
        if constexpr (!std::is_void_v<Value>) {
            return std::move(answer).value();
        }
    }

    // The same; a refusal, a time-out or a loss is returned. Throws only when interrupted.
    template <typename Value, typename Send> result<Value> try_to_ask(Send send) {
        auto promise = std::make_shared<std::promise<result<Value>>>();
        auto answer = promise->get_future();
        send(*session_, session::handler<Value>([promise](session&, const result<Value>& told) {
            promise->set_value(told);
        }),
             session::timeout(time_left()));
        while (answer.wait_for(look_for_interruption) != std::future_status::ready) {
            if (!outlasts_interruption_) {
                end_when_interrupted();
            }
        }
        return answer.get();
    }

  private:
    static constexpr std::chrono::nanoseconds shortest_time = std::chrono::milliseconds(1);

    std::string wanted_;
    bool outlasts_interruption_{false};
    std::chrono::steady_clock::time_point end_;
    std::unique_ptr<session> session_;
};

} // namespace vantu::orvanta::ctl
