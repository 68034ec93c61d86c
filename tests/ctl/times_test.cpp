// Times, as typed.
#include "ctl/arguments/times.hpp"
#include "ctl/report/exit_status.hpp"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vantu::orvanta::ctl;
using namespace std::chrono_literals;

std::string refusal_of_a_time(std::string_view text) {
    try {
        return "took " + std::to_string(time_of("--for", text).count());
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::wrong_usage);
        return why.what();
    }
}

TEST(a_time, has_milliseconds_seconds_or_minutes) {
    EXPECT_EQ(time_of("--for", "500ms"), 500ms);
    EXPECT_EQ(time_of("--for", "2s"), 2s);
    EXPECT_EQ(time_of("--for", "1.5s"), 1500ms);
    EXPECT_EQ(time_of("--for", "10m"), 10min);
    EXPECT_EQ(time_of("--for", "0.5m"), 30s);
    EXPECT_EQ(time_of("--for", "3"), 3s);
    EXPECT_EQ(time_of("--for", ".25"), 250ms);
}

TEST(a_time, lies_between_a_millisecond_and_a_day) {
    EXPECT_EQ(time_of("--for", "1ms"), 1ms);
    EXPECT_EQ(time_of("--for", "0.001"), 1ms);
    EXPECT_EQ(time_of("--for", "1440m"), 24h);
    EXPECT_EQ(time_of("--for", "86400"), 24h);
    EXPECT_EQ(time_of("--for", "86400000ms"), 24h);
    for (const char* text : {"0", "0ms", "0.9ms", "0.0009", "86400.1", "1441m", "86400001ms", "-1s"}) {
        EXPECT_EQ(refusal_of_a_time(text), "--for: '" + std::string(text) +
                                               "' is no time from 1ms to 1440m, such as 500ms, 2s or 10m");
    }
}

TEST(a_time, is_a_number_and_a_unit_and_nothing_else) {
    for (const char* text : {"", "s", "ms", "soon", "2 s", " 2s", "2S", "2h", "2s2", "1,5s", "1e3", "0x10",
                             "+2s", "nan", "inf", "2sms", "99999999999999999999999999999999999999999s"}) {
        EXPECT_EQ(refusal_of_a_time(text), "--for: '" + std::string(text) +
                                               "' is no time from 1ms to 1440m, such as 500ms, 2s or 10m");
    }
}

} // namespace
