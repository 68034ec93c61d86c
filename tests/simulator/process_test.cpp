// The simulator as a program: its lines, its exit statuses, its state file.
#include "network/socket.hpp"
#include "shared/capture_file.hpp"
#include "simulator/fixtures/running_simulator.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "simulator/service/saved_state.hpp"
#include "support/scratch_folder.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <set>
#include <thread>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const bytes open_first = datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}});
const bytes set_half =
    datagram({{0xFF, 0x43, 0x09, 0x00, 0x02, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x3F}});
const bytes save_first = datagram({{0xFF, 0x40, 0x04, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00}});
const bytes query_gravity = datagram({{0xFF, 0x42, 0x04, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00}});

class the_program : public testing::Test {
  protected:
    scratch_folder folder;
};

void connect_and_open(test_client& client) {
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive_until(16).empty());
    client.send(open_first);
    EXPECT_FALSE(client.receive_until(19).empty());
}

TEST_F(the_program, says_goodbye_to_its_clients_when_it_is_told_to_quit_and_ends_with_0) {
    running_simulator tested({"--port", "0", "--interactive"});
    test_client client("127.0.0.1", tested.port());
    connect_and_open(client);
    tested.quit();
    EXPECT_EQ(client.receive_until(6), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "ok\n");
    EXPECT_EQ(end.errors, "");
}

TEST_F(the_program, tells_with_verbose_of_connects_opens_sets_saves_and_errors) {
    running_simulator tested({"--port", "0", "--verbose", "--rate", "0", "--interactive"});
    test_client client("127.0.0.1", tested.port());
    connect_and_open(client);
    client.send(set_half);
    client.send(save_first);
    client.send(datagram({{0xFF, 0xF1, 0x00, 0x00, 0x09}}));
    EXPECT_FALSE(client.receive_until(240).empty());
    tested.quit();
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.output, "ok\n");
    for (const char* part :
         {"connected, 'tester', process 16909060\n", "opened device 1\n",
          "set gravity compensation of device 1 on, factor 0.5\n", "saved the configuration of device 1\n",
          "refused with status 0xa1, invalid operation; device 0, tag 9\n"}) {
        EXPECT_THAT(end.errors, HasSubstr(part));
    }
}

TEST_F(the_program, ends_with_1_and_one_line_when_the_port_is_taken) {
    running_simulator holder({"--port", "0"});
    const std::string port = holder.port();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--port", port},
          std::vector<std::string>{"--port", port, "--single-client"}}) {
        const auto end = running_simulator(arguments).wait_for_end();
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.errors, "orvanta-simulator: cannot listen on 127.0.0.1 port " + port +
                                  ": another program holds it, or it is not allowed\n");
    }
}

TEST_F(the_program, ends_with_2_and_one_line_when_the_command_line_is_wrong) {
    const auto end = running_simulator({"--port", "none"}).wait_for_end();
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "orvanta-simulator: --port: Value none not in range 0 to 65535\n");
}

TEST_F(the_program, shows_help_and_version_on_standard_output_and_ends_with_0) {
    const auto version = running_simulator({"--version"}).wait_for_end();
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "orvanta-simulator 2.0.0\n");
    EXPECT_EQ(version.errors, "");
    const auto help = running_simulator({"--help"}).wait_for_end();
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("--single-client"));
    EXPECT_EQ(help.errors, "");
}

TEST_F(the_program, ends_with_1_and_one_line_when_the_state_file_is_wrong_and_leaves_it_alone) {
    const std::string path = folder.file("state.json");
    const std::string text = "{\"version\": 7, \"devices\": {}}";
    std::ofstream(path) << text;
    const auto end = running_simulator({"--port", "0", "--state", path}).wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "orvanta-simulator: " + path + ":1: version is 7; 1 would be right\n");
    std::ifstream stream(path);
    EXPECT_EQ((std::string{std::istreambuf_iterator<char>(stream), {}}), text);
}

