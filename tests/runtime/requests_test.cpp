// The requests of the flat API: their bytes, their checks and their order.
#include "support/service_session.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;

using send_function =
    std::function<std::int32_t(vantu_orvanta_context*, std::uint32_t device, std::uint8_t tag)>;

struct request {
    std::string name;
    send_function send;
    bytes expected; // for device 0xA1B2C3D4 and tag 0x7B
};

const std::uint8_t left = 2;

const std::vector<request>& requests() {
    static const std::vector<request> all{
        {"device_open",
         [](auto* context, auto device, auto tag) {
             return vantu_orvanta_device_open(context, device, tag, 0x1234);
         },
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x12, 6, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1, 0x34, 0x12}},
        {"device_close",
         vantu_orvanta_device_close,
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x14, 4, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"orientation_get",
         vantu_orvanta_orientation_get,
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x2F, 4, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"config_save_request",
         vantu_orvanta_config_save_request,
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x40, 4, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"config_gravity_compensation_get",
         vantu_orvanta_config_gravity_compensation_get,
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x42, 4, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"config_gravity_compensation_set",
         [](auto* context, auto device, auto tag) {
             return vantu_orvanta_config_gravity_compensation_set(context, device, tag, &gravity);
         },
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x43, 9, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1, 1, 0x00, 0x00, 0x40, 0x3F}},
        {"config_torque_scaling_get",
         vantu_orvanta_config_torque_scaling_get,
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x44, 4, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"config_torque_scaling_set",
         [](auto* context, auto device, auto tag) {
             return vantu_orvanta_config_torque_scaling_set(context, device, tag, &torque);
         },
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x45, 5, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1, 1}},
        {"config_handedness_set",
         [](auto* context, auto device, auto tag) {
             return vantu_orvanta_config_handedness_set(context, device, tag, &left);
         },
         {0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 0x47, 5, 0, 0x7B, 0xD4, 0xC3, 0xB2, 0xA1, 2}},
    };
    return all;
}

TEST(requests, have_a_row_for_every_operation_that_a_tagged_answer_follows) {
    using namespace vantu::orvanta::communication;
    std::set<int> covered;
    for (const request& row : requests()) {
        covered.insert(row.expected.at(7));
    }
    for (const operation& row : operations) {
        const operation* answer = find_operation(row.answered_by, direction::to_client);
        const bool is_request =
            row.way == direction::to_service && answer != nullptr && answer->tag == tag_rule::copied;
        EXPECT_TRUE(!is_request || covered.count(row.code) == 1) << "requests() has no row for " << row.name;
    }
}

class a_request : public testing::TestWithParam<request> {};

TEST_P(a_request, sends_its_bytes) {
    service_session session;
    session.service.expect(GetParam().expected);
    EXPECT_EQ(GetParam().send(session.context, 0xA1B2C3D4, 0x7B), vantu_orvanta_success);
    session.service.await_script();
}

TEST_P(a_request, carries_the_tags_0_and_255) {
    service_session session;
    for (const std::uint8_t tag : {std::uint8_t{0}, std::uint8_t{255}}) {
        bytes expected = GetParam().expected;
        expected[10] = tag;
        session.service.expect(expected);
        EXPECT_EQ(GetParam().send(session.context, 0xA1B2C3D4, tag), vantu_orvanta_success);
        session.service.await_script();
    }
}

TEST_P(a_request, refuses_a_null_context) {
    EXPECT_EQ(GetParam().send(nullptr, 5, 1), vantu_orvanta_invalid_argument);
}

TEST_P(a_request, refuses_device_0_before_it_looks_at_the_connection) {
    vantu_orvanta_context* unconnected = vantu_orvanta_context_create();
    EXPECT_EQ(GetParam().send(unconnected, 0, 1), vantu_orvanta_invalid_argument);
    EXPECT_EQ(GetParam().send(unconnected, 5, 1), vantu_orvanta_invalid_connection_state);
    vantu_orvanta_disconnect(unconnected);
}

TEST_P(a_request, refuses_device_0_on_a_connection_and_sends_nothing) {
    service_session session;
    EXPECT_EQ(GetParam().send(session.context, 0, 1), vantu_orvanta_invalid_argument);
}

TEST_P(a_request, returns_3_after_the_goodbye_of_the_service) {
    service_session session;
    session.service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
    EXPECT_EQ(GetParam().send(session.context, 5, 1), vantu_orvanta_invalid_connection_state);
    EXPECT_EQ(GetParam().send(session.context, 0, 1), vantu_orvanta_invalid_argument);
}

INSTANTIATE_TEST_SUITE_P(each, a_request, testing::ValuesIn(requests()),
                         [](const auto& row) { return row.param.name; });

TEST(a_request_with_a_record, refuses_a_null_record_before_it_looks_at_the_connection) {
    vantu_orvanta_context* unconnected = vantu_orvanta_context_create();
    EXPECT_EQ(vantu_orvanta_config_gravity_compensation_set(unconnected, 5, 1, nullptr),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_config_torque_scaling_set(unconnected, 5, 1, nullptr),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_config_handedness_set(unconnected, 5, 1, nullptr),
              vantu_orvanta_invalid_argument);
    vantu_orvanta_disconnect(unconnected);
}

TEST(a_handedness_request, refuses_0_and_hands_on_everything_else) {
    service_session session;
    std::uint8_t handedness = 0;
    EXPECT_EQ(vantu_orvanta_config_handedness_set(session.context, 5, 1, &handedness),
              vantu_orvanta_invalid_argument);
    for (const std::uint8_t value : {std::uint8_t{1}, std::uint8_t{3}, std::uint8_t{255}}) {
        session.service.expect(datagram({op(71, 1, {5, 0, 0, 0, value})}));
        EXPECT_EQ(vantu_orvanta_config_handedness_set(session.context, 5, 1, &value), vantu_orvanta_success);
    }
}

TEST(a_gravity_compensation_request, hands_on_every_value) {
    service_session session;
    const vantu_orvanta_config_gravity_compensation odd{255, -1.0F};
    session.service.expect(datagram({op(67, 1, {5, 0, 0, 0, 255, 0x00, 0x00, 0x80, 0xBF})}));
    EXPECT_EQ(vantu_orvanta_config_gravity_compensation_set(session.context, 5, 1, &odd),
              vantu_orvanta_success);
    const vantu_orvanta_config_gravity_compensation off{0, 0.0F};
    session.service.expect(datagram({op(67, 0, {5, 0, 0, 0, 0, 0, 0, 0, 0})}));
    EXPECT_EQ(vantu_orvanta_config_gravity_compensation_set(session.context, 5, 0, &off),
              vantu_orvanta_success);
}

TEST(requests, go_out_in_the_order_of_the_calls) {
    service_session session;
    for (std::uint8_t tag = 1; tag <= 100; ++tag) {
        session.service.expect(datagram({op(64, tag, {5, 0, 0, 0})}));
    }
    for (std::uint8_t tag = 1; tag <= 100; ++tag) {
        ASSERT_EQ(vantu_orvanta_config_save_request(session.context, 5, tag), vantu_orvanta_success);
    }
    session.service.await_script();
}

} // namespace
