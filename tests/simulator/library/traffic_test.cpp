// Trace and capture of a simulator, beside what a client of bare datagrams has sent and received.
#include "shared/capture_file.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "support/scratch_folder.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using vantu::orvanta::capture_reader;
using vantu::orvanta::captured_datagram;
using vantu::orvanta::service_simulator;

const bytes opening_of_the_first =
    datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}});

service_simulator::settings quiet_and_by_hand() {
    service_simulator::settings settings;
    settings.manual_clock = true;
    settings.rate_hz = 0;
    settings.seed = 1;
    settings.palmetron_count = 0;
    return settings;
}

void serve(service_simulator& service, std::size_t count) {
    while (count > 0) {
        count -= std::min(count, service.serve_waiting());
    }
}

class traffic : public testing::Test {
  protected:
    traffic() {
        settings.trace = [this](std::string_view line) { lines.emplace_back(line); };
        settings.warn = [this](std::string_view line) { warnings.emplace_back(line); };
        settings.capture_path = folder.file("traffic.pcap");
    }

    service_simulator& start() { return service.emplace(settings); }

    void connect(test_client& client) {
        client.send(datagram({connect_operation(0)}));
        serve(*service, 1);
        EXPECT_FALSE(client.receive().empty());
        address = service->clients().at(0).address;
        lines.clear();
    }

    [[nodiscard]] std::vector<captured_datagram> captured() const {
        std::vector<captured_datagram> all;
        capture_reader reader(settings.capture_path);
        while (auto one = reader.next()) {
            all.push_back(std::move(*one));
        }
        return all;
    }

    scratch_folder folder;
    service_simulator::settings settings = quiet_and_by_hand();
    std::vector<std::string> lines;
    std::vector<std::string> warnings;
    std::string address;                      // of the client
    std::optional<service_simulator> service; // tells of its goodbye at the end
};

bytes bytes_of(const captured_datagram& one) {
    const auto* begin = reinterpret_cast<const std::uint8_t*>(one.bytes.data());
    return {begin, begin + one.bytes.size()};
}

TEST_F(traffic, is_traced_a_line_a_datagram) {
    start().advance(1500ms);
    test_client client("127.0.0.1", service->port());
    client.send(datagram({connect_operation(0)}));
    serve(*service, 1);
    address = service->clients().at(0).address;
    EXPECT_THAT(lines,
                ElementsAre("1.500000 in  " + address +
                                " -: connect value_a=0 value_b=0 keep_alive_ns=5000000000 "
                                "process_id=16909060 client_name=\"tester\" version_text=\"2.0.0|2.0.0\"",
                            "1.500000 out " + address +
                                " 11400714817187610625 'tester': device_added device_id=1 device_type=1 "
                                "second_byte=0 short_id=12289 uuid=6e2b84105f3c4d719a03c53800000001; "
                                "device_info_orvanta3 device_id=1 information=0200000000000001 "
                                "handedness=1; connected client_id=11400714817187610625"));
    lines.clear();
    service->advance(250us);
    client.send(opening_of_the_first);
    serve(*service, 1);
    client.send(goodbye_of_a_client);
    serve(*service, 1);
    const std::string known = address + " 11400714817187610625 'tester': ";
    EXPECT_THAT(lines, ElementsAre("1.500250 in  " + known + "device_open tag=1 device_id=1 value=0",
                                   "1.500250 out " + known + "device_opened tag=1 device_id=1",
                                   "1.500250 in  " + known + "disconnect",
                                   "1.500250 out " + known + "disconnected"));
}

TEST_F(traffic, is_traced_with_the_fault_that_happens_to_a_datagram_as_it_was_before) {
    settings.rate_hz = 100;
    settings.faults = {"drop @op=device_open,nth=2", "truncate 9@op=device_opened", "drop @op=33,nth=3"};
    start();
    test_client client("127.0.0.1", service->port());
    connect(client);
    const std::string known = address + " 11400714817187610625 'tester': ";
    client.send(opening_of_the_first);
    serve(*service, 1);
    client.send(opening_of_the_first);
    serve(*service, 1);
    EXPECT_THAT(
        lines,
        ElementsAre("0.000000 in  " + known + "device_open tag=1 device_id=1 value=0",
                    "0.000000 out " + known + "device_opened tag=1 device_id=1 <- truncate 9@op=19",
                    "0.000000 out " + known + "[3 bytes left]",
                    "0.000000 in  " + known + "device_open tag=1 device_id=1 value=0",
                    "0.000000 in  " + known + "device_open tag=1 device_id=1 value=0 <- drop @op=18,nth=2"));
    lines.clear();
    service->advance(40ms);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines, Each(HasSubstr("cursor_state device_id=1 ")));
    EXPECT_THAT(lines[0], testing::StartsWith("0.000100 out "));
    EXPECT_THAT(lines[1], testing::StartsWith("0.010000 out "));
    EXPECT_THAT(lines[2], testing::StartsWith("0.020000 out "));
    EXPECT_THAT(lines[2], testing::EndsWith(" <- drop @op=33,nth=3"));
    EXPECT_THAT(lines[3], testing::StartsWith("0.030000 out "));
    EXPECT_THAT(lines[3], Not(HasSubstr("<-")));
}

