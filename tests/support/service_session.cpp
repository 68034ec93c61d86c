// Sessions with the scripted service.
#include "support/service_session.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

namespace orvanta_tests {

bytes connect_request() {
    return join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x03, 0x70, 0x00, 0x00},
                 u16(0),
                 u16(0),
                 u64(5'000'000'000),
                 u32(static_cast<std::uint32_t>(getpid())),
                 text_field("test client", 32),
                 text_field("2.0.0|2.0.0", 64)});
}

bytes acceptance() {
    return {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x04, 0x08, 0x00,
            0x00, 0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11};
}

bytes goodbye() {
    return {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x05, 0x00, 0x00, 0x00};
}

bytes goodbye_received() {
    return {0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x06, 0x00, 0x00, 0x00};
}

std::int32_t connect_to(const scripted_service& service, vantu_orvanta_context* context) {
    return vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                       keep_alive_ns, patient_timeout_ns);
}

service_session::service_session() : service_session(vantu_orvanta_context_create()) {
    owned_ = true;
}

service_session::service_session(vantu_orvanta_context* connected) : context(connected), owned_(false) {
    service.expect(connect_request()).answer(acceptance());
    static const std::int32_t started = vantu_orvanta_init();
    EXPECT_EQ(started, 0);
    EXPECT_EQ(connect_to(service, context), 0);
    service.await_script();
}

service_session::~service_session() {
    end();
}

void service_session::expect_goodbye() {
    std::uint32_t id = 0;
    std::size_t count = 0;
    const bool connected = vantu_orvanta_device_ids(context, &id, &count) != 3;
    if (connected && !service.closed()) {
        service.await_room();
        service.expect(goodbye()).answer(goodbye_received());
    }
}

void service_session::end() {
    if (owned_ && context != nullptr) {
        expect_goodbye();
        vantu_orvanta_disconnect(context);
        context = nullptr;
    }
}

polled poll_once(vantu_orvanta_context* context) {
    polled result{};
    result.code = vantu_orvanta_poll(context, &result.event);
    return result;
}

polled poll_until_something(vantu_orvanta_context* context) {
    polled result{};
    const bool happened = wait_until([&] {
        result = poll_once(context);
        return result.code != 0 || result.event.event_type != 0;
    });
    EXPECT_TRUE(happened) << "nothing happened";
    return result;
}

} // namespace orvanta_tests
