// Answers as JSON documents, read back by the JSON library.
#include "simulator/control/json_answers.hpp"

#include "simulator/fixtures/test_client.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orvanta_tests {
namespace {

using nlohmann::json;
using vantu::orvanta::service_simulator;
using vantu::orvanta::simulator::json_answer;
using vantu::orvanta::simulator::json_shown;
using vantu::orvanta::simulator::verb_result;

service_simulator::settings by_hand() {
    service_simulator::settings settings;
    settings.manual_clock = true;
    settings.rate_hz = 10;
    settings.seed = 18446744073709551615U;
    return settings;
}

TEST(json_answers, are_one_line_each_and_tell_good_lines_from_wrong_ones) {
    const service_simulator service(by_hand());
    EXPECT_EQ(json_answer(service, "heal", {}), "{\"ok\":true,\"text\":\"\"}\n");
    EXPECT_EQ(json_answer(service, "help", {true, false, "one\ntwo\n"}),
              "{\"ok\":true,\"text\":\"one\\ntwo\"}\n");
    EXPECT_EQ(json_answer(service, "hea", {false, false, "no \"hea\"; 'heal'"}),
              "{\"ok\":false,\"error\":\"no \\\"hea\\\"; 'heal'\"}\n");
    EXPECT_EQ(json_answer(service, "status now", {false, false, "too much"}),
              "{\"ok\":false,\"error\":\"too much\"}\n");
    EXPECT_EQ(json_shown("unplugged 1\n"), "{\"shown\":\"unplugged 1\"}\n");
}

TEST(json_answers, replace_what_is_not_utf_8) {
    const service_simulator service(by_hand());
    EXPECT_EQ(json_answer(service, "send",
                          {true, false,
                           "a\xFF"
                           "b"}),
              "{\"ok\":true,\"text\":\"a\xEF\xBF\xBD"
              "b\"}\n");
}

TEST(json_answers, have_the_state_as_data_where_it_is_asked_for) {
    service_simulator service(by_hand());
    test_client client("127.0.0.1", service.port());
    client.send(datagram({connect_operation(0, 2'500'000'000)}));
    client.send(datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    for (std::size_t taken = 0; taken < 2;) {
        taken += service.serve_waiting();
    }
    service.command("set 1 gravity on 0.3");
    service.command("drop @op=64,as=loss");
    service.advance(std::chrono::seconds(1));
    service.command("drop @op=33");
    service.advance(std::chrono::milliseconds(100));
    const json answer = json::parse(json_answer(service, " status", {true, false, service.status()}));
    EXPECT_EQ(answer.at("ok"), true);
    EXPECT_EQ(answer.at("text").get<std::string>() + '\n', service.status());
    const json& state = answer.at("status");
    EXPECT_EQ(state.at("seed"), 18446744073709551615U);
    EXPECT_EQ(state.at("ticks"), 11000);
    EXPECT_EQ(state.at("received"), 2);
    EXPECT_EQ(state.at("sent"), service.count().sent);
    EXPECT_EQ(state.at("restarts"), 0);
    EXPECT_EQ(state.at("happened"), json({{"drop", 1}}));
    ASSERT_EQ(state.at("clients").size(), 1U);
    const json& connected = state.at("clients")[0];
    EXPECT_EQ(connected.at("number"), 1);
    EXPECT_EQ(connected.at("id"), service.clients()[0].id);
    EXPECT_EQ(connected.at("name"), service.clients()[0].name);
    EXPECT_EQ(connected.at("address"), service.clients()[0].address);
    EXPECT_EQ(connected.at("opened"), json({1}));
    EXPECT_EQ(connected.at("keep_alive_ms"), 2500);
    EXPECT_EQ(connected.at("silent_for_ms"), 1100);
    ASSERT_EQ(state.at("devices").size(), 2U);
    const json first = json::parse(R"({"id": 1, "type": "orvanta3", "short_id": "3001",
        "uuid": "6e2b84105f3c4d719a03c53800000001", "configuration": {
            "gravity_compensation": {"enabled": true, "scaling_factor": 0.3},
            "torque_scaling": {"enabled": true}, "handedness": "right"},
        "opened_by": 1, "requests": 1, "states": 11})");
    EXPECT_EQ(state.at("devices")[0], first);
    EXPECT_EQ(state.at("devices")[1].at("type"), "palmetron");
    EXPECT_EQ(state.at("devices")[1].at("configuration"), nullptr);
    EXPECT_EQ(
        state.at("rules"),
        json::parse(
            R"([{"number": 1, "name": "loss", "text": "drop @op=64,as=loss", "fitted": 0, "happened": 0},
                              {"number": 2, "name": "", "text": "drop @op=33", "fitted": 1, "happened": 1}])"));
}

} // namespace
} // namespace orvanta_tests
