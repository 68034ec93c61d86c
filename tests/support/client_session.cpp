// Client sessions.
#include "support/client_session.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

namespace orvanta_tests {

vantu_orvanta_event make_event(std::uint32_t type, std::uint8_t tag, const bytes& payload) {
    vantu_orvanta_event event{};
    event.event_type = type;
    event.device_id = 5;
    event.tag = tag;
    std::copy(payload.begin(), payload.end(), event.payload);
    return event;
}

client_session::client_session(vantu::orvanta::client::config callbacks)
    : client_(std::make_unique<vantu::orvanta::client>(std::move(callbacks))), session_(client_->context()) {}

client_session::~client_session() {
    destroy_client();
}

void client_session::expect(std::uint8_t code, const bytes& body) {
    session_.service.expect_any_tag(datagram({op(code, 0, body)}));
}

std::uint8_t client_session::tag_of_last_request() {
    session_.service.await_script();
    return session_.service.last_datagram().at(10);
}

void client_session::receive(const bytes& operation) {
    session_.service.push(datagram({operation}));
    const polled result = poll_until_something(client_->context());
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(client_->dispatch(result.event));
}

void client_session::destroy_client() {
    if (client_) {
        session_.expect_goodbye();
        client_.reset();
    }
}

} // namespace orvanta_tests