TEST_F(the_program, begins_with_what_was_saved_and_not_with_what_was_only_set) {
    const std::string path = folder.file("state.json");
    {
        running_simulator first({"--port", "0", "--state", path, "--rate", "0", "--interactive"});
        test_client client("127.0.0.1", first.port());
        connect_and_open(client);
        client.send(set_half);
        EXPECT_FALSE(client.receive_until(66).empty());
        EXPECT_FALSE(std::filesystem::exists(path));
        client.send(save_first);
        EXPECT_EQ(client.receive_until(64),
                  datagram({{0xFF, 0x40, 0x05, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00, 0x01}}));
        client.send(
            datagram({{0xFF, 0x43, 0x09, 0x00, 0x02, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}}));
        EXPECT_FALSE(client.receive_until(66).empty());
        first.quit();
        EXPECT_EQ(first.wait_for_end().status, 0);
    }
    running_simulator second({"--port", "0", "--state", path, "--rate", "0"});
    test_client client("127.0.0.1", second.port());
    connect_and_open(client);
    client.send(query_gravity);
    EXPECT_EQ(client.receive_until(66), datagram({{0xFF, 0x42, 0x09, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00, 0x01,
                                                   0x00, 0x00, 0x00, 0x3F}}));
}

TEST_F(the_program, reports_a_save_that_fails_to_the_client_and_on_standard_error) {
    const std::string path = folder.file("state.json");
    running_simulator tested({"--port", "0", "--state", path, "--rate", "0", "--interactive"});
    test_client client("127.0.0.1", tested.port());
    connect_and_open(client);
    std::filesystem::create_directory(path + ".new");
    client.send(save_first);
    EXPECT_EQ(client.receive_until(240),
              datagram({{0xFF, 0xF0, 0x05, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00, 0xD0}}));
    tested.quit();
    const std::string errors = tested.wait_for_end().errors;
    EXPECT_THAT(errors, StartsWith("orvanta-simulator: cannot create " + path + ".new: "));
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1);
}

TEST_F(the_program, killed_in_the_midst_of_saving_leaves_a_whole_file) {
    const std::string path = folder.file("state.json");
    for (int round = 0; round < 5; ++round) {
        running_simulator tested({"--port", "0", "--state", path, "--rate", "0"});
        test_client client("127.0.0.1", tested.port());
        connect_and_open(client);
        for (int i = 0; i < 40; ++i) {
            client.send(set_half);
            client.send(save_first);
        }
        for (int i = 0; i <= round; ++i) {
            EXPECT_FALSE(client.receive_until(64).empty());
        }
        tested.kill();
        EXPECT_EQ(tested.wait_for_end().status, killed.code);
        std::vector<vantu::orvanta::simulator::device> devices =
            vantu::orvanta::simulator::make_devices(1, 0);
        EXPECT_NO_THROW(vantu::orvanta::simulator::saved_state(path).apply_to(devices));
        EXPECT_EQ(devices[0].settings.scaling_factor, 0.5F);
    }
}

TEST_F(the_program, serves_the_devices_that_it_is_asked_for) {
    running_simulator tested({"--port", "0", "--orvanta3", "0", "--palmetron", "1", "--announce", "after"});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    EXPECT_EQ(client.receive().at(7), 4);
    EXPECT_EQ(client.receive(), datagram({palmetron_added, palmetron_details}));
}

TEST_F(the_program, says_port_and_seed) {
    running_simulator tested({"--port", "0", "--seed", "1234567890123456789"});
    EXPECT_EQ(tested.seed(), "1234567890123456789");
    running_simulator random({"--port", "0"});
    running_simulator other({"--port", "0"});
    EXPECT_NE(random.seed(), other.seed());
}

