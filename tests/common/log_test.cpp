// The logger and its default writer, through the real standard streams.
#include "support/log_capture.hpp"
#include "vantu/orvanta/common/log.hpp"

#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace orvanta_tests {
namespace {

using testing::IsEmpty;
using vantu::orvanta::log;
using vantu::orvanta::set_log_sink;
using vantu::orvanta::write_default_log_line;

struct written {
    std::string output;
    std::string error;
};

template <typename Action> written streams_during(Action action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    written streams;
    streams.output = testing::internal::GetCapturedStdout();
    streams.error = testing::internal::GetCapturedStderr();
    return streams;
}

// A message as it stands after "INFO lib 1 MSG ", without the line feed.
std::string printed(const std::string& message) {
    const written streams = streams_during([&] { log(log_level::info, "lib", 1, message); });
    EXPECT_EQ(streams.error, "");
    const std::string head = "INFO lib 1 MSG ";
    EXPECT_TRUE(streams.output.starts_with(head) && streams.output.ends_with('\n')) << streams.output;
    return streams.output.substr(head.size(), streams.output.size() - head.size() - 1);
}

std::string printed_file_name(const std::string& path) {
    const std::string line = streams_during([&] { log(log_level::info, path, 7, "text"); }).output;
    return line.substr(5, line.find(" 7 MSG text\n") - 5);
}

TEST(log, writes_debug_and_info_to_standard_output) {
    const written streams = streams_during([] {
        log(log_level::debug, "lib.cpp", 1, "first");
        log(log_level::info, "lib.cpp", 22, "second");
    });
    EXPECT_EQ(streams.output, "DEBUG lib.cpp 1 MSG first\nINFO lib.cpp 22 MSG second\n");
    EXPECT_EQ(streams.error, "");
}

TEST(log, writes_warning_and_error_to_standard_error) {
    const written streams = streams_during([] {
        log(log_level::warning, "lib.cpp", 333, "third");
        log(log_level::error, "lib.cpp", 18446744073709551615U, "fourth");
    });
    EXPECT_EQ(streams.output, "");
    EXPECT_EQ(streams.error,
              "WARNING lib.cpp 333 MSG third\nERROR lib.cpp 18446744073709551615 MSG fourth\n");
}

TEST(log, writes_any_higher_level_as_an_error) {
    const written streams = streams_during([] {
        log(static_cast<log_level>(7), "lib", 1, "seven");
        log(static_cast<log_level>(4), "lib", 1, "four");
        log(static_cast<log_level>(0xFFFFFFFF), "lib", 1, "all ones");
    });
    EXPECT_EQ(streams.output, "");
    EXPECT_EQ(streams.error, "ERROR lib 1 MSG seven\nERROR lib 1 MSG four\nERROR lib 1 MSG all ones\n");
}

TEST(log, reduces_a_path_to_what_follows_its_last_separator) {
    EXPECT_EQ(printed_file_name("C:/a/b/lib"), "lib");
    EXPECT_EQ(printed_file_name("C:\\a\\b\\lib.cpp"), "lib.cpp");
    EXPECT_EQ(printed_file_name("a/b\\c"), "c");
    EXPECT_EQ(printed_file_name("a\\b/c"), "c");
    EXPECT_EQ(printed_file_name("/lib"), "lib");
}

TEST(log, keeps_a_path_without_separators_whole) {
    EXPECT_EQ(printed_file_name("lib"), "lib");
    EXPECT_EQ(printed_file_name("C:lib"), "C:lib");
}

TEST(log, has_no_file_name_for_a_path_that_ends_in_a_separator) {
    EXPECT_EQ(printed_file_name("a/b/"), "");
    EXPECT_EQ(printed_file_name("a\\"), "");
    EXPECT_EQ(printed_file_name(""), "");
}

TEST(log, prints_percent_signs_as_they_stand) {
    EXPECT_EQ(printed("%n"), "%n");
    EXPECT_EQ(printed("%s%s%s"), "%s%s%s");
    EXPECT_EQ(printed("100%"), "100%");
    EXPECT_EQ(printed("%"), "%");
    EXPECT_EQ(printed("%1$n %hhn %5000000000d %*d"), "%1$n %hhn %5000000000d %*d");
}

TEST(log, prints_a_doubled_percent_sign_as_one) {
    EXPECT_EQ(printed("%%"), "%");
    EXPECT_EQ(printed("%%%"), "%%");
    EXPECT_EQ(printed("%%%%"), "%%");
    EXPECT_EQ(printed("a%%b%c"), "a%b%c");
    EXPECT_EQ(printed("%%n"), "%n");
}

TEST(log, prints_percent_signs_of_a_file_name_as_they_stand) {
    EXPECT_EQ(printed_file_name("a/%n.cpp"), "%n.cpp");
}

TEST(log, expands_no_braces) {
    EXPECT_EQ(printed("{} {0} {"), "{} {0} {");
}

TEST(log, prints_an_empty_message) {
    EXPECT_EQ(printed(""), "");
}

TEST(log, prints_a_long_message_whole) {
    const std::string message(100'000, 'x');
    EXPECT_EQ(printed(message), message);
}

TEST(log, hands_everything_to_the_sink_and_prints_nothing) {
    log_capture sink;
    const written streams = streams_during([] {
        log(log_level::debug, "a/b/lib", 1, "one");
        log(static_cast<log_level>(7), "a/b/lib", 18446744073709551615U, "100% %%");
    });
    EXPECT_EQ(streams.output, "");
    EXPECT_EQ(streams.error, "");
    const auto entries = sink.entries();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].opaque, 0U);
    EXPECT_EQ(entries[0].level, log_level::debug);
    EXPECT_EQ(entries[0].path, "a/b/lib");
    EXPECT_EQ(entries[0].line, 1U);
    EXPECT_EQ(entries[0].message, "one");
    EXPECT_EQ(static_cast<std::uint32_t>(entries[1].level), 7U);
    EXPECT_EQ(entries[1].line, 18446744073709551615U);
    EXPECT_EQ(entries[1].message, "100% %%");
}

