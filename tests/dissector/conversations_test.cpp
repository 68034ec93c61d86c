// Requests with their answers, and which datagrams are taken for the service's.

#include "dissector/samples.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::int64_t ms = 1'000'000;

struct link {
    std::string response_in;
    std::string request_in;
    std::string time;
    bool operator==(const link&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const link& shown) {
    return stream << "response in " << shown.response_in << ", request in " << shown.request_in << ", time "
                  << shown.time;
}

std::vector<link> links_of(const std::vector<sent_datagram>& datagrams) {
    std::vector<link> links;
    for (const shown_fields& shown :
         dissect(datagrams, {}, {"orvanta.response_in", "orvanta.request_in", "orvanta.response_time"})) {
        const auto value = [&shown = shown](const char* filter) {
            const auto found = shown.find(filter);
            return found != shown.end() ? found->second : std::string();
        };
        links.push_back(
            {value("orvanta.response_in"), value("orvanta.request_in"), value("orvanta.response_time")});
    }
    return links;
}

const link none{};

bytes opening(std::uint8_t tag) {
    return datagram({op(18, tag, {7, 0, 0, 0, 0, 0})});
}
bytes opened(std::uint8_t tag) {
    return datagram({op(19, tag, {7, 0, 0, 0})});
}
bytes refused(std::uint8_t tag) {
    return datagram({op(240, tag, {7, 0, 0, 0, 0xC0})});
}

TEST(linked_requests, name_their_answer_and_the_time_between) {
    const std::vector<link> links =
        links_of({sent_to_service(opening(3), 1000 * ms), sent_to_client(opened(3), 1250 * ms)});
    EXPECT_EQ(links[0], (link{"2", "", "0.250000000"}));
    EXPECT_EQ(links[1], (link{"", "1", "0.250000000"}));
}

TEST(linked_requests, are_answered_by_a_taken_and_by_an_error_as_well) {
    const std::vector<link> links =
        links_of({sent_to_service(opening(3)), sent_to_service(opening(4)), sent_to_client(refused(3), ms),
                  sent_to_client(datagram({op(2, 4)}), 2'000 * ms)});
    EXPECT_EQ(links[0], (link{"3", "", "0.001000000"}));
    EXPECT_EQ(links[1], (link{"4", "", "2.000000000"}));
    EXPECT_EQ(links[2], (link{"", "1", "0.001000000"}));
    EXPECT_EQ(links[3], (link{"", "2", "2.000000000"}));
}

TEST(linked_requests, belong_to_their_client) {
    const std::vector<link> links = links_of({{opening(3), 54321, 54320, 0},
                                              {opening(3), 54336, 54320, 0},
                                              {opened(3), 54320, 54336, ms},
                                              {opened(3), 54320, 54321, 2 * ms}});
    EXPECT_EQ(links[0].response_in, "4");
    EXPECT_EQ(links[1].response_in, "3");
    EXPECT_EQ(links[2].request_in, "2");
    EXPECT_EQ(links[3].request_in, "1");
}

TEST(linked_requests, have_one_answer_of_the_kind_that_the_table_names) {
    const bytes saved = datagram({op(64, 3, {7, 0, 0, 0, 1})});
    const bytes cut = from_hex("E9 9E 01 00 00 00  FF 13 04 00 03 07 00 00");
    const std::vector<link> links =
        links_of({sent_to_service(opening(3)), sent_to_client(saved, ms), sent_to_client(cut, 2 * ms),
                  sent_to_client(opened(4), 2 * ms), sent_to_client(opened(3), 3 * ms),
                  sent_to_client(opened(3), 4 * ms)});
    EXPECT_EQ(links, (std::vector<link>{
                         {"5", "", "0.003000000"}, none, none, none, {"", "1", "0.003000000"}, none}));
}

TEST(linked_requests, give_their_tag_to_the_next) {
    const std::vector<link> links = links_of(
        {sent_to_service(opening(3)), sent_to_service(opening(3), ms), sent_to_client(opened(3), 3 * ms)});
    EXPECT_EQ(links, (std::vector<link>{none, {"3", "", "0.002000000"}, {"", "2", "0.002000000"}}));
}

TEST(linked_requests, have_a_tag) {
    EXPECT_EQ(links_of({sent_to_service(opening(0)), sent_to_client(opened(0), ms)}),
              (std::vector<link>{none, none}));
}

TEST(linked_requests, are_each_linked_where_a_datagram_has_several) {
    const std::vector<link> links = links_of(
        {sent_to_service(opening(1)), sent_to_service(opening(2)),
         sent_to_client(
             datagram({op(19, 2, {7, 0, 0, 0}), op(33, 0, filled(28, 0)), op(19, 1, {7, 0, 0, 0})}), ms)});
    EXPECT_EQ(links[0].response_in, "3");
    EXPECT_EQ(links[1].response_in, "3");
    EXPECT_EQ(links[2].request_in, "2;1");
}

// An operation of a code that travels both ways, with other bodies, between these ports: which way it is
// taken for.
std::vector<std::string> ways_between(const std::vector<std::pair<std::uint16_t, std::uint16_t>>& ports,
                                      const std::vector<std::string>& options = {}) {
    std::vector<sent_datagram> datagrams;
    for (const auto& [from, to] : ports) {
        datagrams.push_back({datagram({op(64, 1, {7, 0, 0, 0, 1})}), from, to});
    }
    std::vector<std::string> ways;
    for (const shown_fields& shown : dissect(datagrams, options)) {
        ways.emplace_back(!shown.contains("orvanta.op.code")            ? "none"
                          : shown.contains("orvanta.config_save.saved") ? "to client"
                                                                        : "to service");
    }
    return ways;
}

TEST(directions, come_from_the_ports) {
    EXPECT_THAT(ways_between({{54321, 54320}, {54320, 54336}, {40000, 54320}, {54320, 40000}}),
                testing::ElementsAre("to service", "to client", "to service", "to client"));
}

TEST(directions, come_from_the_clients_ports_where_the_service_has_another) {
    EXPECT_THAT(ways_between({{54321, 40000}, {40000, 54336}, {40000, 40001}, {54337, 40000}}),
                testing::ElementsAre("to service", "to client", "none", "none"));
}

TEST(directions, follow_the_preference_for_the_services_port) {
    EXPECT_THAT(ways_between({{40001, 40000}, {40000, 40001}, {40000, 54321}, {54321, 54320}},
                             {"-o", "orvanta.service_port:40000"}),
                testing::ElementsAre("to service", "to client", "to client", "to service"));
    EXPECT_THAT(ways_between({{54330, 54321}, {54321, 54330}}, {"-o", "orvanta.service_port:54330"}),
                testing::ElementsAre("to client", "to service"));
}

TEST(directions, leave_the_datagrams_of_other_programs_alone) {
    const bytes foreign = from_hex("17 03 03 00 00 00 FF 06 00 00 00");
    const std::vector<shown_fields> shown =
        dissect({{foreign, 54330, 40000}, {foreign, 40000, 54330}, {foreign, 54320, 40000}});
    EXPECT_EQ(shown[0].size(), 1U);
    EXPECT_EQ(shown[1].size(), 1U);
    EXPECT_TRUE(shown[2].contains("orvanta.damage.header_magic"));
}

} // namespace
} // namespace orvanta_tests
