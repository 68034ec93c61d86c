#include "simulator/faults/fault_fit.hpp"

#include "simulator/faults/fault_patch.hpp"
#include "vantu/orvanta/communication/fields.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

bool answers_a_request(const operation& row) {
    return row.way == direction::to_client &&
           (row.code == op_code::service_error ||
            std::any_of(operations.begin(), operations.end(),
                        [&row](const operation& request) { return request.answered_by == row.code; }));
}

// A request for a device, or a connect where that is asked for.
bool can_be_refused(const fault_rule& rule, const operation& row) {
    return row.body_size != 0 && (row.code != op_code::connect || rule.code == op_code::connect);
}

bool can_be_cut(const fault_rule& rule, const operation& row) {
    return row.body_size >= rule.first.value_or(0) || row.rule != body_rule::fixed;
}

bool has_device(const operation& row) {
    return find_field(fields_of(row.code, row.way), body_fields::device_id.name).has_value();
}

std::optional<std::uint32_t> device_of(std::span<const std::byte> datagram, const operation_place& place,
                                       direction way) {
    const auto found = find_field(fields_of(place.code, way), body_fields::device_id.name);
    std::uint32_t device = 0;
    if (!found || place.body_size < found->offset + sizeof device) {
        return std::nullopt;
    }
    std::memcpy(&device, datagram.data() + place.body() + found->offset, sizeof device);
    return device;
}

} // namespace

bool goes(const fault_rule& rule, direction way) {
    const fault_row& row = row_of(rule.kind);
    return rule.way ? *rule.way == way : way == direction::to_service ? row.to_service : row.to_client;
}

bool is_about(const fault_rule& rule, const operation& row) {
    const fault_act act = row_of(rule.kind).act;
    return goes(rule, row.way) && rule.code.value_or(row.code) == row.code &&
           (!rule.device || has_device(row)) &&
           (!(rule.answers || act == fault_act::stale_reply) || answers_a_request(row)) &&
           (act != fault_act::refusal || can_be_refused(rule, row)) &&
           (rule.kind != fault_kind::cut || can_be_cut(rule, row)) &&
           (rule.kind != fault_kind::patch || patched_field(rule, row.code, row.way));
}

bool can_fit(const fault_rule& rule) {
    return std::any_of(operations.begin(), operations.end(),
                       [&rule](const operation& row) { return is_about(rule, row); });
}

std::optional<operation_place> chosen_operation(const fault_rule& rule, std::span<const std::byte> datagram,
                                                direction way) {
    for (const operation_place& place : operations_in(datagram)) {
        if ((rule.code && *rule.code != place.code) ||
            (rule.device && rule.device != device_of(datagram, place, way))) {
            continue;
        }
        const operation* const row = find_operation(place.code, way);
        if (rule.answers && (row == nullptr || !answers_a_request(*row))) {
            continue;
        }
        const bool refused = row_of(rule.kind).act == fault_act::refusal;
        if (refused ? row != nullptr && can_be_refused(rule, *row)
                    : rule.kind != fault_kind::patch || holds_patched_field(rule, place, way)) {
            return place;
        }
    }
    return std::nullopt;
}

} // namespace vantu::orvanta::simulator
