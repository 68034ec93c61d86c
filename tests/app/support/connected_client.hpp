// A client connected to a service in the test process, without a polling thread.
#pragma once

#include "app/callbacks.hpp"
#include "app/session.hpp"
#include "app/support/fake_service.hpp"
#include "app/support/recording_console.hpp"

#include "vantu/orvanta/orvanta.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>

namespace orvanta_tests {

inline constexpr std::uint64_t second_ns = 1'000'000'000;

class connected_client : public testing::Test {
  protected:
    // Connects; the service puts the given operations before its acceptance, in one datagram.
    void connect_with(const std::string& operations) {
        service.accept_with(operations);
        vantu_orvanta_init();
        ASSERT_EQ(0, vantu_orvanta_connect_ports(client.context(), "0", service.port_text().c_str(), "test",
                                                 0, 0, 60 * second_ns, 60 * second_ns));
        ASSERT_EQ(3, service.next(3).at(7));
        connects_sent = 1;
    }

    // Dispatches one event that the service has sent.
    void dispatch_one() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        vantu_orvanta_event event{};
        while (event.event_type == 0) {
            ASSERT_EQ(0, vantu_orvanta_poll(client.context(), &event));
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        }
        client.dispatch(event);
    }

    // The datagrams after the connect request, once that many of them have come.
    datagrams requests(std::size_t count) {
        datagrams all = service.first_requests(connects_sent + count);
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(connects_sent));
        return all;
    }

    fake_service service;
    recording_console diagnostics;
    vantu::orvanta::app::application_state state;
    vantu::orvanta::client client{vantu::orvanta::app::make_callbacks(state, diagnostics.terminal())};
    std::size_t connects_sent{0};
};

} // namespace orvanta_tests
