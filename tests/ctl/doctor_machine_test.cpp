// The judgement of the doctor on the machine: loopback, ports, versions.
#include "ctl/doctor/machine_checks.hpp"
#include "support/udp_socket.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

loopback_view looked(std::vector<std::string> addresses, const char* four = "", const char* six = "") {
    return {{std::move(addresses), ""}, four, six};
}

const port_holder simulator_on_four{54320, "127.0.0.1", 12, "orvanta-simulator"};
const port_holder simulator_on_six{54320, "::1", 12, "orvanta-simulator"};
const port_holder hidden_on_all{54320, "0.0.0.0"};

std::vector<std::uint16_t> client_ports(std::size_t count) {
    std::vector<std::uint16_t> ports(count);
    std::iota(ports.begin(), ports.end(), first_client_port);
    return ports;
}

TEST(loopback_check, is_well_when_what_localhost_names_carries_datagrams) {
    const finding both = check_loopback(looked({"::1", "127.0.0.1"}));
    EXPECT_EQ(both.outcome, check_outcome::ok);
    EXPECT_EQ(both.seen, "localhost is ::1 and 127.0.0.1; 127.0.0.1 and ::1 carry datagrams");
    const finding four_alone = check_loopback(looked({"127.0.0.1"}, "", "refused"));
    EXPECT_EQ(four_alone.outcome, check_outcome::ok);
    EXPECT_EQ(four_alone.seen,
              "localhost is 127.0.0.1, which carries datagrams; ::1 does not, and is not needed");
}

TEST(loopback_check, warns_of_a_named_address_that_carries_nothing) {
    const finding found = check_loopback(looked({"127.0.0.1", "::1"}, "", "refused"));
    EXPECT_EQ(found.outcome, check_outcome::warning);
    EXPECT_EQ(found.seen, "localhost is 127.0.0.1 and ::1; ::1 carries nothing: refused");
    EXPECT_EQ(found.remedy, "as long as localhost is 127.0.0.1 first this does no harm; else take ::1 out of "
                            "the system's hosts file");
}

TEST(loopback_check, fails_when_the_address_that_the_library_uses_carries_nothing) {
    for (const auto& seen : {looked({"127.0.0.1"}, "lost", ""), looked({"::1", "127.0.0.1"}, "", "lost")}) {
        const finding found = check_loopback(seen);
        EXPECT_EQ(found.outcome, check_outcome::failed);
        EXPECT_EQ(found.status, exit_status::refused);
        EXPECT_THAT(found.seen, testing::EndsWith("carries nothing: lost"));
        EXPECT_THAT(found.remedy, testing::StartsWith("bring the loopback interface up"));
    }
}

TEST(loopback_check, fails_when_localhost_is_unknown_or_somewhere_else) {
    const finding unknown = check_loopback({{{}, "Name or service not known"}, "", ""});
    EXPECT_EQ(unknown.outcome, check_outcome::failed);
    EXPECT_EQ(unknown.seen, "the name localhost is not known: Name or service not known");
    const finding elsewhere = check_loopback(looked({"192.0.2.1", "127.0.0.1"}));
    EXPECT_EQ(elsewhere.outcome, check_outcome::failed);
    EXPECT_THAT(elsewhere.remedy, testing::HasSubstr("127.0.0.1"));
}

TEST(loopback_check, sends_a_datagram_to_itself) {
    const loopback_view seen = look_at_loopback(std::chrono::seconds(10));
    EXPECT_THAT(seen.localhost.addresses, testing::Contains(testing::AnyOf("127.0.0.1", "::1")));
    EXPECT_EQ(seen.failure_of_four, "");
}

TEST(service_port_check, names_the_holder_and_its_addresses) {
    const finding found = check_service_port({{simulator_on_four, simulator_on_six}}, "::1");
    EXPECT_EQ(found.outcome, check_outcome::ok);
    EXPECT_EQ(found.seen, "UDP port 54320 is held by orvanta-simulator (process 12) on 127.0.0.1 and ::1");
    EXPECT_EQ(check_service_port({{hidden_on_all}}, "127.0.0.1").seen,
              "UDP port 54320 is held by a process that the system does not name on 0.0.0.0");
}

