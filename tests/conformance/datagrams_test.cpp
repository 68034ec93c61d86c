// How the kit writes requests and reads what a service sends.
#include "conformance/datagrams.hpp"

#include "support/bytes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using conformance::damage;
using testing::ElementsAre;

std::vector<std::byte> raw(const bytes& from) {
    std::vector<std::byte> all;
    for (const std::uint8_t one : from) {
        all.push_back(std::byte{one});
    }
    return all;
}

std::vector<damage> damages_of(const bytes& datagram) {
    std::vector<damage> kinds;
    for (const auto& one : conformance::read_datagram(raw(datagram)).damages) {
        kinds.push_back(one.kind);
    }
    return kinds;
}

std::vector<int> codes_of(const bytes& datagram) {
    std::vector<int> codes;
    for (const auto& one : conformance::read_datagram(raw(datagram)).operations) {
        codes.push_back(one.code);
    }
    return codes;
}

const bytes opened{0xFF, 0x13, 0x04, 0x00, 0x03, 0x07, 0x00, 0x00, 0x00};
const bytes grip = op(40, 0, join({u32(5), {1}, filled(16, 2), {2, 8, 9}}));

TEST(a_datagram_of_the_kit, has_the_bytes_of_the_protocol) {
    EXPECT_EQ(conformance::datagram_of(5, 2), raw({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 5, 0, 0, 2}));
    EXPECT_EQ(conformance::device_request(69, 3, 7, std::array{std::byte{1}}),
              raw({0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 69, 5, 0, 3, 7, 0, 0, 0, 1}));
}

TEST(a_datagram_of_the_kit, can_be_each_request_that_names_a_device) {
    std::vector<int> codes;
    for (const auto& row : conformance::device_requests()) {
        codes.push_back(row.code);
    }
    EXPECT_THAT(codes, ElementsAre(18, 20, 47, 64, 66, 67, 68, 69, 71));
}

TEST(a_right_datagram, is_read_without_damage) {
    const auto read = conformance::read_datagram(raw(datagram({opened, grip, op(6, 0)})));
    EXPECT_TRUE(read.damages.empty());
    ASSERT_EQ(read.operations.size(), 3U);
    EXPECT_EQ(read.operations[0].code, 19);
    EXPECT_EQ(read.operations[0].tag, 3);
    EXPECT_EQ(read.operations[0].device_id(), 7U);
    EXPECT_EQ(read.operations[0].record(), raw({}));
    EXPECT_EQ(read.operations[1].device_id(), 5U);
    EXPECT_EQ(read.operations[1].record().size(), 20U);
    EXPECT_EQ(read.operations[2].device_id(), 0U);
}

TEST(a_damaged_datagram, shows_its_damage) {
    bytes other_magic = datagram({opened});
    other_magic[0] = 0xE8;
    EXPECT_THAT(damages_of(other_magic), ElementsAre(damage::header));
    bytes other_version = datagram({opened});
    other_version[2] = 2;
    EXPECT_THAT(damages_of(other_version), ElementsAre(damage::header));
    bytes reserved = datagram({opened});
    reserved[5] = 1;
    EXPECT_THAT(damages_of(reserved), ElementsAre(damage::reserved));
    bytes record = datagram({opened});
    record[6] = 0xFE;
    EXPECT_THAT(damages_of(record), ElementsAre(damage::record_magic));
    EXPECT_THAT(damages_of(datagram({op(200, 0, {1, 2}), opened})), ElementsAre(damage::unknown_code));
    // A request does not go to clients.
    EXPECT_THAT(damages_of(datagram({op(18, 0, bytes(6))})), ElementsAre(damage::unknown_code));
    EXPECT_THAT(damages_of(datagram({op(19, 0, bytes(5))})), testing::Contains(damage::body_length));
    EXPECT_THAT(damages_of(datagram({op(19, 0, bytes(3))})), ElementsAre(damage::body_length));
    EXPECT_THAT(damages_of(datagram({op_of_length(40, 0, 22, join({bytes(21), {1}}))})),
                ElementsAre(damage::body_length));
    EXPECT_THAT(damages_of(datagram({opened, {0xFF, 6, 0, 0}})), ElementsAre(damage::not_whole));
    EXPECT_THAT(damages_of(datagram({})), ElementsAre(damage::not_whole));
    EXPECT_THAT(damages_of({}), ElementsAre(damage::not_whole));
}

TEST(a_damaged_datagram, is_read_as_far_as_a_client_reads) {
    bytes reserved = datagram({opened});
    reserved[4] = 1;
    EXPECT_THAT(codes_of(reserved), ElementsAre(19));
    EXPECT_THAT(codes_of(datagram({op(200, 0, {1, 2}), opened})), ElementsAre(19));
    EXPECT_THAT(codes_of(datagram({op_of_length(200, 0, 99, {1, 2}), opened})), ElementsAre());
    EXPECT_THAT(codes_of(datagram({opened, {0xFE, 6, 0, 0, 0}, opened})), ElementsAre(19));
    EXPECT_THAT(codes_of(datagram({op(19, 0, bytes(3))})), ElementsAre());
}

TEST(a_truncated_datagram, is_damaged_wherever_it_ends) {
    const bytes whole = datagram({opened, grip});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const bool ends_after_one = size == 6 + opened.size();
        EXPECT_THAT(damages_of(cut), ends_after_one ? testing::Matcher<std::vector<damage>>(ElementsAre())
                                                    : ElementsAre(damage::not_whole))
            << size;
        EXPECT_EQ(codes_of(cut).size(), size < 6 + opened.size() ? 0U : 1U) << size;
    }
}

TEST(an_operation, is_told_in_words) {
    EXPECT_EQ(conformance::text_of(std::nullopt), "nothing");
    const auto read =
        conformance::read_datagram(raw(datagram({opened, op(240, 4, {7, 0, 0, 0, 177}), op(6, 0)})));
    EXPECT_EQ(conformance::text_of(read.operations[0]), "device_opened, tag 3, device 7");
    EXPECT_EQ(conformance::text_of(read.operations[1]),
              "service_error 177 (device was not opened), tag 4, device 7");
    EXPECT_EQ(conformance::text_of(read.operations[2]), "disconnected, tag 0");
}

} // namespace
} // namespace orvanta_tests
