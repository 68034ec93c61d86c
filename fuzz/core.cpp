// The core's connection: answers to connects, datagrams, polls, sends and times in any order, each poll
// compared with the reference reader.
#include "datagrams.hpp"
#include "sessions/checked_connection.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

using namespace orvanta_fuzz;
using orvanta_tests::checked_connection;
using orvanta_tests::octets;

constexpr std::int64_t latest_ns = std::int64_t{1} << 61;

// Printed at the end of the program: an input has many.
class datagram_count {
  public:
    ~datagram_count() { std::fprintf(stderr, "datagrams: %llu\n", static_cast<unsigned long long>(count_)); }
    void add_one() { ++count_; }

  private:
    std::uint64_t count_{0};
};

datagram_count datagrams;

class run {
  public:
    run() {
        built_.begin();
        built_.append_acceptance(1);
        (void)client_.connect(built_.bytes(), now_ns_);
    }

    void take_step(script& input) {
        const std::uint8_t step = input.byte();
        switch (step / 16) {
        case 0:
        case 1:
            build_answer(built_, step, input);
            (void)client_.connect(built_.bytes(), now_ns_);
            datagrams.add_one();
            return;
        case 2:
            move_time(step, input);
            return;
        case 3:
            client_.note_send(now_ns_);
            return;
        case 4:
            (void)client_.poll(now_ns_, nullptr);
            return;
        default:
            build_datagram(built_, step, input);
            take_datagram(step >= 128);
        }
    }

    void finish() {
        poll_all();
        client_.check_devices();
    }

  private:
    // All but one operation may stay for later polls.
    void take_datagram(bool drains) {
        poll_all();
        if (!client_.is_connected()) {
            return;
        }
        const octets bytes = built_.bytes();
        (void)client_.poll(now_ns_, &bytes);
        datagrams.add_one();
        if (drains) {
            poll_all();
        }
    }

    void poll_all() {
        while (client_.is_connected() && !client_.wants_datagram()) {
            (void)client_.poll(now_ns_, nullptr);
        }
    }

    // To either side of the next keep-alive, a step on, or anywhere.
    void move_time(std::uint8_t step, script& input) {
        switch (step % 4) {
        case 0:
            now_ns_ = client_.keep_alive_due_ns() - 1;
            break;
        case 1:
            now_ns_ = client_.keep_alive_due_ns();
            break;
        case 2:
            now_ns_ += static_cast<std::int64_t>(input.number(4));
            break;
        default:
            now_ns_ = static_cast<std::int64_t>(input.number(8));
        }
        if (now_ns_ > latest_ns || now_ns_ < -latest_ns) {
            now_ns_ %= latest_ns;
        }
    }

    checked_connection client_{orvanta_tests::assumptions::throw_failed};
    datagram_builder built_;
    std::int64_t now_ns_{0};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    script input(data, size);
    run one;
    while (!input.has_ended()) {
        one.take_step(input);
    }
    one.finish();
    return 0;
}
