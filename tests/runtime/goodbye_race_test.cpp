// Requests of many threads against the goodbye of the service: each goes out on the client's own socket or
// returns 3, even though the descriptor is closed and reused at once.
#include "support/service_session.hpp"

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace orvanta_tests;

// Takes up free descriptors with UDP sockets while it lives; whoever sends through one by mistake reaches the
// scripted service as a stranger, which fails the test.
class descriptor_squatter {
  public:
    descriptor_squatter() {
        for (int i = 0; i < 8; ++i) {
            sockets_.push_back(udp_socket::bound_to("localhost", "0"));
        }
    }

  private:
    std::vector<std::optional<udp_socket>> sockets_;
};

void race_once() {
    service_session session;
    session.service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    std::atomic<int> sending{0};
    std::atomic<int> wrong_code{0};
    std::vector<std::thread> senders;
    for (int i = 0; i < 3; ++i) {
        senders.emplace_back([&] {
            std::int32_t code = 0;
            // The system may have no room while another thread sends.
            for (int sent = 0; code == vantu_orvanta_success || code == vantu_orvanta_os_socket_error;
                 ++sent) {
                code = vantu_orvanta_config_save_request(session.context, 5, 0);
                sending += sent == 0 ? 1 : 0;
            }
            wrong_code = code == vantu_orvanta_invalid_connection_state ? wrong_code.load() : code;
        });
    }
    EXPECT_TRUE(wait_until([&] { return sending.load() == 3; }));
    session.service.push(goodbye_received());
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
    {
        const descriptor_squatter squatter;
        for (std::thread& sender : senders) {
            sender.join();
        }
    }
    EXPECT_EQ(wrong_code.load(), 0);
}

TEST(requests_that_race_with_the_goodbye, go_out_on_their_own_socket_or_return_3) {
    for (int round = 0; round < 60; ++round) {
        race_once();
    }
}

TEST(table_readers_that_race_with_the_goodbye, answer_0_and_then_3) {
    for (int round = 0; round < 20; ++round) {
        service_session session;
        session.service.push(datagram({device_listed(5, 1)}));
        EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_device_added);
        std::atomic<bool> reading{false};
        std::thread reader([&] {
            std::int32_t code = 0;
            while (code == vantu_orvanta_success) {
                vantu_orvanta_device device{};
                code = vantu_orvanta_device_info(session.context, 5, &device);
                EXPECT_EQ(code == vantu_orvanta_success ? device.device_type : 1, 1);
                reading = true;
            }
            EXPECT_EQ(code, vantu_orvanta_invalid_connection_state);
        });
        EXPECT_TRUE(wait_until([&] { return reading.load(); }));
        for (std::uint8_t i = 0; i < 20; ++i) {
            session.service.push(datagram({op(33, 0, join({u32(5), counting(i, 24)}))}));
            EXPECT_EQ(poll_until_something(session.context).event.event_type,
                      +vantu_orvanta_event_cursor_state);
        }
        session.service.push(goodbye_received());
        EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
        reader.join();
    }
}

} // namespace
