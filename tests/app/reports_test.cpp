// The printed reports.
#include "app/reports.hpp"
#include "app/support/recording_console.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace vantu::orvanta::app;
using orvanta_tests::recording_console;

TEST(device_type_name, names_the_kinds_and_calls_the_rest_unknow) {
    EXPECT_STREQ("Nil", device_type_name(0));
    EXPECT_STREQ("Orvanta3", device_type_name(1));
    EXPECT_STREQ("Palmetron", device_type_name(2));
    EXPECT_STREQ("Unknow", device_type_name(3));
    EXPECT_STREQ("Unknow", device_type_name(255));
}

TEST(handedness_name, names_the_hands_and_calls_the_rest_unknow) {
    EXPECT_STREQ("Nil", handedness_name(0));
    EXPECT_STREQ("Right", handedness_name(1));
    EXPECT_STREQ("Left", handedness_name(2));
    EXPECT_STREQ("Unknow", handedness_name(3));
    EXPECT_STREQ("Unknow", handedness_name(255));
}

TEST(on_off_name, is_on_for_every_byte_but_zero) {
    EXPECT_STREQ("Off", on_off_name(0));
    EXPECT_STREQ("On", on_off_name(1));
    EXPECT_STREQ("On", on_off_name(255));
}

TEST(device_report, prints_kind_id_and_uuid_in_four_groups) {
    vantu_orvanta_device device{};
    device.device_type = 1;
    device.short_id = 0x1A2B;
    for (std::uint8_t i = 0; i < 16; ++i) {
        device.uuid[i] = i;
    }
    recording_console console;
    print_device_report(console.terminal(), device);
    EXPECT_EQ("\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2B\n"
              "\tUUID:\t\t00010203-04050607-08090A0B-0C0D0E0F\n",
              console.output());
    EXPECT_EQ("", console.errors());
}

TEST(device_report, pads_the_short_id_to_four_digits_and_prints_high_bytes_in_upper_case) {
    vantu_orvanta_device device{};
    device.device_type = 7;
    device.short_id = 0x00FF;
    for (std::uint8_t& byte : device.uuid) {
        byte = 0xFE;
    }
    recording_console console;
    print_device_report(console.terminal(), device);
    EXPECT_EQ("\n\tDevice Type:\tUnknow\n\tID:\t\t00FF\n"
              "\tUUID:\t\tFEFEFEFE-FEFEFEFE-FEFEFEFE-FEFEFEFE\n",
              console.output());
}

TEST(device_report, prints_a_record_of_zeros) {
    recording_console console;
    print_device_report(console.terminal(), {});
    EXPECT_EQ("\n\tDevice Type:\tNil\n\tID:\t\t0000\n\tUUID:\t\t00000000-00000000-00000000-00000000\n",
              console.output());
}

TEST(configuration_report, prints_zeros_before_any_answer) {
    recording_console console;
    print_configuration_report(console.terminal(), {});
    EXPECT_EQ("\n\tOrientation:\n\t   r =  0.0000\n\t   x =  0.0000\n\t   y =  0.0000\n\t   z =  0.0000\n"
              "\n\tGravity Compensation: \tOff\n\t   Scaling Factor:\t0.00\n"
              "\n\tTorque Scaling:\t\tOff\n"
              "\n\tHandedness:\t\tNil\n",
              console.output());
    EXPECT_EQ("", console.errors());
}

TEST(configuration_report, prints_the_values_in_their_stored_order) {
    recording_console console;
    print_configuration_report(console.terminal(), {{0.5F, -0.25F, 12.34567F, -1234.5F}, {1, 0.75F}, {2}, 2});
    EXPECT_EQ("\n\tOrientation:\n\t   r =  0.5000\n\t   x = -0.2500\n\t   y = 12.3457\n\t   z = -1234.5000\n"
              "\n\tGravity Compensation: \tOn\n\t   Scaling Factor:\t0.75\n"
              "\n\tTorque Scaling:\t\tOn\n"
              "\n\tHandedness:\t\tLeft\n",
              console.output());
}

TEST(configuration_report, prints_extreme_numbers_whole) {
    recording_console console;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    print_configuration_report(console.terminal(), {{infinity, -infinity, nan, -0.0F}, {0, 1e20F}, {0}, 3});
    EXPECT_EQ("\n\tOrientation:\n\t   r =     inf\n\t   x =    -inf\n\t   y =     nan\n\t   z = -0.0000\n"
              "\n\tGravity Compensation: \tOff\n\t   Scaling Factor:\t100000002004087734272.00\n"
              "\n\tTorque Scaling:\t\tOff\n"
              "\n\tHandedness:\t\tUnknow\n",
              console.output());
}

} // namespace
