// Captures: the bytes of a file, written out by hand, and what is read from files of other programs.
#include "shared/capture_file.hpp"
#include "shared/capture_frames.hpp"
#include "support/bytes.hpp"
#include "support/scratch_folder.hpp"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <span>
#include <stdexcept>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

std::vector<std::byte> as_bytes(const bytes& of) {
    const auto view = std::as_bytes(std::span(of));
    return {view.begin(), view.end()};
}

socket_place ipv4(std::uint16_t port) {
    return {false, {std::byte{127}, std::byte{0}, std::byte{0}, std::byte{1}}, port};
}

socket_place ipv6(std::uint16_t port) {
    socket_place place{true, {}, port};
    place.address.back() = std::byte{1};
    return place;
}

// Times in nanoseconds, link type raw.
const bytes file_header = from_hex("4D3CB2A1 0200 0400 00000000 00000000 00000400 65000000");

// 1.5 s after the beginning of 1970, 54321 to 54320: E9 9E 01.
const bytes ipv4_frame = from_hex("4500 001F 0000 0000 4011 7CCC 7F000001 7F000001"
                                  "D431 D430 000B 6ED4 E99E01");
const bytes ipv4_record = join({from_hex("01000000 0065CD1D 1F000000 1F000000"), ipv4_frame});
const bytes ipv6_frame = from_hex("60000000 000B 1140 00000000000000000000000000000001"
                                  "00000000000000000000000000000001 D431 D430 000B 6CD5 E99E01");

captured_datagram small(socket_place from, socket_place to, std::int64_t time_ns = 1'500'000'000) {
    return {time_ns, from, to, as_bytes({0xE9, 0x9E, 0x01})};
}

