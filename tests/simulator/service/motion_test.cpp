// How the simulated devices move, and the currents that it takes.
#include "simulator/service/motion.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <set>
#include <string>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::Each;
using testing::FloatNear;
using testing::Gt;
using testing::Lt;
using vantu::orvanta::ns_per_second;

constexpr std::int64_t hour = 3600 * ns_per_second;
constexpr std::uint8_t left = 2;

device nth_orvanta3(std::uint32_t place, configuration settings = {}) {
    device made = make_device(1, place);
    made.settings = settings;
    return made;
}

configuration left_handed() {
    configuration settings;
    settings.handedness = left;
    return settings;
}

configuration with_gravity(bool on, float factor, bool torque_scaling = true) {
    configuration settings;
    settings.gravity_compensation = on;
    settings.scaling_factor = factor;
    settings.torque_scaling = torque_scaling;
    return settings;
}

// The values as arrays, which can be handed on.
std::array<float, 6> cursor_of(const device& which, std::int64_t now_ns) {
    const auto told = cursor_at(which, now_ns);
    return std::to_array(told.values);
}

std::array<float, 3> currents_of(const device& which, std::int64_t now_ns) {
    const auto told = motor_current_at(which, now_ns);
    return std::to_array(told.values);
}

// By the formulas, worked out by hand for the first Orvanta3 at the start.
TEST(motion, begins_as_the_formulas_say) {
    const auto cursor = cursor_at(nth_orvanta3(0), 0);
    const float expected[]{0.0405294F, 0.0010819F, -0.0322632F, -0.0694954F, -0.1256343F, -0.0222848F};
    EXPECT_THAT(cursor.values, testing::Pointwise(FloatNear(1e-6F), expected));

    const auto turned = orientation_at(nth_orvanta3(0), 0);
    EXPECT_NEAR(turned.r, 0.9910655F, 1e-6F);
    EXPECT_NEAR(turned.x, -0.0471502F, 1e-6F);
    EXPECT_NEAR(turned.y, 0.0431934F, 1e-6F);
    EXPECT_NEAR(turned.z, 0.1170483F, 1e-6F);

    const auto currents = motor_current_at(nth_orvanta3(0), 0);
    const float amperes[]{-0.0323394F, 0.1680837F, 0.0429294F};
    EXPECT_THAT(currents.values, testing::Pointwise(FloatNear(1e-6F), amperes));

    const grip_state grip = grip_at(make_device(2, 0), 0);
    EXPECT_EQ(grip.head.first, 0);
    EXPECT_THAT(grip.tail,
                testing::ElementsAre(std::byte{214}, std::byte{231}, std::byte{243}, std::byte{252}));
}

TEST(a_cursor, stays_within_the_reach_of_its_device_for_an_hour) {
    for (const std::uint32_t place : {0U, 1U, 7U}) {
        for (const configuration& settings : {configuration(), left_handed()}) {
            const device one = nth_orvanta3(place, settings);
            double farthest = 0;
            for (std::int64_t now = 0; now < hour; now += ns_per_second / 10) {
                const auto at = cursor_of(one, now);
                farthest = std::max(farthest, std::hypot(at[0] - 0.25 * place, at[1], at[2]));
            }
            EXPECT_LE(farthest, 0.1);
            EXPECT_GT(farthest, 0.07);
        }
    }
}

TEST(a_cursor, tells_the_velocity_with_which_it_moves) {
    constexpr std::int64_t step = ns_per_second / 100;
    for (const configuration& settings : {configuration(), left_handed()}) {
        const device one = nth_orvanta3(0, settings);
        for (std::int64_t now = step; now < 600 * ns_per_second; now += 37 * step) {
            const auto before = cursor_at(one, now - step);
            const auto here = cursor_at(one, now);
            const auto after = cursor_at(one, now + step);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const float difference = (after.values[axis] - before.values[axis]) / 0.02F;
                ASSERT_NEAR(here.values[3 + axis], difference, 2e-4F) << axis << " at " << now;
            }
        }
    }
}

