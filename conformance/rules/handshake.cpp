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

void expect_accepted(std::string_view what, visitor& who, const proto::connect_body& with = introduction()) {
    (void)who.try_connect(with);
    expect_operation(what, who.answer_to_connect(), op_code::connected);
}

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
    expect_accepted("connect", who);
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
    expect_accepted("connect with other values and texts", who, body);
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

void client_ids_differ(client& first) {
    visitor second(first.around());
    connect_second(second);
    if (first.answer_to_connect()->body == second.answer_to_connect()->body) {
        fail("two clients with the same id", "an id for each");
    }
}

void connect_again_keeps_the_id(client& who) {
    const bytes id = who.answer_to_connect()->body;
    expect_accepted("a second connect", who);
    if (who.answer_to_connect()->body != id) {
        fail("another client id after a second connect", "the same");
    }
}

void connect_again_closes_the_devices(device_user& who) {
    who.connect();
    expect_refusal("device_close after a second connect", who.ask(who.request(op_code::device_close)),
                   service_status::device_not_opened);
}

void a_second_client_is_served_or_refused(device_user& first) {
    visitor second(first.around());
    if (!second.try_connect() && !has_no_room(second.answer_to_connect())) {
        fail("connect of a second client: " + text_of(second.answer_to_connect()),
             "connected, or service_error 178 or 179");
    }
    expect_operation("device_close of the first client", first.ask(first.request(op_code::device_close)),
                     op_code::device_closed);
}

void devices_are_listed_once(client& who) {
    std::set<std::uint32_t> ids;
    for (const seen_operation& one : listings(who)) {
        if (!ids.insert(one.device_id()).second) {
            fail(formatted("device {} listed twice", one.device_id()), "each device once");
        }
    }
}

void details_follow_each_listing(client& who) {
    for (const seen_operation& one : listings(who)) {
        const auto type = static_cast<std::uint8_t>(one.record().front());
        if (type != orvanta3_type && type != palmetron_type) {
            fail(formatted("device {} of type {}", one.device_id(), type), "type 1 or 2");
        }
        const std::uint8_t wanted =
            type == orvanta3_type ? op_code::device_info_orvanta3 : op_code::device_info_palmetron;
        const auto is_of_it = [&one](const seen_operation& other, std::uint8_t code) {
            return other.code == code && other.device_id() == one.device_id();
        };
        const auto listed =
            std::find_if(who.operations().begin(), who.operations().end(),
                         [&](const auto& other) { return is_of_it(other, op_code::device_added); });
        if (std::none_of(listed, who.operations().end(),
                         [&](const auto& other) { return is_of_it(other, wanted); })) {
            fail(formatted("no details of device {} after its listing", one.device_id()),
                 std::string(row_of(wanted, direction::to_client).name));
        }
    }
}

} // namespace vantu::orvanta::conformance::look
