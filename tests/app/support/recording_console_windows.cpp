// The streams of the recording console: files, looked at whenever they are flushed, which the linker's --wrap
// shows. The C library here hands on nothing by itself.
#include "app/support/recording_console.hpp"

#include "support/scratch_folder.hpp"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

class recorded_file {
  public:
    explicit recorded_file(std::function<void(std::string_view)> take) : take_(std::move(take)) {
        if (written == nullptr || read_ == nullptr) {
            throw std::runtime_error("no stream to record with");
        }
    }
    ~recorded_file() {
        std::fclose(read_);
        std::fclose(written);
    }
    recorded_file(const recorded_file&) = delete;
    recorded_file& operator=(const recorded_file&) = delete;

    void take_what_is_new() const {
        std::array<char, 4096> piece{};
        std::fseek(read_, 0, SEEK_CUR); // past an end that is none any more
        const std::size_t size = std::fread(piece.data(), 1, piece.size(), read_);
        if (size > 0) {
            take_({piece.data(), size});
        }
    }

  private:
    scratch_folder folder_;

  public:
    std::FILE* const written{std::fopen(folder_.file("printed").c_str(), "wb")};

  private:
    std::FILE* const read_{std::fopen(folder_.file("printed").c_str(), "rb")};
    std::function<void(std::string_view)> take_;
};

std::map<std::FILE*, std::unique_ptr<recorded_file>>& recorded_files() {
    static std::map<std::FILE*, std::unique_ptr<recorded_file>> files;
    return files;
}

} // namespace

std::FILE* recording_console::stream_into(recorder& target) {
    auto file = std::make_unique<recorded_file>([&target](std::string_view piece) { target.take(piece); });
    std::FILE* const stream = file->written;
    recorded_files().emplace(stream, std::move(file));
    return stream;
}

void recording_console::close(std::FILE* stream) {
    recorded_files().erase(stream);
}

} // namespace orvanta_tests

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
int __real_fflush(std::FILE* stream);
int __wrap_fflush(std::FILE* stream);
int __wrap_fflush(std::FILE* stream) {
    const int result = __real_fflush(stream);
    const auto found = orvanta_tests::recorded_files().find(stream);
    if (found != orvanta_tests::recorded_files().end()) {
        found->second->take_what_is_new();
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