TEST(a_cursor, does_move_along_every_axis) {
    const device one = nth_orvanta3(0);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        float lowest = 1;
        float highest = -1;
        for (std::int64_t now = 0; now < 10 * ns_per_second; now += ns_per_second / 10) {
            lowest = std::min(lowest, cursor_of(one, now)[axis]);
            highest = std::max(highest, cursor_of(one, now)[axis]);
        }
        EXPECT_GT(highest - lowest, 0.07F);
    }
}

TEST(handedness, mirrors_path_velocity_and_orientation) {
    for (const std::uint32_t place : {0U, 3U}) {
        const float centre = 0.25F * static_cast<float>(place);
        for (std::int64_t now = 0; now < 60 * ns_per_second; now += ns_per_second * 13 / 7) {
            const auto right_cursor = cursor_of(nth_orvanta3(place), now);
            const auto left_cursor = cursor_of(nth_orvanta3(place, left_handed()), now);
            const float mirrored[]{2 * centre - right_cursor[0],
                                   right_cursor[1],
                                   right_cursor[2],
                                   -right_cursor[3],
                                   right_cursor[4],
                                   right_cursor[5]};
            for (std::size_t i = 0; i < 6; ++i) {
                EXPECT_NEAR(left_cursor[i], mirrored[i], 1e-6F) << i;
            }
            const auto right_turn = orientation_at(nth_orvanta3(place), now);
            const auto left_turn = orientation_at(nth_orvanta3(place, left_handed()), now);
            EXPECT_EQ(left_turn.r, right_turn.r);
            EXPECT_EQ(left_turn.x, right_turn.x);
            EXPECT_EQ(left_turn.y, -right_turn.y);
            EXPECT_EQ(left_turn.z, -right_turn.z);
        }
    }
}

TEST(an_orientation, is_a_unit_quaternion_for_an_hour) {
    for (const std::uint32_t place : {0U, 1U, 15U, 255U}) {
        for (const configuration& settings : {configuration(), left_handed()}) {
            const device one = nth_orvanta3(place, settings);
            double farthest = 0;
            for (std::int64_t now = 0; now < hour; now += ns_per_second / 10) {
                const auto at = orientation_at(one, now);
                const double norm =
                    std::sqrt(static_cast<double>(at.r) * at.r + static_cast<double>(at.x) * at.x +
                              static_cast<double>(at.y) * at.y + static_cast<double>(at.z) * at.z);
                farthest = std::max(farthest, std::abs(norm - 1));
            }
            EXPECT_LE(farthest, 1e-6);
        }
    }
}

TEST(currents, grow_with_the_factor_where_a_motor_carries_weight) {
    for (std::int64_t now = 0; now < 100 * ns_per_second; now += ns_per_second * 3) {
        auto last = currents_of(nth_orvanta3(0, with_gravity(true, 0)), now);
        for (int tenths = 1; tenths <= 10; ++tenths) {
            const float factor = static_cast<float>(tenths) / 10;
            const auto next = currents_of(nth_orvanta3(0, with_gravity(true, factor)), now);
            EXPECT_EQ(next[0], last[0]);
            EXPECT_GT(next[1], last[1]);
            EXPECT_GT(next[2], last[2]);
            last = next;
        }
    }
}

TEST(currents, of_a_factor_of_0_are_those_without_gravity_compensation) {
    for (std::int64_t now = 0; now < 100 * ns_per_second; now += ns_per_second / 3) {
        const auto none = motor_current_at(nth_orvanta3(0, with_gravity(true, 0)), now);
        const auto off = motor_current_at(nth_orvanta3(0, with_gravity(false, 1)), now);
        EXPECT_EQ(std::memcmp(&none, &off, sizeof none), 0);
        // Friction alone: no more than (0.02 + 0.1 * 0.126) * 0.6 / 0.5.
        EXPECT_THAT(off.values, Each(testing::AllOf(Gt(-0.04F), Lt(0.04F))));
    }
}

TEST(currents, take_six_tenths_with_torque_scaling) {
    for (std::int64_t now = 0; now < 100 * ns_per_second; now += ns_per_second / 3) {
        const auto scaled = motor_current_at(nth_orvanta3(0, with_gravity(true, 0.75F, true)), now);
        const auto whole = motor_current_at(nth_orvanta3(0, with_gravity(true, 0.75F, false)), now);
        for (int motor = 0; motor < 3; ++motor) {
            EXPECT_NEAR(scaled.values[motor], 0.6F * whole.values[motor], 1e-6F);
        }
    }
}

