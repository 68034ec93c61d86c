// The judgement of the doctor on devices, answers and streams, and how it is told.
#include "ctl/doctor/device_checks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

const stream_view::time_point start_of_time{1000s};

// A second of states, one each interval from the start_of_time on, but for those of the pause.
stream_view stream_of(std::chrono::milliseconds interval, std::chrono::milliseconds pause_begin = 0ms,
                      std::chrono::milliseconds pause_end = 0ms) {
    stream_view seen{1, start_of_time, start_of_time + 1s, {}};
    for (std::chrono::milliseconds at = interval; at < 1s; at += interval) {
        if (at <= pause_begin || at >= pause_end) {
            seen.times.push_back(start_of_time + at);
        }
    }
    return seen;
}

device of_type(device_type type) {
    device one;
    one.type = type;
    return one;
}

TEST(stream_check, is_well_when_both_halves_have_the_rate_of_the_whole) {
    const finding found = check_stream(stream_of(10ms));
    EXPECT_EQ(found.outcome, check_outcome::ok);
    EXPECT_EQ(found.seen, "device 1: 99 cursor states in 1000 ms, 99 Hz, the longest pause 10.0 ms");
    ASSERT_EQ(found.figures.size(), 4U);
    EXPECT_STREQ(found.figures[0].first, "rate_hz");
    EXPECT_DOUBLE_EQ(found.figures[0].second, 99);
    EXPECT_DOUBLE_EQ(found.figures[1].second, 98); // 49 in the first half
    EXPECT_DOUBLE_EQ(found.figures[2].second, 100);
    EXPECT_DOUBLE_EQ(found.figures[3].second, 10);
}

TEST(stream_check, takes_any_steady_rate) {
    EXPECT_EQ(check_stream(stream_of(1ms)).outcome, check_outcome::ok);
    EXPECT_EQ(check_stream(stream_of(400ms)).outcome, check_outcome::ok);
    EXPECT_EQ(check_stream(stream_of(600ms)).outcome, check_outcome::ok);
}

TEST(stream_check, fails_without_a_state_within_the_time) {
    stream_view seen{1, start_of_time, start_of_time + 1s, {start_of_time - 1ms, start_of_time + 1s}};
    const finding found = check_stream(seen);
    EXPECT_EQ(found.outcome, check_outcome::failed);
    EXPECT_EQ(found.status, exit_status::timed_out);
    EXPECT_EQ(found.seen, "device 1 sent no cursor state within 1000 ms");
}

TEST(stream_check, warns_when_the_halves_differ) {
    const finding found = check_stream(stream_of(10ms, 800ms, 1000ms));
    EXPECT_EQ(found.outcome, check_outcome::warning);
    EXPECT_THAT(found.seen, testing::EndsWith("; 49 in the first half, 31 in the second"));
}

TEST(stream_check, warns_of_a_pause_that_both_halves_share) {
    EXPECT_EQ(check_stream(stream_of(10ms, 450ms, 550ms)).outcome, check_outcome::ok);
    const finding found = check_stream(stream_of(10ms, 440ms, 560ms));
    EXPECT_EQ(found.outcome, check_outcome::warning);
    EXPECT_THAT(found.seen, testing::HasSubstr("the longest pause 120 ms; that pause is above 100 ms"));
}

TEST(stream_check, warns_of_datagrams_that_make_no_sense) {
    stream_view seen = stream_of(10ms);
    seen.rejected = 3;
    const finding found = check_stream(seen);
    EXPECT_EQ(found.outcome, check_outcome::warning);
    EXPECT_THAT(found.seen, testing::EndsWith("; 3 datagrams made no sense"));
}

TEST(stream_recorder, keeps_the_states_of_one_device_from_begin_to_take) {
    stream_recorder recorder;
    recorder.add(1, start_of_time);
    recorder.begin(1);
    recorder.add(1, start_of_time + 1ms);
    recorder.add(2, start_of_time + 2ms);
    EXPECT_EQ(recorder.take(), std::vector{start_of_time + 1ms});
    recorder.add(1, start_of_time + 3ms);
    EXPECT_TRUE(recorder.take().empty());
}

