// Reading scenarios: what they hold, and what is said of wrong ones.
#include "simulator/control/scenario.hpp"

#include "simulator/fixtures/scenario_complaints.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <random>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST(a_scenario, may_say_next_to_nothing) {
    const scenario read = read_scenario_text("{\"version\": 1}");
    EXPECT_EQ(read.about, "");
    EXPECT_FALSE(read.settings.seed);
    EXPECT_FALSE(read.devices);
    EXPECT_THAT(read.steps, IsEmpty());
}

TEST(a_scenario, says_what_it_shows_its_seed_and_that_there_are_no_devices) {
    const scenario read = read_scenario_text(
        R"({"version": 1, "about": "An empty desk.", "seed": 18446744073709551615, "devices": [], "steps": []})");
    EXPECT_EQ(read.about, "An empty desk.");
    EXPECT_EQ(read.settings.seed, 18446744073709551615U);
    ASSERT_TRUE(read.devices);
    EXPECT_THAT(*read.devices, IsEmpty());
}

TEST(a_scenario, leaves_out_each_setting_that_it_does_not_name) {
    const scenario read = read_scenario_text("{\"version\": 1}");
    const service_simulator::settings& settings = read.settings;
    EXPECT_FALSE(settings.port || settings.orvanta3_count || settings.palmetron_count || settings.devices ||
                 settings.single_client || settings.rate_hz || settings.seed);
    EXPECT_EQ(settings.state_path + settings.capture_path + read.trace_path, "");
    EXPECT_THAT(settings.faults, IsEmpty());
    EXPECT_FALSE(read.verbose || read.for_each_client);
}

TEST(a_scenario, sets_what_options_set) {
    const scenario read = read_scenario_text(R"({"version": 1, "port": 65535, "orvanta3": 256, "palmetron": 0,
        "announce": "after", "single_client": true, "rate": 0.5, "state": "a", "capture": "b", "trace": "-",
        "faults": ["drop 0.05", "restart"], "verbose": true})");
    EXPECT_EQ(read.settings.port, "65535");
    EXPECT_EQ(read.settings.orvanta3_count, 256U);
    EXPECT_EQ(read.settings.palmetron_count, 0U);
    EXPECT_EQ(read.settings.devices, service_simulator::announce::after);
    EXPECT_EQ(read.settings.single_client, true);
    EXPECT_EQ(read.settings.rate_hz, 0.5);
    EXPECT_EQ(read.settings.state_path, "a");
    EXPECT_EQ(read.settings.capture_path, "b");
    EXPECT_THAT(read.settings.faults, ElementsAre("drop 0.05", "restart"));
    EXPECT_EQ(read.trace_path, "-");
    EXPECT_TRUE(read.verbose);
    EXPECT_EQ(read_scenario_text(R"({"version": 1, "announce": "before"})").settings.devices,
              service_simulator::announce::before);
    EXPECT_EQ(read_scenario_text(R"({"version": 1, "single_client": false})").settings.single_client, false);
}

