// Rules of how long a connection lasts.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

// The keep-alive time that these rules declare, and how often what keeps a connection is sent.
constexpr std::int64_t keep_alive_ns = 1'000'000'000;
constexpr std::int64_t sending_period_ns = keep_alive_ns / 10;
// For so long a client is silent, or kept.
constexpr std::int64_t watched_ns = 2 * keep_alive_ns;

// The answer to a request for a device that no service lists tells whether the client is known.
bytes question() {
    return device_request(op_code::device_close, 1, unlisted_device);
}

// False when this machine was too busy to send in time.
bool send_for_a_while(visitor& who, const bytes& datagram) {
    const pace& time = who.around().time;
    std::int64_t sent_ns = time.now_ns();
    const std::int64_t end_ns = sent_ns + watched_ns;
    while (time.now_ns() < end_ns) {
        who.send(datagram);
        if (time.now_ns() - sent_ns > keep_alive_ns / 2) {
            return false;
        }
        sent_ns = time.now_ns();
        who.listen(sending_period_ns);
    }
    return true;
}

void expect_kept_by(surroundings& around, const bytes& datagram, std::string_view what) {
    constexpr int attempts = 5;
    for (int i = 0; i < attempts; ++i) {
        visitor who(around);
        who.connect(introduction(keep_alive_ns));
        if (send_for_a_while(who, datagram)) {
            expect_refusal(what, who.ask(question()), service_status::invalid_device_id);
            return;
        }
    }
    skip("this machine is too busy to send in time");
}

} // namespace

void silence_ends_the_connection(surroundings& around) {
    visitor who(around);
    who.connect(introduction(keep_alive_ns));
    who.listen(watched_ns);
    expect_refusal("a request after twice the keep-alive time", who.ask(question()),
                   service_status::client_not_connected);
}

void keep_alives_keep_the_connection(surroundings& around) {
    expect_kept_by(around, datagram_of(op_code::keep_alive, 0), "a request after keep-alives");
}

void requests_keep_the_connection(surroundings& around) {
    expect_kept_by(around, question(), "a request after others");
}

void a_goodbye_ends_the_connection(client& who) {
    who.disconnect();
    expect_refusal("a request after the goodbye", who.ask(question()), service_status::client_not_connected);
}

void a_stranger_may_say_goodbye(surroundings& around) {
    visitor who(around);
    expect_operation("disconnect of a stranger", who.ask(datagram_of(op_code::disconnect, 0)),
                     op_code::disconnected);
}

} // namespace vantu::orvanta::conformance::look