class captures : public testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.file("a.pcap"); }

    [[nodiscard]] bytes content() const {
        std::ifstream file(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void put(const bytes& content) const {
        std::ofstream file(path(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(content.data()),
                   static_cast<std::streamsize>(content.size()));
    }

    [[nodiscard]] std::vector<captured_datagram> read() const {
        capture_reader reader(path());
        std::vector<captured_datagram> all;
        while (auto one = reader.next()) {
            all.push_back(*one);
        }
        return all;
    }

    [[nodiscard]] std::string failure_of_reading() const {
        try {
            (void)read();
            return "none";
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
    }

  private:
    scratch_folder folder_;
};

TEST_F(captures, are_pcap_files_with_headers_of_ip_and_udp) {
    {
        capture_writer writer(path());
        writer.write(small(ipv4(54321), ipv4(54320)));
    }
    EXPECT_EQ(hex(content()), hex(join({file_header, ipv4_record})));
}

TEST_F(captures, are_there_for_others_after_a_flush) {
    capture_writer writer(path());
    EXPECT_EQ(hex(content()), hex(file_header));
    writer.write(small(ipv4(54321), ipv4(54320)));
    writer.flush();
    EXPECT_EQ(hex(content()), hex(join({file_header, ipv4_record})));
}

TEST_F(captures, give_back_what_was_written) {
    std::vector<captured_datagram> written{small(ipv4(54321), ipv4(54320)), small(ipv6(54322), ipv6(54320)),
                                           small(ipv4(54320), ipv4(54321), 1'795'000'000'123'456'789)};
    written[0].bytes.assign(65'507, std::byte{0xA5});
    written[1].bytes.clear();
    {
        capture_writer writer(path());
        for (const captured_datagram& one : written) {
            writer.write(one);
        }
    }
    EXPECT_EQ(read(), written);
}

TEST_F(captures, have_checksums_that_are_right_for_ipv6_too) {
    EXPECT_EQ(raw_frame(small(ipv6(54321), ipv6(54320))), as_bytes(ipv6_frame));
}

TEST_F(captures, are_read_in_microseconds_and_in_the_other_byte_order) {
    put(join({from_hex("A1B2C3D4 0002 0004 00000000 00000000 00040000 00000001"),
              from_hex("00000001 0007A120 0000002D 0000002D"), from_hex("000000000000 000000000000 0800"),
              ipv4_frame}));
    EXPECT_EQ(read(), std::vector{small(ipv4(54321), ipv4(54320))});
}

TEST_F(captures, are_read_with_each_known_beginning_of_a_frame) {
    const std::vector<std::pair<std::uint32_t, std::size_t>> links{{0, 4},    {1, 14},  {101, 0}, {108, 4},
                                                                   {113, 16}, {228, 0}, {276, 20}};
    for (const auto& [link, size] : links) {
        const auto found = datagram_of(as_bytes(join({filled(size, 0), ipv4_frame})), link);
        ASSERT_TRUE(found.has_value()) << link;
        EXPECT_EQ(*found, small(ipv4(54321), ipv4(54320), 0)) << link;
    }
    EXPECT_EQ(datagram_of(as_bytes(ipv6_frame), 229), small(ipv6(54321), ipv6(54320), 0));
}

TEST_F(captures, pass_over_frames_without_a_whole_datagram) {
    bytes tcp = ipv4_frame;
    tcp[9] = 6;
    bytes fragment = ipv4_frame;
    fragment[6] = 0x20;
    bytes long_header = ipv4_frame;
    long_header[0] = 0x4F;
    bytes long_udp = ipv4_frame;
    long_udp[25] = 12;
    for (const bytes& frame : {tcp, fragment, long_header, long_udp}) {
        EXPECT_FALSE(datagram_of(as_bytes(frame), link_type::raw).has_value()) << hex(frame);
    }
    for (const bytes& whole : {ipv4_frame, ipv6_frame}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            EXPECT_FALSE(
                datagram_of(as_bytes({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}),
                            link_type::raw)
                    .has_value())
                << size;
        }
    }
    put(join({file_header, from_hex("00000000 00000000 03000000 03000000 000000"), ipv4_record}));
    capture_reader reader(path());
    EXPECT_EQ(reader.next(), small(ipv4(54321), ipv4(54320)));
    EXPECT_EQ(reader.next(), std::nullopt);
    EXPECT_EQ(reader.passed_over(), 1U);
}

TEST_F(captures, are_refused_when_they_are_none) {
    EXPECT_THAT(failure_of_reading(), testing::HasSubstr("cannot read "));
    put({});
    EXPECT_THAT(failure_of_reading(),
                testing::EndsWith("a.pcap is no capture: it is shorter than a pcap header"));
    put(filled(24, 'x'));
    EXPECT_THAT(failure_of_reading(),
                testing::EndsWith("is no capture: it does not begin as a pcap file does"));
    put(join({from_hex("0A0D0D0A"), filled(20, 0)}));
    EXPECT_THAT(failure_of_reading(), testing::HasSubstr("is in the pcapng format; 'editcap -F pcap "));
    put(from_hex("4D3CB2A1 0200 0400 00000000 00000000 00000400 69000000"));
    EXPECT_THAT(failure_of_reading(),
                testing::HasSubstr("has frames of link type 105, which is not known; "));
}

TEST_F(captures, tell_where_they_are_cut_short) {
    const bytes whole = join({file_header, ipv4_record});
    for (std::size_t size = file_header.size() + 1; size < whole.size(); ++size) {
        put({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        EXPECT_THAT(failure_of_reading(), testing::EndsWith("a.pcap ends in the middle of a frame")) << size;
    }
    put(join({file_header, from_hex("00000000 00000000 FFFFFFFF FFFFFFFF")}));
    EXPECT_THAT(failure_of_reading(), testing::EndsWith("a.pcap ends in the middle of a frame"));
}

TEST(a_capture_that_cannot_be_written, says_so) {
    try {
        const capture_writer writer("no such folder/a.pcap");
        ADD_FAILURE() << "it was begun";
    } catch (const std::runtime_error& failure) {
        EXPECT_THAT(failure.what(), testing::StartsWith("cannot write no such folder/a.pcap: "));
    }
}

} // namespace
} // namespace orvanta_tests
