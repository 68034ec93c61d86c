// Sessions at the service's own port and the local ports of every client: 54321 to 54336.
#include "scripted_session.hpp"
#include "support/udp_socket.hpp"

#include <atomic>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::service_simulator;
using vantu::orvanta::session;

service_simulator::settings at_its_own_port() {
    auto settings = simulated_service::quiet();
    settings.port = "54320";
    return settings;
}

session::options usual_options(diary& told) {
    session::options options;
    options.name = "session test";
    options.callbacks = told.callbacks();
    options.connect_timeout = patience;
    options.request_timeout = patience;
    options.probe_interval = 50ms;
    options.reconnect = true;
    return options;
}

TEST(a_session_at_the_usual_ports, reconnects_by_the_next_local_port_when_the_first_is_taken) {
    simulated_service service(at_its_own_port());
    const auto taken = udp_socket::bound_to("localhost", "54321");
    ASSERT_TRUE(taken);
    diary told;
    session connected(usual_options(told));
    connected.open(1).value();
    service->command("restart");
    ASSERT_TRUE(told.has("reconnected"));
    EXPECT_NE(service->status().find(":54322"), std::string::npos) << service->status();
    EXPECT_EQ(connected.count().connections, 2U);
}

TEST(a_session_at_the_usual_ports, ends_within_an_attempt_to_reconnect) {
    std::atomic<int> connects{0};
    scripted_service service("54320");
    service.respond_with([&](const bytes& request) -> std::vector<bytes> {
        return request.at(7) == 3 && ++connects == 1 ? std::vector<bytes>{acceptance()}
                                                     : std::vector<bytes>{};
    });
    diary told;
    {
        const session connected(usual_options(told));
        ASSERT_TRUE(comes_about([&] { return connects >= 2; }));
    }
    EXPECT_LT(connects, 1 + 16); // the local ports that it would have tried
    EXPECT_EQ(told.times("reconnected"), 0);
}

} // namespace
