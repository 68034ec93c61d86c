// Devices that come, go and remember, in a simulation.
#include "simulator/fixtures/simulation_fixture.hpp"
#include "support/scratch_folder.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <filesystem>
#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint8_t orvanta3 = 1;
constexpr std::uint8_t palmetron = 2;

// Gravity compensation on with a factor of 0.5; the answer that tells of it; that of a new device.
const bytes set_half{0x01, 0x00, 0x00, 0x00, 0x3F};
const bytes half_told =
    datagram({{0xFF, 0x42, 0x09, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x3F}});
const bytes factory_told =
    datagram({{0xFF, 0x42, 0x09, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x40, 0x3F}});

std::vector<std::uint32_t> ids_of(const simulation& tested) {
    std::vector<std::uint32_t> ids;
    for (const device& one : tested.devices()) {
        ids.push_back(one.id);
    }
    return ids;
}

TEST(a_device_unplugged, is_told_to_all_clients_and_closed_for_all) {
    simulation_fixture fixture;
    fixture.enter(1, {1, 1001});
    fixture.enter(2, {1});
    fixture.enter(3);
    ASSERT_TRUE(fixture.tested.unplug(1));
    EXPECT_THAT(fixture.take(),
                ElementsAre(sent{1, first_removed}, sent{2, first_removed}, sent{3, first_removed}));
    EXPECT_THAT(ids_of(fixture.tested), ElementsAre(1001));
    EXPECT_THAT(fixture.tested.clients()[0].opened, SizeIs(1));
    EXPECT_THAT(fixture.tested.clients()[1].opened, IsEmpty());
    for (const sent& one : fixture.wait(ns_per_second)) {
        EXPECT_EQ(one.to, 1U);
        EXPECT_EQ(one.content.at(7), 40);
    }
    EXPECT_THAT(fixture.send(1, request_of(0x2F, 9, 1)), ElementsAre(sent{1, refusal(9, 1, 0xC0)}));
    EXPECT_FALSE(fixture.tested.unplug(1));
    EXPECT_THAT(fixture.take(), IsEmpty());
}

TEST(a_device_plugged_in_again, is_the_same_one_and_not_opened) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fixture.enter(2);
    fixture.tested.unplug(1);
    fixture.take();
    EXPECT_EQ(fixture.tested.plug(orvanta3), 1U);
    const bytes listed = datagram({orvanta3_added, orvanta3_details});
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, listed}, sent{2, listed}));
    EXPECT_THAT(fixture.send(1, request_of(0x2F, 9, 1)), ElementsAre(sent{1, refusal(9, 1, 0xB1)}));
    EXPECT_THAT(fixture.wait(ns_per_second), IsEmpty());
}

TEST(a_device_plugged_in, takes_the_lowest_free_identity_of_its_type) {
    simulation_fixture fixture;
    EXPECT_EQ(fixture.tested.plug(orvanta3), 2U);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 3U);
    EXPECT_EQ(fixture.tested.plug(palmetron), 1002U);
    fixture.tested.unplug(2);
    fixture.tested.unplug(1);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 1U);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 2U);
    EXPECT_THAT(ids_of(fixture.tested), ElementsAre(1, 2, 3, 1001, 1002));
}

TEST(a_device_plugged_in, is_refused_beyond_256_of_its_type) {
    simulation_settings settings;
    settings.devices = make_devices(256, 0);
    simulation_fixture fixture(std::move(settings));
    EXPECT_EQ(fixture.tested.plug(orvanta3), 0U);
    EXPECT_EQ(fixture.tested.plug(palmetron), 1001U);
    fixture.tested.unplug(77);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 77U);
}

// An Orvanta3 of this id that says the first place is its own.
device own_device(std::uint32_t id) {
    device own = make_device(orvanta3, 0);
    own.id = id;
    own.settings.handedness = 2;
    return own;
}

TEST(a_device_of_ones_own, has_a_place_that_no_other_of_its_type_has) {
    simulation_settings settings;
    settings.devices = {make_device(orvanta3, 0), own_device(500)};
    simulation_fixture fixture(std::move(settings));
    EXPECT_EQ(fixture.tested.devices()[1].place, 1U);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 2U);
    EXPECT_EQ(fixture.tested.devices()[1].place, 2U);
    EXPECT_THAT(ids_of(fixture.tested), ElementsAre(1, 2, 500));
}

