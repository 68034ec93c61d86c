// Idle clients: the polling thread's ticks a second and its share of a processor, beside a bare loop; and the
// share of a thread that waits.
#include "bare_loop.hpp"
#include "bench_service.hpp"
#include "paired.hpp"
#include "thread_figures.hpp"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <set>
#include <thread>

namespace vantu::orvanta::bench {
namespace {

using namespace std::chrono_literals;

std::set<pid_t> threads_of_this_process() {
    std::set<pid_t> threads;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        threads.insert(std::stoi(entry.path().filename().string()));
    }
    return threads;
}

struct idle_figures {
    double ticks_a_second;
    double cpu_share;
};

idle_figures watch(pid_t thread, std::chrono::seconds duration = 1s) {
    const thread_figures before = figures_of(thread);
    const double begin = now_ns();
    std::this_thread::sleep_for(duration);
    const thread_figures after = figures_of(thread);
    const double elapsed_ns = now_ns() - begin;
    return {static_cast<double>(after.sleeps - before.sleeps) / elapsed_ns * 1e9,
            static_cast<double>(after.cpu_ns - before.cpu_ns) / elapsed_ns};
}

void idle_polling_thread(benchmark::State& state) {
    connected_client ours;
    const bare_socket bare;
    std::vector<double> our_ticks;
    std::vector<double> bare_ticks;
    std::vector<double> our_share;
    std::vector<double> bare_share;
    for ([[maybe_unused]] auto _ : state) {
        const std::set<pid_t> before = threads_of_this_process();
        vantu_orvanta_poll_thread* thread =
            vantu_orvanta_poll_thread_start(ours.owner.context(), client::dispatch_event, &ours.owner);
        pid_t started = 0;
        for (const pid_t id : threads_of_this_process()) {
            if (!before.contains(id)) {
                started = id;
            }
        }
        const idle_figures library = watch(started);
        vantu_orvanta_poll_thread_stop(thread);
        const bare_loop loop(bare, [](const std::uint8_t*, ssize_t) {});
        const idle_figures reference = watch(loop.id());
        our_ticks.push_back(library.ticks_a_second);
        bare_ticks.push_back(reference.ticks_a_second);
        our_share.push_back(100 * library.cpu_share);
        bare_share.push_back(100 * reference.cpu_share);
        state.SetIterationTime(1.0 / library.ticks_a_second);
    }
    state.counters["ours_ticks"] = median(our_ticks);
    state.counters["bare_ticks"] = median(bare_ticks);
    state.counters["target_ticks"] = 9900;
    state.counters["ours_cpu%"] = median(our_share);
    state.counters["bare_cpu%"] = median(bare_share);
}

BENCHMARK(idle_polling_thread)->UseManualTime()->Iterations(5);

// Waits and polls until it is told to end, keep-alives included.
class waiting_thread {
  public:
    explicit waiting_thread(vantu_orvanta_context* context) : context_(context), thread_([this] { run(); }) {
        while (id_.load() == 0) {
            std::this_thread::yield();
        }
    }
    ~waiting_thread() {
        stop_.store(true);
        (void)vantu_orvanta_wake(context_);
        thread_.join();
    }
    waiting_thread(const waiting_thread&) = delete;
    waiting_thread& operator=(const waiting_thread&) = delete;

    [[nodiscard]] pid_t id() const { return id_.load(); }

  private:
    void run() {
        id_.store(gettid());
        vantu_orvanta_event event{};
        while (!stop_.load()) {
            (void)vantu_orvanta_wait(context_, std::numeric_limits<std::uint64_t>::max());
            do {
                (void)vantu_orvanta_poll(context_, &event);
            } while (event.event_type != vantu_orvanta_event_none);
        }
    }

    vantu_orvanta_context* context_;
    std::atomic<pid_t> id_{0};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

void idle_wait(benchmark::State& state) {
    const connected_client ours;
    const waiting_thread thread(ours.owner.context());
    std::vector<double> wakes;
    std::vector<double> share;
    for ([[maybe_unused]] auto _ : state) {
        const idle_figures figures = watch(thread.id(), 5s);
        wakes.push_back(figures.ticks_a_second);
        share.push_back(100 * figures.cpu_share);
        state.SetIterationTime(5);
    }
    state.counters["ours_wakes"] = median(wakes);
    state.counters["ours_cpu%"] = median(share);
    state.counters["target_cpu%"] = 0.1;
}

BENCHMARK(idle_wait)->UseManualTime()->Iterations(3);

} // namespace
} // namespace vantu::orvanta::bench
