// Results and failures by themselves: what they hold, say and throw.
#include "session/failures.hpp"
#include "session/values.hpp"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

using vantu::orvanta::device_type;
using vantu::orvanta::error_code;
using vantu::orvanta::failure;
using vantu::orvanta::handedness;
using vantu::orvanta::result;

std::string told(error_code code) {
    return vantu::orvanta::failure_of(static_cast<std::int32_t>(code), "open").message;
}

std::string told_at_a_connect(error_code code, const std::string& port = {}) {
    return vantu::orvanta::connect_failure(static_cast<std::int32_t>(code), port).message;
}

bool ends_with(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(a_failure_of_a_request, says_what_to_do_where_that_is_known) {
    EXPECT_TRUE(ends_with(told(error_code::device_not_opened), ": open it first"));
    EXPECT_TRUE(
        ends_with(told(error_code::request_queue_full), ": 255 requests are waiting for their answers"));
    EXPECT_TRUE(
        ends_with(told(error_code::invalid_device_id), ": it may have been unplugged; see session::devices"));
    for (const error_code code : {error_code::client_not_connected, error_code::unknown_client_id}) {
        EXPECT_TRUE(ends_with(told(code), ": the service was started anew; connect again"));
    }
    EXPECT_EQ(told(error_code::timed_out), "open: operation timed out");
}

TEST(a_failure_of_a_connect, says_what_to_do) {
    for (const error_code code : {error_code::timed_out, error_code::socket_bind_failed}) {
        EXPECT_TRUE(ends_with(told_at_a_connect(code), "or orvanta-simulator where there is no device"));
        EXPECT_TRUE(ends_with(told_at_a_connect(code, "7"), ": no service answers on port 7"));
    }
    EXPECT_TRUE(ends_with(told_at_a_connect(error_code::another_client_connected),
                          ": end the other program that is connected to the service"));
    EXPECT_TRUE(ends_with(told_at_a_connect(error_code::buffer_full_or_empty),
                          ": end one of the programs that are connected to the service"));
    EXPECT_TRUE(ends_with(told_at_a_connect(error_code::protocol_parse_failed),
                          ": what answers there is no device service, or one of another version"));
    EXPECT_EQ(told_at_a_connect(error_code::os_socket_error),
              std::string("connect: ") + vantu::orvanta::error_message(254));
}

TEST(a_result, has_its_value) {
    result<int> seven(7);
    EXPECT_TRUE(seven.has_value());
    EXPECT_TRUE(static_cast<bool>(seven));
    EXPECT_EQ(seven.value(), 7);
    EXPECT_EQ(*seven, 7);
    EXPECT_EQ(seven.error(), error_code::success);
    EXPECT_EQ(seven.message(), "");
    EXPECT_EQ(std::move(seven).value(), 7);
    const result<std::string> text(std::string("abc"));
    EXPECT_EQ(text->size(), 3U);
    const result<void> done;
    EXPECT_TRUE(done.has_value());
    EXPECT_NO_THROW(done.value());
    EXPECT_EQ(done.error(), error_code::success);
}

template <typename Function> void expect_thrown(Function function) {
    try {
        function();
        FAIL() << "nothing was thrown";
    } catch (const vantu::orvanta::exception& thrown) {
        EXPECT_EQ(thrown.code(), 4U);
        EXPECT_EQ(std::string(thrown.what()), "too late");
    }
}

TEST(a_result, throws_its_failure_when_it_has_no_value) {
    const failure late{error_code::timed_out, "too late"};
    const result<std::string> none(late);
    EXPECT_FALSE(none.has_value());
    EXPECT_EQ(none.error(), error_code::timed_out);
    EXPECT_EQ(none.message(), "too late");
    expect_thrown([&] { (void)none.value(); });
    expect_thrown([&] { (void)*none; });
    expect_thrown([&] { (void)none->size(); });
    expect_thrown([&] { (void)result<int>(late).value(); });
    const result<void> failed(late);
    EXPECT_FALSE(failed);
    expect_thrown([&] { failed.value(); });
}

TEST(names, are_those_of_the_kinds_and_hands) {
    using vantu::orvanta::name_of;
    EXPECT_STREQ(name_of(device_type::none), "none");
    EXPECT_STREQ(name_of(device_type::orvanta3), "orvanta3");
    EXPECT_STREQ(name_of(device_type::palmetron), "palmetron");
    EXPECT_STREQ(name_of(static_cast<device_type>(99)), "unknown");
    EXPECT_STREQ(name_of(handedness::none), "none");
    EXPECT_STREQ(name_of(handedness::right), "right");
    EXPECT_STREQ(name_of(handedness::left), "left");
    EXPECT_STREQ(name_of(static_cast<handedness>(99)), "unknown");
}

} // namespace
