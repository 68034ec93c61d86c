// Every request in every way it can be refused, with the status that fits.
#include "simulator/fixtures/service_fixture.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <algorithm>
#include <gmock/gmock.h>
#include <iterator>
#include <ostream>
#include <set>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vantu::orvanta::communication::direction;
using vantu::orvanta::communication::operations;
using vantu::orvanta::communication::row_of;
namespace op_code = vantu::orvanta::communication::op_code;

constexpr std::uint8_t refused_tag = 0xC7;
constexpr std::uint32_t no_such_device = 0x01020304;

// A request that names a device; the argument is what follows the device id.
struct device_request {
    const char* name;
    std::uint8_t code;
    bytes good_argument;
    bool needs_opening;
    bool needs_orvanta3;
};

void PrintTo(const device_request& row, std::ostream* out) {
    *out << row.name;
}

const device_request device_requests[] = {
    {"open", 18, {0x00, 0x00}, false, false},
    {"close", 20, {}, true, false},
    {"orientation", 47, {}, true, true},
    {"save", 64, {}, true, true},
    {"gravity_compensation_get", 66, {}, true, true},
    {"gravity_compensation_set", 67, {0x01, 0x00, 0x00, 0x00, 0x3F}, true, true},
    {"torque_scaling_get", 68, {}, true, true},
    {"torque_scaling_set", 69, {0x01}, true, true},
    {"handedness_set", 71, {0x02}, true, true},
};

bytes request_to(const device_request& which, std::uint32_t device_id) {
    const auto length = static_cast<std::uint8_t>(4 + which.good_argument.size());
    return join({{0xFF, which.code, length, 0x00, refused_tag}, u32(device_id), which.good_argument});
}

class each_request : public testing::TestWithParam<device_request> {};
INSTANTIATE_TEST_SUITE_P(of_a_client, each_request, testing::ValuesIn(device_requests),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(device_requests, are_all_that_the_table_of_operations_has) {
    for (const auto& row : operations) {
        const bool is_of_a_connection = row.code == op_code::connect || row.code == op_code::disconnect;
        if (row.answered_by != op_code::none && !is_of_a_connection) {
            EXPECT_TRUE(std::any_of(std::begin(device_requests), std::end(device_requests),
                                    [&row](const device_request& one) { return one.code == row.code; }))
                << row.name << " is missing here";
        }
    }
}

TEST_P(each_request, is_answered_by_the_operation_of_its_row_when_nothing_is_wrong) {
    service_fixture tested;
    tested.enter(1, {1});
    const sent_list answer = tested.send(1, datagram({request_to(GetParam(), 1)}));
    ASSERT_FALSE(answer.empty()) << "no answer";
    EXPECT_EQ(answer[0].content.at(7), row_of(GetParam().code, direction::to_service).answered_by);
    EXPECT_EQ(answer[0].content.at(10), refused_tag);
}

TEST_P(each_request, of_a_stranger_is_refused) {
    service_fixture tested;
    EXPECT_THAT(tested.send(1, datagram({request_to(GetParam(), 1)})),
                ElementsAre(sent{1, refusal(refused_tag, 1, 0xB0)}));
    EXPECT_THAT(tested.lines,
                ElementsAre("refused with status 0xb0, client is not connected; device 1, tag 199"));
}

TEST_P(each_request, for_a_device_that_is_not_there_is_refused) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    for (const std::uint32_t id : {no_such_device, 0U, 2U, 1000U, 1002U, 0xFFFFFFFFU}) {
        EXPECT_THAT(tested.send(1, datagram({request_to(GetParam(), id)})),
                    ElementsAre(sent{1, refusal(refused_tag, id, 0xC0)}));
    }
}

TEST_P(each_request, for_a_palmetron_is_refused_where_only_an_orvanta3_has_an_answer) {
    service_fixture tested;
    tested.enter(1, {1, 1001});
    const sent_list answer = tested.send(1, datagram({request_to(GetParam(), 1001)}));
    if (GetParam().needs_orvanta3) {
        EXPECT_THAT(answer, ElementsAre(sent{1, refusal(refused_tag, 1001, 0xC1)}));
    } else {
        ASSERT_EQ(answer.size(), 1U);
        EXPECT_EQ(answer[0].content.at(7), GetParam().code + 1);
    }
}

TEST_P(each_request, for_a_device_that_this_client_has_not_opened_is_refused) {
    service_fixture tested;
    tested.enter(1);
    tested.enter(2, {1});
    const sent_list answer = tested.send(1, datagram({request_to(GetParam(), 1)}));
    if (GetParam().needs_opening) {
        EXPECT_THAT(answer, ElementsAre(sent{1, refusal(refused_tag, 1, 0xB1)}));
    } else {
        ASSERT_EQ(answer.size(), 1U);
        EXPECT_EQ(answer[0].content.at(7), GetParam().code + 1);
    }
}

