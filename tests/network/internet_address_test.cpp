// Socket addresses as numbers: of both versions, of a bound socket, and of what is no such address.
#include "network/internet_address.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta;
using bytes = std::vector<std::uint8_t>;

endpoint address_of(const char* host) {
    const resolved_endpoint resolved = resolve_address(host, "54321");
    EXPECT_EQ(resolved.status, socket_status::ok) << host;
    return resolved.address;
}

bytes first_bytes(const internet_address& numbers, std::size_t count) {
    bytes read;
    for (std::size_t i = 0; i < count; ++i) {
        read.push_back(std::to_integer<std::uint8_t>(numbers.bytes[i]));
    }
    return read;
}

void expect_unknown(const internet_address& numbers) {
    EXPECT_EQ(numbers.version, 0);
    EXPECT_EQ(numbers.port, 0);
    EXPECT_EQ(first_bytes(numbers, 16), bytes(16));
}

TEST(an_internet_address, has_the_numbers_of_version_4) {
    const endpoint from = address_of("127.0.0.1");
    const internet_address numbers = internet_address_of(from.address, from.length);
    EXPECT_EQ(numbers.version, 4);
    EXPECT_EQ(numbers.port, 54321);
    EXPECT_EQ(first_bytes(numbers, 16), (bytes{127, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(an_internet_address, has_the_numbers_of_version_6) {
    const endpoint from = address_of("2001:db8::1:2");
    const internet_address numbers = internet_address_of(from.address, from.length);
    EXPECT_EQ(numbers.version, 6);
    EXPECT_EQ(numbers.port, 54321);
    EXPECT_EQ(first_bytes(numbers, 16),
              (bytes{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0, 0x02}));
}

TEST(an_internet_address, is_not_known_where_the_system_s_is_cut_short) {
    for (const char* const host : {"127.0.0.1", "2001:db8::1:2"}) {
        const endpoint from = address_of(host);
        for (std::int32_t length = -1; length < from.length; ++length) {
            expect_unknown(internet_address_of(from.address, length));
        }
    }
}

TEST(an_internet_address, is_not_known_of_another_family) {
    endpoint from = address_of("2001:db8::1:2");
    from.address.bytes[0] = std::byte{0x7F};
    expect_unknown(internet_address_of(from.address, from.length));
}

TEST(a_local_address, is_that_which_the_socket_is_bound_to) {
    opened_socket opened = open_bound_socket("127.0.0.1", "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    const internet_address numbers = local_address_of(opened.socket);
    EXPECT_EQ(numbers.version, 4);
    EXPECT_STREQ(("127.0.0.1:" + std::to_string(numbers.port)).c_str(),
                 stringify_socket(opened.socket).c_str());
    EXPECT_EQ(first_bytes(numbers, 4), (bytes{127, 0, 0, 1}));
    close_socket(opened.socket);
}

TEST(a_local_address, is_not_known_of_what_is_no_socket) {
    expect_unknown(local_address_of(invalid_socket));
}

} // namespace
