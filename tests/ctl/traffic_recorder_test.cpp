// Datagrams that the library tells, as captures keep them.
#include "ctl/report/exit_status.hpp"
#include "ctl/service/captured_traffic.hpp"
#include "ctl/service/traffic_recorder.hpp"
#include "ctl/support/capture_lines.hpp"
#include "support/scratch_folder.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

vantu_orvanta_traffic told(const bytes& content, std::uint32_t way = vantu_orvanta_traffic_received) {
    vantu_orvanta_traffic one{};
    one.size = sizeof one;
    one.system_ns = 1'700'000'000'000'000'001;
    one.bytes = content.data();
    one.length = content.size();
    one.whole_length = content.size();
    one.way = way;
    one.local = {{127, 0, 0, 1}, 54322, 4, 0};
    one.peer = {{127, 0, 0, 2}, 54320, 4, 0};
    return one;
}

const bytes three{1, 2, 3};

TEST(a_told_datagram, goes_from_the_client_or_to_it) {
    const captured_datagram sent = captured(told(three, vantu_orvanta_traffic_sent));
    EXPECT_EQ(sent.time_ns, 1'700'000'000'000'000'001);
    EXPECT_EQ(sent.from, (socket_place{false, {std::byte{127}, {}, {}, std::byte{1}}, 54322}));
    EXPECT_EQ(sent.to, (socket_place{false, {std::byte{127}, {}, {}, std::byte{2}}, 54320}));
    EXPECT_EQ(content_of(sent), three);
    const captured_datagram received = captured(told(three));
    EXPECT_EQ(received.from, sent.to);
    EXPECT_EQ(received.to, sent.from);
}

TEST(a_told_datagram, keeps_addresses_of_version_6_at_both_ends) {
    vantu_orvanta_traffic one = told(three);
    one.local = {};
    one.peer = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 54320, 6, 0};
    const captured_datagram kept = captured(one);
    EXPECT_TRUE(kept.from.is_ipv6);
    EXPECT_TRUE(kept.to.is_ipv6) << "a frame has one version";
    EXPECT_EQ(kept.from.address[15], std::byte{1});
    EXPECT_EQ(kept.from.port, 54320);
}

TEST(a_told_datagram, has_zeros_in_the_place_of_bytes_that_were_dropped) {
    vantu_orvanta_traffic one = told(three);
    one.whole_length = 5;
    EXPECT_EQ(content_of(captured(one)), (bytes{1, 2, 3, 0, 0}));
    one.whole_length = 0;
    EXPECT_EQ(content_of(captured(one)), (bytes{1, 2, 3, 0})) << "the length is not known";
}

TEST(a_told_datagram, may_be_empty) {
    EXPECT_TRUE(captured(told({})).bytes.empty());
}

TEST(a_recorder, takes_datagrams_of_several_threads_whole) {
    const scratch_folder folder;
    {
        traffic_recorder recorder(folder.file("a.pcap"));
        const auto take_many = [&](std::uint8_t value) {
            const bytes content = filled(100, value);
            for (int i = 0; i < 200; ++i) {
                recorder.take(told(content));
            }
        };
        std::thread other(take_many, 1);
        take_many(2);
        other.join();
        EXPECT_EQ(recorder.finish(), std::nullopt);
        const auto kept = datagrams_of(folder.file("a.pcap"));
        ASSERT_EQ(kept.size(), 400U);
        for (const captured_datagram& one : kept) {
            ASSERT_EQ(one.bytes.size(), 100U);
            EXPECT_EQ(std::count(one.bytes.begin(), one.bytes.end(), one.bytes.front()), 100);
        }
    }
}

TEST(a_recorder, brings_datagrams_into_the_order_of_their_times) {
    const scratch_folder folder;
    traffic_recorder recorder(folder.file("a.pcap"));
    for (const int time_ms : {20, 10, 30, 400, 390}) {
        vantu_orvanta_traffic one = told(three);
        one.system_ns = static_cast<std::uint64_t>(time_ms) * 1'000'000;
        recorder.take(one);
    }
    EXPECT_EQ(datagrams_of(folder.file("a.pcap")).size(), 3U) << "the later ones wait for others";
    EXPECT_EQ(recorder.finish(), std::nullopt);
    std::vector<std::int64_t> times_ms;
    for (const captured_datagram& one : datagrams_of(folder.file("a.pcap"))) {
        times_ms.push_back(one.time_ns / 1'000'000);
    }
    EXPECT_EQ(times_ms, (std::vector<std::int64_t>{10, 20, 30, 390, 400}));
}

TEST(a_recorder, refuses_a_path_without_a_folder) {
    const scratch_folder folder;
    try {
        const traffic_recorder recorder(folder.file("none/a.pcap"));
        ADD_FAILURE() << "it was accepted";
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::refused);
    }
}

} // namespace
