// Who the simulated devices are, and how they move.
#include "simulator/motion.hpp"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <set>
#include <string>

namespace simulator_tests {
namespace {

using namespace vantu::orvanta::simulator;

constexpr std::int64_t second = 1'000'000'000;

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

TEST(a_cursor, moves_smoothly_with_the_velocity_that_it_tells) {
    const device one = make_devices(1, 0)[0];
    constexpr std::int64_t step = second / 1000;
    for (std::int64_t now = 0; now < 20 * second; now += 37 * step) {
        const vantu_orvanta_cursor_state here = cursor_at(one, now);
        const vantu_orvanta_cursor_state next = cursor_at(one, now + step);
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_LE(std::abs(here.values[axis]), 0.1F);
            EXPECT_NEAR(next.values[axis] - here.values[axis], here.values[3 + axis] * 0.001F, 1e-5F);
        }
    }
}

TEST(a_cursor, does_move) {
    const device one = make_devices(1, 0)[0];
    float lowest = 1;
    float highest = -1;
    for (std::int64_t now = 0; now < 10 * second; now += second / 10) {
        lowest = std::min(lowest, cursor_at(one, now).values[0]);
        highest = std::max(highest, cursor_at(one, now).values[0]);
    }
    EXPECT_GT(highest - lowest, 0.1F);
}

TEST(two_devices, never_show_the_same) {
    const std::vector<device> devices = make_devices(8, 8);
    for (std::int64_t now = 0; now < 30 * second; now += second / 7) {
        std::set<std::string> cursors;
        std::set<std::string> orientations;
        std::set<std::string> currents;
        std::set<std::string> grips;
        for (const device& one : devices) {
            const auto bytes_of = [](const auto& value) {
                return std::string(reinterpret_cast<const char*>(&value), sizeof value);
            };
            if (one.is_orvanta3()) {
                cursors.insert(bytes_of(cursor_at(one, now)));
                orientations.insert(bytes_of(orientation_at(one, now)));
                currents.insert(bytes_of(motor_current_at(one, now)));
            } else {
                grips.insert(bytes_of(grip_at(one, now)));
            }
        }
        EXPECT_EQ(cursors.size(), 8U);
        EXPECT_EQ(orientations.size(), 8U);
        EXPECT_EQ(currents.size(), 8U);
        EXPECT_EQ(grips.size(), 8U);
    }
}

TEST(an_orientation, is_a_unit_quaternion_at_all_times) {
    for (const device& one : make_devices(4, 0)) {
        for (std::int64_t now = 0; now < 1000 * second; now += second * 13 / 7) {
            const vantu_orvanta_orientation at = orientation_at(one, now);
            EXPECT_NEAR(at.r * at.r + at.x * at.x + at.y * at.y + at.z * at.z, 1.0F, 1e-6F);
        }
    }
}

TEST(currents, stay_plausible) {
    for (const device& one : make_devices(4, 0)) {
        for (std::int64_t now = 0; now < 100 * second; now += second / 3) {
            for (const float ampere : motor_current_at(one, now).values) {
                EXPECT_GT(ampere, 0.0F);
                EXPECT_LT(ampere, 1.0F);
            }
        }
    }
}

TEST(a_grip, tells_a_unit_quaternion_and_counts_its_tail) {
    const device grip = make_devices(0, 1)[0];
    for (std::int64_t now = 0; now < 20 * second; now += second / 3) {
        const grip_state state = grip_at(grip, now);
        EXPECT_LE(state.head.first, 1);
        EXPECT_EQ(state.head.tail_count, state.tail.size());
        float parts[4];
        std::memcpy(parts, state.head.block, sizeof parts);
        EXPECT_NEAR(parts[0] * parts[0] + parts[1] * parts[1] + parts[2] * parts[2] + parts[3] * parts[3],
                    1.0F, 1e-6F);
    }
}

TEST(motion, goes_on_when_the_clock_has_run_for_years) {
    const device one = make_devices(1, 0)[0];
    const std::int64_t late = 9'000'000'000 * second;
    EXPECT_LE(std::abs(cursor_at(one, late).values[0]), 0.1F);
    EXPECT_NE(std::memcmp(cursor_at(one, late).values, cursor_at(one, late + second).values, 24), 0);
}

} // namespace
} // namespace simulator_tests