TEST(service_port_check, fails_when_nobody_holds_the_port) {
    const finding found = check_service_port(std::vector<port_holder>{}, "127.0.0.1");
    EXPECT_EQ(found.outcome, check_outcome::failed);
    EXPECT_EQ(found.status, exit_status::no_service);
    EXPECT_EQ(found.remedy, "start the device service, or orvanta-simulator where there is no device");
}

TEST(service_port_check, fails_when_the_service_listens_where_the_library_does_not_ask) {
    const finding found = check_service_port({{simulator_on_four}}, "::1");
    EXPECT_EQ(found.outcome, check_outcome::failed);
    EXPECT_EQ(found.status, exit_status::no_service);
    EXPECT_EQ(found.seen, "UDP port 54320 is held by orvanta-simulator (process 12) on 127.0.0.1, but "
                          "localhost is ::1 first");
    EXPECT_EQ(check_service_port({{hidden_on_all}}, "::1").outcome, check_outcome::failed);
    EXPECT_EQ(check_service_port({{simulator_on_six}}, "127.0.0.1").outcome, check_outcome::failed);
}

TEST(service_port_check, warns_when_the_system_has_no_list) {
    EXPECT_EQ(check_service_port(std::nullopt, "127.0.0.1").outcome, check_outcome::warning);
}

TEST(client_ports_check, counts_what_is_free) {
    EXPECT_EQ(check_client_ports({}, {}).seen, "all of the 16 UDP ports 54321 to 54336 are free");
    const port_holder cli{54321, "127.0.0.1", 7, "orvanta-cli"};
    const port_holder foreign{54322, "::", 8, "other"};
    const finding one = check_client_ports({54321}, {cli, foreign});
    EXPECT_EQ(one.outcome, check_outcome::ok);
    EXPECT_EQ(one.seen, "15 of the 16 UDP ports 54321 to 54336 are free, taken by orvanta-cli (process 7)");
}

TEST(client_ports_check, warns_when_few_are_left_and_fails_when_none_is) {
    EXPECT_EQ(check_client_ports(client_ports(12), {}).outcome, check_outcome::ok);
    EXPECT_EQ(check_client_ports(client_ports(13), {}).outcome, check_outcome::warning);
    EXPECT_EQ(check_client_ports(client_ports(15), {}).seen, "1 of the 16 UDP ports 54321 to 54336 is free");
    const finding none = check_client_ports(client_ports(16), {{54330, "127.0.0.1"}});
    EXPECT_EQ(none.outcome, check_outcome::failed);
    EXPECT_EQ(none.status, exit_status::refused);
    EXPECT_EQ(none.seen, "0 of the 16 UDP ports 54321 to 54336 are free, taken by a process that the system "
                         "does not name");
}

TEST(versions_check, compares_program_and_library) {
    const finding same = check_versions({0x020000, "2.0.0"}, {0x020000, "2.0.0"});
    EXPECT_EQ(same.outcome, check_outcome::ok);
    EXPECT_EQ(same.seen, "orvantactl 2.0.0, library 2.0.0; the protocol does not tell the service's version");
    EXPECT_EQ(check_versions({0x020000, "2.0.0"}, {0x020100, "2.1.0"}).outcome, check_outcome::ok);
    EXPECT_EQ(check_versions({0x020100, "2.1.0"}, {0x020000, "2.0.0"}).outcome, check_outcome::warning);
    EXPECT_EQ(check_versions({0x020000, "2.0.0"}, {0x030000, "3.0.0"}).outcome, check_outcome::failed);
}

TEST(port_holders, name_the_process_that_holds_a_port) {
    const auto held = orvanta_tests::udp_socket::bound_to("127.0.0.1", "0");
    ASSERT_TRUE(held);
    const auto port = static_cast<std::uint16_t>(std::stoi(held->port()));
    const auto holders = holders_of(port, port);
    ASSERT_TRUE(holders);
    ASSERT_EQ(holders->size(), 1U);
    EXPECT_EQ(holders->front().port, port);
    EXPECT_EQ(holders->front().address, "127.0.0.1");
    EXPECT_EQ(holders->front().process, platform::process_id());
    EXPECT_THAT(holders->front().program, testing::StartsWith("ctl_tests"));
}

} // namespace
