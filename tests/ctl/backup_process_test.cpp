// orvantactl backup, restore and diff beside the simulator.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/settings_files.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;

constexpr const char* settings_of_a_new_device = R"({
  "schema": "orvanta-backup",
  "version": 1,
  "device": {
    "uuid": "6e2b8410-5f3c-4d71-9a03-c53800000001",
    "type": "orvanta3",
    "short_id": "3001"
  },
  "settings": {
    "gravity-compensation": true,
    "scaling-factor": 0.75,
    "torque-scaling": true,
    "handedness": "right"
  }
}
)";

// A path as JSON has it.
std::string as_json(const std::string& path) {
    std::string text;
    for (const char letter : path) {
        text += letter == '\\' ? "\\\\" : std::string(1, letter);
    }
    return "\"" + text + "\"";
}

// A file with the settings of a new device, and what differs from it after all was changed.
class backups : public testing::Test {
  protected:
    backups() : file(folder.file("desk.json")) { write_file(file, settings_of_a_new_device); }

    static void change_everything() {
        EXPECT_EQ(ctl({"set", "gravity-compensation=off", "scaling-factor=0.5", "torque-scaling=off",
                       "handedness=left"})
                      .end,
                  succeeded);
    }
    static std::string settings_now() {
        return ctl({"get", "gravity-compensation", "scaling-factor", "torque-scaling", "handedness",
                    "--device", "1"})
            .output;
    }

    scratch_folder folder;
    std::string file;
};

TEST_F(backups, hold_every_setting) {
    service_process service;
    const std::string other = folder.file("other.json");
    const run_of_a_program run = ctl({"backup", other});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output,
              "gravity-compensation=on\nscaling-factor=0.75\ntorque-scaling=on\nhandedness=right\n");
    EXPECT_EQ(content_of(other), settings_of_a_new_device);
    EXPECT_EQ(ctl({"backup", other, "--json"}).output,
              std::string(R"({"device":)") + first_device + R"(,"file":)" + as_json(other) +
                  R"(,"settings":{"gravity-compensation":true,"scaling-factor":0.75,)"
                  R"("torque-scaling":true,"handedness":"right"}})"
                  "\n");
}

