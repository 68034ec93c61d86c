// Every datagram that get, set, save, backup, restore and diff send, written out by hand.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/wire_service.hpp"
#include "support/scratch_folder.hpp"

#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace orvanta_tests;

// E9 9E, version 1, reserved; FF, code, length, tag; device 5.
const bytes open_1 = from_hex("E99E 0100 0000  FF 12 0600 01  05000000 0000");
const bytes get_gravity_2 = from_hex("E99E 0100 0000  FF 42 0400 02  05000000");
const bytes get_torque_2 = from_hex("E99E 0100 0000  FF 44 0400 02  05000000");
const bytes get_torque_3 = from_hex("E99E 0100 0000  FF 44 0400 03  05000000");

const bytes on_075 = from_hex("01 0000403F");
const bytes on_05 = from_hex("01 0000003F");
const bytes off_075 = from_hex("00 0000403F");
const bytes off_05 = from_hex("00 0000003F");
const bytes on = {1};
const bytes off = {0};
const bytes right = {1};
const bytes left = {2};
const bytes saved = {1};

std::string backup_text(const std::string& settings) {
    return R"({"schema":"orvanta-backup","version":1,"device":{"uuid":)"
           R"("60616263-6465-6667-6869-6a6b6c6d6e6f","type":"orvanta3","short_id":"BEEF"},"settings":)" +
           settings + "}";
}

// A file with these settings: off, 0.5, off, left.
class with_a_backup : public testing::Test {
  protected:
    with_a_backup() : file(folder.file("desk.json")) {
        std::ofstream(file) << backup_text(R"({"gravity-compensation":false,"scaling-factor":0.5,)"
                                           R"("torque-scaling":false,"handedness":"left"})");
    }
    scratch_folder folder;
    std::string file;
    wire_service service;
};

TEST(get_on_the_wire, asks_for_a_part_once_and_for_nothing_else) {
    wire_service service;
    service.answer(0x42, 0x42, on_075);
    const run_of_a_program run = ctl({"get", "scaling-factor", "gravity-compensation"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "scaling-factor=0.75\ngravity-compensation=on\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_gravity_2}));
}

TEST(get_on_the_wire, asks_for_the_torque_scaling_alone) {
    wire_service service;
    service.answer(0x44, 0x44, off);
    const run_of_a_program run = ctl({"get", "torque-scaling"});
    EXPECT_EQ(run.output, "off\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_torque_2}));
}

TEST(get_on_the_wire, asks_nothing_for_the_handedness) {
    wire_service service;
    const run_of_a_program run = ctl({"get", "handedness"});
    EXPECT_EQ(run.output, "right\n");
    EXPECT_EQ(service.requests(), datagrams{});
    EXPECT_EQ(service.connects(), 1U);
}

TEST(set_on_the_wire, of_one_of_two_keeps_the_other) {
    {
        wire_service service;
        service.answer(0x42, 0x42, on_075).answer(0x43, 0x42, on_05);
        EXPECT_EQ(ctl({"set", "scaling-factor=0.5"}).output, "scaling-factor: 0.75 -> 0.5\n");
        EXPECT_EQ(service.requests(),
                  (datagrams{open_1, get_gravity_2,
                             from_hex("E99E 0100 0000  FF 43 0900 03  05000000 01 0000003F")}));
    }
    wire_service service;
    service.answer(0x42, 0x42, on_075).answer(0x43, 0x42, off_075);
    EXPECT_EQ(ctl({"set", "gravity-compensation=off"}).output, "gravity-compensation: on -> off\n");
    EXPECT_EQ(
        service.requests(),
        (datagrams{open_1, get_gravity_2, from_hex("E99E 0100 0000  FF 43 0900 03  05000000 00 0000403F")}));
}

TEST(set_on_the_wire, of_both_is_one_request) {
    wire_service service;
    service.answer(0x42, 0x42, on_075).answer(0x43, 0x42, off_05);
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "gravity-compensation=off"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "gravity-compensation: on -> off\nscaling-factor: 0.75 -> 0.5\n");
    EXPECT_EQ(
        service.requests(),
        (datagrams{open_1, get_gravity_2, from_hex("E99E 0100 0000  FF 43 0900 03  05000000 00 0000003F")}));
}

TEST(set_on_the_wire, of_everything_is_a_request_a_part_then_saved_and_read_again) {
    wire_service service;
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, on).answer(0x43, 0x42, off_05);
    service.answer(0x45, 0x44, off).answer(0x47, 0x46, left).answer(0x40, 0x40, saved);
    service.answer(0x42, 0x42, off_05).answer(0x44, 0x44, off);
    const run_of_a_program run = ctl({"set", "handedness=left", "torque-scaling=off", "scaling-factor=0.5",
                                      "gravity-compensation=off", "--save"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, "gravity-compensation: on -> off\nscaling-factor: 0.75 -> 0.5\n"
                          "torque-scaling: on -> off\nhandedness: right -> left\nsaved\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_gravity_2, get_torque_3,
                                             from_hex("E99E 0100 0000  FF 43 0900 04  05000000 00 0000003F"),
                                             from_hex("E99E 0100 0000  FF 45 0500 05  05000000 00"),
                                             from_hex("E99E 0100 0000  FF 47 0500 06  05000000 02"),
                                             from_hex("E99E 0100 0000  FF 40 0400 07  05000000"),
                                             from_hex("E99E 0100 0000  FF 42 0400 08  05000000"),
                                             from_hex("E99E 0100 0000  FF 44 0400 09  05000000")}));
}

