// Which device a text names.
#include "ctl/report/exit_status.hpp"
#include "ctl/service/device_choice.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

device described(std::uint32_t id, device_type type, std::uint16_t short_id, const char* uuid) {
    device one;
    one.id = id;
    one.type = type;
    one.short_id = short_id;
    one.uuid = uuid;
    return one;
}

const device first = described(1, device_type::orvanta3, 0x3001, "6e2b8410-5f3c-4d71-9a03-c53800000001");
const device second = described(3001, device_type::orvanta3, 0x3002, "6e2b8410-5f3c-4d71-9a03-c53800000002");
const device grip = described(9, device_type::palmetron, 0xA00F, "b1470d29-e862-4a15-8c90-7ed400000001");
const std::vector<device> all{first, second, grip};

std::uint32_t chosen(const std::vector<device>& devices, const std::string& text) {
    return choose_device(devices, text).id;
}

std::string refusal(const std::vector<device>& devices, const std::string& text) {
    try {
        return "chose " + std::to_string(chosen(devices, text));
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::no_device);
        return why.what();
    }
}

TEST(a_device, is_named_by_its_id_its_short_id_or_a_part_of_its_uuid) {
    EXPECT_EQ(chosen(all, "9"), 9U);
    EXPECT_EQ(chosen(all, "a00f"), 9U);
    EXPECT_EQ(chosen(all, "A00F"), 9U);
    EXPECT_EQ(chosen(all, "B147"), 9U);
    EXPECT_EQ(chosen(all, "00000002"), 3001U);
}

TEST(a_device, is_meant_by_its_id_before_the_short_id_of_another) {
    EXPECT_EQ(chosen(all, "3001"), 3001U);
}

TEST(a_device, is_the_only_orvanta3_when_none_is_named) {
    EXPECT_EQ(chosen({grip, first}, ""), 1U);
    EXPECT_EQ(refusal({grip}, ""), "the service has no Orvanta3; plug one in, or see orvantactl list");
}

TEST(a_device, is_not_chosen_among_several) {
    EXPECT_EQ(refusal(all, ""), "there are several devices; choose one with --device: "
                                "1 (orvanta3 3001, 6e2b8410-5f3c-4d71-9a03-c53800000001), "
                                "3001 (orvanta3 3002, 6e2b8410-5f3c-4d71-9a03-c53800000002)");
    EXPECT_EQ(refusal(all, "6e2b"), "'6e2b' names several devices: "
                                    "1 (orvanta3 3001, 6e2b8410-5f3c-4d71-9a03-c53800000001), "
                                    "3001 (orvanta3 3002, 6e2b8410-5f3c-4d71-9a03-c53800000002)");
}

TEST(a_device, is_not_named_by_less_than_four_characters_of_a_uuid) {
    EXPECT_EQ(
        refusal({first}, "6e2"),
        "no device is called '6e2'; there are: 1 (orvanta3 3001, 6e2b8410-5f3c-4d71-9a03-c53800000001)");
    EXPECT_EQ(refusal({}, "6e2b"), "no device is called '6e2b'; there are none");
}

} // namespace
