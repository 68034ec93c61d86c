// The library's version record: name, build time and version texts.
#pragma once

#include <string>

namespace vantu::orvanta {

struct version_record {
    std::string build_time{"2024-02-05T15:29:01Z"};
    std::string name{"vantu-orvanta-sdk"};
    std::string version_text;

    version_record() : version_text(std::string(left_version) + '|' + right_version) {}

    static constexpr const char* left_version = "2.0.0";
    static constexpr const char* right_version = "2.0.0";
};

namespace {
// Internal linkage on purpose: each source file of the library that includes this header holds a
// copy of its own; the handshake reads the one of its file.
[[maybe_unused]] const version_record version;
} // namespace

} // namespace vantu::orvanta
