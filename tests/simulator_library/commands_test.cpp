// The commands of a simulator in a user's program, and those that it refuses.
#include "simulator_library/simulated_client.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;
using vantu::orvanta::service_simulator;
using direction = service_simulator::direction;

// The exception of the function, as text; empty, and the test fails, when it throws nothing.
template <typename Wrong, typename Function> std::string refusal_of(Function function) {
    try {
        function();
    } catch (const Wrong& refused) {
        return refused.what();
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
}

class in_a_folder : public testing::Test {
  protected:
    // A file of that text.
    [[nodiscard]] std::string file(const std::string& name, const std::string& text) const {
        std::ofstream(folder.file(name)) << text;
        return folder.file(name);
    }

    scratch_folder folder;
};

TEST(a_command, shows_what_it_has_to_show) {
    service_simulator service(by_hand());
    EXPECT_EQ(service.command("plug orvanta3"), "plugged in 2\n");
    EXPECT_EQ(service.count().devices, 3U);
    EXPECT_EQ(service.command("drop 0.5"), "");
    EXPECT_THAT(service.status(), HasSubstr("drop 0.5"));
    EXPECT_EQ(service.command("status"), service.status());
    EXPECT_EQ(service.command("heal"), "");
    EXPECT_THAT(service.command("help"), HasSubstr("truncate"));
}

TEST(a_command, that_is_wrong_is_refused_with_what_would_be_right) {
    service_simulator service(by_hand());
    const auto refused = [&service](const char* line) {
        return refusal_of<std::invalid_argument>([&] { service.command(line); });
    };
    EXPECT_THAT(refused("dorp 0.5"), HasSubstr("drop"));
    EXPECT_THAT(refused("drop 2"), HasSubstr("0 to 1"));
    EXPECT_THAT(refused("unplug 99"), HasSubstr("1 or 1001 would be right"));
    EXPECT_THAT(refused("set 1 handedness up"), HasSubstr("left"));
    EXPECT_EQ(service.count().devices, 2U);
}

TEST(a_command, reaches_the_client_at_once) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    service.command("unplug 1");
    client.poll_until(vantu_orvanta_event_device_removed);
    EXPECT_EQ(client.last.device_id, 1U);
    service.command("restart");
    EXPECT_EQ(service.count().restarts, 1U);
    EXPECT_EQ(service.count().clients, 0U);
}

TEST(a_command, sends_what_the_service_by_itself_never_does) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    service.command("send device_block_reply device_id=1 tag=4 bytes=000102030405060708090a0b0c0d0e0f");
    client.poll_until(vantu_orvanta_event_device_block);
    EXPECT_EQ(client.last.tag, 4U);
    EXPECT_EQ(client.last.device_id, 1U);
    EXPECT_EQ(client.last.payload[15], 15U);
    EXPECT_EQ(service.operations(service_simulator::direction::out, "device_block_reply"), 1U);
}

TEST(a_command, to_quit_says_goodbye_and_ends_the_service) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    EXPECT_FALSE(service.has_quit());
    service.command("quit");
    EXPECT_TRUE(service.has_quit());
    client.poll_until(vantu_orvanta_event_disconnected);
    service.advance(1s);
    EXPECT_EQ(service.serve_waiting(), 0U);
    simulated_client late(service);
    EXPECT_EQ(late.connect(5'000'000'000, 20'000'000), vantu_orvanta_timed_out);
}

TEST(counters, tell_of_datagrams_and_faults) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    EXPECT_EQ(service.count().received, 1U);
    EXPECT_EQ(service.count().sent, 1U);
    EXPECT_EQ(service.count().clients, 1U);
    client.open(1);
    service.command("drop @op=33");
    service.advance(1s);
    EXPECT_EQ(service.happened("drop"), 101U);
    EXPECT_EQ(service.happened("flip"), 0U);
    EXPECT_EQ(service.count().sent, 2U);
    EXPECT_THAT(refusal_of<std::invalid_argument>([&] { (void)service.happened("dorp"); }),
                HasSubstr("'dorp' is no fault"));
}

TEST(commands, expect_a_condition_and_are_refused_where_it_does_not_hold) {
    service_simulator service(by_hand());
    EXPECT_THAT(refusal_of<std::invalid_argument>([&] { service.command("expect in connect"); }),
                StartsWith("expected in connect >= 1; it is 0"));
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    EXPECT_EQ(service.command("expect in connect = 1"), "");
    EXPECT_EQ(service.command("wait 500 in connect = 2"), "") << "a wait is for scripts";
}

