// Clients, devices, rules and operations of a simulator as data, and waiting for operations.
#include "simulator_library/simulated_client.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>
#include <thread>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using vantu::orvanta::service_simulator;
using direction = service_simulator::direction;

TEST(the_clients, are_told_with_name_address_devices_and_times) {
    service_simulator service(by_hand());
    EXPECT_THAT(service.clients(), IsEmpty());
    simulated_client client(service);
    ASSERT_EQ(client.connect(4'000'000'000), 0);
    client.open(1001);
    client.open(1);
    service.advance(3s);
    const auto clients = service.clients();
    ASSERT_EQ(clients.size(), 1U);
    EXPECT_NE(clients[0].id, 0U);
    EXPECT_EQ(clients[0].number, 1U);
    EXPECT_EQ(clients[0].name, "a user's test");
    EXPECT_THAT(clients[0].address, StartsWith("127.0.0.1:"));
    EXPECT_THAT(clients[0].opened, ElementsAre(1001, 1));
    EXPECT_EQ(clients[0].keep_alive, 4s);
    EXPECT_EQ(clients[0].silent_for, 3s);
}

TEST(the_clients, have_a_keep_alive_time_that_a_clock_can_hold) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(UINT64_MAX), 0);
    EXPECT_EQ(service.clients().at(0).keep_alive, std::chrono::nanoseconds::max());
}

TEST(the_devices, are_told_with_identity_configuration_and_counters) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    service.command("set 1 gravity off 0.25");
    service.command("set 1 torque off");
    service.command("set 1 handedness left");
    service.advance(1s);
    const auto devices = service.devices();
    ASSERT_EQ(devices.size(), 2U);
    const auto& orvanta3 = devices[0];
    EXPECT_EQ(orvanta3.id, 1U);
    EXPECT_EQ(orvanta3.type, service_simulator::device_type::orvanta3);
    EXPECT_EQ(orvanta3.short_id, 0x3001);
    EXPECT_EQ(orvanta3.uuid, "6e2b84105f3c4d719a03c53800000001");
    EXPECT_FALSE(orvanta3.configured.gravity_compensation);
    EXPECT_EQ(orvanta3.configured.scaling_factor, 0.25F);
    EXPECT_FALSE(orvanta3.configured.torque_scaling);
    EXPECT_TRUE(orvanta3.configured.left_handed);
    EXPECT_EQ(orvanta3.opened_by, 1U);
    EXPECT_EQ(orvanta3.requests, 1U);
    EXPECT_EQ(orvanta3.states, 101U);
    const auto& palmetron = devices[1];
    EXPECT_EQ(palmetron.id, 1001U);
    EXPECT_EQ(palmetron.type, service_simulator::device_type::palmetron);
    EXPECT_EQ(palmetron.opened_by, 0U);
    EXPECT_EQ(palmetron.requests, 0U);
    EXPECT_EQ(palmetron.states, 0U);
}

TEST(the_devices, count_on_after_they_were_unplugged) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1001);
    service.command("unplug 1001");
    EXPECT_EQ(service.devices().size(), 1U);
    service.command("plug palmetron");
    EXPECT_EQ(service.devices().at(1).requests, 1U);
    EXPECT_EQ(service.devices().at(1).opened_by, 0U);
    service.command("plug palmetron");
    client.open(1002);
    EXPECT_EQ(service.devices().at(2).requests, 1U);
}

TEST(the_rules, are_told_with_their_counts) {
    service_simulator service(by_hand());
    service.command("drop @op=device_open,nth=2");
    service.command("delay 5@dir=in");
    simulated_client client(service);
    service.command("heal delay");
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    ASSERT_EQ(vantu_orvanta_device_open(client.context(), 1001, 2, 0), 0);
    wait_until([&] { return service.happened("drop") == 1; }, [&] { client.poll(); });
    const auto rules = service.rules();
    ASSERT_EQ(rules.size(), 1U);
    EXPECT_EQ(rules[0].text, "drop @op=18,nth=2");
    EXPECT_EQ(rules[0].fitted, 2U);
    EXPECT_EQ(rules[0].happened, 1U);
}

TEST(the_operations, are_counted_by_name_or_code_where_no_fault_keeps_them) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    EXPECT_EQ(service.operations(direction::in, "connect"), 1U);
    EXPECT_EQ(service.operations(direction::out, "connected"), 1U);
    EXPECT_EQ(service.operations(direction::out, "device_added"), 2U);
    service.command("drop @op=device_open,nth=1");
    service.command("drop @op=device_opened,nth=1");
    ASSERT_EQ(vantu_orvanta_device_open(client.context(), 1, 2, 0), 0);
    wait_until([&] { return service.count().received == 2; }, [&] { client.poll(); });
    EXPECT_EQ(service.operations(direction::in, "device_open"), 0U);
    ASSERT_EQ(vantu_orvanta_device_open(client.context(), 1, 2, 0), 0);
    wait_until([&] { return service.operations(direction::in, "18") == 1; }, [&] { client.poll(); });
    EXPECT_EQ(service.operations(direction::out, "device_opened"), 0U);
    client.open(1);
    EXPECT_EQ(service.operations(direction::in, "device_open"), 2U);
    EXPECT_EQ(service.operations(direction::out, "device_opened"), 1U);
}

TEST(the_operations, that_do_not_travel_that_way_are_refused_with_the_nearest) {
    service_simulator service({});
    const auto refused = [&service](direction way, const char* name) -> std::string {
        try {
            (void)service.operations(way, name);
        } catch (const std::invalid_argument& wrong) {
            EXPECT_THROW((void)service.wait_for(way, name, 0s), std::invalid_argument);
            return wrong.what();
        }
        return {};
    };
    EXPECT_THAT(refused(direction::in, "device_opened"), HasSubstr("to the service; device_open would be"));
    EXPECT_THAT(refused(direction::out, "device_open"), HasSubstr("to clients; device_opened would be"));
    EXPECT_THAT(refused(direction::out, "0"), HasSubstr("'0' is no operation"));
    EXPECT_THAT(refused(direction::in, "256"), HasSubstr("'256' is no operation"));
}

TEST(waiting, ends_when_the_operation_has_come) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    std::thread late([&client] {
        EXPECT_EQ(client.connect(), 0);
        EXPECT_EQ(vantu_orvanta_device_open(client.context(), 1, 2, 0), 0);
    });
    EXPECT_TRUE(service.wait_for(direction::out, "device_opened", 30s));
    EXPECT_TRUE(service.wait_for(direction::in, "connect", 0s)) << "what has come already is not waited for";
    EXPECT_TRUE(service.wait_for(direction::out, "cursor_state", 30s, 20));
    EXPECT_GE(service.operations(direction::out, "cursor_state"), 20U);
    late.join();
}

TEST(waiting, ends_at_its_deadline) {
    service_simulator service({});
    service.start();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(service.wait_for(direction::in, "connect", 20ms));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
    EXPECT_FALSE(service.wait_for(direction::in, "connect", -1s));
}

TEST(waiting, ends_with_the_goodbye_of_a_command) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    std::thread late([&service] { service.command("quit"); });
    EXPECT_TRUE(service.wait_for(direction::out, "disconnected", std::chrono::nanoseconds::max()));
    late.join();
}

TEST(waiting, comes_to_nothing_with_a_manual_clock) {
    service_simulator service(by_hand());
    EXPECT_THROW((void)service.wait_for(direction::in, "connect", 1s), std::logic_error);
}

} // namespace
} // namespace orvanta_tests
