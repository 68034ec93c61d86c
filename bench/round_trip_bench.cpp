// Round trips, beside the same on bare sockets: from request to handler with a polling thread's tick, and by
// waiting on one thread. The service answers as soon as a request arrives.
#include "bare_loop.hpp"
#include "bench_service.hpp"
#include "paired.hpp"

#include <atomic>
#include <limits>
#include <poll.h>
#include <thread>

namespace vantu::orvanta::bench {
namespace {

// Answers every orientation request with its tag and device 1, until it is destroyed.
class answering_service {
  public:
    explicit answering_service(const bare_socket& socket) : thread_([this, &socket] { run(socket); }) {}
    ~answering_service() {
        stop_.store(true);
        thread_.join();
    }
    answering_service(const answering_service&) = delete;
    answering_service& operator=(const answering_service&) = delete;

  private:
    void run(const bare_socket& socket) {
        datagram reply{0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 47, 20, 0, 0, 1, 0, 0, 0};
        reply.resize(reply.size() + 16);
        constexpr std::size_t tag_offset = 10;
        while (!stop_.load()) {
            pollfd waiting{socket.descriptor(), POLLIN, 0};
            if (::poll(&waiting, 1, 20) != 1) {
                continue;
            }
            std::uint8_t request[2048];
            sockaddr_storage from;
            socklen_t length = sizeof(from);
            if (recvfrom(socket.descriptor(), request, sizeof(request), 0, reinterpret_cast<sockaddr*>(&from),
                         &length) == 15) {
                reply[tag_offset] = request[tag_offset];
                socket.send(reply, from, length);
            }
        }
    }

    std::atomic<bool> stop_{false};
    std::thread thread_;
};

const datagram orientation_request{0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 47, 4, 0, 1, 1, 0, 0, 0};

// Sends once and waits until the answer was seen on the other thread.
template <typename Send> double round_trip(std::atomic<std::uint32_t>& answers, Send send) {
    const std::uint32_t before = answers.load();
    const double begin = now_ns();
    send();
    answers.wait(before);
    return now_ns() - begin;
}

void request_to_handler(benchmark::State& state) {
    connected_client ours;
    const answering_service service(ours.service);
    std::atomic<std::uint32_t> handled{0};
    vantu_orvanta_poll_thread* thread =
        vantu_orvanta_poll_thread_start(ours.owner.context(), client::dispatch_event, &ours.owner);

    const bare_socket bare_service_socket;
    const answering_service bare_service(bare_service_socket);
    const bare_socket bare;
    std::atomic<std::uint32_t> received{0};
    {
        const bare_loop loop(bare, [&received](const std::uint8_t*, ssize_t) {
            received.fetch_add(1);
            received.notify_one();
        });
        run_pairs(
            state, 0,
            [&] {
                return round_trip(handled, [&] {
                    static_cast<void>(ours.owner.orientation_get(1, [&handled](client&, const auto&) {
                        handled.fetch_add(1);
                        handled.notify_one();
                    }));
                });
            },
            [&] {
                return round_trip(received, [&] {
                    bare.send(orientation_request, bare_service_socket.address(),
                              bare_service_socket.address_length());
                });
            });
    }
    vantu_orvanta_poll_thread_stop(thread);
}

BENCHMARK(request_to_handler)->UseManualTime()->Iterations(20000);

void await_answer(vantu_orvanta_context* context) {
    vantu_orvanta_event event{};
    while (event.event_type != vantu_orvanta_event_orientation) {
        (void)vantu_orvanta_wait(context, std::numeric_limits<std::uint64_t>::max());
        (void)vantu_orvanta_poll(context, &event);
    }
}

void await_answer(const bare_socket& socket) {
    std::uint8_t answer[2048];
    sockaddr_storage from;
    socklen_t length = sizeof(from);
    do {
        pollfd waiting{socket.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, -1);
    } while (recvfrom(socket.descriptor(), answer, sizeof(answer), 0, reinterpret_cast<sockaddr*>(&from),
                      &length) <= 0);
}

void round_trip_by_wait(benchmark::State& state) {
    const connected_client ours;
    const answering_service service(ours.service);
    const bare_socket bare_service_socket;
    const answering_service bare_service(bare_service_socket);
    const bare_socket bare;
    run_pairs(
        state, 1.15,
        [&] {
            const double begin = now_ns();
            (void)vantu_orvanta_orientation_get(ours.owner.context(), 1, 1);
            await_answer(ours.owner.context());
            return now_ns() - begin;
        },
        [&] {
            const double begin = now_ns();
            bare.send(orientation_request, bare_service_socket.address(),
                      bare_service_socket.address_length());
            await_answer(bare);
            return now_ns() - begin;
        });
}

BENCHMARK(round_trip_by_wait)->UseManualTime()->Iterations(20000);

} // namespace
} // namespace vantu::orvanta::bench
