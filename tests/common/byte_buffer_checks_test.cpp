// The byte buffer used as it should not be: each misuse ends the process with the line of its check.
#include "support/log_capture.hpp"
#include "support/traps.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace orvanta_tests {
namespace {

using vantu::orvanta::byte_buffer;
using vantu::orvanta::constants::mode_read;
using vantu::orvanta::constants::mode_write;

using byte_buffer_death_test = death_test;
using header_sized = std::array<std::uint8_t, 6>;

constexpr const char* line_40 = "ERROR data 40 MSG assumption failed: len <= write_len()\n";
constexpr const char* line_45 = "ERROR data 45 MSG assumption failed: len <= read_len()\n";
constexpr const char* line_68 = "ERROR data 68 MSG assumption failed: mode & constants::mode_read\n";
constexpr const char* line_69 = "ERROR data 69 MSG assumption failed: can_read<T>()\n";
constexpr const char* line_80 = "ERROR data 80 MSG assumption failed: mode & constants::mode_write\n";
constexpr const char* line_81 = "ERROR data 81 MSG assumption failed: can_write<T>()\n";

// A buffer of both modes with so many bytes written and read.
byte_buffer used(std::uint64_t written, std::uint64_t read = 0) {
    byte_buffer buffer(mode_read | mode_write);
    buffer.skip_write(written);
    buffer.skip_read(read);
    return buffer;
}

TEST_F(byte_buffer_death_test, a_skipped_write_past_the_end) {
    EXPECT_TRAP(used(0).skip_write(2049), line_40);
    EXPECT_TRAP(used(2048).skip_write(1), line_40);
    EXPECT_TRAP(used(10).skip_write(std::numeric_limits<std::uint64_t>::max()), line_40);
}

TEST_F(byte_buffer_death_test, a_skipped_read_past_what_is_written) {
    EXPECT_TRAP(used(0).skip_read(1), line_45);
    EXPECT_TRAP(used(30, 10).skip_read(21), line_45);
    EXPECT_TRAP(used(30, 10).skip_read(std::numeric_limits<std::uint64_t>::max()), line_45);
}

TEST_F(byte_buffer_death_test, a_read_from_a_buffer_for_writing) {
    byte_buffer buffer(mode_write);
    buffer.write(std::uint64_t{1});
    EXPECT_TRAP((void)buffer.read<std::uint32_t>(), line_68);
}

TEST_F(byte_buffer_death_test, a_read_from_an_empty_buffer_for_writing_fails_by_its_mode) {
    EXPECT_TRAP((void)byte_buffer(mode_write).read<std::uint32_t>(), line_68);
}

TEST_F(byte_buffer_death_test, a_read_past_what_is_written) {
    EXPECT_TRAP((void)used(5).read<header_sized>(), line_69);
    EXPECT_TRAP((void)used(2048, 2043).read<header_sized>(), line_69);
    EXPECT_TRAP((void)used(0).read<std::uint8_t>(), line_69);
}

TEST_F(byte_buffer_death_test, a_write_into_a_buffer_for_reading) {
    EXPECT_TRAP(byte_buffer(mode_read).write(std::uint8_t{1}), line_80);
}

TEST_F(byte_buffer_death_test, a_write_into_a_full_buffer_for_reading_fails_by_its_mode) {
    byte_buffer buffer(mode_read);
    buffer.skip_write(2048);
    EXPECT_TRAP(buffer.write(std::uint8_t{1}), line_80);
}

TEST_F(byte_buffer_death_test, a_write_one_byte_past_the_end) {
    EXPECT_TRAP(used(2048 - 5).write(header_sized{}), line_81);
    EXPECT_TRAP(used(2048).write(std::uint8_t{1}), line_81);
}

TEST_F(byte_buffer_death_test, tells_the_sink_its_whole_path) {
    const auto check = [] {
        vantu::orvanta::set_log_sink([](std::uint64_t, vantu::orvanta::log_level, const std::string& path,
                                        std::uint64_t, const std::string&) {
            std::fputs(path.c_str(), stderr);
            std::fflush(stderr);
        });
        used(0).skip_read(1);
    };
    EXPECT_TRAP(check(), "hardware-api-service/src/common/include/vantu/orvanta/common/utils/data");
}

} // namespace
} // namespace orvanta_tests
