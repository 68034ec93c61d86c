#include "conformance/rules/steps.hpp"

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <algorithm>

namespace vantu::orvanta::conformance {

using namespace communication;

namespace {

std::string_view request_name(std::span<const std::byte> request) {
    constexpr std::size_t place = 7;
    return row_of(static_cast<std::uint8_t>(request[place]), direction::to_service).name;
}

// Good arguments where a device does not tell its own.
bytes usual_argument(std::uint8_t code) {
    switch (code) {
    case op_code::config_gravity_compensation_set:
        return bytes_of(vantu_orvanta_config_gravity_compensation{1, 0.5F});
    case op_code::config_torque_scaling_set:
    case op_code::config_handedness_set:
        return {std::byte{1}};
    case op_code::device_open:
        return bytes(sizeof(proto::open_argument));
    default:
        return {};
    }
}

bool is_answer(std::uint8_t code) {
    return code == op_code::service_error ||
           std::any_of(operations.begin(), operations.end(),
                       [code](const operation& row) { return row.answered_by == code; });
}

} // namespace

bytes with_length(bytes request, std::size_t length) {
    constexpr std::size_t place = sizeof(proto::header) + offsetof(proto::op, length);
    request[place] = static_cast<std::byte>(length & 0xFFU);
    request[place + 1] = static_cast<std::byte>(length >> 8U);
    return request;
}

void expect_operation(std::string_view request, const std::optional<seen_operation>& answer,
                      std::uint8_t code) {
    if (!answer || answer->code != code) {
        fail(formatted("{}: {}", request, text_of(answer)),
             std::string(row_of(code, direction::to_client).name));
    }
}

void expect_refusal(std::string_view request, const std::optional<seen_operation>& answer,
                    service_status status) {
    if (!answer || answer->code != op_code::service_error ||
        answer->body.back() != static_cast<std::byte>(status)) {
        fail(formatted("{}: {}", request, text_of(answer)),
             formatted("service_error {} ({})", static_cast<unsigned>(status),
                       service_status_message(static_cast<std::int8_t>(status))));
    }
}

seen_operation need_answer(visitor& who, std::span<const std::byte> request) {
    std::optional<seen_operation> answer = who.ask(request);
    if (!answer || answer->code == op_code::service_error) {
        stop(formatted("{}_is_answered", request_name(request)), text_of(answer));
    }
    return *std::move(answer);
}

seen_operation need_refusal(visitor& who, std::span<const std::byte> request, const std::string& rule) {
    std::optional<seen_operation> answer = who.ask(request);
    if (!answer || answer->code != op_code::service_error) {
        stop(rule, text_of(answer));
    }
    return *std::move(answer);
}

device_client::device_client(surroundings& around, std::uint8_t type) : client(around) {
    const std::optional<listed_device> found = find_device(type);
    if (!found) {
        skip(type == orvanta3_type    ? "the service lists no Orvanta3"
             : type == palmetron_type ? "the service lists no Palmetron"
                                      : "the service lists no device");
    }
    device_ = *found;
}

bytes device_client::request(std::uint8_t code, std::span<const std::byte> argument) const {
    return device_request(code, 1, device_.id, argument);
}

void device_client::open() {
    (void)need_answer(*this, request(op_code::device_open, usual_argument(op_code::device_open)));
}

void device_client::close() {
    (void)need_answer(*this, request(op_code::device_close));
}

device_owner::device_owner(surroundings& around, std::uint8_t type) : device_user(around, type) {
    const auto keep = [this](std::uint8_t get, std::uint8_t set) {
        const auto answer = ask(request(get));
        if (answer && answer->code == get) {
            settings_[set] = answer->record();
        }
    };
    keep(op_code::config_gravity_compensation_get, op_code::config_gravity_compensation_set);
    keep(op_code::config_torque_scaling_get, op_code::config_torque_scaling_set);
    for (const seen_operation& one : operations()) {
        if (one.code == op_code::device_info_orvanta3 && one.device_id() == device() &&
            one.body.back() != std::byte{vantu_orvanta_handedness_none}) {
            settings_[op_code::config_handedness_set] = {one.body.back()};
        }
    }
}

device_owner::~device_owner() {
    try {
        for (const auto& [set, argument] : settings_) {
            (void)ask(request(set, argument));
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the rule is over
    }
}

bytes device_owner::idle_request(std::uint8_t code, std::uint32_t device, std::uint8_t tag) const {
    const auto found = settings_.find(code);
    return device_request(code, tag, device, found == settings_.end() ? usual_argument(code) : found->second);
}

void expect_survival(device_user& who, std::string_view after) {
    // Refusals of what came before may still be on their way.
    who.forget();
    who.send(who.request(op_code::device_open, usual_argument(op_code::device_open)));
    expect_operation(formatted("device_open after {}", after), who.await({op_code::device_opened}),
                     op_code::device_opened);
    visitor other(who.around());
    if (!other.try_connect() &&
        (!other.answer_to_connect() || other.answer_to_connect()->code != op_code::service_error)) {
        fail(formatted("connect of another client after {}: {}", after, text_of(other.answer_to_connect())),
             "connected, or a refusal");
    }
}

void expect_ignored(visitor& who, std::string_view what, const std::vector<bytes>& datagrams) {
    who.forget();
    for (const bytes& one : datagrams) {
        who.send(one);
    }
    who.listen(who.around().quiet_time_ns);
    for (const seen_operation& one : who.news()) {
        if (is_answer(one.code)) {
            fail(formatted("{}: {}", what, text_of(one)), "no answer");
        }
    }
}

} // namespace vantu::orvanta::conformance