TEST(a_scenario, with_a_wrong_setting_is_refused) {
    const auto complaint = [](const std::string& member) {
        return scenario_complaint("{\"version\": 1,\n\"" + member + "}");
    };
    EXPECT_EQ(complaint("port\": 65536"), "2: port is 65536; a whole number from 0 to 65535 would be right");
    EXPECT_EQ(complaint("orvanta3\": 257"),
              "2: orvanta3 is 257; a whole number from 0 to 256 would be right");
    EXPECT_EQ(complaint("palmetron\": \"1\""),
              "2: palmetron is \"1\"; a whole number from 0 to 256 would be right");
    EXPECT_EQ(complaint("announce\": \"now\""),
              "2: announce is \"now\"; \"before\" or \"after\" would be right");
    EXPECT_EQ(complaint("single_client\": 1"), "2: single_client is 1; true or false would be right");
    EXPECT_EQ(complaint("verbose\": \"yes\""), "2: verbose is \"yes\"; true or false would be right");
    EXPECT_EQ(complaint("rate\": 10001"), "2: rate is 10001; a number from 0 to 10000 would be right");
    EXPECT_EQ(complaint("rate\": \"100\""), "2: rate is \"100\"; a number from 0 to 10000 would be right");
    EXPECT_EQ(complaint("state\": 1"), "2: state is 1; the name of a file would be right");
    EXPECT_EQ(complaint("capture\": \"\""), "2: capture is empty; the name of a file would be right");
    EXPECT_EQ(complaint("trace\": \"\""), "2: trace is empty; the name of a file would be right");
    EXPECT_EQ(complaint("faults\": \"drop 0.05\""), "2: faults is \"drop 0.05\"; an array would be right");
    EXPECT_EQ(complaint("faults\": [\"drop 0.05\",\n5]"),
              "3: a fault is 5; a text as \"drop 0.05\" would be right");
    EXPECT_THAT(complaint("faults\": [\"drop 0.05\",\n\"drop 3\"]"),
                HasSubstr("3: faults: drop: '3' is no "));
    EXPECT_THAT(complaint("faults\": [\"plop 3\"]"), HasSubstr("2: faults: 'plop' is no fault; "));
    for (const std::string count : {"orvanta3", "palmetron"}) {
        EXPECT_EQ(scenario_complaint("{\"version\": 1, \"devices\": [],\n\"" + count + "\": 1}"),
                  "2: the scenario has \"" + count + "\" and \"devices\"; one of the two would be right");
    }
}

TEST(a_scenario, gives_devices_the_identities_of_their_places) {
    const scenario read = read_scenario_text(
        R"({"version": 1, "devices": [{"type": "palmetron"}, {"type": "orvanta3"}, {"type": "orvanta3"}]})");
    ASSERT_EQ(read.devices->size(), 3U);
    const device& second = (*read.devices)[1];
    EXPECT_EQ((*read.devices)[0].id, 1U);
    EXPECT_EQ(second.id, 2U);
    EXPECT_EQ(second.place, 1U);
    EXPECT_TRUE(second.is_orvanta3());
    EXPECT_EQ(second.description.short_id, 0x3002);
    EXPECT_EQ(uuid_text(second), "6e2b84105f3c4d719a03c53800000002");
    EXPECT_EQ(second.settings, configuration{});
    EXPECT_EQ((*read.devices)[2].id, 1001U);
    EXPECT_FALSE((*read.devices)[2].is_orvanta3());
}

TEST(a_scenario, gives_devices_other_identities_and_configurations) {
    const scenario read = read_scenario_text(R"({"version": 1, "devices": [
        {"type": "orvanta3", "id": 4294967295, "short_id": "bEEf",
         "uuid": "00112233-44556677-8899AABB-ccddeeff",
         "configuration": {"gravity_compensation": {"enabled": false, "scaling_factor": 0.25},
                           "torque_scaling": {"enabled": false}, "handedness": "left"}},
        {"type": "orvanta3", "configuration": {"gravity_compensation": {"scaling_factor": 1}}}]})");
    ASSERT_EQ(read.devices->size(), 2U);
    const device& second = (*read.devices)[0];
    EXPECT_EQ(second.id, 2U);
    EXPECT_EQ(second.settings, (configuration{true, 1.0F, true, 1}));
    const device& first = (*read.devices)[1];
    EXPECT_EQ(first.id, 4294967295U);
    EXPECT_EQ(first.description.short_id, 0xBEEF);
    EXPECT_EQ(uuid_text(first), "00112233445566778899aabbccddeeff");
    EXPECT_EQ(first.settings, (configuration{false, 0.25F, false, 2}));
}

