// Rules of refusals: which request is refused with which status.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

constexpr unsigned greatest_byte = std::numeric_limits<std::uint8_t>::max();

// All requests of the table for one device but these. A service that breaks the rule must not save.
void expect_device_requests_refused(visitor& who, const device_owner& known, std::uint32_t device,
                                    service_status status, std::initializer_list<std::uint8_t> but = {}) {
    for (const operation& row : device_requests()) {
        const bool may_be_sent = row.code != op_code::config_save || who.around().may_save;
        if (may_be_sent && std::find(but.begin(), but.end(), row.code) == but.end()) {
            expect_refusal(row.name, who.ask(known.idle_request(row.code, device)), status);
        }
    }
}

void expect_wrong_lengths_refused(device_user& who, const operation& row) {
    bytes body = bytes_of(unlisted_device);
    body.resize(row.body_size);
    bytes right = datagram_of(row.code, 1, body);
    bytes longer = right;
    longer.push_back({});
    const auto expect = [&](std::string_view how, const bytes& request) {
        expect_refusal(formatted("{} {}", row.name, how), who.ask(request), service_status::invalid_body);
    };
    expect("with a byte too many", with_length(longer, row.body_size + 1U));
    expect("with a length past its end", with_length(right, row.body_size + 1U));
    if (row.body_size != 0) {
        right.pop_back();
        expect("cut off", right);
        expect("with a byte too few", with_length(right, row.body_size - 1U));
    }
}

} // namespace

void other_versions_are_refused(client& who) {
    for (const std::byte version : {std::byte{0}, std::byte{2}, std::byte{255}}) {
        bytes request = datagram_of(op_code::disconnect, 1);
        request[offsetof(proto::header, version)] = version;
        expect_refusal(formatted("a request of version {}", static_cast<unsigned>(version)), who.ask(request),
                       service_status::invalid_version);
    }
}

void unknown_operations_are_refused(client& who) {
    for (unsigned number = 0; number <= greatest_byte; ++number) {
        const auto code = static_cast<std::uint8_t>(number);
        if (code != op_code::service_error && find_operation(code, direction::to_service) == nullptr) {
            expect_refusal(formatted("operation {}", number), who.ask(datagram_of(code, 1)),
                           service_status::invalid_operation);
        }
    }
}

void records_without_magic_are_refused(client& who) {
    bytes request = datagram_of(op_code::disconnect, 1);
    request[sizeof(proto::header)] = std::byte{0xFE};
    expect_refusal("a request whose record begins with 0xFE", who.ask(request),
                   service_status::invalid_operation);
}

void wrong_lengths_are_refused(device_owner& who) {
    for (const operation& row : operations) {
        if (row.way == direction::to_service) {
            expect_wrong_lengths_refused(who, row);
        }
    }
}

void strangers_are_refused(device_owner& known) {
    visitor who(known.around());
    expect_device_requests_refused(who, known, known.device(), service_status::client_not_connected);
}

void unlisted_devices_are_refused(device_owner& known) {
    expect_device_requests_refused(known, known, unlisted_device, service_status::invalid_device_id);
}

void other_device_types_are_refused(surroundings& around) {
    device_owner who(around, palmetron_type);
    expect_device_requests_refused(who, who, who.device(), service_status::invalid_device_type,
                                   {op_code::device_open, op_code::device_close});
}

void unopened_devices_are_refused(device_owner& known) {
    known.close();
    expect_device_requests_refused(known, known, known.device(), service_status::device_not_opened,
                                   {op_code::device_open});
    known.open();
}

void closed_devices_are_refused(device_user& who) {
    who.close();
    expect_refusal("device_close of a closed device", who.ask(who.request(op_code::device_close)),
                   service_status::device_not_opened);
}

void wrong_arguments_are_refused(device_owner& who) {
    const auto expect = [&who](std::uint8_t code, const bytes& argument) {
        expect_refusal(formatted("{} with a wrong argument", row_of(code, direction::to_service).name),
                       who.ask(who.request(code, argument)), service_status::invalid_argument);
    };
    using gravity = vantu_orvanta_config_gravity_compensation;
    expect(op_code::config_gravity_compensation_set, bytes_of(gravity{2, 0.5F}));
    for (const float factor : {-0.5F, 1.5F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
        expect(op_code::config_gravity_compensation_set, bytes_of(gravity{1, factor}));
    }
    expect(op_code::config_torque_scaling_set, {std::byte{2}});
    expect(op_code::config_handedness_set, {std::byte{0}});
    expect(op_code::config_handedness_set, {std::byte{3}});
}

void refusals_have_an_order(device_owner& who) {
    visitor stranger(who.around());
    const bytes wrong{std::byte{9}};
    const bytes request = device_request(op_code::config_torque_scaling_set, 1, unlisted_device, wrong);
    bytes cut = request;
    cut.pop_back();
    bytes old = datagram_of(op_code::connected, 1);
    old[offsetof(proto::header, version)] = std::byte{9};
    expect_refusal("an unknown operation of another version", stranger.ask(old),
                   service_status::invalid_version);
    expect_refusal("a stranger's request cut off", stranger.ask(cut), service_status::invalid_body);
    expect_refusal("a stranger's request for no device", stranger.ask(request),
                   service_status::client_not_connected);
    expect_refusal("a wrong argument for no device", who.ask(request), service_status::invalid_device_id);
    who.close();
    expect_refusal("a wrong argument for an unopened device",
                   who.ask(who.request(op_code::config_torque_scaling_set, wrong)),
                   service_status::device_not_opened);
    who.open();
}

void refusals_copy_the_tag(client& who) {
    for (unsigned tag = 1; tag <= greatest_byte; ++tag) {
        const auto answer = need_refusal(
            who, device_request(op_code::device_close, static_cast<std::uint8_t>(tag), unlisted_device),
            "unlisted_devices_are_refused");
        if (answer.tag != tag) {
            fail(text_of(answer), formatted("tag {}", tag));
        }
    }
}

void refusals_name_the_device(client& who) {
    const auto expect = [](const seen_operation& answer, std::uint32_t device) {
        if (answer.device_id() != device) {
            fail(text_of(answer), formatted("device {}", device));
        }
    };
    expect(need_refusal(who, device_request(op_code::device_close, 1, unlisted_device),
                        "unlisted_devices_are_refused"),
           unlisted_device);
    expect(need_refusal(who, datagram_of(op_code::connected, 1), "unknown_operations_are_refused"), 0);
}

} // namespace vantu::orvanta::conformance::look
