// The simulator's control socket as a socket of the file system.
#include "simulator/fixtures/running_simulator.hpp"
#include "support/control_client.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

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

} // namespace
} // namespace orvanta_tests
