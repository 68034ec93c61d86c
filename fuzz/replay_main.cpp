// Runs a harness over the files of its corpus folder, in every build and on every platform.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> files_of(const char* folder) {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            found.push_back(entry.path());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

int replay(const char* folder) {
    const auto files = files_of(folder);
    std::size_t bytes = 0;
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        if (!stream.is_open() || stream.bad()) {
            std::fprintf(stderr, "%s cannot be read\n", file.string().c_str());
            return 1;
        }
        try {
            (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "%s: %s\n", file.string().c_str(), failure.what());
            return 1;
        }
        bytes += text.size();
    }
    std::printf("%zu inputs, %zu bytes\n", files.size(), bytes);
    if (files.empty()) {
        std::fprintf(stderr, "%s has no inputs\n", folder);
        return 1;
    }
    return 0;
}

} // namespace

int main(int argument_count, char** arguments) {
    if (argument_count != 2) {
        std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", arguments[0]);
        return 2;
    }
    try {
        return replay(arguments[1]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[1], failure.what());
        return 1;
    }
}
