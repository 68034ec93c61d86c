// The texts of the client's error codes, and the exception that carries them.
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <type_traits>

namespace {

using vantu::orvanta::check_result;
using vantu::orvanta::error_code;
using vantu::orvanta::error_message;
using vantu::orvanta::exception;

// Every code that has a text of its own.
const std::map<std::int32_t, std::string>& texts() {
    static const std::map<std::int32_t, std::string> table{
        {0, "nil"},
        {1, "an unexpected error occurred"},
        {2, "an invalid argument was provided"},
        {3, "invalid connection state"},
        {4, "operation timed out"},
        {5, "unable to bind the client socket"},
        {6, "unable to parse the service protocol"},
        {7, "no device matches given type or id"},
        {8, "disconnected from the service"},
        {9, "an internal buffer is either full or empty"},
        {10, "an internal request queue is empty"},
        {11, "an internal request queue is full"},
        {160, "invalid version"},
        {161, "invalid operation"},
        {162, "invalid body"},
        {163, "invalid argument"},
        {176, "client is not connected"},
        {177, "device was not opened"},
        {178, "another client is already connected"},
        {192, "invalid device identifier"},
        {193, "invalid device type"},
        {194, "service does not support device model"},
        {195, "service cannot parse the device pointer"},
        {208, "communication error with device"},
        {209, "client id (cid) doesn't exist"},
        {254, "Socket error from the operating system"},
    };
    return table;
}

TEST(error_message, gives_every_code_from_minus_300_to_1100_its_text_or_unknown) {
    for (std::int32_t code = -300; code <= 1100; ++code) {
        const auto known = texts().find(code);
        EXPECT_STREQ(error_message(code), known == texts().end() ? "unknown" : known->second.c_str()) << code;
    }
}

TEST(error_message, calls_the_extreme_codes_unknown) {
    EXPECT_STREQ(error_message(std::numeric_limits<std::int32_t>::min()), "unknown");
    EXPECT_STREQ(error_message(std::numeric_limits<std::int32_t>::max()), "unknown");
}

TEST(error_message, forwards_the_small_codes_to_the_service_texts_but_not_their_status_bytes) {
    EXPECT_STREQ(error_message(9), "an internal buffer is either full or empty");
    EXPECT_STREQ(error_message(179), "unknown");
    EXPECT_STREQ(error_message(180), "unknown");
    EXPECT_STREQ(error_message(181), "unknown");
}

TEST(error_message, is_the_same_text_through_the_flat_api) {
    for (std::int32_t code = -2; code <= 300; ++code) {
        EXPECT_EQ(vantu_orvanta_error_message(code), error_message(code)) << code;
    }
}

TEST(error_message, is_the_same_constant_each_time) {
    EXPECT_EQ(error_message(4), error_message(4));
}

// The class's name of a code that the flat API names; the compiler refuses a code that is missing here.
std::optional<error_code> name_of(vantu_orvanta_error_code code) {
    switch (code) {
    case vantu_orvanta_success:
        return error_code::success;
    case vantu_orvanta_unexpected_error:
        return error_code::unexpected_error;
    case vantu_orvanta_invalid_argument:
        return error_code::invalid_argument;
    case vantu_orvanta_invalid_connection_state:
        return error_code::invalid_connection_state;
    case vantu_orvanta_timed_out:
        return error_code::timed_out;
    case vantu_orvanta_socket_bind_failed:
        return error_code::socket_bind_failed;
    case vantu_orvanta_protocol_parse_failed:
        return error_code::protocol_parse_failed;
    case vantu_orvanta_no_matching_device:
        return error_code::no_matching_device;
    case vantu_orvanta_disconnected_from_service:
        return error_code::disconnected_from_service;
    case vantu_orvanta_buffer_full_or_empty:
        return error_code::buffer_full_or_empty;
    case vantu_orvanta_request_queue_empty:
        return error_code::request_queue_empty;
    case vantu_orvanta_request_queue_full:
        return error_code::request_queue_full;
    case vantu_orvanta_invalid_version:
        return error_code::invalid_version;
    case vantu_orvanta_invalid_operation:
        return error_code::invalid_operation;
    case vantu_orvanta_invalid_body:
        return error_code::invalid_body;
    case vantu_orvanta_invalid_request_argument:
        return error_code::invalid_request_argument;
    case vantu_orvanta_client_not_connected:
        return error_code::client_not_connected;
    case vantu_orvanta_device_not_opened:
        return error_code::device_not_opened;
    case vantu_orvanta_invalid_device_id:
        return error_code::invalid_device_id;
    case vantu_orvanta_invalid_device_type:
        return error_code::invalid_device_type;
    case vantu_orvanta_unsupported_device_model:
        return error_code::unsupported_device_model;
    case vantu_orvanta_unparsable_device_pointer:
        return error_code::unparsable_device_pointer;
    case vantu_orvanta_device_communication_error:
        return error_code::device_communication_error;
    case vantu_orvanta_unknown_client_id:
        return error_code::unknown_client_id;
    case vantu_orvanta_another_client_connected:
        return error_code::another_client_connected;
    case vantu_orvanta_os_socket_error:
        return error_code::os_socket_error;
    }
    return std::nullopt;
}

// Whether a number has a name in the class; the compiler refuses a name that is missing here.
bool has_name(error_code code) {
    switch (code) {
    case error_code::success:
    case error_code::unexpected_error:
    case error_code::invalid_argument:
    case error_code::invalid_connection_state:
    case error_code::timed_out:
    case error_code::socket_bind_failed:
    case error_code::protocol_parse_failed:
    case error_code::no_matching_device:
    case error_code::disconnected_from_service:
    case error_code::buffer_full_or_empty:
    case error_code::request_queue_empty:
    case error_code::request_queue_full:
    case error_code::invalid_version:
    case error_code::invalid_operation:
    case error_code::invalid_body:
    case error_code::invalid_request_argument:
    case error_code::client_not_connected:
    case error_code::device_not_opened:
    case error_code::invalid_device_id:
    case error_code::invalid_device_type:
    case error_code::unsupported_device_model:
    case error_code::unparsable_device_pointer:
    case error_code::device_communication_error:
    case error_code::unknown_client_id:
    case error_code::another_client_connected:
    case error_code::os_socket_error:
        return true;
    }
    return false;
}

TEST(error_code, gives_the_codes_of_the_flat_api_their_names) {
    int named = 0;
    for (std::int32_t code = 0; code < 256; ++code) {
        if (const auto name = name_of(static_cast<vantu_orvanta_error_code>(code))) {
            EXPECT_EQ(static_cast<std::int32_t>(*name), code);
            ++named;
        }
    }
    EXPECT_EQ(named, 26);
    static_assert(std::is_same_v<std::underlying_type_t<error_code>, std::int32_t>);
}

TEST(error_code, names_every_code_that_has_a_text_and_no_other) {
    for (std::int32_t code = -300; code <= 1100; ++code) {
        EXPECT_EQ(has_name(static_cast<error_code>(code)), texts().count(code) == 1) << code;
    }
}

// 163 is the service's own "invalid argument", which is no name for two codes.
TEST(error_code, calls_the_statuses_of_the_service_by_their_names) {
    using vantu::orvanta::service_status;
    const auto is_same = [](error_code code, service_status status) {
        return static_cast<std::int32_t>(code) == static_cast<std::int32_t>(status);
    };
    EXPECT_TRUE(is_same(error_code::invalid_version, service_status::invalid_version));
    EXPECT_TRUE(is_same(error_code::invalid_operation, service_status::invalid_operation));
    EXPECT_TRUE(is_same(error_code::invalid_body, service_status::invalid_body));
    EXPECT_TRUE(is_same(error_code::invalid_request_argument, service_status::invalid_argument));
    EXPECT_TRUE(is_same(error_code::client_not_connected, service_status::client_not_connected));
    EXPECT_TRUE(is_same(error_code::device_not_opened, service_status::device_not_opened));
    EXPECT_TRUE(is_same(error_code::another_client_connected, service_status::another_client_connected));
    EXPECT_TRUE(is_same(error_code::invalid_device_id, service_status::invalid_device_id));
    EXPECT_TRUE(is_same(error_code::invalid_device_type, service_status::invalid_device_type));
    EXPECT_TRUE(is_same(error_code::unsupported_device_model, service_status::unsupported_device_model));
    EXPECT_TRUE(is_same(error_code::unparsable_device_pointer, service_status::unparsable_device_pointer));
    EXPECT_TRUE(is_same(error_code::device_communication_error, service_status::device_communication_error));
    EXPECT_TRUE(is_same(error_code::unknown_client_id, service_status::unknown_client_id));
}

TEST(exception, says_the_text_of_its_code) {
    const exception failure(8);
    EXPECT_STREQ(failure.what(), "disconnected from the service");
    EXPECT_EQ(failure.code(), vantu_orvanta_disconnected_from_service);
}

TEST(exception, says_its_label_before_the_text) {
    const exception failure(7, "client.device_open");
    EXPECT_STREQ(failure.what(), "client.device_open: no device matches given type or id");
    EXPECT_EQ(failure.code(), vantu_orvanta_no_matching_device);
}

TEST(exception, keeps_the_separator_of_an_empty_label) {
    EXPECT_STREQ(exception(4, "").what(), ": operation timed out");
}

TEST(exception, copies_code_and_text) {
    auto* original = new exception(4, "client.connect");
    const exception copy(*original);
    delete original;
    EXPECT_STREQ(copy.what(), "client.connect: operation timed out");
    EXPECT_EQ(copy.code(), vantu_orvanta_timed_out);
}

TEST(exception, assigns_code_and_text) {
    exception target(1);
    target = exception(5, "client.connect");
    EXPECT_STREQ(target.what(), "client.connect: unable to bind the client socket");
    EXPECT_EQ(target.code(), vantu_orvanta_socket_bind_failed);
}

TEST(exception, calls_a_code_past_the_signed_range_unknown) {
    const exception failure(0xFFFFFFFFU);
    EXPECT_STREQ(failure.what(), "unknown");
    EXPECT_EQ(failure.code(), 0xFFFFFFFFU);
}

TEST(check_result, throws_nothing_for_success) {
    EXPECT_NO_THROW(check_result(0, "client.connect"));
}

TEST(check_result, throws_an_exception_that_a_handler_for_the_standard_one_catches) {
    try {
        check_result(178, "client.connect");
        FAIL() << "nothing was thrown";
    } catch (const std::exception& failure) {
        EXPECT_STREQ(failure.what(), "client.connect: another client is already connected");
        ASSERT_NE(dynamic_cast<const exception*>(&failure), nullptr);
        EXPECT_EQ(dynamic_cast<const exception&>(failure).code(), vantu_orvanta_another_client_connected);
    }
}

TEST(check_result, throws_for_a_negative_code_too) {
    EXPECT_THROW(check_result(-1, "x"), exception);
}

} // namespace