TEST_F(traffic, is_captured_as_the_client_sent_and_received_it) {
    settings.faults = {"drop @op=device_open,nth=2", "drop @op=device_opened,nth=2",
                       "inject 1@op=device_closed"};
    start();
    test_client client("127.0.0.1", service->port());
    std::vector<bytes> in;
    std::vector<bytes> out;
    const auto say = [&](const bytes& content, std::size_t answers) {
        client.send(content);
        in.push_back(content);
        serve(*service, 1);
        for (std::size_t i = 0; i < answers; ++i) {
            out.push_back(client.receive());
        }
    };
    say(datagram({connect_operation(0)}), 1);
    const std::string port = service->clients().at(0).address.substr(10);
    say(opening_of_the_first, 1); // answered
    say(opening_of_the_first, 0); // lost on its way in
    service->advance(10ms);
    out.push_back(client.receive());
    say(opening_of_the_first, 0); // its answer is lost on its way out
    say(datagram({{0xFF, 0x14, 0x04, 0x00, 0x02, 0x01, 0x00, 0x00, 0x00}}), 2);
    say({}, 0);

    std::vector<bytes> captured_in;
    std::vector<bytes> captured_out;
    std::size_t forged = 0;
    for (const captured_datagram& one : captured()) {
        const bool comes = std::to_string(one.to.port) == service->port();
        (comes ? captured_in : captured_out).push_back(bytes_of(one));
        EXPECT_EQ(std::to_string(comes ? one.from.port : one.to.port), port);
        EXPECT_FALSE(one.from.is_ipv6);
        EXPECT_EQ(one.from.address[0], std::byte{127});
        EXPECT_EQ(one.to.address[3], std::byte{1});
        forged += !comes && std::to_string(one.from.port) != service->port() ? 1 : 0;
    }
    EXPECT_EQ(captured_in, in);
    EXPECT_EQ(captured_out, out);
    EXPECT_EQ(forged, 1U);
    EXPECT_EQ(captured().at(0).time_ns, 0);
    EXPECT_EQ(captured().back().time_ns, 10'000'000);
    EXPECT_EQ(captured().size(),
              static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                  return line.find(" <- ") == std::string::npos;
              })));
    EXPECT_TRUE(warnings.empty());
}

TEST_F(traffic, of_a_service_with_a_thread_is_captured_with_the_time_of_the_day) {
    using namespace std::chrono;
    settings.manual_clock = false;
    const auto before = system_clock::now();
    start().start();
    test_client client("127.0.0.1", service->port());
    client.send(datagram({connect_operation(0)}));
    (void)client.receive();
    service->stop();
    const auto all = captured();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_GE(all.front().time_ns, duration_cast<nanoseconds>(before.time_since_epoch()).count());
    EXPECT_LE(all.back().time_ns, duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count());
    EXPECT_EQ(bytes_of(all.back()), goodbye_of_the_service);
}

TEST_F(traffic, of_ipv6_is_captured_with_its_addresses) {
    start();
    auto probe = vantu::orvanta::open_bound_socket("::1", "0");
    if (probe.status != vantu::orvanta::socket_status::ok) {
        EXPECT_EQ(probe.status, vantu::orvanta::socket_status::unavailable);
        return; // a system without IPv6
    }
    vantu::orvanta::close_socket(probe.socket);
    test_client client("::1", service->port());
    client.send(datagram({connect_operation(0)}));
    serve(*service, 1);
    (void)client.receive();
    const auto all = captured();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_TRUE(all[0].from.is_ipv6);
    EXPECT_EQ(all[0].from.address[15], std::byte{1});
    EXPECT_EQ(all[0].to, all[1].from);
    EXPECT_EQ(all[0].from, all[1].to);
}

TEST_F(traffic, cannot_be_captured_where_there_is_no_folder) {
    settings.capture_path = folder.file("none/traffic.pcap");
    try {
        start();
        ADD_FAILURE() << "captured into no folder";
    } catch (const std::runtime_error& refused) {
        EXPECT_THAT(refused.what(), testing::StartsWith("cannot write " + settings.capture_path + ": "));
    }
}

} // namespace
} // namespace orvanta_tests
