// A capture of the simulator's in tshark: a conversation as client and service had it.

#include "dissector/dissected.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "support/scratch_folder.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using vantu::orvanta::service_simulator;

void serve_one(service_simulator& service) {
    while (service.serve_waiting() == 0) {
    }
}

TEST(captures_of_the_simulator, show_the_conversation_in_its_order) {
    const scratch_folder folder;
    service_simulator::settings settings;
    settings.manual_clock = true;
    settings.rate_hz = 0;
    settings.palmetron_count = 0;
    settings.capture_path = folder.file("traffic.pcap");
    std::string port;
    {
        service_simulator service(settings);
        port = service.port();
        test_client client("127.0.0.1", port);
        for (const bytes& request :
             {datagram({connect_operation(0)}), datagram({op(18, 1, {1, 0, 0, 0, 0, 0})}),
              datagram({op(66, 2, {1, 0, 0, 0})}), datagram({op(18, 3, {9, 0, 0, 0, 0, 0})}),
              datagram({op(5, 0)})}) {
            client.send(request);
            serve_one(service);
            service.advance(std::chrono::milliseconds(20));
        }
    }
    const std::vector<shown_fields> shown =
        dissect_file(settings.capture_path, {"-o", "orvanta.service_port:" + port});
    std::vector<std::string> infos;
    for (const shown_fields& one : shown) {
        infos.push_back(one.at("info"));
    }
    EXPECT_THAT(infos,
                testing::ElementsAre(
                    "connect", "device_added device_id=1; device_info_orvanta3 device_id=1; connected",
                    "device_open tag=1 device_id=1", "device_opened tag=1 device_id=1",
                    "status_motor_current device_id=1; status_power_supply device_id=1",
                    "config_gravity_compensation_get tag=2 device_id=1",
                    "config_gravity_compensation_get tag=2 device_id=1", "device_open tag=3 device_id=9",
                    "service_error tag=3 device_id=9", "disconnect", "disconnected"));
    EXPECT_EQ(shown.at(0).at("orvanta.connect.client_name"), "tester");
    EXPECT_EQ(shown.at(6).at("orvanta.config_gravity_compensation_get.scaling_factor"), "0.75");
    EXPECT_EQ(shown.at(8).at("orvanta.service_error.status"), "192");
    EXPECT_EQ(shown.at(8).at("orvanta.request_in"), "8");
    EXPECT_EQ(shown.at(7).at("orvanta.response_in"), "9");
}

} // namespace
} // namespace orvanta_tests