TEST(settings, out_of_range_are_refused) {
    const auto refused = [](auto change) {
        service_simulator::settings wrong = by_hand();
        change(wrong);
        return refusal_of<std::invalid_argument>([&] { const service_simulator tested(wrong); });
    };
    EXPECT_THAT(refused([](auto& wrong) { wrong.port = "many"; }), StartsWith("port 'many'"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.port = ""; }), StartsWith("port ''"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.port = "65536"; }), StartsWith("port '65536'"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.orvanta3_count = 257; }), StartsWith("more than 256"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.palmetron_count = 257; }), StartsWith("more than 256"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.rate_hz = -1; }), StartsWith("rate -1"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.rate_hz = 10'001; }), StartsWith("rate 10001"));
    EXPECT_THAT(refused([](auto& wrong) { wrong.rate_hz = std::numeric_limits<double>::quiet_NaN(); }),
                StartsWith("rate nan"));
}

TEST(settings, have_the_faults_of_the_start) {
    service_simulator::settings wanted = by_hand();
    wanted.faults = {"drop @op=33", "  unplug 1001", "drop 0"};
    service_simulator service(wanted);
    const auto rules = service.rules();
    ASSERT_EQ(rules.size(), 3U);
    EXPECT_EQ(rules[1].text, "unplug 1001@nth=1");
    EXPECT_EQ(service.devices().size(), 2U);
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    EXPECT_EQ(service.devices().size(), 1U);
    client.open(1);
    service.advance(1s);
    EXPECT_EQ(service.rules()[0].happened, 101U);
}

TEST(settings, with_a_fault_that_is_wrong_are_refused_with_what_would_be_right) {
    const auto refused = [](const char* text) {
        service_simulator::settings wrong = by_hand();
        wrong.faults = {"drop", text};
        return refusal_of<std::invalid_argument>([&] { const service_simulator tested(wrong); });
    };
    EXPECT_THAT(refused("dorp 0.3"), HasSubstr("'dorp' is no fault"));
    EXPECT_THAT(refused("drop 2"), HasSubstr("0 to 1"));
    EXPECT_THAT(refused(""), HasSubstr("'' is no fault"));
}

TEST(settings, of_a_port_that_is_held_are_refused_with_one_line) {
    const service_simulator holder(by_hand());
    service_simulator::settings same = by_hand();
    same.port = holder.port();
    EXPECT_THAT(refusal_of<std::runtime_error>([&] { const service_simulator tested(same); }),
                HasSubstr("another program holds it"));
}

TEST(settings, say_which_devices_there_are_and_whether_there_may_be_a_second_client) {
    service_simulator::settings wanted = by_hand();
    wanted.orvanta3_count = 3;
    wanted.palmetron_count = 0;
    wanted.single_client = true;
    wanted.devices = service_simulator::announce::after;
    service_simulator service(wanted);
    EXPECT_EQ(service.count().devices, 3U);
    simulated_client first(service);
    ASSERT_EQ(first.connect(), 0);
    first.poll_until(vantu_orvanta_event_device_added, 3);
    simulated_client second(service);
    EXPECT_EQ(second.connect(), vantu_orvanta_another_client_connected);
}

TEST(a_seed, is_told_and_differs_by_chance) {
    EXPECT_EQ(service_simulator(by_hand()).seed(), 1U);
    const service_simulator one({});
    const service_simulator other({});
    EXPECT_NE(one.seed(), other.seed());
}

TEST_F(in_a_folder, a_state_file_outlives_the_simulator) {
    service_simulator::settings wanted = by_hand();
    wanted.state_path = folder.file("state.json");
    {
        service_simulator service(wanted);
        simulated_client client(service);
        ASSERT_EQ(client.connect(), 0);
        client.open(1);
        const std::uint8_t left = vantu_orvanta_handedness_left;
        ASSERT_EQ(vantu_orvanta_config_handedness_set(client.context(), 1, 5, &left), 0);
        client.poll_until(vantu_orvanta_event_config_handedness);
        ASSERT_EQ(vantu_orvanta_config_save_request(client.context(), 1, 6), 0);
        client.poll_until(vantu_orvanta_event_config_save);
    }
    service_simulator service(wanted);
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    vantu_orvanta_device device{};
    ASSERT_EQ(vantu_orvanta_device_info(client.context(), 1, &device), 0);
    EXPECT_EQ(device.detail.orvanta3.handedness, vantu_orvanta_handedness_left);
    EXPECT_THAT(service.status(), HasSubstr("left"));
}

