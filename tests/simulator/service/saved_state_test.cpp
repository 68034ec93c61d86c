// The file of saved configurations: round trips, wrong files, failures to write.
#include "simulator/service/saved_state.hpp"

#include "shared/durable_file.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <stdexcept>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* first_uuid = "6e2b84105f3c4d719a03c53800000001";

class state_file : public testing::Test {
  protected:
    void write(const std::string& text) const { std::ofstream(path, std::ios::binary) << text; }
    [[nodiscard]] std::string read() const {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    [[nodiscard]] std::string refusal_of_load() const {
        try {
            const saved_state state(path);
        } catch (const std::exception& wrong) {
            return wrong.what();
        }
        return "";
    }
    [[nodiscard]] std::size_t files() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }

    scratch_folder folder;
    std::string path{folder.file("state.json")};
};

configuration unusual() {
    return {false, 0.1F, false, 2};
}

std::string file_of(const std::string& device) {
    return R"({"version": 1, "devices": {")" + std::string(first_uuid) + "\": " + device + "}}";
}

TEST_F(state_file, that_is_not_there_leaves_the_devices_as_they_are_and_is_not_made) {
    std::vector<device> devices = make_devices(1, 0);
    devices[0].settings = unusual();
    saved_state(path).apply_to(devices);
    EXPECT_EQ(devices[0].settings, unusual());
    EXPECT_EQ(files(), 0U);
}

TEST_F(state_file, gives_back_to_the_digit_what_was_saved) {
    std::vector<device> devices = make_devices(2, 1);
    devices[1].settings = unusual();
    EXPECT_EQ(saved_state(path).keep(devices[1]), "");
    std::vector<device> later = make_devices(2, 1);
    saved_state(path).apply_to(later);
    EXPECT_EQ(later[0].settings, configuration{});
    EXPECT_EQ(later[1].settings, unusual());
    EXPECT_EQ(files(), 1U);
}

TEST_F(state_file, has_this_text) {
    std::vector<device> devices = make_devices(1, 0);
    EXPECT_EQ(saved_state(path).keep(devices[0]), "");
    EXPECT_EQ(read(), R"({
  "version": 1,
  "devices": {
    "6e2b84105f3c4d719a03c53800000001": {"gravity_compensation": {"enabled": true, "scaling_factor": 0.75}, "torque_scaling": {"enabled": true}, "handedness": "right"}
  }
}
)");
}

TEST_F(state_file, leaves_as_from_the_factory_what_a_configuration_lacks) {
    write(file_of(R"({"gravity_compensation": {"scaling_factor": 0.25}})"));
    std::vector<device> devices = make_devices(1, 0);
    devices[0].settings = unusual();
    saved_state(path).apply_to(devices);
    EXPECT_EQ(devices[0].settings, (configuration{true, 0.25F, true, 1}));
}

TEST_F(state_file, keeps_devices_that_are_not_simulated_this_time) {
    std::vector<device> two = make_devices(2, 0);
    two[1].settings = unusual();
    EXPECT_EQ(saved_state(path).keep(two[1]), "");
    EXPECT_EQ(saved_state(path).keep(make_devices(1, 0)[0]), "");
    std::vector<device> later = make_devices(2, 0);
    saved_state(path).apply_to(later);
    EXPECT_EQ(later[1].settings, unusual());
}

TEST_F(state_file, keeps_what_was_saved_last) {
    saved_state state(path);
    std::vector<device> devices = make_devices(1, 0);
    for (const float factor : {0.0F, 1.0F, 0.3F}) {
        devices[0].settings.scaling_factor = factor;
        EXPECT_EQ(state.keep(devices[0]), "");
    }
    std::vector<device> later = make_devices(1, 0);
    saved_state(path).apply_to(later);
    EXPECT_EQ(later[0].settings.scaling_factor, 0.3F);
}

TEST_F(state_file, without_its_folder_is_refused_at_the_start) {
    path = (folder.path() / "nowhere" / "state.json").string();
    EXPECT_EQ(refusal_of_load(), path + ": its folder is not there");
}

TEST_F(state_file, that_is_a_folder_is_refused) {
    path = folder.path().string();
    EXPECT_EQ(refusal_of_load(), path + ": no regular file");
}

