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

constexpr std::size_t record_place = sizeof(proto::header);
constexpr std::size_t length_place = record_place + offsetof(proto::op, length);

// A request whose length field is this one, whatever follows.
bytes with_length(bytes request, std::size_t length) {
    request[length_place] = static_cast<std::byte>(length & 0xFFU);
    request[length_place + 1] = static_cast<std::byte>(length >> 8U);
    return request;
}

// All requests of the table for one device but these. A service that breaks the rule must not save.
void expect_device_requests_refused(visitor& who, const kept_settings& kept, std::uint32_t device,
                                    service_status status, std::initializer_list<std::uint8_t> but = {}) {
    for (const operation& row : device_requests()) {
        const bool may_be_sent = row.code != op_code::config_save || who.around().may_save;
        if (may_be_sent && std::find(but.begin(), but.end(), row.code) == but.end()) {
            expect_refusal(row.name, who.ask(device_request(row.code, 1, device, kept.argument_of(row.code))),
                           status);
        }
    }
}

seen_operation need_refusal(visitor& who, std::span<const std::byte> request,
                            const char* rule = "unlisted_devices_are_refused") {
    std::optional<seen_operation> answer = who.ask(request);
    if (!answer || answer->code != op_code::service_error) {
        stop(rule, text_of(answer));
    }
    return *std::move(answer);
}

} // namespace

void strangers_are_refused(surroundings& around) {
    device_user known(around, orvanta3_type);
    const kept_settings kept(known);
    visitor who(around);
    expect_device_requests_refused(who, kept, known.device(), service_status::client_not_connected);
}

void unopened_devices_are_refused(surroundings& around) {
    device_user known(around, orvanta3_type);
    const kept_settings kept(known);
    (void)need_answer(known, device_request(op_code::device_close, 1, known.device()));
    expect_device_requests_refused(known, kept, known.device(), service_status::device_not_opened,
                                   {op_code::device_open});
    (void)need_answer(known, device_request(op_code::device_open, 1, known.device(), bytes(2)));
}

void closed_devices_are_refused(surroundings& around) {
    device_user who(around);
    (void)need_answer(who, device_request(op_code::device_close, 1, who.device()));
    expect_refusal("device_close of a closed device",
                   who.ask(device_request(op_code::device_close, 1, who.device())),
                   service_status::device_not_opened);
}

void unlisted_devices_are_refused(surroundings& around) {
    device_user known(around, orvanta3_type);
    const kept_settings kept(known);
    expect_device_requests_refused(known, kept, unlisted_device, service_status::invalid_device_id);
}

void other_device_types_are_refused(surroundings& around) {
    device_user who(around, palmetron_type);
    const kept_settings kept(who);
    expect_device_requests_refused(who, kept, who.device(), service_status::invalid_device_type,
                                   {op_code::device_open, op_code::device_close});
}

void wrong_lengths_are_refused(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    for (const operation& row : operations) {
        if (row.way != direction::to_service) {
            continue;
        }
        bytes body = bytes_of(unlisted_device);
        body.resize(row.body_size);
        bytes right = datagram_of(row.code, 1, body);
        bytes longer = right;
        longer.push_back({});
        expect_refusal(formatted("{} with a byte too many", row.name),
                       who.ask(with_length(longer, row.body_size + 1U)), service_status::invalid_body);
        expect_refusal(formatted("{} with a length past its end", row.name),
                       who.ask(with_length(right, row.body_size + 1U)), service_status::invalid_body);
        if (row.body_size != 0) {
            right.pop_back();
            expect_refusal(formatted("{} cut off", row.name), who.ask(right), service_status::invalid_body);
            expect_refusal(formatted("{} with a byte too few", row.name),
                           who.ask(with_length(right, row.body_size - 1U)), service_status::invalid_body);
        }
    }
}

void wrong_arguments_are_refused(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    const auto expect = [&who](std::uint8_t code, const bytes& argument) {
        expect_refusal(formatted("{} with a wrong argument", row_of(code, direction::to_service).name),
                       who.ask(device_request(code, 1, who.device(), argument)),
                       service_status::invalid_argument);
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

void unknown_operations_are_refused(surroundings& around) {
    visitor who(around);
    who.connect();
    for (unsigned number = 0; number <= std::numeric_limits<std::uint8_t>::max(); ++number) {
        const auto code = static_cast<std::uint8_t>(number);
        if (code != op_code::service_error && find_operation(code, direction::to_service) == nullptr) {
            expect_refusal(formatted("operation {}", number), who.ask(datagram_of(code, 1)),
                           service_status::invalid_operation);
        }
    }
}

void other_versions_are_refused(surroundings& around) {
    visitor who(around);
    who.connect();
    for (const std::byte version : {std::byte{0}, std::byte{2}, std::byte{255}}) {
        bytes request = datagram_of(op_code::disconnect, 1);
        request[offsetof(proto::header, version)] = version;
        expect_refusal(formatted("a request of version {}", static_cast<unsigned>(version)), who.ask(request),
                       service_status::invalid_version);
    }
}

void records_without_magic_are_refused(surroundings& around) {
    visitor who(around);
    who.connect();
    bytes request = datagram_of(op_code::disconnect, 1);
    request[record_place] = std::byte{0xFE};
    expect_refusal("a request whose record begins with 0xFE", who.ask(request),
                   service_status::invalid_operation);
}

void refusals_copy_the_tag(surroundings& around) {
    visitor who(around);
    who.connect();
    for (unsigned tag = 1; tag <= std::numeric_limits<std::uint8_t>::max(); ++tag) {
        const auto answer = need_refusal(
            who, device_request(op_code::device_close, static_cast<std::uint8_t>(tag), unlisted_device));
        if (answer.tag != tag) {
            fail(text_of(answer), formatted("tag {}", tag));
        }
    }
}

void refusals_name_the_device(surroundings& around) {
    visitor who(around);
    who.connect();
    const auto expect = [](const seen_operation& answer, std::uint32_t device) {
        if (answer.device_id() != device) {
            fail(text_of(answer), formatted("device {}", device));
        }
    };
    expect(need_refusal(who, device_request(op_code::device_close, 1, unlisted_device)), unlisted_device);
    expect(need_refusal(who, datagram_of(op_code::connected, 1), "unknown_operations_are_refused"), 0);
}

void refusals_have_an_order(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    visitor stranger(around);
    const bytes wrong{std::byte{9}};
    bytes request = device_request(op_code::config_torque_scaling_set, 1, unlisted_device, wrong);
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
    (void)need_answer(who, device_request(op_code::device_close, 1, who.device()));
    expect_refusal("a wrong argument for an unopened device",
                   who.ask(device_request(op_code::config_torque_scaling_set, 1, who.device(), wrong)),
                   service_status::device_not_opened);
    (void)need_answer(who, device_request(op_code::device_open, 1, who.device(), bytes(2)));
}

} // namespace vantu::orvanta::conformance::look
