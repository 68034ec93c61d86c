// orvantactl get, set and save beside the simulator.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/settings_files.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using namespace orvanta_tests;
using json = nlohmann::json;

// The first words of each line.
std::string names_in(const std::string& output) {
    std::string names;
    for (std::size_t at = 0; at < output.size(); at = output.find('\n', at) + 1) {
        names += output.substr(at, output.find('=', at) - at) + " ";
    }
    return names;
}

TEST(get, shows_every_value) {
    service_process service;
    const run_of_a_program run = ctl({"get"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(names_in(run.output),
              "orientation gravity-compensation scaling-factor torque-scaling handedness "
              "motor-current power-supply ");
    EXPECT_THAT(run.output, testing::HasSubstr("\ngravity-compensation=on\nscaling-factor=0.75\n"
                                               "torque-scaling=on\nhandedness=right\nmotor-current="));
    EXPECT_THAT(run.output, testing::EndsWith("\npower-supply=1\n"));
}

TEST(get, shows_every_value_in_json) {
    service_process service;
    const run_of_a_program run = ctl({"get", "--json"});
    EXPECT_EQ(run.end, succeeded);
    const json document = json::parse(run.output);
    EXPECT_EQ(document.at("device"), json::parse(first_device));
    const json& values = document.at("values");
    ASSERT_EQ(values.size(), 7U);
    const json& of = values.at("orientation");
    ASSERT_EQ(of.size(), 4U);
    const double r = of.at("r");
    const double x = of.at("x");
    const double y = of.at("y");
    const double z = of.at("z");
    EXPECT_NEAR(r * r + x * x + y * y + z * z, 1, 1e-5);
    EXPECT_EQ(values.at("gravity-compensation"), json(true));
    EXPECT_EQ(values.at("scaling-factor"), json(0.75));
    EXPECT_EQ(values.at("torque-scaling"), json(true));
    EXPECT_EQ(values.at("handedness"), json("right"));
    EXPECT_EQ(values.at("motor-current").size(), 3U);
    EXPECT_EQ(values.at("power-supply"), json(1));
}

TEST(get, prints_the_value_alone_when_one_is_asked_for) {
    service_process service;
    EXPECT_EQ(ctl({"get", "scaling-factor"}).output, "0.75\n");
    EXPECT_EQ(ctl({"get", "power-supply"}).output, "1\n");
    EXPECT_EQ(ctl({"get", "power-supply", "--device", "5001"}).output, "1\n");
}

TEST(get, waits_for_a_state_within_its_time_only) {
    service_process service({"--drop", "@op=80,dir=out"});
    EXPECT_EQ(ctl({"get", "power-supply"}).end, status(exit_status::timed_out)); // in the same datagram
    const run_of_a_program run = ctl({"get", "motor-current", "--timeout", "300ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors,
              "orvantactl: motor-current: the device has not told it in time; a longer --timeout may "
              "help\n");
}

TEST(get, tells_a_state_that_comes_late) {
    service_process service({"--delay", "200-200@op=81,dir=out"});
    const run_of_a_program run = ctl({"get", "power-supply", "--timeout", "20s"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "1\n");
}

TEST(get, ends_when_the_device_is_unplugged_while_it_waits) {
    service_process service({"--verbose", "--drop", "@op=81,dir=out"});
    child_process program(ctl_command({"get", "power-supply", "--timeout", "50s"}), attachment::pipes);
    service.await("opened device 1");
    service.tell("unplug 1");
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.errors, "orvantactl: the device was unplugged\n");
}

TEST(get, tells_of_an_answer_that_is_lost) {
    service_process service({"--drop", "@op=66,dir=out"});
    const run_of_a_program run = ctl({"get", "scaling-factor", "--timeout", "300ms", "--json"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, R"({"error":{"kind":"timed_out","status":5,"code":"timed_out","message":)"
                          R"("get_gravity_compensation of device 1: operation timed out"}})"
                          "\n");
}

TEST(get, takes_an_answer_that_is_late_but_in_time) {
    service_process service({"--delay", "300@op=66,dir=answer"});
    const run_of_a_program run = ctl({"get", "scaling-factor", "--timeout", "20s"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "0.75\n");
    EXPECT_EQ(ctl({"get", "scaling-factor", "--timeout", "100ms"}).end, status(exit_status::timed_out));
}

TEST(get, tells_that_a_service_was_killed) {
    service_process service({"--verbose", "--rate", "0", "--drop", "@op=66,dir=out"});
    child_process program(ctl_command({"get", "scaling-factor", "--timeout", "50s"}), attachment::pipes);
    service.await("opened device 1");
    service.kill();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.output, "");
    // The answer to the opening may be lost as well.
    EXPECT_THAT(run.errors, testing::HasSubstr(" of device 1: disconnected from the service"));
}

TEST(set, prints_old_and_new) {
    service_process service;
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "handedness=left", "torque-scaling=on"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, "scaling-factor: 0.75 -> 0.5\ntorque-scaling: on (unchanged)\n"
                          "handedness: right -> left\n");
    EXPECT_EQ(ctl({"get", "gravity-compensation", "scaling-factor", "torque-scaling", "handedness"}).output,
              "gravity-compensation=on\nscaling-factor=0.5\ntorque-scaling=on\nhandedness=left\n");
}

TEST(set, prints_one_document_in_json) {
    service_process service;
    const run_of_a_program run =
        ctl({"set", "scaling-factor=0.1", "gravity-compensation=off", "--save", "--json"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, std::string(R"({"device":)") + first_device +
                              R"(,"dry_run":false,"changes":[)"
                              R"({"key":"gravity-compensation","old":true,"new":false},)"
                              R"({"key":"scaling-factor","old":0.75,"new":0.1}],"saved":true})"
                              "\n");
}

TEST(set, changes_what_outlives_the_service_only_when_it_saves) {
    service_process service({"--verbose"});
    EXPECT_EQ(ctl({"set", "scaling-factor=0.5", "--save"}).end, succeeded);
    EXPECT_EQ(ctl({"set", "scaling-factor=0.25"}).end, succeeded);
    EXPECT_EQ(ctl({"get", "scaling-factor"}).output, "0.25\n");
    service.tell("restart");
    service.await("restarted");
    EXPECT_EQ(ctl({"get", "scaling-factor"}).output, "0.5\n");
}

TEST(set, says_what_was_set_before_the_device_was_unplugged) {
    service_process service({"--unplug", "1@op=67"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "torque-scaling=off", "handedness=left"});
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: torque-scaling was not set: the device was unplugged; set before: "
                          "scaling-factor: 0.75 -> 0.5\n");
}

TEST(set, does_not_know_whether_it_was_done_when_the_answer_is_lost) {
    service_process service({"--drop", "@op=66,dir=out,nth=2"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "--timeout", "500ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors,
              "orvantactl: scaling-factor may be set or not: set_gravity_compensation of device 1: "
              "operation timed out; nothing was set before\n");
    EXPECT_EQ(ctl({"get", "scaling-factor"}).output, "0.5\n");
}

TEST(set, says_what_was_set_before_the_service_was_killed) {
    // The answer to the question for the torque scaling comes, that to the set does not.
    service_process service({"--verbose", "--rate", "0", "--drop", "@op=68,dir=out,nth=2"});
    child_process program(
        ctl_command({"set", "scaling-factor=0.5", "torque-scaling=off", "--timeout", "50s"}),
        attachment::pipes);
    service.await("set torque scaling of device 1 off");
    service.kill();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_THAT(run.errors,
                testing::StartsWith("orvantactl: torque-scaling may be set or not: set_torque_scaling "
                                    "of device 1: disconnected from the service"));
    EXPECT_THAT(run.errors, testing::EndsWith("; set before: scaling-factor: 0.75 -> 0.5\n"));
}

TEST(set, tells_that_the_service_was_started_anew_meanwhile) {
    service_process service({"--restart", "@op=66,dir=out"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5"});
    EXPECT_EQ(run.end, status(exit_status::lost));
    EXPECT_EQ(run.errors,
              "orvantactl: scaling-factor was not set: the service was started anew meanwhile; nothing "
              "was set before\n");
}

TEST(set, says_that_nothing_was_saved) {
    service_process service({"--error", "0xD0@op=64"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "--save"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors,
              "orvantactl: nothing was saved: save of device 1: communication error with device; set "
              "before: scaling-factor: 0.75 -> 0.5\n");
}

TEST(set, does_not_know_whether_it_was_saved_when_the_answer_is_lost) {
    service_process service({"--drop", "@op=64,dir=out"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.75", "--save", "--timeout", "500ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors,
              "orvantactl: it may be saved or not: save of device 1: operation timed out; nothing was "
              "set before\n");
}

TEST(set, says_that_it_saved_but_could_not_read_again) {
    service_process service({"--drop", "@op=66,dir=out,nth=3"});
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "--save", "--timeout", "500ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(run.errors,
              "orvantactl: saved, but not read again: get_gravity_compensation of device 1: operation "
              "timed out; set before: scaling-factor: 0.75 -> 0.5\n");
}

TEST(save, says_that_it_has_saved) {
    service_process service;
    EXPECT_EQ(ctl({"save"}).output, "saved\n");
    EXPECT_EQ(ctl({"save", "--json"}).output,
              std::string(R"({"device":)") + first_device + R"(,"saved":true})" + "\n");
}

TEST(save, fails_when_the_service_refuses_or_does_not_answer) {
    {
        service_process service({"--error", "0xD0@op=64"});
        const run_of_a_program run = ctl({"save"});
        EXPECT_EQ(run.end, status(exit_status::refused));
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "orvantactl: save of device 1: communication error with device\n");
    }
    service_process service({"--drop", "@op=64,dir=out"});
    EXPECT_EQ(ctl({"save", "--timeout", "300ms"}).end, status(exit_status::timed_out));
}

} // namespace
