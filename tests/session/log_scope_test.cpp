// Where the log lines of a session go.
#include "session_fixture.hpp"
#include "support/log_capture.hpp"

namespace {

using namespace orvanta_tests;
using vantu::orvanta::session;

TEST(a_sessions_log, stays_off_standard_output) {
    simulated_service service;
    testing::internal::CaptureStdout();
    { const session connected(options_for(service)); }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(a_sessions_log, goes_to_its_own_sink_alone) {
    simulated_service service;
    const log_capture everything;
    std::vector<std::string> lines;
    auto options = options_for(service);
    options.log = [&](vantu_orvanta_log_level level, const char* message) {
        EXPECT_EQ(level, vantu_orvanta_log_info);
        lines.emplace_back(message);
    };
    { const session connected(options); }
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.front().substr(0, 10), "Connected:");
    EXPECT_TRUE(everything.entries().empty());
}

TEST(a_sessions_log, goes_to_the_programs_sink_without_one_of_its_own) {
    simulated_service service;
    const log_capture everything;
    { const session connected(options_for(service)); }
    EXPECT_EQ(everything.entries().size(), 1U);
}

} // namespace