TEST(currents, stay_plausible) {
    for (const device& one : make_devices(4, 0)) {
        for (std::int64_t now = 0; now < 100 * ns_per_second; now += ns_per_second / 3) {
            EXPECT_THAT(currents_of(one, now), Each(testing::AllOf(Gt(-1.0F), Lt(1.0F))));
        }
    }
}

template <typename Value> std::string bytes_of(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

TEST(sixteen_devices, never_show_the_same_whatever_their_hands) {
    std::vector<device> devices = make_devices(16, 16);
    for (std::size_t i = 0; i < devices.size(); i += 3) {
        devices[i].settings.handedness = left;
    }
    for (device& one : devices) {
        one.settings.gravity_compensation = one.id % 2 == 0;
    }
    for (std::int64_t now = 0; now < hour; now += ns_per_second * 7 / 10) {
        std::set<std::string> cursors;
        std::set<std::string> orientations;
        std::set<std::string> currents;
        std::set<std::string> grips;
        for (const device& one : devices) {
            if (one.is_orvanta3()) {
                cursors.insert(bytes_of(cursor_at(one, now)));
                orientations.insert(bytes_of(orientation_at(one, now)));
                currents.insert(bytes_of(motor_current_at(one, now)));
            } else {
                grips.insert(bytes_of(grip_at(one, now)));
            }
        }
        ASSERT_EQ(cursors.size(), 16U) << now;
        ASSERT_EQ(orientations.size(), 16U) << now;
        ASSERT_EQ(currents.size(), 16U) << now;
        ASSERT_EQ(grips.size(), 16U) << now;
    }
}

TEST(a_grip, tells_a_unit_quaternion_and_counts_its_tail) {
    const device grip = make_device(2, 0);
    for (std::int64_t now = 0; now < 20 * ns_per_second; now += ns_per_second / 3) {
        const grip_state state = grip_at(grip, now);
        EXPECT_EQ(state.head.tail_count, 4);
        float parts[4];
        std::memcpy(parts, state.head.block, sizeof parts);
        EXPECT_NEAR(parts[0] * parts[0] + parts[1] * parts[1] + parts[2] * parts[2] + parts[3] * parts[3],
                    1.0F, 1e-6F);
    }
}

TEST(a_grip, closes_and_opens_and_presses_the_button_when_closed) {
    const device grip = make_device(2, 0);
    std::array<std::set<int>, 4> pressures;
    int pressed = 0;
    int presses = 0;
    int last = 0;
    for (std::int64_t now = 0; now < 50 * ns_per_second; now += ns_per_second / 100) {
        const grip_state state = grip_at(grip, now);
        for (std::size_t finger = 0; finger < 4; ++finger) {
            pressures[finger].insert(static_cast<int>(state.tail[finger]));
        }
        ASSERT_LE(state.head.first, 1);
        // 0.9 of 255 is 229.5.
        EXPECT_EQ(state.head.first, static_cast<int>(state.tail[0]) >= 230 ? 1 : 0);
        pressed += state.head.first;
        presses += state.head.first > last ? 1 : 0;
        last = state.head.first;
    }
    for (const std::set<int>& finger : pressures) {
        EXPECT_EQ(*finger.begin(), 0);
        EXPECT_EQ(*finger.rbegin(), 255);
    }
    EXPECT_EQ(presses, 10); // at 0.2 Hz
    EXPECT_NEAR(pressed / 5000.0, 0.205, 0.002);
}

TEST(motion, goes_on_when_the_clock_has_run_for_years) {
    const device one = nth_orvanta3(0);
    const std::int64_t late = 9'000'000'000 * ns_per_second;
    EXPECT_LE(std::abs(cursor_of(one, late)[0]), 0.1F);
    EXPECT_NE(cursor_of(one, late), cursor_of(one, late + ns_per_second));
}

} // namespace
} // namespace orvanta_tests
