// A session of the core alone: its connection, tick and wait for a goodbye against a simulation. Nothing
// takes the place of anything here.
#include "core/poll_loop.hpp"
#include "sessions/chance.hpp"
#include "sessions/checked_connection.hpp"
#include "sessions/random_service.hpp"
#include "sessions/random_session.hpp"
#include "sessions/reference_writer.hpp"
#include "sessions/virtual_world.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/error_codes.h"

#include <algorithm>
#include <optional>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

constexpr int own_port = 40'000;
constexpr std::int64_t reply_timeout_ns = 100 * ns_per_millisecond;
constexpr std::int64_t latest_wake_ns = 150'000;
constexpr std::int64_t longest_goodbye_ns = goodbye_timeout_ns + poll_tick_ns + latest_wake_ns;
constexpr std::uint64_t keep_alive_ns = 5'000 * ns_per_millisecond;
constexpr int most_polls_in_a_row = 600;
constexpr std::size_t longest_datagram = 2048;

class session {
  public:
    explicit session(std::uint64_t seed)
        : choose_(seed), faults_(random_faults(choose_)), service_(random_settings(choose_)) {
        add_faults(service_, faults_);
        (void)world_.open(own_port);
    }

    session_counts run() {
        const std::uint64_t steps = choose_.between(8, 48);
        for (std::uint64_t step = 0; step < steps && !has_ended_; ++step) {
            take_step();
        }
        if (!has_ended_) {
            client_.check_devices();
            say_goodbye();
        }
        for (const simulator::fault_row& row : simulator::faults) {
            counts_.faults[static_cast<std::size_t>(row.kind)] = service_.faults().happened(row.kind);
        }
        return counts_;
    }

    // A system of the core's two loops.
    [[nodiscard]] std::int64_t now_ns() const { return world_.now_ns(); }
    void sleep_until_ns(std::int64_t time_ns) {
        if (time_ns < now_ns() || time_ns > now_ns() + poll_tick_ns) {
            throw difference("a sleep is longer than a tick, or over before it began");
        }
        // No sleep ends on its time to the nanosecond.
        world_.advance_to(time_ns + static_cast<std::int64_t>(choose_.between(1, latest_wake_ns)));
    }
    [[nodiscard]] bool is_stopped() const { return now_ns() >= stops_at_ns_; }
    poll_step poll() {
        const poll_result result = poll_once();
        if (!client_.is_connected() && result.code != vantu_orvanta_success) {
            return poll_step::finished;
        }
        return result.code != vantu_orvanta_success || result.event.event_type != vantu_orvanta_event_none
                   ? poll_step::handled
                   : poll_step::idle;
    }

