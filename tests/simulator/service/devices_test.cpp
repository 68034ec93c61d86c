// The identities of the simulated devices.
#include "simulator/service/device.hpp"

#include <gmock/gmock.h>
#include <set>
#include <string>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;

TEST(devices, stand_by_rising_id_and_are_found_by_it) {
    std::vector<device> devices = make_devices(3, 2);
    ASSERT_EQ(devices.size(), 5U);
    for (const std::uint32_t id : {1U, 2U, 3U, 1001U, 1002U}) {
        ASSERT_NE(find_device(devices, id), nullptr);
        EXPECT_EQ(find_device(devices, id)->id, id);
    }
    for (const std::uint32_t id : {0U, 4U, 1000U, 1003U, 0xFFFFFFFFU}) {
        EXPECT_EQ(find_device(devices, id), nullptr);
    }
}

TEST(devices, have_identities_of_their_own_that_other_devices_do_not_change) {
    const std::vector<device> all = make_devices(256, 256);
    std::set<std::string> uuids;
    std::set<int> short_ids;
    for (const device& one : all) {
        uuids.insert(uuid_text(one));
        short_ids.insert(one.description.short_id);
    }
    EXPECT_EQ(uuids.size(), 512U);
    EXPECT_EQ(short_ids.size(), 512U);
    const std::vector<device> palmetron_alone = make_devices(0, 1);
    EXPECT_EQ(uuid_text(palmetron_alone[0]), uuid_text(all[256]));
    EXPECT_EQ(palmetron_alone[0].id, all[256].id);
}

TEST(devices, begin_with_the_configuration_of_the_factory) {
    const configuration factory;
    EXPECT_TRUE(factory.gravity_compensation);
    EXPECT_EQ(factory.scaling_factor, 0.75F);
    EXPECT_TRUE(factory.torque_scaling);
    EXPECT_EQ(factory.handedness, 1);
}

} // namespace
} // namespace orvanta_tests