// Sends a request until it is answered by this operation; returns the tags of the gravity compensations that
// came meanwhile.
std::vector<std::uint8_t> insist(test_client& client, const bytes& request, std::uint8_t answer) {
    std::vector<std::uint8_t> tags;
    for (;;) {
        client.send(request);
        for (int looks = 0; looks < 50; ++looks) {
            for (const bytes& one : client.take_waiting()) {
                const std::uint8_t code = one.at(7);
                if (code == 66) {
                    tags.push_back(one.at(10));
                }
                if (code == answer) {
                    return tags;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

// The tags of those of 300 requests that were answered though a fifth of all datagrams is lost.
std::vector<std::uint8_t> answered_at_rate(const std::string& rate) {
    const bytes ask_orientation = datagram({{0xFF, 0x2F, 0x04, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00}});
    running_simulator tested(
        {"--port", "0", "--seed", "7", "--drop", "0.2", "--rate", rate, "--interactive"});
    test_client client("127.0.0.1", tested.port());
    (void)insist(client, datagram({connect_operation(0)}), 16);
    (void)insist(client, open_first, 19);
    std::vector<std::uint8_t> tags;
    for (unsigned i = 0; i < 300; ++i) {
        client.send(
            datagram({{0xFF, 0x42, 0x04, 0x00, static_cast<std::uint8_t>(i), 0x01, 0x00, 0x00, 0x00}}));
        if (i % 20 == 19) {
            const auto some = insist(client, ask_orientation, 47);
            tags.insert(tags.end(), some.begin(), some.end());
        }
    }
    tested.quit();
    EXPECT_EQ(tested.wait_for_end().status, 0);
    return tags;
}

TEST_F(the_program, loses_the_same_of_a_conversation_at_any_rate_of_states) {
    const std::vector<std::uint8_t> without_states = answered_at_rate("0");
    EXPECT_GT(without_states.size(), 150U);
    EXPECT_LT(without_states.size(), 230U);
    EXPECT_EQ(without_states, answered_at_rate("100"));
    EXPECT_EQ(without_states, answered_at_rate("1000"));
}

TEST_F(the_program, begins_with_the_devices_and_the_seed_of_a_scenario) {
    const std::string path = folder.file("desk.json");
    std::ofstream(path) << R"({"version": 1, "seed": 5, "devices": [{"type": "palmetron"}],
        "steps": [{"after": "connect", "do": "goodbye"}]})";
    running_simulator tested({"--port", "0", "--scenario", path});
    test_client client("127.0.0.1", tested.port());
    EXPECT_EQ(tested.seed(), "5");
    client.send(datagram({connect_operation(0)}));
    const bytes listing = client.receive();
    EXPECT_EQ(listing.size(), 6U + 29U + 17U + 13U);
    EXPECT_EQ(client.receive_until(6), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    EXPECT_EQ(running_simulator({"--port", "0", "--scenario", path, "--seed", "6"}).seed(), "6");
}

TEST_F(the_program, ends_with_0_and_a_goodbye_when_a_scenario_says_quit) {
    const std::string path = folder.file("desk.json");
    std::ofstream(path) << R"({"version": 1, "steps": [{"after": "open", "do": ["status", "quit"]}]})";
    running_simulator tested({"--port", "0", "--scenario", path, "--rate", "0"});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive_until(16).empty());
    client.send(open_first);
    EXPECT_EQ(client.receive_until(6), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.output, HasSubstr("clients 1\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(the_program, ends_with_1_and_one_line_when_a_scenario_is_wrong) {
    const std::string path = folder.file("desk.json");
    std::ofstream(path) << "{\n  \"version\": 1,\n  \"steps\": [{\"at\": 0, \"do\": \"plug mouse\"}]\n}\n";
    const auto end = running_simulator({"--port", "0", "--scenario", path}).wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("orvanta-simulator: " + path + ":3: step 1 do: plug: 'mouse' is no"));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1);
}

TEST_F(the_program, ends_with_2_and_one_line_when_devices_are_counted_beside_a_scenario_that_names_them) {
    const std::string path = folder.file("desk.json");
    std::ofstream(path) << R"({"version": 1, "devices": []})";
    const auto end =
        running_simulator({"--port", "0", "--scenario", path, "--palmetron", "2"}).wait_for_end();
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "orvanta-simulator: orvanta3 and palmetron: the scenario names its devices; "
                          "one of the two would be right\n");
}

TEST_F(the_program, tells_with_verbose_of_each_fault_that_happens_with_a_trace_beside_it) {
    const std::string trace = folder.file("trace.txt");
    running_simulator tested({"--port", "0", "--rate", "0", "--verbose", "--trace", trace, "--drop",
                              "@op=config_gravity_compensation_get,dir=in", "--interactive"});
    test_client client("127.0.0.1", tested.port());
    connect_and_open(client);
    client.send(query_gravity);
    client.send(save_first);
    EXPECT_FALSE(client.receive_until(64).empty());
    tested.quit();
    const std::string errors = tested.wait_for_end().errors;
    EXPECT_THAT(errors, HasSubstr("drop @op=66,dir=in: "));
    EXPECT_THAT(errors, HasSubstr("lost config_gravity_compensation_get tag=4 device_id=1"));
    std::ifstream stream(trace);
    const std::string lines{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_THAT(lines,
                HasSubstr("config_gravity_compensation_get tag=4 device_id=1 <- drop @op=66,dir=in\n"));
}

TEST_F(the_program, writes_a_trace_to_a_file_or_to_standard_output_and_a_capture) {
    const std::string trace = folder.file("trace.txt");
    const std::string capture = folder.file("traffic.pcap");
    const auto play = [&](const std::string& where) {
        running_simulator tested({"--port", "0", "--rate", "0", "--trace", where, "--capture", capture,
                                  "--drop", "@op=device_closed", "--interactive"});
        test_client client("127.0.0.1", tested.port());
        connect_and_open(client);
        client.send(datagram({{0xFF, 0x14, 0x04, 0x00, 0x02, 0x01, 0x00, 0x00, 0x00}}));
        client.send(query_gravity);
        EXPECT_FALSE(client.receive_until(240).empty()); // the device is closed
        tested.quit();
        const auto end = tested.wait_for_end();
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.errors, "");
        return end.output;
    };
    EXPECT_EQ(play(trace), "ok\n");
    std::ifstream stream(trace);
    const std::string lines{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_THAT(lines, HasSubstr(" 'tester': device_open tag=1 device_id=1 value=0\n"));
    EXPECT_THAT(lines, HasSubstr(" 'tester': device_closed tag=2 device_id=1 <- drop @op=21\n"));
    EXPECT_THAT(play("-"), HasSubstr(" 'tester': device_open tag=1 device_id=1 value=0\n"));
    vantu::orvanta::capture_reader reader(capture);
    std::set<int> codes; // of the first operation of each
    while (const auto one = reader.next()) {
        codes.insert(std::to_integer<int>(one->bytes.at(7)));
    }
    codes.erase(80); // the first of the device's status, which may come before it is closed
    EXPECT_THAT(codes, testing::ElementsAre(3, 6, 16, 18, 19, 20, 66, 240));
}

TEST_F(the_program, ends_with_1_and_one_line_when_trace_or_capture_cannot_be_written) {
    const std::string path = folder.file("none/file");
    for (const char* option : {"--trace", "--capture"}) {
        const auto end = running_simulator({"--port", "0", option, path}).wait_for_end();
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.output, "");
        EXPECT_THAT(end.errors, StartsWith("orvanta-simulator: cannot write " + path + ": "));
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1);
    }
}

TEST_F(the_program, produces_the_faults_of_its_options) {
    running_simulator tested(
        {"--port", "0", "--rate", "0", "--truncate", "17@op=66", "--error", "0xD0@op=64,nth=1"});
    test_client client("127.0.0.1", tested.port());
    connect_and_open(client);
    client.send(query_gravity);
    EXPECT_EQ(client.receive_until(66).size(), 17U);
    client.send(save_first);
    EXPECT_EQ(client.receive_until(240),
              datagram({{0xFF, 0xF0, 0x05, 0x00, 0x03, 0x01, 0x00, 0x00, 0x00, 0xD0}}));
    client.send(save_first);
    EXPECT_FALSE(client.receive_until(64).empty());
}

} // namespace
} // namespace orvanta_tests