TEST_F(in_a_folder, a_scenario_is_played_as_time_is_moved) {
    std::vector<std::string> told;
    service_simulator::settings wanted = by_hand();
    wanted.scenario_path = file("scenario.json", R"({"version": 1, "steps": [
        {"at": 500, "do": "plug orvanta3"},
        {"at": 900, "do": "quit"}]})");
    wanted.narrate = [&told](std::string_view text) { told.emplace_back(text); };
    service_simulator service(wanted);
    service.advance(499ms);
    EXPECT_EQ(service.count().devices, 2U);
    service.advance(1ms);
    EXPECT_EQ(service.count().devices, 3U);
    EXPECT_THAT(told, testing::Contains("device 2: plugged in"));
    service.advance(1s);
    EXPECT_TRUE(service.has_quit());
}

TEST_F(in_a_folder, a_scenario_for_each_client_has_rules_of_each_client) {
    service_simulator::settings wanted = by_hand();
    wanted.scenario_path =
        file("scenario.json", R"({"version": 1, "for_each_client": true, "rate": 0, "steps": [
        {"at": 0, "do": "drop 0@client=this,as=loss-this"},
        {"at": 1000, "do": "heal loss-this"}]})");
    service_simulator service(wanted);
    const auto names = [&service] {
        std::vector<std::string> all;
        for (const auto& rule : service.rules()) {
            all.push_back(rule.name + ": " + rule.text);
        }
        return all;
    };
    simulated_client first(service);
    ASSERT_EQ(first.connect(), 0);
    service.advance(500ms);
    simulated_client second(service);
    ASSERT_EQ(second.connect(), 0);
    EXPECT_THAT(names(), testing::ElementsAre("loss-1: drop 0@client=1,as=loss-1",
                                              "loss-2: drop 0@client=2,as=loss-2"));
    service.advance(500ms);
    EXPECT_THAT(names(), testing::ElementsAre("loss-2: drop 0@client=2,as=loss-2"));
    service.advance(500ms);
    EXPECT_THAT(names(), testing::IsEmpty());
    EXPECT_EQ(service.failed_steps(), 0U);
}

TEST_F(in_a_folder, what_a_scenario_shows_and_what_has_failed_are_told_apart) {
    std::vector<std::string> shown;
    std::vector<std::string> warned;
    service_simulator::settings wanted = by_hand();
    wanted.state_path = folder.file("state.json");
    std::filesystem::create_directory(wanted.state_path + ".new");
    wanted.scenario_path =
        file("scenario.json", R"({"version": 1, "steps": [{"at": 500, "do": "plug orvanta3"}]})");
    wanted.show = [&shown](std::string_view text) { shown.emplace_back(text); };
    wanted.warn = [&warned](std::string_view line) { warned.emplace_back(line); };
    service_simulator service(wanted);
    service.advance(500ms);
    EXPECT_THAT(shown, testing::ElementsAre("plugged in 2\n"));
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    ASSERT_EQ(vantu_orvanta_config_save_request(client.context(), 1, 6), 0);
    client.poll_until(vantu_orvanta_event_error);
    EXPECT_THAT(warned, testing::ElementsAre(StartsWith("cannot create ")));
    EXPECT_EQ(shown.size(), 1U);
}

TEST_F(in_a_folder, a_number_of_devices_is_refused_beside_a_scenario_that_names_them) {
    service_simulator::settings wanted = by_hand();
    wanted.scenario_path =
        file("scenario.json", R"({"version": 1, "devices": [{"type": "palmetron", "id": 7}]})");
    EXPECT_EQ(service_simulator(wanted).devices().at(0).id, 7U);
    wanted.palmetron_count = 1;
    EXPECT_THAT(refusal_of<std::invalid_argument>([&] { const service_simulator tested(wanted); }),
                HasSubstr("the scenario names its devices"));
}