TEST(log, prints_again_once_the_sink_is_gone) {
    { const log_capture sink; }
    EXPECT_EQ(printed("back"), "back");
}

TEST(log, passes_on_what_the_sink_throws_and_logs_on) {
    set_log_sink([](auto&&...) { throw std::runtime_error("sink"); });
    EXPECT_THROW(log(log_level::info, "lib", 1, "text"), std::runtime_error);
    set_log_sink(nullptr);
    EXPECT_EQ(printed("still here"), "still here");
}

TEST(log, lets_the_earlier_sink_log_when_it_ends) {
    struct farewell {
        ~farewell() { log(log_level::info, "lib", 1, "farewell"); }
    };
    set_log_sink([owned = std::make_shared<farewell>()](auto&&...) {});
    const log_capture sink;
    EXPECT_THAT(sink.lines(), testing::ElementsAre("INFO farewell"));
}

TEST(log, names_the_file_and_line_of_the_call) {
    const log_capture sink;
    log_here(log_level::info, "here");
    const int line = __LINE__ - 1;
    ASSERT_EQ(sink.entries().size(), 1U);
    EXPECT_THAT(sink.entries().front().path, testing::EndsWith("/log_test.cpp"));
    EXPECT_EQ(sink.entries().front().line, static_cast<std::uint64_t>(line));
}

TEST(log, writes_a_default_line_although_a_sink_is_set) {
    const log_capture sink;
    const written streams =
        streams_during([] { write_default_log_line(log_level::info, "a/lib", 3, "direct"); });
    EXPECT_EQ(streams.output, "INFO lib 3 MSG direct\n");
    EXPECT_THAT(sink.entries(), IsEmpty());
}

TEST(log, writes_whole_lines_from_two_threads) {
    constexpr int count = 300;
    const std::string texts[] = {std::string(500, 'a'), std::string(700, 'b')};
    const written streams = streams_during([&] {
        std::thread other([&] {
            for (int i = 0; i < count; ++i) {
                log(log_level::warning, "lib", 1, texts[1]);
            }
        });
        for (int i = 0; i < count; ++i) {
            log(log_level::error, "lib", 1, texts[0]);
        }
        other.join();
    });
    int found[2] = {};
    std::istringstream lines(streams.error);
    for (std::string line; std::getline(lines, line);) {
        const int which = line.starts_with("ERROR") ? 0 : 1;
        ASSERT_EQ(line, (which == 0 ? "ERROR lib 1 MSG " : "WARNING lib 1 MSG ") + texts[which]);
        ++found[which];
    }
    EXPECT_EQ(found[0], count);
    EXPECT_EQ(found[1], count);
}

TEST(log, hands_each_line_to_one_of_the_sinks_that_are_set_meanwhile) {
    constexpr int lines_of_each = 2000;
    std::atomic<int> received{0};
    std::atomic<int> loggers{2};
    const std::string tag(100, 't'); // more than a sink holds without memory of its own
    const auto count = [&received, tag](auto&&...) { received += tag.size() == 100 ? 1 : 0; };
    set_log_sink(count);
    const auto log_often = [&] {
        for (int i = 0; i < lines_of_each; ++i) {
            log(log_level::info, "lib", 1, "text");
        }
        --loggers;
    };
    std::thread first(log_often);
    std::thread second(log_often);
    while (loggers != 0) {
        set_log_sink(count);
    }
    first.join();
    second.join();
    set_log_sink(nullptr);
    EXPECT_EQ(received, 2 * lines_of_each);
}

TEST(log, never_enters_the_sink_twice_at_once) {
    int inside = 0;
    int entered = 0;
    bool twice = false;
    set_log_sink([&](auto&&...) {
        ++inside;
        twice = twice || inside != 1;
        ++entered;
        --inside;
    });
    const auto log_often = [] {
        for (int i = 0; i < 2000; ++i) {
            log(log_level::info, "lib", 1, "text");
        }
    };
    std::thread other(log_often);
    log_often();
    other.join();
    set_log_sink(nullptr);
    EXPECT_FALSE(twice);
    EXPECT_EQ(entered, 4000);
}

} // namespace
} // namespace orvanta_tests
