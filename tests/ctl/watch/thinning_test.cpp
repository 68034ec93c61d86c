// Which samples are printed at a rate.
#include "ctl/watch/thinning.hpp"

#include <gtest/gtest.h>
#include <vector>

namespace {

using vantu::orvanta::ctl::thinning;

TEST(thinning, without_a_rate_wants_all) {
    thinning thin(std::nullopt);
    EXPECT_TRUE(thin.wants(0));
    EXPECT_TRUE(thin.wants(0));
    EXPECT_TRUE(thin.wants(0.001));
}

TEST(thinning, wants_the_samples_nearest_to_its_times) {
    thinning thin(4);
    std::vector<int> wanted;
    for (int at = 0; at <= 100; ++at) {
        if (thin.wants(at / 100.0)) {
            wanted.push_back(at);
        }
    }
    EXPECT_EQ(wanted, (std::vector{0, 25, 50, 75, 100}));
}

TEST(thinning, leaves_a_stream_of_its_own_rate_whole_despite_jitter) {
    thinning thin(100);
    for (int at = 0; at < 1000; ++at) {
        const double jitter = at % 3 == 0 ? 0.001 : -0.001;
        EXPECT_TRUE(thin.wants(at == 0 ? 0 : at / 100.0 + jitter)) << at;
    }
}

TEST(thinning, leaves_a_slower_stream_whole) {
    thinning thin(150);
    for (int at = 0; at < 1000; ++at) {
        EXPECT_TRUE(thin.wants(at / 100.0)) << at;
    }
}

TEST(thinning, makes_up_for_nothing_after_a_silence) {
    thinning thin(10);
    EXPECT_TRUE(thin.wants(0));
    EXPECT_TRUE(thin.wants(5));
    EXPECT_FALSE(thin.wants(5.02));
    EXPECT_FALSE(thin.wants(5.05));
    EXPECT_TRUE(thin.wants(5.11));
}

} // namespace