TEST_F(state_file, that_cannot_be_replaced_is_told_and_stays_as_it_is) {
    std::vector<device> devices = make_devices(1, 0);
    saved_state state(path);
    ASSERT_EQ(state.keep(devices[0]), "");
    const std::string before = read();
    std::filesystem::create_directory(path + ".new");
    devices[0].settings = unusual();
    EXPECT_THAT(state.keep(devices[0]), StartsWith("cannot create " + path + ".new: "));
    EXPECT_EQ(read(), before);
    std::filesystem::remove(path + ".new");
    // A configuration that failed is not saved along with the next device.
    EXPECT_EQ(state.keep(make_devices(2, 0)[1]), "");
    std::vector<device> later = make_devices(1, 0);
    saved_state(path).apply_to(later);
    EXPECT_EQ(later[0].settings, configuration{});
}

TEST_F(state_file, cannot_replace_a_folder_and_leaves_no_temporary_file) {
    std::filesystem::create_directory(path);
    EXPECT_THAT(replace_file(path, "text"), StartsWith("cannot replace " + path + ": "));
    EXPECT_EQ(files(), 1U);
}

TEST_F(state_file, that_is_wrong_is_told_in_one_line_with_path_and_reason) {
    const std::string place = std::string("device ") + first_uuid;
    const auto gravity = [&](const std::string& value) {
        return file_of("{\"gravity_compensation\": " + value + "}");
    };
    const std::pair<std::string, std::string> cases[] = {
        {"", "1: syntax error while parsing "},
        {"{\"version\": 1,\n \"devices\": {", "2: syntax error while parsing "},
        {"\xFF\xFE", "1: syntax error while parsing "},
        {"[]", "1: the whole is an array; an object with \"version\" and \"devices\" would be right"},
        {"{}", "1: the whole has no \"version\"; it needs one"},
        {R"({"version": 1})", "1: the whole has no \"devices\"; it needs one"},
        {R"({"version": 2, "devices": {}})", "1: version is 2; 1 would be right"},
        {R"({"version": "1", "devices": {}})", "1: version is \"1\"; 1 would be right"},
        {"{\"version\": 1,\n\"devices\": []}", "2: devices is an array; an object would be right"},
        {R"({"version": 1, "devices": {}, "more": 0})", "1: the whole has an unknown member \"more\"; "},
        {R"({"version": 1, "devices": {}, "two\nlines": 0})",
         "1: the whole has an unknown member \"two?lines\"; "},
        {"{\"version\": 1, \"devices\": {}, \"a\x7F\": 0}", "1: the whole has an unknown member \"a?\"; "},
        {"{\"version\": \x7F}", "1: syntax error while parsing "},
        {R"({"version": 1, "devices": {"1": {}}})",
         "1: \"1\" is no device; 32 hexadecimal digits in lower case would be right"},
        {file_of("3"), "1: " + place + " is 3; an object with "},
        {file_of(R"({"handedness": "up"})"),
         "1: " + place + " handedness is \"up\"; \"right\" or \"left\" would be right"},
        {file_of(R"({"torque_scaling": {"enabled": 1}})"),
         "1: " + place + " torque_scaling enabled is 1; true or false would be right"},
        {gravity(R"({"enabled": "yes"})"),
         "1: " + place + " gravity_compensation enabled is \"yes\"; true or false would be right"},
        {gravity(R"({"scaling_factor": 1.5})"),
         "1: " + place + " gravity_compensation scaling_factor is 1.5; a number from 0 to 1 would be right"},
        {gravity(R"({"scaling_factor": -0.5})"),
         "1: " + place + " gravity_compensation scaling_factor is -0.5; "},
        {gravity(R"({"scaling_factor": 1e300})"),
         "1: " + place + " gravity_compensation scaling_factor is 1e+300; "},
        {gravity(R"({"scaling_factor": null})"),
         "1: " + place + " gravity_compensation scaling_factor is null; "},
        {gravity(R"({"scaling_factor": 1e999})"), "1: "},
        {R"({"version": 1e999, "devices": {}})", "1: "},
    };
    for (const auto& [text, reason] : cases) {
        write(text);
        const std::string refused = refusal_of_load();
        EXPECT_THAT(refused, StartsWith(path + ":" + reason)) << text;
        EXPECT_THAT(refused, Not(HasSubstr("\n")));
        EXPECT_THAT(refused, Not(HasSubstr("\x7F")));
        EXPECT_EQ(read(), text);
    }
}

} // namespace
} // namespace orvanta_tests
