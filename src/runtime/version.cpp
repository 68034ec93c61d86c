#include "vantu/orvanta/version.h"

#include "vantu/orvanta/common/version.hpp"

#include <cstdint>
#include <string_view>

// One version, written in four places that other programs read: the compiler holds them together.
#define TEXT_OF(number) #number
#define JOINED(major, minor, patch) TEXT_OF(major) "." TEXT_OF(minor) "." TEXT_OF(patch)
static_assert(std::string_view(VANTU_ORVANTA_VERSION) ==
              JOINED(VANTU_ORVANTA_VERSION_MAJOR, VANTU_ORVANTA_VERSION_MINOR, VANTU_ORVANTA_VERSION_PATCH));
static_assert(std::string_view(VANTU_ORVANTA_VERSION) == PROJECT_VERSION,
              "vantu/orvanta/version.h and CMakeLists.txt differ");
static_assert(std::string_view(VANTU_ORVANTA_VERSION) == vantu::orvanta::version_record::left_version);
static_assert(VANTU_ORVANTA_VERSION_MINOR < 256 && VANTU_ORVANTA_VERSION_PATCH < 256);

const char* vantu_orvanta_version() {
    return VANTU_ORVANTA_VERSION;
}

std::uint32_t vantu_orvanta_version_number() {
    return VANTU_ORVANTA_VERSION_NUMBER;
}