TEST(a_scenario, that_is_no_json_text_is_refused_with_the_line) {
    EXPECT_THAT(scenario_complaint(""),
                HasSubstr("1: syntax error while parsing value - unexpected end of input"));
    EXPECT_THAT(scenario_complaint("{\"version\": 1,\n\n  \"steps\": oops}"), HasSubstr("3: syntax error"));
    EXPECT_THAT(scenario_complaint("{\"version\": 1,\n\"about\": \"no end\n}"), HasSubstr("2: syntax error"));
    EXPECT_THAT(
        scenario_complaint("{\"version\": 1,\n\"steps\": [],\n}\n\n"),
        HasSubstr("3: syntax error while parsing object key - unexpected '}'; expected string literal"));
    EXPECT_THAT(scenario_complaint("{\"version\": 1}\n\nmore"), HasSubstr("3: syntax error"));
    EXPECT_THAT(scenario_complaint("{\"version\": 1e999}"), HasSubstr("1: number overflow"));
    EXPECT_EQ(scenario_complaint("{\"version\": 1,\n\"version\": 1}"),
              "2: \"version\" stands twice in one object; once is right");
    EXPECT_EQ(scenario_complaint(std::string(100'000, '[')), "1: nested too deep; 16 levels are the most");
}

TEST(a_scenario, that_is_wrong_as_a_whole_is_refused) {
    EXPECT_THAT(scenario_complaint("[]"),
                StartsWith("1: the scenario is an array; an object with \"version\", \"about\", "));
    EXPECT_EQ(scenario_complaint("{}"), "1: the scenario has no \"version\"; it needs one");
    EXPECT_EQ(scenario_complaint("\n{\"version\"\n: 2\n}"), "3: version is 2; 1 would be right");
    EXPECT_THAT(scenario_complaint("{\"version\": 1,\n\"step\": []}"),
                StartsWith("2: the scenario has an unknown member \"step\"; it may have \"version\", "));
    EXPECT_EQ(scenario_complaint("{\"version\": 1,\n\"about\": 7}"), "2: about is 7; a text would be right");
    EXPECT_EQ(scenario_complaint("{\"version\": 1,\n\"seed\": -1}"),
              "2: seed is -1; a whole number from 0 to 18446744073709551615 would be right");
    EXPECT_EQ(scenario_complaint("{\"version\": 1,\n\"devices\": {}}"),
              "2: devices is an object; an array would be right");
    EXPECT_EQ(scenario_complaint("{\"version\": 1,\n\"steps\": null}"),
              "2: steps is null; an array would be right");
}

TEST(a_scenario, with_a_wrong_device_is_refused) {
    EXPECT_THAT(device_complaint("1"), HasSubstr("3: device 1 is 1; an object with \"type\""));
    EXPECT_EQ(device_complaint("{}"), "3: device 1 has no \"type\"; it needs one");
    EXPECT_EQ(device_complaint(R"({"type": "mouse"})"),
              "3: device 1 type is \"mouse\"; \"orvanta3\" or \"palmetron\" would be right");
    EXPECT_EQ(device_complaint("{\"type\": \"orvanta3\",\n\"id\":\n0}"),
              "5: device 1 id is 0; a whole number from 1 to 4294967295 would be right");
    EXPECT_THAT(device_complaint(R"({"type": "orvanta3", "id": 1.5})"), HasSubstr("3: device 1 id is 1.5;"));
    EXPECT_THAT(device_complaint(R"({"type": "orvanta3", "place": 1})"),
                HasSubstr("3: device 1 has an unknown member \"place\"; it may have \"type\", \"id\""));
    for (const char* wrong : {"\"300\"", "\"30011\"", "\"300g\"", "\" 300\"", "\"-300\"", "3001"}) {
        EXPECT_THAT(device_complaint(R"({"type": "orvanta3", "short_id": )" + std::string(wrong) + "}"),
                    HasSubstr("3: device 1 short_id is " + std::string(wrong) + "; four hexadecimal digits"));
    }
    for (const char* wrong :
         {"\"\"", "\"00112233-44556677-8899AABB-ccddeef\"", "\"00112233-44556677-8899AABB-ccddeefg\"",
          "\"00112233-44556677-8899AABB-ccddeeff0\"", "true"}) {
        EXPECT_THAT(device_complaint(R"({"type": "orvanta3", "uuid": )" + std::string(wrong) + "}"),
                    HasSubstr("3: device 1 uuid is " + std::string(wrong) + "; 32 hexadecimal digits"));
    }
}

TEST(a_scenario, with_a_wrong_configuration_is_refused) {
    const auto complaint = [](const std::string& text) {
        return device_complaint(R"({"type": "orvanta3", "configuration": )" + text + "}");
    };
    EXPECT_THAT(complaint("[]"), HasSubstr("3: device 1 configuration is an array; an object"));
    EXPECT_THAT(complaint(R"({"colour": 1})"), HasSubstr("configuration has an unknown member \"colour\""));
    EXPECT_EQ(complaint(R"({"handedness": "both"})"),
              "3: device 1 configuration handedness is \"both\"; \"right\" or \"left\" would be right");
    EXPECT_EQ(complaint(R"({"torque_scaling": {"enabled": 1}})"),
              "3: device 1 configuration torque_scaling enabled is 1; true or false would be right");
    EXPECT_THAT(complaint(R"({"torque_scaling": {"scaling_factor": 1}})"), HasSubstr("unknown member"));
    for (const char* wrong : {"1.01", "-0.5", "1e300", "\"1\""}) {
        EXPECT_THAT(complaint(R"({"gravity_compensation": {"scaling_factor": )" + std::string(wrong) + "}}"),
                    HasSubstr("gravity_compensation scaling_factor is "));
    }
}

TEST(a_scenario, with_two_devices_of_one_identity_is_refused) {
    EXPECT_EQ(device_complaint("{\"type\": \"orvanta3\"},\n{\"type\": \"palmetron\", \"id\": 1}"),
              "4: device 2 has the id of device 1; each device needs its own");
    EXPECT_EQ(device_complaint("{\"type\": \"orvanta3\", \"id\": 2},\n{\"type\": \"orvanta3\"}"),
              "4: device 2 has the id of device 1; each device needs its own");
    EXPECT_EQ(device_complaint("{\"type\": \"orvanta3\"},\n{\"type\": \"orvanta3\", \"short_id\": \"3001\"}"),
              "4: device 2 has the short_id of device 1; each device needs its own");
    EXPECT_EQ(device_complaint("{\"type\": \"orvanta3\"},\n{\"type\": \"orvanta3\",\n"
                               "\"uuid\": \"6E2B8410-5F3C4D71-9A03C538-00000001\"}"),
              "5: device 2 has the uuid of device 1; each device needs its own");
}

TEST(a_scenario, with_more_devices_than_there_can_be_is_refused) {
    std::string text = R"({"type": "orvanta3"})";
    for (int i = 1; i < 256; ++i) {
        text += R"(,{"type": "orvanta3"})";
    }
    EXPECT_EQ(device_complaint(text), "");
    EXPECT_EQ(device_complaint(text + R"(,{"type": "orvanta3"})"),
              "3: device 257 is one too many; 256 of a type are the most");
}

TEST(a_scenario, with_control_characters_is_refused_in_one_line) {
    EXPECT_THAT(scenario_complaint("{\"version\": 1, \"a\\nb\": 1}"), HasSubstr("unknown member \"a?b\""));
    EXPECT_THAT(scenario_complaint("{\"version\": 1, \"a\x7F\": 1}"), HasSubstr("unknown member \"a?\""));
    EXPECT_THAT(scenario_complaint("{\"version\": 1, \"a\": \x7F}"), HasSubstr("last read: '\"a\": ?'"));
}

TEST(a_scenario_file, that_is_wrong_is_named_with_path_and_line) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                       ("wrong_scenario_" + std::to_string(std::random_device{}()) + ".json");
    std::ofstream(path) << "{\n  \"version\": 1,\n  \"stops\": []\n}\n";
    try {
        (void)read_scenario(path.string());
        ADD_FAILURE() << "the file was taken";
    } catch (const std::runtime_error& wrong) {
        EXPECT_THAT(wrong.what(),
                    testing::StartsWith(path.string() + ":3: the scenario has an unknown member"));
    }
    std::filesystem::remove(path);
    try {
        (void)read_scenario(path.string());
        ADD_FAILURE() << "a file that is not there was read";
    } catch (const std::runtime_error& wrong) {
        EXPECT_EQ(wrong.what(),
                  path.string() + ": no file of that name; the path of a scenario would be right");
    }
}

} // namespace
} // namespace orvanta_tests
