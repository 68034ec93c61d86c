// The service's status codes and their texts.
#include "vantu/orvanta/communication/service_status.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace orvanta_tests {
namespace {

using vantu::orvanta::service_status;
using vantu::orvanta::service_status_message;

const std::map<int, std::string> texts{
    {0, "nil"},
    {-96, "invalid version"},
    {-95, "invalid operation"},
    {-94, "invalid body"},
    {-93, "invalid argument"},
    {-80, "client is not connected"},
    {-79, "device was not opened"},
    {-78, "another client is already connected"},
    {-77, "an internal buffer is either full or empty"},
    {-76, "an internal request queue is empty"},
    {-75, "an internal request queue is full"},
    {-64, "invalid device identifier"},
    {-63, "invalid device type"},
    {-62, "service does not support device model"},
    {-61, "service cannot parse the device pointer"},
    {-48, "communication error with device"},
    {-47, "client id (cid) doesn't exist"},
    {-1, "unknown"},
};

TEST(service_status, has_the_text_of_every_code_and_none_other) {
    for (int code = -128; code <= 127; ++code) {
        const auto known = texts.find(code);
        EXPECT_EQ(service_status_message(static_cast<std::int8_t>(code)),
                  known == texts.end() ? "undefined" : known->second)
            << code;
    }
}

TEST(service_status, has_its_codes_as_unsigned_bytes) {
    EXPECT_EQ(static_cast<int>(service_status::nil), 0);
    EXPECT_EQ(static_cast<int>(service_status::invalid_version), 160);
    EXPECT_EQ(static_cast<int>(service_status::invalid_operation), 161);
    EXPECT_EQ(static_cast<int>(service_status::invalid_body), 162);
    EXPECT_EQ(static_cast<int>(service_status::invalid_argument), 163);
    EXPECT_EQ(static_cast<int>(service_status::client_not_connected), 176);
    EXPECT_EQ(static_cast<int>(service_status::device_not_opened), 177);
    EXPECT_EQ(static_cast<int>(service_status::another_client_connected), 178);
    EXPECT_EQ(static_cast<int>(service_status::buffer_full_or_empty), 179);
    EXPECT_EQ(static_cast<int>(service_status::request_queue_empty), 180);
    EXPECT_EQ(static_cast<int>(service_status::request_queue_full), 181);
    EXPECT_EQ(static_cast<int>(service_status::invalid_device_id), 192);
    EXPECT_EQ(static_cast<int>(service_status::invalid_device_type), 193);
    EXPECT_EQ(static_cast<int>(service_status::unsupported_device_model), 194);
    EXPECT_EQ(static_cast<int>(service_status::unparsable_device_pointer), 195);
    EXPECT_EQ(static_cast<int>(service_status::device_communication_error), 208);
    EXPECT_EQ(static_cast<int>(service_status::unknown_client_id), 209);
    EXPECT_EQ(static_cast<int>(service_status::unknown), 255);
}

TEST(service_status, is_undefined_for_the_neighbours_of_known_codes) {
    EXPECT_STREQ(service_status_message(1), "undefined");
    EXPECT_STREQ(service_status_message(-2), "undefined");
    EXPECT_STREQ(service_status_message(static_cast<std::int8_t>(164)), "undefined");
}

} // namespace
} // namespace orvanta_tests
