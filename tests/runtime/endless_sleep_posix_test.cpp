// Sleeps to the end of time: each lasts until the process is ended by its alarm.
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/orvanta.h"

#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <sys/time.h>

namespace {

using namespace vantu::orvanta;

void sleep_with_an_alarm(std::uint64_t duration_ns) {
    const itimerval in_50_ms{{0, 0}, {0, 50'000}};
    setitimer(ITIMER_REAL, &in_50_ms, nullptr);
    vantu_orvanta_sleep(duration_ns);
}

TEST(a_sleep_longer_than_time, does_not_end) {
    for (const std::uint64_t duration_ns : {UINT64_MAX, UINT64_MAX / 2 + 1, UINT64_MAX / 2}) {
        EXPECT_EXIT(sleep_with_an_alarm(duration_ns), testing::KilledBySignal(SIGALRM), "");
    }
}

} // namespace