TEST_F(backups, leave_the_old_file_when_an_answer_is_lost) {
    service_process service({"--drop", "@op=68,dir=out"});
    write_file(file, "old");
    EXPECT_EQ(ctl({"backup", file, "--timeout", "300ms"}).end, status(exit_status::timed_out));
    EXPECT_EQ(content_of(file), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST_F(backups, that_cannot_be_written_fail) {
    service_process service;
    const run_of_a_program run = ctl({"backup", folder.file("none/desk.json")});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, testing::StartsWith("orvantactl: cannot create "));
}

TEST_F(backups, are_compared_and_restored) {
    service_process service;
    change_everything();
    run_of_a_program run = ctl({"diff", file});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "gravity-compensation: file on, device off\nscaling-factor: file 0.75, device 0.5\n"
                          "torque-scaling: file on, device off\nhandedness: file right, device left\n");
    run = ctl({"restore", file, "--save"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "gravity-compensation: off -> on\nscaling-factor: 0.5 -> 0.75\n"
                          "torque-scaling: off -> on\nhandedness: left -> right\nsaved\n");
    run = ctl({"diff", file});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(ctl({"restore", file}).output,
              "gravity-compensation: on (unchanged)\nscaling-factor: 0.75 (unchanged)\n"
              "torque-scaling: on (unchanged)\nhandedness: right (unchanged)\n");
}

TEST_F(backups, are_compared_in_json) {
    service_process service;
    EXPECT_EQ(ctl({"set", "scaling-factor=0.1"}).end, succeeded);
    const std::string beginning = std::string(R"({"device":)") + first_device + R"(,"file":)" +
                                  as_json(file) + R"(,"same_device":true,)";
    EXPECT_EQ(ctl({"diff", file, "--json"}).output,
              beginning + R"("differences":[{"key":"scaling-factor","file":0.75,"device":0.1}]})" + "\n");
    EXPECT_EQ(ctl({"restore", file, "--json"}).output,
              std::string(R"({"device":)") + first_device +
                  R"(,"dry_run":false,"changes":[{"key":"gravity-compensation","old":true,"new":true},)"
                  R"({"key":"scaling-factor","old":0.1,"new":0.75},)"
                  R"({"key":"torque-scaling","old":true,"new":true},)"
                  R"({"key":"handedness","old":"right","new":"right"}],"saved":false})"
                  "\n");
    EXPECT_EQ(ctl({"diff", file, "--json"}).output, beginning + R"("differences":[]})" + "\n");
}

TEST_F(backups, find_their_own_device_among_several) {
    service_process service({"--orvanta3", "2"});
    EXPECT_EQ(ctl({"set", "scaling-factor=0.1", "--device", "1"}).end, succeeded);
    EXPECT_EQ(ctl({"set", "scaling-factor=0.2", "--device", "2"}).end, succeeded);
    EXPECT_EQ(ctl({"diff", file}).output, "scaling-factor: file 0.75, device 0.1\n");
    EXPECT_EQ(ctl({"restore", file}).end, succeeded);
    EXPECT_EQ(ctl({"get", "scaling-factor", "--device", "1"}).output, "0.75\n");
    EXPECT_EQ(ctl({"get", "scaling-factor", "--device", "2"}).output, "0.2\n");
}

TEST_F(backups, of_another_device_are_restored_only_when_told) {
    service_process service({"--orvanta3", "2"});
    EXPECT_EQ(ctl({"set", "scaling-factor=0.2", "--device", "2"}).end, succeeded);
    const std::string whose = file + ": this is the backup of another device "
                                     "(orvanta3 3001, 6e2b8410-5f3c-4d71-9a03-c53800000001)";
    run_of_a_program run = ctl({"restore", file, "--device", "2"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: " + whose + "; --other-device restores it nevertheless\n");
    EXPECT_EQ(ctl({"get", "scaling-factor", "--device", "2"}).output, "0.2\n");
    run = ctl({"diff", file, "--device", "2"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "scaling-factor: file 0.75, device 0.2\n");
    EXPECT_EQ(run.errors, "orvantactl: " + whose + "\n");
    EXPECT_EQ(ctl({"restore", file, "--device", "2", "--other-device"}).end, succeeded);
    EXPECT_EQ(ctl({"get", "scaling-factor", "--device", "2"}).output, "0.75\n");
}

TEST_F(backups, are_put_back_when_a_setting_is_refused) {
    service_process service({"--error", "0xD0@op=71,nth=2"});
    change_everything();
    const std::string before = settings_now();
    const run_of_a_program run = ctl({"restore", file, "--save"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors,
              "orvantactl: handedness was not set: set_handedness of device 1: communication error with "
              "device; set before: gravity-compensation: off -> on, scaling-factor: 0.5 -> 0.75, "
              "torque-scaling: off -> on; torque-scaling put back; gravity-compensation and "
              "scaling-factor put back\n");
    EXPECT_EQ(settings_now(), before);
}

TEST_F(backups, are_put_back_when_an_answer_is_lost) {
    // The answers about the torque scaling: to the set, to the question, to the set of the restore.
    // The others take 30 ms, so that time for the way back must be left.
    service_process service({"--drop", "@op=68,dir=out,nth=4", "--delay", "30-30@op=68,dir=out"});
    change_everything();
    const std::string before =
        "gravity-compensation=off\nscaling-factor=0.5\ntorque-scaling=off\nhandedness=left\n";
    const run_of_a_program run = ctl({"restore", file});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors,
              "orvantactl: torque-scaling may be set or not: set_torque_scaling of device 1: operation "
              "timed out; set before: gravity-compensation: off -> on, scaling-factor: 0.5 -> 0.75; "
              "torque-scaling put back; gravity-compensation and scaling-factor put back\n");
    EXPECT_EQ(settings_now(), before);
}

TEST_F(backups, say_what_could_not_be_put_back_after_the_device_was_unplugged) {
    service_process service({"--unplug", "1@op=69,nth=2"});
    change_everything();
    const run_of_a_program run = ctl({"restore", file});
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.errors,
              "orvantactl: handedness was not set: the device was unplugged; set before: "
              "gravity-compensation: off -> on, scaling-factor: 0.5 -> 0.75, torque-scaling: off -> on; "
              "torque-scaling could not be put back: the device was unplugged; gravity-compensation "
              "and scaling-factor could not be put back: the device was unplugged\n");
}

TEST_F(backups, that_are_no_backups_are_refused_in_one_line_and_change_nothing) {
    service_process service({"--error", "0xD0@op=67", "--error", "0xD0@op=69", "--error", "0xD0@op=71"});
    const std::string whole = settings_of_a_new_device;
    std::string not_a_number = whole;
    not_a_number.replace(whole.find("0.75"), 4, "NaN");
    std::string wrong_type = whole;
    wrong_type.replace(whole.find("0.75"), 4, "[true]");
    std::string newer = whole;
    newer.replace(whole.find("1,"), 1, "2");
    const std::vector<std::string> texts{
        "",
        whole.substr(0, whole.size() / 2),
        whole.substr(0, whole.size() - 3),
        not_a_number,
        wrong_type,
        newer,
        std::string(60'000, '{'),
        std::string(60'000, '['),
        std::string(5'000'000, ' '),
        whole + std::string(70'000, '\n'),
        "\xFF\xFE{\0}",
        "{\"schema\": \"\xC3\x28\"}",
        std::string(1000, '\0'),
        "{\"a\":" + std::string(2000, '9') + "}",
        "\"\x1B[31mred\"",
    };
    for (const std::string& text : texts) {
        write_file(file, text);
        const run_of_a_program run = ctl({"restore", file});
        EXPECT_EQ(run.end, status(exit_status::refused)) << text.substr(0, 60);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, testing::StartsWith("orvantactl: " + file + ": "));
        // One line, and nothing that a terminal would obey.
        EXPECT_EQ(run.errors.find_first_of("\n\x1B"), run.errors.size() - 1) << run.errors;
    }
}

} // namespace