TEST(a_device_of_ones_own, comes_back_as_it_was) {
    simulation_settings settings;
    settings.devices = {make_device(orvanta3, 0), own_device(2)};
    simulation_fixture fixture(std::move(settings));
    fixture.tested.unplug(2);
    fixture.tested.unplug(1);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 1U);
    EXPECT_EQ(fixture.tested.plug(orvanta3), 2U);
    EXPECT_EQ(fixture.tested.devices()[1].place, 1U);
    EXPECT_EQ(fixture.tested.devices()[1].settings.handedness, 2);
}

TEST(a_restart, brings_back_what_was_saved_and_loses_what_was_only_set) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fixture.send(1, request_of(0x43, 1, 1, set_half));
    fixture.tested.restart();
    fixture.enter(1, {1});
    EXPECT_THAT(fixture.send(1, request_of(0x42, 5, 1)), ElementsAre(sent{1, factory_told}));

    fixture.send(1, request_of(0x43, 1, 1, set_half));
    EXPECT_THAT(
        fixture.send(1, request_of(0x40, 3, 1)),
        ElementsAre(sent{1, datagram({{0xFF, 0x40, 0x05, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00, 0x01}})}));
    fixture.send(1, request_of(0x43, 1, 1, {0x00, 0x00, 0x00, 0x00, 0x00}));
    fixture.tested.restart();
    fixture.enter(1, {1});
    EXPECT_THAT(fixture.send(1, request_of(0x42, 5, 1)), ElementsAre(sent{1, half_told}));
}

TEST(a_device_plugged_in_again, has_its_saved_configuration) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fixture.send(1, request_of(0x43, 1, 1, set_half));
    fixture.send(1, request_of(0x40, 3, 1));
    fixture.send(1, request_of(0x43, 1, 1, {0x00, 0x00, 0x00, 0x00, 0x00}));
    fixture.tested.unplug(1);
    fixture.tested.plug(orvanta3);
    fixture.take();
    fixture.send(1, open_request(0, 1));
    EXPECT_THAT(fixture.send(1, request_of(0x42, 5, 1)), ElementsAre(sent{1, half_told}));
}

TEST(a_configuration_set_by_hand, is_seen_by_clients_that_ask_and_its_hand_is_told_to_all) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    fixture.enter(2);
    configuration changed;
    changed.scaling_factor = 0.5F;
    EXPECT_TRUE(fixture.tested.configure(1, changed));
    EXPECT_THAT(fixture.take(), IsEmpty());
    EXPECT_THAT(fixture.send(1, request_of(0x42, 5, 1)), ElementsAre(sent{1, half_told}));
    changed.handedness = 2;
    EXPECT_TRUE(fixture.tested.configure(1, changed));
    bytes left_details = orvanta3_details;
    left_details.back() = 0x02;
    EXPECT_THAT(fixture.take(),
                ElementsAre(sent{1, datagram({left_details})}, sent{2, datagram({left_details})}));
    EXPECT_FALSE(fixture.tested.configure(99, changed));
    fixture.tested.restart();
    EXPECT_EQ(fixture.tested.devices()[0].settings, configuration());
}

class with_a_state_file : public testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder.file("state.json"); }

    scratch_folder folder;
};

TEST_F(with_a_state_file, what_is_saved_is_there_in_the_next_simulation) {
    {
        saved_state state(path());
        simulation_settings settings;
        settings.state = &state;
        simulation_fixture fixture(std::move(settings));
        fixture.enter(1, {1});
        fixture.send(1, request_of(0x43, 1, 1, set_half));
        fixture.send(1, request_of(0x40, 3, 1));
        fixture.send(1, request_of(0x43, 1, 1, {0x00, 0x00, 0x00, 0x00, 0x00}));
        fixture.tested.restart();
        EXPECT_EQ(fixture.tested.devices()[0].settings.scaling_factor, 0.5F);
        EXPECT_THAT(fixture.warnings, IsEmpty());
    }
    saved_state state(path());
    simulation_settings settings;
    settings.state = &state;
    simulation_fixture fixture(std::move(settings));
    fixture.enter(1, {1});
    EXPECT_THAT(fixture.send(1, request_of(0x42, 5, 1)), ElementsAre(sent{1, half_told}));
}

TEST_F(with_a_state_file, a_save_that_fails_is_refused_and_warned_of) {
    saved_state state(path());
    simulation_settings settings;
    settings.state = &state;
    simulation_fixture fixture(std::move(settings));
    fixture.enter(1, {1});
    std::filesystem::create_directory(path() + ".new");
    EXPECT_THAT(fixture.send(1, request_of(0x40, 3, 1)), ElementsAre(sent{1, refusal(3, 1, 0xD0)}));
    EXPECT_THAT(fixture.warnings, SizeIs(1));
}

} // namespace
} // namespace orvanta_tests
