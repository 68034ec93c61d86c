// A stranger is a socket that is not the service's. The client does not look at the sender of a datagram.

#include "support/service_session.hpp"
#include "support/udp_socket.hpp"

#include <gtest/gtest.h>
#include <thread>

namespace orvanta_tests {
namespace {

// A service that says nothing, and a stranger who accepts the client in its place.
class a_stranger : public testing::Test {
  protected:
    a_stranger() {
        static const std::int32_t started = vantu_orvanta_init();
        EXPECT_EQ(started, 0);
        std::int32_t code = -1;
        std::thread connecting([&] {
            code = vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                               keep_alive_ns, patient_timeout_ns);
        });
        (void)udp_socket::wait({&service});
        client = service.receive().value().from;
        EXPECT_TRUE(stranger.send(acceptance(), client));
        connecting.join();
        EXPECT_EQ(code, 0);
        EXPECT_NE(stranger.port(), service.port());
    }
    ~a_stranger() override { vantu_orvanta_disconnect(context); }
    a_stranger(const a_stranger&) = delete;
    a_stranger& operator=(const a_stranger&) = delete;

    // The client's next poll after a stranger's datagram.
    polled poll_after(const bytes& content) {
        EXPECT_TRUE(stranger.send(content, client));
        return poll_until_something(context);
    }

    udp_socket service = udp_socket::bound_to("localhost", "0").value();
    udp_socket stranger = udp_socket::bound_to("localhost", "0").value();
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    udp_address client;
};

TEST_F(a_stranger, is_taken_for_the_service_and_hears_nothing_of_the_requests) {
    EXPECT_EQ(vantu_orvanta_device_open(context, 5, 7, 0), 0);
    (void)udp_socket::wait({&service});
    EXPECT_TRUE(service.receive().has_value());
    EXPECT_FALSE(stranger.receive().has_value());
}

TEST_F(a_stranger, answers_a_request_whose_tag_it_guesses) {
    EXPECT_EQ(vantu_orvanta_config_gravity_compensation_get(context, 5, 7), 0);
    const polled answer = poll_after(datagram({op(66, 7, join({id_5, gravity_bytes}))}));
    EXPECT_EQ(answer.code, vantu_orvanta_success);
    EXPECT_EQ(answer.event.event_type, vantu_orvanta_event_config_gravity_compensation);
    EXPECT_EQ(answer.event.tag, 7);
}

TEST_F(a_stranger, ends_the_connection_by_a_goodbye) {
    EXPECT_EQ(poll_after(goodbye_received()).event.event_type, vantu_orvanta_event_disconnected);
    vantu_orvanta_event event;
    EXPECT_EQ(vantu_orvanta_poll(context, &event), vantu_orvanta_invalid_connection_state);
}

TEST_F(a_stranger, ends_no_connection_by_bytes_that_make_no_sense) {
    EXPECT_EQ(poll_after({0, 1, 2}).code, vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(poll_after(datagram({op(16, 0, {1})})).code, vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(poll_after(datagram({op(21, 7, id_5)})).code, vantu_orvanta_success);
}

TEST_F(a_stranger, adds_a_device_with_each_state_of_an_unlisted_one_without_a_bound) {
    constexpr std::uint32_t devices = 1000;
    for (std::uint32_t id = 1; id <= devices; ++id) {
        ASSERT_EQ(poll_after(datagram({op(33, 0, join({u32(id), filled(24, 0)}))})).code,
                  vantu_orvanta_success);
    }
    std::vector<std::uint32_t> ids(2 * devices);
    std::size_t count = ids.size();
    EXPECT_EQ(vantu_orvanta_device_ids(context, ids.data(), &count), vantu_orvanta_success);
    EXPECT_EQ(count, devices);
}

} // namespace
} // namespace orvanta_tests