TEST_P(each_request, with_a_body_too_short_or_too_long_is_refused_and_changes_nothing) {
    service_fixture tested;
    tested.enter(1, {1});
    const auto before = tested.core.devices()[0].settings;
    bytes request = request_to(GetParam(), 1);
    const std::uint8_t length = request[2];
    for (std::uint8_t wrong = 0; wrong < 2 * length; ++wrong) {
        if (wrong != length) {
            bytes changed = request;
            changed.resize(5U + wrong, 0x01);
            changed[2] = wrong;
            EXPECT_THAT(tested.send(1, datagram({changed})),
                        ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
        }
    }
    // One byte more is claimed than there is; then one byte less is there than is claimed.
    ++request[2];
    EXPECT_THAT(tested.send(1, datagram({request})), ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    --request[2];
    request.pop_back();
    EXPECT_THAT(tested.send(1, datagram({request})), ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    EXPECT_EQ(tested.core.devices()[0].settings, before);
}

TEST(refusals, cover_every_request_that_the_protocol_has) {
    std::set<std::uint8_t> in_protocol;
    for (const auto& row : operations) {
        if (row.way == direction::to_service) {
            in_protocol.insert(row.code);
        }
    }
    std::set<std::uint8_t> tested{1, 3, 5}; // keep-alive, connect and goodbye have tests of their own
    for (const device_request& row : device_requests) {
        tested.insert(row.code);
    }
    EXPECT_EQ(tested, in_protocol);
}

TEST(refusals, of_an_unknown_operation_are_the_same_for_clients_and_strangers) {
    const std::set<std::uint8_t> known{1, 3, 5, 18, 20, 47, 64, 66, 67, 68, 69, 71, 240};
    service_fixture tested;
    tested.enter(1, {1});
    for (unsigned code = 0; code < 256; ++code) {
        const auto value = static_cast<std::uint8_t>(code);
        if (!known.contains(value)) {
            const bytes request = datagram({{0xFF, value, 0x00, 0x00, refused_tag}});
            EXPECT_THAT(tested.send(1, request), ElementsAre(sent{1, refusal(refused_tag, 0, 0xA1)}));
            EXPECT_THAT(tested.send(2, request), ElementsAre(sent{2, refusal(refused_tag, 0, 0xA1)}));
        }
    }
}

TEST(refusals, of_a_body_cover_the_operations_of_a_connection_too) {
    service_fixture tested;
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x01, 0x01, 0x00, refused_tag, 0x00}})),
                ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    EXPECT_THAT(tested.send(1, datagram({{0xFF, 0x05, 0x01, 0x00, refused_tag, 0x00}})),
                ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    bytes shortened = datagram({connect_operation(refused_tag)});
    shortened.pop_back();
    EXPECT_THAT(tested.send(1, shortened), ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    bytes longer = datagram({connect_operation(refused_tag)});
    longer[6 + 2] = 113;
    longer.push_back(0);
    EXPECT_THAT(tested.send(1, longer), ElementsAre(sent{1, refusal(refused_tag, 0, 0xA2)}));
    EXPECT_THAT(tested.core.clients(), IsEmpty());
}

// The arguments after device 1 that a request must not have.
struct wrong_argument {
    const char* name;
    std::uint8_t code;
    bytes argument;
};

void PrintTo(const wrong_argument& row, std::ostream* out) {
    *out << row.name;
}

const wrong_argument wrong_arguments[] = {
    {"gravity_flag_of_2", 67, {0x02, 0x00, 0x00, 0x00, 0x3F}},
    {"gravity_flag_of_255", 67, {0xFF, 0x00, 0x00, 0x00, 0x3F}},
    {"factor_just_above_1", 67, {0x01, 0x01, 0x00, 0x80, 0x3F}},
    {"factor_just_below_0", 67, {0x01, 0x01, 0x00, 0x00, 0x80}},
    {"factor_of_minus_1", 67, {0x01, 0x00, 0x00, 0x80, 0xBF}},
    {"factor_infinite", 67, {0x01, 0x00, 0x00, 0x80, 0x7F}},
    {"factor_minus_infinite", 67, {0x01, 0x00, 0x00, 0x80, 0xFF}},
    {"factor_no_number", 67, {0x01, 0x00, 0x00, 0xC0, 0x7F}},
    {"factor_signalling_no_number", 67, {0x00, 0x01, 0x00, 0x80, 0x7F}},
    {"torque_flag_of_2", 69, {0x02}},
    {"torque_flag_of_255", 69, {0xFF}},
    {"handedness_of_0", 71, {0x00}},
    {"handedness_of_3", 71, {0x03}},
    {"handedness_of_255", 71, {0xFF}},
};

class each_wrong_argument : public testing::TestWithParam<wrong_argument> {};
INSTANTIATE_TEST_SUITE_P(of_a_request, each_wrong_argument, testing::ValuesIn(wrong_arguments),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(each_wrong_argument, is_refused_and_changes_nothing) {
    service_fixture tested;
    tested.enter(1, {1});
    const auto before = tested.core.devices()[0].settings;
    const auto length = static_cast<std::uint8_t>(4 + GetParam().argument.size());
    EXPECT_THAT(
        tested.send(
            1, datagram({join({{0xFF, GetParam().code, length, 0x00, refused_tag, 0x01, 0x00, 0x00, 0x00},
                               GetParam().argument})})),
        ElementsAre(sent{1, refusal(refused_tag, 1, 0xA3)}));
    EXPECT_EQ(tested.core.devices()[0].settings, before);
}

} // namespace
} // namespace orvanta_tests