  private:
    void take_step() {
        if (!client_.is_connected()) {
            connect();
            return;
        }
        switch (choose_.below(12)) {
        case 0:
        case 1:
        case 2:
            poll_on();
            break;
        case 3:
        case 4:
            run_for(static_cast<std::int64_t>(choose_.below(choose_.one_in(10) ? 1'200 : 20)) *
                    ns_per_millisecond);
            break;
        case 5:
        case 6:
        case 7:
            request();
            break;
        case 8:
        case 9:
        case 10:
            pass_time();
            break;
        default:
            if (choose_.one_in(2)) {
                client_.check_devices();
            } else {
                happen_to(service_, choose_);
            }
        }
    }

    void connect() {
        constexpr std::uint32_t process_id = 4711;
        byte_buffer request(constants::mode_write);
        compose_connect(request, {"random", 12, 34, keep_alive_ns, 0}, process_id, "2.0.0|2.0.0");
        const packet sent(request.unread(), request.unread() + request.read_len());
        compare_sent({sent},
                     {reference_connect({12, 34, keep_alive_ns, process_id, "random", "2.0.0|2.0.0"})},
                     "a connect");
        world_.send(own_port, sent);
        ++counts_.connects;
        world_.await_datagram(own_port, world_.now_ns() + reply_timeout_ns);
        if (!world_.has_datagram(own_port)) {
            ++counts_.connect_codes[vantu_orvanta_timed_out];
            return;
        }
        const packet answer = world_.take_datagram(own_port);
        if (answer.size() > longest_datagram) {
            ++counts_.connect_codes[vantu_orvanta_unexpected_error]; // no socket has room for it
            return;
        }
        const std::optional<int> code = client_.connect(answer, world_.now_ns());
        if (!code) {
            ++counts_.ends_of_process;
            has_ended_ = true;
            return;
        }
        ++counts_.connect_codes[*code];
    }

    poll_result poll_once() {
        if (client_.is_connected() && world_.now_ns() >= client_.keep_alive_due_ns()) {
            world_.send(own_port, reference_datagram(1, 0, {}));
        }
        std::optional<packet> taken;
        while (client_.wants_datagram() && world_.has_datagram(own_port) && !taken) {
            taken = world_.take_datagram(own_port);
            if (taken->size() > longest_datagram) {
                ++counts_.poll_codes[vantu_orvanta_unexpected_error];
                taken.reset();
            }
        }
        const octets bytes = taken ? octets(*taken) : octets();
        const poll_result result = client_.poll(world_.now_ns(), taken ? &bytes : nullptr);
        ++counts_.polls;
        ++counts_.poll_codes[result.code];
        counts_.answers += result.event.tag != 0 ? 1 : 0;
        return result;
    }

    void poll_on() {
        for (int polls = 0; polls < most_polls_in_a_row; ++polls) {
            const poll_result result = poll_once();
            if (!client_.is_connected() || (result.code == 0 && result.event.event_type == 0)) {
                return;
            }
        }
    }

    // As a polling thread that is stopped after a while.
    void run_for(std::int64_t time_ns) {
        stops_at_ns_ = world_.now_ns() + time_ns;
        run_poll_loop(*this);
        if (client_.is_connected() && world_.now_ns() > stops_at_ns_ + poll_tick_ns + latest_wake_ns) {
            throw difference("the loop ran on after it was stopped");
        }
    }

    // From a tenth of a millisecond to seconds.
    void pass_time() {
        world_.advance_to(world_.now_ns() + poll_tick_ns * static_cast<std::int64_t>(
                                                               1 + choose_.below(1ULL << choose_.below(16))));
    }

    void request() {
        const auto device = choose_.one_in(8) ? 1001 : choose_.below(5);
        const auto tag = static_cast<std::uint8_t>(choose_.between(1, 255));
        const auto value = choose_.below(4);
        packet bytes;
        switch (choose_.below(4)) {
        case 0:
            bytes = reference_datagram(18, tag, {{device, 4}, {0, 2}});
            break;
        case 1:
            bytes = reference_datagram(67, tag, {{device, 4}, {1, 1}, {0x3F000000, 4}});
            break;
        case 2:
            bytes = reference_datagram(choose_.one_in(2) ? 69 : 71, tag, {{device, 4}, {value, 1}});
            break;
        default: {
            constexpr std::array<std::uint8_t, 5> naming_a_device{20, 47, 64, 66, 68};
            bytes = reference_datagram(naming_a_device[choose_.below(naming_a_device.size())], tag,
                                       {{device, 4}});
        }
        }
        world_.send(own_port, bytes);
        client_.note_send(world_.now_ns());
        ++counts_.requests;
    }

    void say_goodbye() {
        if (!client_.is_connected()) {
            return;
        }
        world_.send(own_port, reference_datagram(5, 0, {}));
        client_.note_send(world_.now_ns());
        const std::int64_t begin_ns = world_.now_ns();
        await_goodbye(*this);
        if (world_.now_ns() - begin_ns > longest_goodbye_ns) {
            throw difference("a goodbye took too long");
        }
    }

    chance choose_;
    std::vector<fault_text> faults_;
    simulator::simulation service_;
    virtual_world world_{service_};
    checked_connection client_{assumptions::end_the_process};
    std::int64_t stops_at_ns_{0};
    bool has_ended_{false};
    session_counts counts_;
};

} // namespace

session_counts run_random_session(std::uint64_t seed) {
    return session(seed).run();
}

} // namespace orvanta_tests