TEST(set_on_the_wire, of_what_is_in_force_sets_nothing) {
    wire_service service;
    service.answer(0x44, 0x44, on);
    const run_of_a_program run = ctl({"set", "torque-scaling=on", "handedness=right"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "torque-scaling: on (unchanged)\nhandedness: right (unchanged)\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_torque_2}));
}

TEST(set_on_the_wire, as_a_dry_run_sets_and_saves_nothing) {
    wire_service service;
    service.answer(0x42, 0x42, on_075);
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5", "--dry-run", "--save"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "would set scaling-factor: 0.75 -> 0.5\nwould save\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_gravity_2}));
}

TEST(set_on_the_wire, with_a_wrong_word_does_not_even_connect) {
    wire_service service;
    const run_of_a_program run = ctl({"set", "torque-scaling=off", "scaling-factor=1.1"});
    EXPECT_EQ(run.end, status(exit_status::wrong_usage));
    EXPECT_EQ(run.errors, "orvantactl: scaling-factor is a number from 0 to 1, not '1.1'\n");
    EXPECT_EQ(ctl({"get", "torque"}).end, status(exit_status::wrong_usage));
    EXPECT_EQ(service.connects(), 0U);
}

TEST(set_on_the_wire, fails_when_another_value_comes_back) {
    wire_service service;
    service.answer(0x42, 0x42, on_075).answer(0x43, 0x42, off_05);
    const run_of_a_program run = ctl({"set", "scaling-factor=0.5"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors,
              "orvantactl: scaling-factor was not set as asked: the service's answer to the set is "
              "that gravity-compensation is off in place of on; nothing was set before\n");
}

TEST(set_on_the_wire, fails_when_another_value_is_read_after_saving) {
    wire_service service;
    service.answer(0x44, 0x44, on).answer(0x45, 0x44, off).answer(0x40, 0x40, saved).answer(0x44, 0x44, on);
    const run_of_a_program run = ctl({"set", "torque-scaling=off", "--save"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors, "orvantactl: after saving torque-scaling is on in place of off; set before: "
                          "torque-scaling: on -> off\n");
}

TEST(save_on_the_wire, is_one_request) {
    wire_service service;
    service.answer(0x40, 0x40, saved);
    const run_of_a_program run = ctl({"save"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "saved\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, from_hex("E99E 0100 0000  FF 40 0400 02  05000000")}));
}

TEST(save_on_the_wire, fails_on_an_answer_other_than_1) {
    for (const std::uint8_t told : bytes{0, 2, 255}) {
        wire_service service;
        service.answer(0x40, 0x40, {told});
        const run_of_a_program run = ctl({"save"});
        EXPECT_EQ(run.end, status(exit_status::refused));
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "orvantactl: save: the device answers " + std::to_string(told) +
                                  ", which is not that it has saved\n");
    }
}

TEST(save_on_the_wire, after_a_set_fails_on_an_answer_other_than_1) {
    wire_service service;
    service.answer(0x44, 0x44, on).answer(0x45, 0x44, off).answer(0x40, 0x40, {0});
    const run_of_a_program run = ctl({"set", "torque-scaling=off", "--save"});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors,
              "orvantactl: nothing was saved: save: the device answers 0, which is not that it has "
              "saved; set before: torque-scaling: on -> off\n");
}

TEST_F(with_a_backup, restore_sets_what_differs_then_saves_and_reads_again) {
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, off).answer(0x43, 0x42, off_05);
    service.answer(0x47, 0x46, left).answer(0x40, 0x40, saved);
    service.answer(0x42, 0x42, off_05).answer(0x44, 0x44, off);
    const run_of_a_program run = ctl({"restore", file, "--save"});
    EXPECT_EQ(run.end, succeeded);
    EXPECT_EQ(run.output, "gravity-compensation: on -> off\nscaling-factor: 0.75 -> 0.5\n"
                          "torque-scaling: off (unchanged)\nhandedness: right -> left\nsaved\n");
    EXPECT_EQ(service.requests(), (datagrams{open_1, get_gravity_2, get_torque_3,
                                             from_hex("E99E 0100 0000  FF 43 0900 04  05000000 00 0000003F"),
                                             from_hex("E99E 0100 0000  FF 47 0500 05  05000000 02"),
                                             from_hex("E99E 0100 0000  FF 40 0400 06  05000000"),
                                             from_hex("E99E 0100 0000  FF 42 0400 07  05000000"),
                                             from_hex("E99E 0100 0000  FF 44 0400 08  05000000")}));
}

TEST_F(with_a_backup, restore_as_a_dry_run_and_diff_only_read) {
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, off);
    EXPECT_EQ(ctl({"restore", file, "--save", "--dry-run"}).output,
              "would set gravity-compensation: on -> off\nwould set scaling-factor: 0.75 -> 0.5\n"
              "torque-scaling: off (unchanged)\nwould set handedness: right -> left\nwould save\n");
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, off);
    EXPECT_EQ(ctl({"diff", file}).output, "gravity-compensation: file off, device on\n"
                                          "scaling-factor: file 0.5, device 0.75\n"
                                          "handedness: file left, device right\n");
    EXPECT_EQ(service.requests(),
              (datagrams{open_1, get_gravity_2, get_torque_3, open_1, get_gravity_2, get_torque_3}));
}

