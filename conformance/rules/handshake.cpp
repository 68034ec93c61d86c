// Rules of the connect and of what follows it.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

// Its answer to a connect; a service that serves one client at a time makes the rule meaningless.
void connect_second(visitor& second) {
    if (second.try_connect()) {
        return;
    }
    if (second.answer_to_connect() && second.answer_to_connect()->code == op_code::service_error) {
        skip("the service has no room for a second client: " + text_of(second.answer_to_connect()));
    }
    stop("a_second_client_is_served_or_refused", text_of(second.answer_to_connect()));
}

// Those that come with the handshake, and what was said of each.
std::vector<seen_operation> listings(visitor& of) {
    of.listen(of.around().quiet_time_ns);
    std::vector<seen_operation> found;
    std::copy_if(of.operations().begin(), of.operations().end(), std::back_inserter(found),
                 [](const seen_operation& one) { return one.code == op_code::device_added; });
    if (found.empty()) {
        skip("the service lists no device");
    }
    return found;
}

} // namespace

void connect_is_answered(surroundings& around) {
    visitor who(around);
    (void)who.try_connect();
    expect_operation("connect", who.answer_to_connect(), op_code::connected);
}

void client_ids_differ(surroundings& around) {
    visitor first(around);
    first.connect();
    visitor second(around);
    connect_second(second);
    if (first.answer_to_connect()->body == second.answer_to_connect()->body) {
        fail("two clients with the same id", "an id for each");
    }
}

void devices_are_listed_once(surroundings& around) {
    visitor who(around);
    who.connect();
    std::set<std::uint32_t> ids;
    for (const seen_operation& one : listings(who)) {
        if (!ids.insert(one.device_id()).second) {
            fail(formatted("device {} listed twice", one.device_id()), "each device once");
        }
    }
}

void details_follow_each_listing(surroundings& around) {
    visitor who(around);
    who.connect();
    for (const seen_operation& one : listings(who)) {
        const auto type = static_cast<std::uint8_t>(one.record().front());
        if (type != orvanta3_type && type != palmetron_type) {
            fail(formatted("device {} of type {}", one.device_id(), type), "type 1 or 2");
        }
        const std::uint8_t wanted =
            type == orvanta3_type ? op_code::device_info_orvanta3 : op_code::device_info_palmetron;
        const auto listed = std::find_if(
            who.operations().begin(), who.operations().end(), [&one](const seen_operation& other) {
                return other.code == op_code::device_added && other.device_id() == one.device_id();
            });
        if (std::none_of(listed, who.operations().end(), [&](const seen_operation& other) {
                return other.code == wanted && other.device_id() == one.device_id();
            })) {
            fail(formatted("no details of device {} after its listing", one.device_id()),
                 std::string(row_of(wanted, direction::to_client).name));
        }
    }
}

void values_of_a_connect_are_free(surroundings& around) {
    proto::connect_body body = introduction();
    body.value_a = std::numeric_limits<std::uint16_t>::max();
    body.value_b = std::numeric_limits<std::uint16_t>::max();
    body.process_id = 0;
    std::memset(body.client_name, 0, sizeof body.client_name);
    // No text in any encoding, yet it ends in a zero.
    std::memset(body.version_text, 0xFF, sizeof body.version_text - 1);
    visitor who(around);
    (void)who.try_connect(body);
    expect_operation("connect with other values and texts", who.answer_to_connect(), op_code::connected);
}

void texts_of_a_connect_end_in_zero(surroundings& around) {
    visitor who(around);
    proto::connect_body name = introduction();
    std::memset(name.client_name, 'x', sizeof name.client_name);
    (void)who.try_connect(name);
    expect_refusal("connect with a name without an end", who.answer_to_connect(),
                   service_status::invalid_argument);
    proto::connect_body version = introduction();
    std::memset(version.version_text, 'x', sizeof version.version_text);
    (void)who.try_connect(version);
    expect_refusal("connect with a version text without an end", who.answer_to_connect(),
                   service_status::invalid_argument);
}

void connect_again_keeps_the_id(surroundings& around) {
    visitor who(around);
    who.connect();
    const bytes id = who.answer_to_connect()->body;
    (void)who.try_connect();
    expect_operation("a second connect", who.answer_to_connect(), op_code::connected);
    if (who.answer_to_connect()->body != id) {
        fail("another client id after a second connect", "the same");
    }
}

void connect_again_closes_the_devices(surroundings& around) {
    device_user who(around);
    who.connect();
    expect_refusal("device_close after a second connect",
                   who.ask(device_request(op_code::device_close, 1, who.device())),
                   service_status::device_not_opened);
}

void a_second_client_is_served_or_refused(surroundings& around) {
    device_user first(around);
    visitor second(around);
    if (!second.try_connect()) {
        const auto& answer = second.answer_to_connect();
        const auto status = answer && answer->code == op_code::service_error
                                ? static_cast<service_status>(answer->body.back())
                                : service_status::nil;
        if (status != service_status::another_client_connected &&
            status != service_status::buffer_full_or_empty) {
            fail("connect of a second client: " + text_of(answer), "connected, or service_error 178 or 179");
        }
    }
    expect_operation("device_close of the first client",
                     first.ask(device_request(op_code::device_close, 1, first.device())),
                     op_code::device_closed);
}

} // namespace vantu::orvanta::conformance::look
