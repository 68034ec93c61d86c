// Thousands of sessions with random faults. ORVANTA_SESSIONS sets the number that the two programs share,
// ORVANTA_SESSIONS_SEED the seed of the first; each session has a seed of its own, counted on from there.
#include "sessions/random_service.hpp"
#include "sessions/random_session.hpp"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

using namespace orvanta_tests;
using testing::Each;
using testing::Ge;
using testing::Pair;

constexpr std::uint64_t default_sessions = DEFAULT_SESSIONS;
constexpr std::uint64_t fifths = FIFTHS_OF_SESSIONS;

std::uint64_t number_from(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

// Ends the program with the session's seed when a session takes longer than any session may.
class watchdog {
  public:
    ~watchdog() {
        done_ = true;
        thread_.join();
    }
    void session_begins(std::uint64_t seed) {
        seed_ = seed;
        ++begun_;
    }

  private:
    void watch() {
        std::uint64_t seen = 0;
        auto since = std::chrono::steady_clock::now();
        while (!done_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            const auto now = std::chrono::steady_clock::now();
            if (begun_ != seen) {
                seen = begun_;
                since = now;
            } else if (now - since > std::chrono::seconds(30)) {
                std::fprintf(stderr, "the session with seed %llu hangs\n",
                             static_cast<unsigned long long>(seed_.load()));
                std::abort();
            }
        }
    }

    std::atomic<std::uint64_t> seed_{0};
    std::atomic<std::uint64_t> begun_{0};
    std::atomic<bool> done_{false};
    std::thread thread_{[this] { watch(); }};
};

TEST(random_sessions, go_as_the_delivered_bytes_say) {
    const std::uint64_t first = number_from("ORVANTA_SESSIONS_SEED", 20'261'121);
    const std::uint64_t sessions = number_from("ORVANTA_SESSIONS", default_sessions) * fifths / 5;
    std::printf("%llu sessions from seed %llu\n", static_cast<unsigned long long>(sessions),
                static_cast<unsigned long long>(first));
    session_counts total;
    watchdog guard;
    std::clock_t longest = 0;
    std::uint64_t longest_seed = first;
    for (std::uint64_t seed = first; seed < first + sessions; ++seed) {
        guard.session_begins(seed);
        const std::clock_t begin = std::clock();
        try {
            total.add(run_random_session(seed));
        } catch (const std::exception& failure) {
            ADD_FAILURE() << "session with seed " << seed << ": " << failure.what() << "\nits faults:\n"
                          << faults_of_session(seed);
        }
        if (const std::clock_t taken = std::clock() - begin; taken > longest) {
            longest = taken;
            longest_seed = seed;
        }
    }
    std::printf("the longest had the seed %llu and %.2f s of processor time\n",
                static_cast<unsigned long long>(longest_seed), static_cast<double>(longest) / CLOCKS_PER_SEC);
    std::printf("%llu connects, %llu polls, %llu requests, %llu answers, %llu ends of the process\n",
                static_cast<unsigned long long>(total.connects), static_cast<unsigned long long>(total.polls),
                static_cast<unsigned long long>(total.requests),
                static_cast<unsigned long long>(total.answers),
                static_cast<unsigned long long>(total.ends_of_process));
    for (const vantu::orvanta::simulator::fault_row& row : vantu::orvanta::simulator::faults) {
        std::printf("%s %llu\n", std::string(row.name).c_str(),
                    static_cast<unsigned long long>(total.faults[static_cast<std::size_t>(row.kind)]));
    }
    if (sessions >= 4'000) { // so many meet everything that sessions are to meet
        EXPECT_THAT(total.faults, Each(Ge(1U)));
        EXPECT_THAT(total.connect_codes,
                    testing::IsSupersetOf({Pair(0, Ge(1U)), Pair(1, Ge(1U)), Pair(4, Ge(1U)), Pair(6, Ge(1U)),
                                           Pair(9, Ge(1U)), Pair(178, Ge(1U))}));
        EXPECT_THAT(total.poll_codes, testing::IsSupersetOf({Pair(0, Ge(1U)), Pair(1, Ge(1U)),
                                                             Pair(6, Ge(1U)), Pair(7, Ge(1U))}));
        EXPECT_GT(total.answers, sessions / 4);
        EXPECT_GT(total.ends_of_process, 0U);
    }
}

TEST(random_sessions, come_again_with_their_seed) {
    const session_counts once = run_random_session(11);
    const session_counts again = run_random_session(11);
    EXPECT_EQ(once.polls, again.polls);
    EXPECT_EQ(once.requests, again.requests);
    EXPECT_EQ(once.answers, again.answers);
    EXPECT_EQ(once.poll_codes, again.poll_codes);
    EXPECT_EQ(once.faults, again.faults);
    EXPECT_GT(once.polls + once.connects, 0U);
}

} // namespace
