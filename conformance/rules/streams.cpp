// Rules of what opened devices stream.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

constexpr std::array streams{op_code::cursor_state,        op_code::cursor_state_b,
                             op_code::palmetron_state,     op_code::status_motor_current,
                             op_code::status_power_supply, op_code::service_stream_b};

bool is_stream(const seen_operation& one) {
    return std::find(streams.begin(), streams.end(), one.code) != streams.end();
}

void expect_no_stream(visitor& who, std::string_view when) {
    who.forget();
    who.listen(who.around().quiet_time_ns);
    const auto news = who.news();
    const auto found = std::find_if(news.begin(), news.end(), is_stream);
    if (found != news.end()) {
        fail(formatted("{} {}", text_of(*found), when), "no states");
    }
}

// Waits for states, of which those of an open device need come.
void need_stream(device_user& who) {
    if (!who.await({op_code::cursor_state, op_code::palmetron_state})) {
        stop(who.type() == palmetron_type ? "an_open_palmetron_streams" : "an_open_orvanta3_streams",
             "nothing");
    }
}

void expect_stream(surroundings& around, std::uint8_t type, std::initializer_list<std::uint8_t> codes) {
    device_user who(around, type);
    const auto seen = who.await(codes);
    if (!seen || seen->device_id() != who.device()) {
        fail(formatted("open device {}: {}", who.device(), text_of(seen)),
             std::string(row_of(*codes.begin(), direction::to_client).name));
    }
}

} // namespace

void an_open_orvanta3_streams(surroundings& around) {
    expect_stream(around, orvanta3_type, {op_code::cursor_state, op_code::cursor_state_b});
}

void an_open_palmetron_streams(surroundings& around) {
    expect_stream(around, palmetron_type, {op_code::palmetron_state});
}

void streams_have_tag_0(device_user& who) {
    need_stream(who);
    who.listen(who.around().quiet_time_ns);
    for (const seen_operation& one : who.operations()) {
        if (is_stream(one) && one.tag != 0) {
            fail(text_of(one), "tag 0");
        }
    }
}

void unopened_devices_stream_nothing(surroundings& around) {
    device_client who(around);
    expect_no_stream(who, "for a client that has opened no device");
    visitor other(around);
    if (!other.try_connect()) {
        return;
    }
    const auto opened = other.ask(who.request(op_code::device_open, bytes(2)));
    if (opened && opened->code == op_code::device_opened) {
        expect_no_stream(who, "for a client while another has opened the device");
    }
}

void closed_devices_stream_nothing(device_user& who) {
    need_stream(who);
    who.close();
    expect_no_stream(who, "after device_closed");
}

void a_goodbye_ends_the_streams(device_user& who) {
    need_stream(who);
    who.disconnect();
    expect_no_stream(who, "after disconnected");
}

} // namespace vantu::orvanta::conformance::look
