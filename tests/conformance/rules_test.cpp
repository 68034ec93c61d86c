// The rules against services that keep them.
#include "conformance/run.hpp"
#include "conformance/tampered_service.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::conformance;
using testing::ElementsAre;
using testing::HasSubstr;
using vantu::orvanta::service_simulator;

std::vector<const rule*> all_rules() {
    std::vector<const rule*> all;
    for (const rule& one : rules()) {
        all.push_back(&one);
    }
    return all;
}

// Each rule against such a service of its own, which must break none; the names of those that were skipped.
std::vector<std::string_view> skipped_at(const service_simulator::settings& settings, bool may_save = false,
                                         const tamper& to_service = {}) {
    std::vector<std::string_view> skipped;
    for (const rule* const what : all_rules()) {
        tampered_service service({{}, to_service}, settings);
        surroundings around = service.surroundings();
        around.may_save = may_save;
        const finding found = look_at(std::array{what}, around, [](const finding&) {}).front();
        EXPECT_THAT(found.how, testing::AnyOf(outcome::holds, outcome::skipped))
            << what->name << ": " << found.text;
        EXPECT_EQ(found.how == outcome::holds, found.text.empty());
        if (found.how == outcome::skipped) {
            skipped.push_back(what->name);
        }
    }
    return skipped;
}

std::vector<std::string_view> rules_that_need(const std::set<need>& any) {
    std::vector<std::string_view> names;
    for (const rule& one : rules()) {
        if (any.contains(one.what)) {
            names.push_back(one.name);
        }
    }
    return names;
}

TEST(the_simulator, keeps_every_rule) {
    EXPECT_THAT(skipped_at({}, true), ElementsAre());
}

TEST(the_simulator, saves_nothing_without_leave) {
    const auto expect_no_save = [](const bytes& request) {
        const bool saves_the_first =
            request.size() == 15 && request[6] == 0xFF && request[7] == 64 && request[11] == 1;
        EXPECT_FALSE(saves_the_first) << hex(request);
        return std::vector<bytes>{request};
    };
    EXPECT_THAT(skipped_at({}, false, expect_no_save), ElementsAre("config_save_is_answered"));
}

TEST(the_simulator, keeps_every_rule_when_it_lists_devices_after_the_acceptance) {
    service_simulator::settings settings;
    settings.devices = service_simulator::announce::after;
    EXPECT_THAT(skipped_at(settings, true), ElementsAre());
}

TEST(the_simulator, keeps_every_rule_with_many_devices_that_stream_fast) {
    service_simulator::settings settings;
    settings.orvanta3_count = 60;
    settings.palmetron_count = 60;
    settings.rate_hz = 1000;
    EXPECT_THAT(skipped_at(settings, true), ElementsAre());
}

TEST(a_rule, is_skipped_where_the_service_lacks_what_it_needs) {
    service_simulator::settings settings;
    settings.single_client = true;
    EXPECT_EQ(skipped_at(settings, true), rules_that_need({need::second_client}));
    settings = {};
    settings.palmetron_count = 0;
    EXPECT_EQ(skipped_at(settings), rules_that_need({need::palmetron, need::save}));
    settings.palmetron_count = 1;
    settings.orvanta3_count = 0;
    EXPECT_EQ(skipped_at(settings), rules_that_need({need::orvanta3, need::save}));
    settings.palmetron_count = 0;
    EXPECT_EQ(skipped_at(settings),
              rules_that_need({need::orvanta3, need::palmetron, need::device, need::save}));
}

TEST(a_rule, is_stopped_where_the_system_refuses_a_socket) {
    tampered_service service;
    surroundings around = service.surroundings();
    around.client_ports.clear();
    const finding found =
        look_at(std::array{find_rule("connect_is_answered")}, around, [](const finding&) {}).front();
    EXPECT_EQ(found.how, outcome::stopped);
    EXPECT_EQ(found.text, "no port of a client is free");
}

TEST(settings_of_a_device, are_as_before_after_all_rules) {
    tampered_service service;
    service.simulator().command("set 1 gravity off 0.125");
    service.simulator().command("set 1 torque off");
    service.simulator().command("set 1 handedness left");
    surroundings around = service.surroundings();
    EXPECT_TRUE(all_hold(look_at(all_rules(), around, [](const finding&) {})));
    EXPECT_THAT(service.simulator().status(),
                HasSubstr("gravity compensation off 0.125, torque scaling off, left-handed"));
}

TEST(settings_of_a_device, are_as_before_when_a_rule_about_them_fails) {
    const bytes another_hand = datagram({op(70, 1, {1, 0, 0, 0, 3})});
    tampered_service service({{}, {}, [&](const bytes& answer) {
                                  const bool is_hand = answer.size() > 7 && answer[7] == 70;
                                  return std::vector<bytes>{is_hand ? another_hand : answer};
                              }});
    service.simulator().command("set 1 handedness right");
    surroundings around = service.surroundings();
    const std::array wanted{find_rule("sets_are_answered_with_their_values")};
    EXPECT_EQ(look_at(wanted, around, [](const finding&) {}).front().how, outcome::fails);
    EXPECT_THAT(service.simulator().status(),
                HasSubstr("gravity compensation on 0.75, torque scaling on, right-handed"));
}

TEST(a_service, is_known_by_any_answer) {
    for (const char* fault : {"heal", "drop @op=connected,dir=out", "patch header.magic=other@dir=out"}) {
        tampered_service service({{fault}});
        surroundings around = service.surroundings();
        EXPECT_NO_THROW(expect_service(around)) << fault;
        EXPECT_EQ(service.simulator().count().clients, 0U);
    }
}

TEST(a_service, is_not_there_when_nothing_comes_or_others_take_all_room) {
    const auto reason = [](const char* fault) {
        tampered_service service({{fault}});
        surroundings around = service.surroundings();
        try {
            expect_service(around);
        } catch (const std::runtime_error& why) {
            return std::string(why.what());
        }
        return std::string();
    };
    EXPECT_EQ(reason("drop @dir=in"), "nobody answers at the port");
    EXPECT_EQ(reason("error 0xB2@op=connect"),
              "the service has no room for another client: service_error 178 (another "
              "client is already connected), tag 0, device 0");
}

} // namespace
} // namespace orvanta_tests
