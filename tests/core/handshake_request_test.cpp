// The request that opens a connection, byte by byte.
#include "core/handshake.hpp"

#include "support/buffer_bytes.hpp"
#include "support/traps.hpp"

#include <gtest/gtest.h>
#include <string>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

bytes composed(const introduction& client, std::uint32_t process_id, const std::string& version_text) {
    byte_buffer request(constants::mode_write);
    compose_connect(request, client, process_id, version_text);
    return written_bytes(request);
}

// The request of a client with this name and version, all numbers 0.
bytes by_hand(const std::string& name, const std::string& version_text) {
    return join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x03, 0x70, 0x00, 0x00},
                 filled(16, 0),
                 text_field(name, 32),
                 text_field(version_text, 64)});
}

TEST(a_connect_request, has_its_fields_in_their_places) {
    const introduction client{"Device Config", 0x1234, 0x5678, 0x0123456789ABCDEF, 1'000'000'000};
    EXPECT_EQ(hex(composed(client, 0xA1B2C3D4, "2.0.0|2.0.0")),
              hex(join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00},
                        {0xFF, 0x03, 0x70, 0x00, 0x00},
                        {0x34, 0x12},
                        {0x78, 0x56},
                        {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01},
                        {0xD4, 0xC3, 0xB2, 0xA1},
                        {'D', 'e', 'v', 'i', 'c', 'e', ' ', 'C', 'o', 'n', 'f', 'i', 'g'},
                        filled(19, 0),
                        {'2', '.', '0', '.', '0', '|', '2', '.', '0', '.', '0'},
                        filled(53, 0)})));
}

TEST(a_connect_request, carries_an_empty_name_and_one_of_31_characters) {
    EXPECT_EQ(hex(composed({"", 0, 0, 0, 0}, 0, "")), hex(by_hand("", "")));
    EXPECT_EQ(hex(composed({std::string(31, 'n'), 0, 0, 0, 0}, 0, "")),
              hex(by_hand(std::string(31, 'n'), "")));
}

TEST(a_connect_request, cuts_the_version_after_63_characters) {
    const std::string longest(63, 'v');
    EXPECT_EQ(hex(composed({"", 0, 0, 0, 0}, 0, longest)), hex(by_hand("", longest)));
    EXPECT_EQ(hex(composed({"", 0, 0, 0, 0}, 0, longest + "w")), hex(by_hand("", longest)));
    EXPECT_EQ(hex(composed({"", 0, 0, 0, 0}, 0, longest + std::string(1000, 'w'))),
              hex(by_hand("", longest)));
}

using connect_request_death_test = death_test;

TEST_F(connect_request_death_test, a_name_of_32_characters) {
    EXPECT_TRAP(composed({std::string(32, 'n'), 0, 0, 0, 0}, 0, ""),
                "ERROR utils 85 MSG assumption failed: size < N\n");
}

} // namespace
} // namespace orvanta_tests