TEST(devices_check, counts_each_kind_and_needs_an_orvanta3) {
    const finding found = check_devices({of_type(device_type::palmetron), of_type(device_type::orvanta3),
                                         of_type(device_type::palmetron), of_type(device_type::none)});
    EXPECT_EQ(found.outcome, check_outcome::ok);
    EXPECT_EQ(found.seen, "1 orvanta3, 2 palmetron, 1 of another type");
    const finding none = check_devices({of_type(device_type::palmetron)});
    EXPECT_EQ(none.outcome, check_outcome::failed);
    EXPECT_EQ(none.status, exit_status::no_device);
    EXPECT_EQ(none.seen, "0 orvanta3, 1 palmetron");
}

TEST(request_check, tells_median_and_worst) {
    const finding found = check_request({7, 5, {2ms, 1ms, 90ms, 3ms, 500us}});
    EXPECT_EQ(found.outcome, check_outcome::ok);
    EXPECT_EQ(found.seen,
              "device 7: 5 of 5 requests for the orientation answered, median 2.00 ms, worst 90.0 ms");
    ASSERT_EQ(found.figures.size(), 2U);
    EXPECT_DOUBLE_EQ(found.figures[0].second, 2);
    EXPECT_DOUBLE_EQ(found.figures[1].second, 90);
}

TEST(request_check, warns_of_lost_and_of_slow_answers) {
    EXPECT_EQ(check_request({7, 5, {1ms}, {error_code::timed_out, ""}}).outcome, check_outcome::warning);
    EXPECT_EQ(check_request({7, 5, {1ms, 1ms, 101ms, 101ms, 101ms}}).outcome, check_outcome::warning);
}

TEST(request_check, fails_without_an_answer_and_at_a_refusal) {
    const finding silent = check_request({7, 5, {}, {error_code::timed_out, ""}});
    EXPECT_EQ(silent.outcome, check_outcome::failed);
    EXPECT_EQ(silent.status, exit_status::timed_out);
    EXPECT_EQ(silent.seen,
              "device 7 was asked 5 times for its orientation, 0 answers: operation timed out (4)");
    const finding refused = check_request({7, 2, {1ms}, {error_code::device_communication_error, ""}});
    EXPECT_EQ(refused.outcome, check_outcome::failed);
    EXPECT_EQ(refused.status, exit_status::refused);
    EXPECT_THAT(refused.remedy, testing::StartsWith("plug the device in again"));
}

TEST(a_finding, is_an_aligned_line_and_an_indented_remedy) {
    EXPECT_EQ(text_of(passed("open", "device 1 opens"), false), "ok       open          device 1 opens\n");
    EXPECT_EQ(text_of(failed("service-port", exit_status::no_service, "nobody", "start it"), false),
              "failed   service-port  nobody\n"
              "                       start it\n");
    EXPECT_EQ(text_of(warned("stream", "uneven", "wait"), true),
              "\x1b[33mwarning \x1b[0m stream        uneven\n"
              "                       wait\n");
}

TEST(findings, are_one_document_whose_outcome_is_the_worst) {
    finding measured = passed("stream", "steady");
    measured.figures = {{"rate_hz", 100}};
    EXPECT_EQ(document_of(std::vector{measured, warned("open", "late", "wait")}).dump(),
              R"({"checks":[{"name":"stream","outcome":"ok","seen":"steady","figures":{"rate_hz":100.0}},)"
              R"({"name":"open","outcome":"warning","seen":"late","remedy":"wait"}],"outcome":"warning"})");
    const std::vector ill{passed("a", ""), failed("b", exit_status::timed_out, "", ""),
                          skipped("c", "b failed"), failed("d", exit_status::refused, "", "")};
    EXPECT_EQ(document_of(ill)["outcome"], "failed");
    ASSERT_NE(first_failure(ill), nullptr);
    EXPECT_EQ(first_failure(ill)->status, exit_status::timed_out);
    EXPECT_EQ(first_failure(std::vector{measured}), nullptr);
}

} // namespace
