// The simulator at signals, and what it says of files in the words of Linux.
#include "simulator/fixtures/running_simulator.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "shared/durable_file.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using vantu::orvanta::replace_file;

void expect_goodbye(void (running_simulator::*stop)()) {
    running_simulator tested({"--port", "0"});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive_until(16).empty());
    (tested.*stop)();
    EXPECT_EQ(client.receive_until(6), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
}

TEST(the_program_at_a_signal, says_goodbye_to_its_clients_and_ends_with_0) {
    expect_goodbye(&running_simulator::terminate);
    expect_goodbye(&running_simulator::interrupt);
}

TEST(a_file, that_cannot_be_written_is_told_in_the_words_of_the_system) {
    const scratch_folder folder;
    const std::string path = folder.file("state.json");
    std::filesystem::create_directory(path + ".new");
    EXPECT_EQ(replace_file(path, "text"), "cannot create " + path + ".new: Is a directory");
}

TEST(a_file, on_a_full_device_is_told_and_leaves_nothing) {
    const scratch_folder folder;
    const std::string path = folder.file("state.json");
    std::filesystem::create_symlink("/dev/full", path + ".new");
    EXPECT_EQ(replace_file(path, "text"), "cannot write " + path + ".new: No space left on device");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

} // namespace
} // namespace orvanta_tests