TEST_F(with_a_backup, restore_puts_back_what_it_set_before_a_refusal) {
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, on).answer(0x43, 0x42, off_05);
    service.answer(0x45, 0xF0, {0xD0}).answer(0x43, 0x42, on_075);
    const run_of_a_program run = ctl({"restore", file});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(
        run.errors,
        "orvantactl: torque-scaling was not set: set_torque_scaling of device 5: communication error with "
        "device; set before: gravity-compensation: on -> off, scaling-factor: 0.75 -> 0.5; "
        "gravity-compensation and scaling-factor put back\n");
    EXPECT_EQ(service.requests(),
              (datagrams{open_1, get_gravity_2, get_torque_3,
                         from_hex("E99E 0100 0000  FF 43 0900 04  05000000 00 0000003F"),
                         from_hex("E99E 0100 0000  FF 45 0500 05  05000000 00"),
                         from_hex("E99E 0100 0000  FF 43 0900 06  05000000 01 0000403F")}));
}

TEST_F(with_a_backup, restore_puts_back_also_what_may_be_set_and_says_what_it_could_not) {
    // The set of the torque scaling is not answered; its way back is, that of the gravity is refused.
    service.answer(0x42, 0x42, on_075).answer(0x44, 0x44, on).answer(0x43, 0x42, off_05);
    service.answer(0x43, 0xF0, {0xA3});
    // Less than the second after which the library asks whether a silent service is still there.
    const run_of_a_program run = ctl({"restore", file, "--timeout", "900ms"});
    EXPECT_EQ(run.end, status(exit_status::timed_out));
    EXPECT_EQ(
        run.errors,
        "orvantactl: torque-scaling may be set or not: set_torque_scaling of device 5: operation timed out; "
        "set before: gravity-compensation: on -> off, scaling-factor: 0.75 -> 0.5; "
        "torque-scaling could not be put back: set_torque_scaling of device 5: operation timed out; "
        "gravity-compensation and scaling-factor could not be put back: set_gravity_compensation of "
        "device 5: invalid argument\n");
    EXPECT_EQ(service.requests(),
              (datagrams{open_1, get_gravity_2, get_torque_3,
                         from_hex("E99E 0100 0000  FF 43 0900 04  05000000 00 0000003F"),
                         from_hex("E99E 0100 0000  FF 45 0500 05  05000000 00"),
                         from_hex("E99E 0100 0000  FF 45 0500 06  05000000 01"),
                         from_hex("E99E 0100 0000  FF 43 0900 07  05000000 01 0000403F")}));
}

TEST_F(with_a_backup, a_wrong_file_does_not_even_connect) {
    std::ofstream(file) << backup_text("{}");
    EXPECT_EQ(ctl({"restore", file}).errors,
              "orvantactl: " + file + ": line 1: settings has no \"gravity-compensation\"; it needs one\n");
    EXPECT_EQ(ctl({"diff", file}).end, status(exit_status::refused));
    EXPECT_EQ(service.connects(), 0U);
}

} // namespace
