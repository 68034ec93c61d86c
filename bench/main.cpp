// Runs the benchmarks with a second thread alive, as every program that polls has one: the C library
// makes locks nearly free before that.
#include <atomic>
#include <benchmark/benchmark.h>
#include <thread>

int main(int argc, char** argv) {
    std::atomic<bool> done{false};
    std::thread second([&done] { done.wait(false); });
    benchmark::Initialize(&argc, argv);
    const bool understood = !benchmark::ReportUnrecognizedArguments(argc, argv);
    if (understood) {
        benchmark::RunSpecifiedBenchmarks();
    }
    benchmark::Shutdown();
    done.store(true);
    done.notify_one();
    second.join();
    return understood ? 0 : 1;
}