TEST_F(in_a_folder, a_scenario_says_what_the_settings_leave_out) {
    const auto path = [this](const char* name) {
        return std::filesystem::path(folder.file(name)).generic_string();
    };
    service_simulator::settings wanted = by_hand();
    wanted.seed.reset();
    wanted.scenario_path = file("scenario.json",
                                R"({"version": 1, "orvanta3": 3, "palmetron": 0, "announce": "after",
        "single_client": true, "rate": 10, "seed": 7, "state": ")" +
                                    path("state.json") + R"(", "capture": ")" + path("traffic.pcap") +
                                    R"(", "faults": ["delay 1@op=keep_alive"]})");
    {
        service_simulator service(wanted);
        EXPECT_EQ(service.seed(), 7U);
        EXPECT_EQ(service.devices().size(), 3U);
        EXPECT_THAT(service.status(), HasSubstr("\n  1 delay 1@op=1: fits 0"));
        simulated_client client(service);
        ASSERT_EQ(client.connect(), 0);
        EXPECT_EQ(service.operations(direction::out, "device_added"), 3U);
        simulated_client second(service);
        EXPECT_EQ(second.connect(), 178);
        client.open(1);
        client.forget();
        service.advance(1s);
        client.poll();
        EXPECT_EQ(client.counts[vantu_orvanta_event_cursor_state], 11U);
        ASSERT_EQ(vantu_orvanta_config_save_request(client.context(), 1, 6), 0);
        client.poll_until(vantu_orvanta_event_config_save);
    }
    EXPECT_TRUE(std::filesystem::exists(folder.file("state.json")));
    EXPECT_GT(std::filesystem::file_size(folder.file("traffic.pcap")), 1000U);
}

TEST_F(in_a_folder, a_scenario_says_the_port) {
    const service_simulator holder(by_hand());
    service_simulator::settings wanted = by_hand();
    wanted.scenario_path = file("scenario.json", R"({"version": 1, "port": )" + holder.port() + "}");
    EXPECT_THAT(refusal_of<std::runtime_error>([&] { const service_simulator tested(wanted); }),
                HasSubstr(holder.port()));
    wanted.port = "0";
    EXPECT_NE(service_simulator(wanted).port(), holder.port());
}

TEST_F(in_a_folder, settings_go_before_the_scenario) {
    service_simulator::settings wanted = by_hand();
    wanted.port = "0";
    wanted.orvanta3_count = 2;
    wanted.palmetron_count = 1;
    wanted.rate_hz = 0;
    wanted.seed = 3;
    wanted.devices = service_simulator::announce::before;
    wanted.single_client = false;
    wanted.state_path = folder.file("mine.json");
    wanted.capture_path = folder.file("mine.pcap");
    wanted.faults = {"drop @op=keep_alive"};
    wanted.scenario_path =
        file("scenario.json",
             R"({"version": 1, "port": 1, "orvanta3": 3, "palmetron": 0, "announce": "after",
        "single_client": true, "rate": 10, "seed": 7, "state": "no/such/folder/state.json",
        "capture": "no/such/folder/traffic.pcap", "faults": ["delay 1@op=keep_alive"]})");
    service_simulator service(wanted);
    EXPECT_EQ(service.seed(), 3U);
    EXPECT_EQ(service.devices().size(), 3U);
    EXPECT_EQ(service.devices().at(2).id, 1001U);
    const auto rules = service.rules();
    ASSERT_EQ(rules.size(), 2U);
    EXPECT_EQ(rules[0].text, "drop @op=1");
    EXPECT_EQ(rules[1].text, "delay 1@op=1") << "faults of both act, the settings' first";
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    simulated_client second(service);
    EXPECT_EQ(second.connect(), 0);
    client.open(1);
    client.forget();
    service.advance(1s);
    client.poll();
    EXPECT_EQ(client.counts[vantu_orvanta_event_cursor_state], 0U);
}

TEST_F(in_a_folder, a_file_that_is_wrong_is_refused_with_its_path) {
    service_simulator::settings wanted = by_hand();
    wanted.scenario_path = file("scenario.json", "{\"version\": 1, \"step\": []}");
    EXPECT_THAT(refusal_of<std::runtime_error>([&] { const service_simulator tested(wanted); }),
                StartsWith(wanted.scenario_path + ":1: "));
    wanted = by_hand();
    wanted.state_path = file("state.json", "{}");
    EXPECT_THAT(refusal_of<std::runtime_error>([&] { const service_simulator tested(wanted); }),
                StartsWith(wanted.state_path + ":1: "));
}

} // namespace
} // namespace orvanta_tests
