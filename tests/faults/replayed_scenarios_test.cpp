// A client in each of the scenarios that are installed, captured by way of the traffic sink: the replay of
// the capture comes to the same connections, events and codes.
#include "ctl/replay/replay.hpp"
#include "ctl/service/captured_traffic.hpp"
#include "faults/scenario_fixture.hpp"
#include "shared/capture_file.hpp"
#include "support/scratch_folder.hpp"

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace orvanta_tests {
namespace {

namespace ctl = vantu::orvanta::ctl;

// Type, device, tag and payload of an event, or a code other than 0.
struct seen {
    std::int32_t code{0};
    vantu_orvanta_event event{};

    bool operator==(const seen& other) const {
        return code == other.code && std::memcmp(&event, &other.event, sizeof event) == 0;
    }
};

// NOLINTNEXTLINE(readability-identifier-naming): GoogleTest's
void PrintTo(const seen& one, std::ostream* to) {
    *to << "code " << one.code << ", event " << one.event.event_type << " of device " << one.event.device_id
        << ", tag " << static_cast<int>(one.event.tag);
}

std::vector<std::string> shipped_scenarios() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS_FOLDER)) {
        names.push_back(entry.path().stem().string());
    }
    return names;
}

class a_captured_scenario : public testing::TestWithParam<std::string> {
  protected:
    // The sink writes with each call; the fixture's client is polled and asked on this thread alone.
    void record() {
        vantu::orvanta::capture_writer file(path);
        std::size_t codes_before = 0;
        const auto take_codes = [&](scenario_fixture& fixture) {
            for (; codes_before < fixture.codes.size(); ++codes_before) {
                told.push_back({fixture.codes[codes_before], {}});
            }
        };
        scenario_fixture fixture(GetParam());
        fixture.prepare = [&](vantu_orvanta_context* context) {
            const auto write = [](void* to, const vantu_orvanta_traffic* one) {
                static_cast<vantu::orvanta::capture_writer*>(to)->write(ctl::captured(*one));
            };
            EXPECT_EQ(vantu_orvanta_traffic_sink_set(context, write, &file), 0);
        };
        fixture.on_event = [&](const vantu_orvanta_event& event) {
            take_codes(fixture);
            told.push_back({0, event});
        };
        for (int visit = 0; visit < visits; ++visit) {
            const std::int32_t code = fixture.connect(answer_timeout_ns);
            if (code != vantu_orvanta_success) {
                // A capture does not tell how long a client waits.
                told.insert(told.end(), code == vantu_orvanta_timed_out ? 0 : 1, seen{code, {}});
                continue;
            }
            ++connections;
            use(fixture);
            take_codes(fixture);
            fixture.leave();
        }
        file.flush();
    }

    // Opens what may be there, asks often enough for all faults to happen, and lets the states come.
    static void use(scenario_fixture& fixture) {
        for (int second = 0; second < seconds; ++second) {
            for (const std::uint32_t id : {1U, 2U, 1001U}) {
                (void)vantu_orvanta_device_open(fixture.client().context(), id, 1, 0);
            }
            for (std::uint8_t tag = 2; tag < 22; ++tag) {
                (void)vantu_orvanta_config_gravity_compensation_get(fixture.client().context(), 1, tag);
                (void)vantu_orvanta_orientation_get(fixture.client().context(), 1, tag);
                fixture.pass(50);
            }
        }
    }

    void replay() {
        ctl::capture_replay playing([&](const ctl::replayed& one) {
            if (const auto* event = std::get_if<vantu_orvanta_event>(&one.outcome)) {
                replayed.push_back({0, *event});
            } else if (const auto* rejected = std::get_if<ctl::replayed_rejection>(&one.outcome)) {
                // A capture does not tell just when a client gave up waiting for the answer to its goodbye.
                if (rejected->code != vantu_orvanta_invalid_connection_state) {
                    replayed.push_back({rejected->code, {}});
                }
            } else {
                ++replayed_connections;
            }
        });
        vantu::orvanta::capture_reader file(path);
        while (const auto one = file.next()) {
            playing.play(*one);
        }
        EXPECT_EQ(file.passed_over(), 0U);
        EXPECT_EQ(playing.counts().others, 0U);
    }

    static constexpr std::uint64_t answer_timeout_ns = 1'000'000'000;
    static constexpr int visits = 3;
    static constexpr int seconds = 12;

    scratch_folder folder;
    std::string path = folder.file("scenario.pcap");
    std::vector<seen> told;
    int connections{0};
    std::vector<seen> replayed;
    int replayed_connections{0};
};

TEST_P(a_captured_scenario, comes_to_the_same_events_and_codes_when_it_is_replayed) {
    record();
    EXPECT_GE(connections, 1);
    EXPECT_GE(told.size(), 100U) << "it is a scenario with events";
    replay();
    EXPECT_EQ(replayed_connections, connections);
    ASSERT_EQ(replayed.size(), told.size());
    for (std::size_t i = 0; i < told.size(); ++i) {
        ASSERT_EQ(replayed[i], told[i]) << "at " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(of_the_installed, a_captured_scenario, testing::ValuesIn(shipped_scenarios()),
                         [](const auto& scenario) { return scenario.param; });

} // namespace
} // namespace orvanta_tests
