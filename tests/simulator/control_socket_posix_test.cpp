// The simulator's control socket as a socket of the file system.
#include "simulator/fixtures/running_simulator.hpp"
#include "support/control_client.hpp"
#include "support/scratch_folder.hpp"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace orvanta_tests {
namespace {

TEST(the_file_of_the_control_socket, is_its_owners_alone_whatever_the_umask_says) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    const mode_t before = ::umask(0);
    running_simulator tested({"--port", "0", "--control", path});
    EXPECT_NE(tested.port(), "");
    ::umask(before);
    struct stat found {};
    ASSERT_EQ(::lstat(path.c_str(), &found), 0);
    EXPECT_TRUE(S_ISSOCK(found.st_mode));
    EXPECT_EQ(found.st_mode & 07777U, 0600U);
    tested.kill();
    EXPECT_EQ(tested.wait_for_end().output, "");
}

TEST(the_file_of_the_control_socket, is_removed_at_the_signals_that_end_the_program) {
    const scratch_folder folder;
    for (const auto stop : {&running_simulator::terminate, &running_simulator::interrupt}) {
        const std::string path = folder.file("control");
        running_simulator tested({"--port", "0", "--control", path});
        EXPECT_NE(tested.port(), "");
        EXPECT_TRUE(std::filesystem::exists(path));
        (tested.*stop)();
        EXPECT_EQ(tested.wait_for_end().status, 0);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST(the_file_of_the_control_socket, stays_when_it_is_another_simulators_by_now) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    running_simulator first({"--port", "0", "--control", path});
    EXPECT_NE(first.port(), "");
    std::filesystem::rename(path, path + ".old");
    running_simulator second({"--port", "0", "--control", path});
    EXPECT_NE(second.port(), "");
    first.terminate();
    EXPECT_EQ(first.wait_for_end().status, 0);
    control_client script(path);
    EXPECT_TRUE(script.send("quit\n"));
    EXPECT_EQ(script.line(), "ok\n");
    EXPECT_EQ(second.wait_for_end().status, 0);
}

TEST(the_file_of_the_control_socket, is_refused_where_its_path_is_too_long_or_has_no_folder) {
    const scratch_folder folder;
    const std::string long_path = folder.file(std::string(108, 'x'));
    running_simulator too_long({"--port", "0", "--control", long_path});
    const auto end = too_long.wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.errors, "orvanta-simulator: " + long_path +
                              ": is too long for a socket; a path of 107 bytes or fewer would be right\n");
    const std::string nowhere = folder.file("none/control");
    running_simulator lost({"--port", "0", "--control", nowhere});
    EXPECT_EQ(lost.wait_for_end().errors, "orvanta-simulator: " + nowhere + ": No such file or directory\n");
}

// Elsewhere the system may hold more than a test would send.
TEST(a_script_that_waits, is_not_read_from_until_it_goes_on) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    running_simulator tested({"--port", "0", "--control", path});
    EXPECT_NE(tested.port(), "");
    control_client waiting(path);
    EXPECT_TRUE(waiting.send("wait 60000 happened restart\n"));
    std::atomic<bool> sent{false};
    std::thread sender([&] {
        std::string remarks;
        while (remarks.size() < 1'000'000) {
            remarks += "# a remark, which has no answer\n";
        }
        EXPECT_TRUE(waiting.send(remarks + "plug orvanta3\n"));
        sent = true;
    });
    control_client other(path);
    EXPECT_TRUE(other.send("wait 600\nheal\n")); // would do to read it all
    EXPECT_EQ(other.line(), "ok\n");
    EXPECT_EQ(other.line(), "ok\n");
    EXPECT_FALSE(sent);
    EXPECT_TRUE(other.send("restart\n"));
    EXPECT_EQ(waiting.line(), "ok\n");
    EXPECT_EQ(waiting.line(), "plugged in 2\n");
    sender.join();
    tested.terminate();
    EXPECT_EQ(tested.wait_for_end().status, 0);
}

// Windows does not tell.
TEST(a_script_that_is_gone, is_known_to_be_although_nothing_was_sent_to_it_since) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    running_simulator tested({"--port", "0", "--control", path});
    EXPECT_NE(tested.port(), "");
    {
        control_client hasty(path);
        EXPECT_TRUE(hasty.send("wait 200\nplug palmetron\n"));
        EXPECT_EQ(hasty.line(), "ok\n");
    }
    control_client script(path);
    EXPECT_TRUE(script.send("wait 400\nexpect devices = 2\nquit\n"));
    EXPECT_EQ(script.rest(), "ok\nok\nok\n");
    EXPECT_EQ(tested.wait_for_end().status, 0);
}

} // namespace
} // namespace orvanta_tests
