// A simulator that serves on a thread of its own.
#include "simulator_library/simulated_client.hpp"
#include "support/scratch_folder.hpp"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using vantu::orvanta::service_simulator;

TEST(a_thread, serves_a_client_between_start_and_stop) {
    service_simulator service({});
    simulated_client client(service);
    service.start();
    service.start();
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    client.poll_until(vantu_orvanta_event_cursor_state, 10);
    service.stop();
    client.poll_until(vantu_orvanta_event_disconnected);
    const auto stood = service.now();
    vantu_orvanta_sleep(20'000'000);
    EXPECT_EQ(service.now(), stood);
    service.start();
    simulated_client next(service);
    ASSERT_EQ(next.connect(), 0);
    wait_until([&] { return service.now() > stood; });
}

TEST(a_thread, does_what_commands_say_at_once) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    service.command("unplug 1001");
    client.poll_until(vantu_orvanta_event_device_removed);
    service.command("goodbye");
    client.poll_until(vantu_orvanta_event_disconnected);
    client.poll();
    EXPECT_EQ(client.poll_code, vantu_orvanta_invalid_connection_state);
}

TEST(a_thread, ends_with_the_verb_quit) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    service.command("quit");
    EXPECT_TRUE(service.has_quit());
    client.poll_until(vantu_orvanta_event_disconnected);
    simulated_client late(service);
    EXPECT_EQ(late.connect(5'000'000'000, 20'000'000), vantu_orvanta_timed_out);
    service.stop();
}

TEST(a_thread, can_be_started_anew_after_the_verb_quit) {
    service_simulator service({});
    service.start();
    for (int round = 0; round < 3; ++round) {
        simulated_client client(service);
        ASSERT_EQ(client.connect(), 0);
        service.command("quit");
        client.poll_until(vantu_orvanta_event_disconnected);
        const auto stood = service.now();
        service.start();
        EXPECT_FALSE(service.has_quit());
        wait_until([&] { return service.now() > stood; });
    }
    EXPECT_EQ(service.count().received, 3U);
}

TEST(a_thread, started_anew_goes_on_with_the_scenario) {
    const scratch_folder folder;
    service_simulator::settings wanted;
    wanted.scenario_path = folder.file("scenario.json");
    std::ofstream(wanted.scenario_path) << R"({"version": 1, "steps": [
        {"at": 1, "do": "quit"}, {"at": 2, "do": "plug orvanta3"}]})";
    service_simulator service(wanted);
    service.start();
    wait_until([&] { return service.has_quit(); });
    EXPECT_EQ(service.count().devices, 2U);
    service.start();
    wait_until([&] { return service.count().devices == 3U; });
}

TEST(the_calling_thread, serves_until_it_is_told_otherwise) {
    service_simulator service({});
    std::thread late([&service] {
        simulated_client client(service);
        EXPECT_EQ(client.connect(), 0);
        client.open(1);
        client.poll_until(vantu_orvanta_event_cursor_state, 3);
    });
    service.serve([&service] { return service.count().received >= 3; }); // with the client's goodbye
    EXPECT_EQ(service.count().clients, 0U);
    late.join();
}

TEST(the_calling_thread, ends_with_the_verb_quit_and_with_stop) {
    service_simulator service({});
    service.serve([&service] {
        service.command("quit");
        return false;
    });
    EXPECT_TRUE(service.has_quit());
    std::atomic<bool> serves{false};
    std::thread late([&] {
        wait_until([&] { return serves.load(); });
        EXPECT_THROW(service.start(), std::logic_error);
        service.stop();
    });
    service.serve([&serves] {
        serves = true;
        return false;
    });
    late.join();
    EXPECT_FALSE(service.has_quit());
}

TEST(the_calling_thread, cannot_serve_while_another_does) {
    service_simulator service({});
    service.start();
    EXPECT_THROW(service.serve([] { return true; }), std::logic_error);
}

TEST(a_thread, dies_without_a_word_after_a_silence) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    service.command("silence 60000");
    service.stop();
    for (int i = 0; i < 50; ++i) {
        client.poll();
        vantu_orvanta_sleep(1'000'000);
    }
    EXPECT_EQ(client.counts[vantu_orvanta_event_disconnected], 0U);
}

TEST(a_thread, may_be_asked_from_several_threads_at_once) {
    service_simulator service({});
    service.start();
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    std::atomic<bool> done{false};
    std::atomic<int> asked{0};
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i) {
        askers.emplace_back([&] {
            while (!done) {
                (void)service.status();
                (void)service.count();
                (void)service.now();
                service.command("drop 0.1");
                service.command("heal");
                ++asked;
            }
        });
    }
    client.poll_until(vantu_orvanta_event_cursor_state, 20);
    wait_until([&] { return asked > 30; }, [&] { client.poll(); });
    done = true;
    for (std::thread& one : askers) {
        one.join();
    }
    EXPECT_EQ(service.count().clients, 1U);
}

} // namespace
} // namespace orvanta_tests
