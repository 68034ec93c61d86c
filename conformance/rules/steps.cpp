#include "conformance/rules/steps.hpp"

#include "vantu/orvanta/common/format.hpp"

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

device_visitor::device_visitor(surroundings& around, std::uint8_t type) : visitor(around) {
    connect();
    const std::optional<listed_device> found = find_device(type);
    if (!found) {
        skip(type == orvanta3_type    ? "the service lists no Orvanta3"
             : type == palmetron_type ? "the service lists no Palmetron"
                                      : "the service lists no device");
    }
    device_ = *found;
}

device_user::device_user(surroundings& around, std::uint8_t type) : device_visitor(around, type) {
    (void)need_answer(
        *this, device_request(op_code::device_open, 1, device(), usual_argument(op_code::device_open)));
}

kept_settings::kept_settings(device_user& owner) : owner_(owner) {
    const auto keep = [this](std::uint8_t get, std::uint8_t set) {
        const auto answer = owner_.ask(device_request(get, 1, owner_.device()));
        if (answer && answer->code == get) {
            arguments_[set] = answer->record();
        }
    };
    keep(op_code::config_gravity_compensation_get, op_code::config_gravity_compensation_set);
    keep(op_code::config_torque_scaling_get, op_code::config_torque_scaling_set);
    for (const seen_operation& one : owner_.operations()) {
        if (one.code == op_code::device_info_orvanta3 && one.device_id() == owner_.device() &&
            one.body.back() != std::byte{vantu_orvanta_handedness_none}) {
            arguments_[op_code::config_handedness_set] = {one.body.back()};
        }
    }
}

kept_settings::~kept_settings() {
    try {
        for (const auto& [set, argument] : arguments_) {
            (void)owner_.ask(device_request(set, 1, owner_.device(), argument));
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the rule is over
    }
}

bytes kept_settings::argument_of(std::uint8_t code) const {
    const auto found = arguments_.find(code);
    return found == arguments_.end() ? usual_argument(code) : found->second;
}

void expect_survival(device_user& who, std::string_view after) {
    // Refusals of what came before may still be on their way.
    who.forget();
    who.send(device_request(op_code::device_open, 1, who.device(), bytes(2)));
    expect_operation(formatted("device_open after {}", after), who.await({op_code::device_opened}),
                     op_code::device_opened);
    visitor other(who.around());
    if (!other.try_connect() &&
        (!other.answer_to_connect() || other.answer_to_connect()->code != op_code::service_error)) {
        fail(formatted("connect of another client after {}: {}", after, text_of(other.answer_to_connect())),
             "connected, or a refusal");
    }
}

void expect_no_answer(const visitor& who, std::string_view to) {
    for (const seen_operation& one : who.news()) {
        if (is_answer(one.code)) {
            fail(formatted("{}: {}", to, text_of(one)), "no answer");
        }
    }
}

} // namespace vantu::orvanta::conformance
