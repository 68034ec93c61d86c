// A folder of a test's own, gone with the object.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace orvanta_tests {

class scratch_folder {
  public:
    scratch_folder() {
        std::random_device chance;
        do {
            path_ = std::filesystem::temp_directory_path() / ("orvanta_test_" + std::to_string(chance()));
        } while (!std::filesystem::create_directory(path_));
    }
    ~scratch_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    // The path of a file in it.
    [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

} // namespace orvanta_tests
