// Finding the scenario that a user means.
#include "simulator/control/shipped_scenarios.hpp"

#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using vantu::orvanta::simulator::scenario_path_of;

// The current folder while the object lives, and the one before after it.
class current_folder {
  public:
    explicit current_folder(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    ~current_folder() { std::filesystem::current_path(before_); }
    current_folder(const current_folder&) = delete;
    current_folder& operator=(const current_folder&) = delete;

  private:
    std::filesystem::path before_{std::filesystem::current_path()};
};

TEST(the_path_of_a_scenario, is_that_of_the_file_before_that_of_the_shipped_one) {
    const scratch_folder folder;
    const current_folder here(folder.path());
    EXPECT_NE(scenario_path_of("healthy_pair"), "healthy_pair");
    std::ofstream("healthy_pair") << "{}";
    EXPECT_EQ(scenario_path_of("healthy_pair"), "healthy_pair");
}

TEST(the_path_of_a_scenario, is_the_text_where_there_is_neither_and_where_it_names_a_folder) {
    EXPECT_EQ(scenario_path_of("no_such_scenario"), "no_such_scenario");
    EXPECT_EQ(scenario_path_of("./healthy_pair"), "./healthy_pair");
    EXPECT_EQ(scenario_path_of(""), "");
}

} // namespace
} // namespace orvanta_tests
