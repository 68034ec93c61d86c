// set, restore and backup where the system is the subject: Ctrl-C between two settings, links and pipes in
// the place of files.
#include "ctl/support/ctl_run.hpp"
#include "ctl/support/settings_files.hpp"
#include "support/scratch_folder.hpp"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

using namespace orvanta_tests;

TEST(set, tells_what_was_set_before_it_was_interrupted) {
    // The answer to the question for the torque scaling comes, that to the set does not.
    service_process service({"--verbose", "--drop", "@op=68,dir=out,nth=2"});
    child_process program(
        ctl_command({"set", "scaling-factor=0.5", "torque-scaling=off", "--timeout", "50s"}),
        attachment::pipes);
    service.await("set torque scaling of device 1 off");
    program.interrupt();
    const run_of_a_program run = ended(program);
    EXPECT_EQ(run.end, status(exit_status::interrupted));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: torque-scaling may be set or not: interrupted; set before: "
                          "scaling-factor: 0.75 -> 0.5\n");
}

// A restore of two settings, the scaling factor and then the torque scaling, that has begun.
class begun_restore {
  public:
    explicit begun_restore(std::vector<std::string> options) : service(verbose(std::move(options))) {
        const std::string file = folder_.file("desk.json");
        EXPECT_EQ(ctl({"backup", file}).end, succeeded);
        EXPECT_EQ(ctl({"set", "scaling-factor=0.5"}).end, succeeded);
        service.tell("set 1 torque off");
        program.emplace(ctl_command({"restore", file, "--timeout", "50s"}), attachment::pipes);
        service.await("factor 0.75");
    }

    // Interrupts it after the service has told that.
    void interrupt_after(const std::string& text) {
        service.await(text);
        program->interrupt();
    }
    void expect_all_put_back(exit_status with, const std::string& cause) {
        const run_of_a_program run = ended(*program);
        EXPECT_EQ(run.end, status(with));
        EXPECT_EQ(run.errors, "orvantactl: torque-scaling " + cause + "scaling-factor put back\n");
        EXPECT_EQ(ctl({"get", "scaling-factor", "torque-scaling"}).output,
                  "scaling-factor=0.5\ntorque-scaling=off\n");
    }

    service_process service;
    std::optional<child_process> program;

  private:
    static std::vector<std::string> verbose(std::vector<std::string> options) {
        options.emplace_back("--verbose");
        return options;
    }

    scratch_folder folder_;
};

constexpr const char* last_set = "set torque scaling of device 1 on";
constexpr const char* interrupted_at_the_last_set =
    "may be set or not: interrupted; set before: scaling-factor: 0.5 -> 0.75; torque-scaling put back; ";

TEST(restore, puts_back_what_was_set_before_it_was_interrupted) {
    begun_restore begun({"--drop", "@op=68,dir=out,nth=3"});
    begun.interrupt_after(last_set);
    begun.expect_all_put_back(exit_status::interrupted, interrupted_at_the_last_set);
}

TEST(restore, puts_back_after_an_interruption_however_long_the_answers_take) {
    begun_restore begun({"--drop", "@op=68,dir=out,nth=3", "--delay", "300@op=68,dir=out"});
    begun.interrupt_after(last_set);
    begun.expect_all_put_back(exit_status::interrupted, interrupted_at_the_last_set);
}

TEST(restore, puts_back_after_a_refusal_though_it_is_interrupted_meanwhile) {
    begun_restore begun({"--error", "0xD0@op=69", "--delay", "300@op=66,dir=out,nth=6"});
    begun.interrupt_after("factor 0.5");
    begun.expect_all_put_back(exit_status::refused,
                              "was not set: set_torque_scaling of device 1: communication error with device; "
                              "set before: scaling-factor: 0.5 -> 0.75; ");
}

TEST(restore, ends_at_once_when_it_is_interrupted_while_it_puts_back) {
    begun_restore begun({"--drop", "@op=68,dir=out,nth=3", "--drop", "@op=68,dir=out,nth=4"});
    begun.interrupt_after(last_set);
    begun.interrupt_after("set torque scaling of device 1 off");
    EXPECT_EQ(ended(*begun.program).end.signal, SIGINT);
}

TEST(backup, does_not_take_the_place_of_a_link_or_a_pipe) {
    service_process service;
    const scratch_folder folder;
    const std::string file = folder.file("desk.json");
    const std::string link = folder.file("link.json");
    std::ofstream(file) << "old";
    std::filesystem::create_symlink(file, link);
    run_of_a_program run = ctl({"backup", link});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "orvantactl: " + link + ": this is a link; name the file itself\n");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(content_of(file), "old");

    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    run = ctl({"backup", pipe});
    EXPECT_EQ(run.end, status(exit_status::refused));
    EXPECT_EQ(run.errors, "orvantactl: " + pipe + ": this is no regular file\n");
    EXPECT_EQ(ctl({"restore", pipe}).end, status(exit_status::refused));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST(backup, is_read_by_way_of_a_link) {
    service_process service;
    const scratch_folder folder;
    EXPECT_EQ(ctl({"backup", folder.file("desk.json")}).end, succeeded);
    std::filesystem::create_symlink(folder.file("desk.json"), folder.file("link.json"));
    EXPECT_EQ(ctl({"diff", folder.file("link.json")}).end, succeeded);
}

} // namespace
