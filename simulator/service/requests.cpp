#include "simulator/service/requests.hpp"

#include "simulator/service/announcements.hpp"
#include "simulator/service/motion.hpp"
#include "simulator/service/streams.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

template <typename... Arguments>
void tell(const request& what, fmt::format_string<Arguments...> text, const Arguments&... arguments) {
    if (what.narrate) {
        what.narrate(formatted("client {}: ", what.from.id) + formatted(text, arguments...));
    }
}

// The record after the device id of the request's body.
template <std::uint8_t code> auto argument_of(const request& what) {
    proto::body<code, direction::to_service> body;
    std::memcpy(&body, what.body.data(), sizeof body);
    return body.record;
}

template <std::uint8_t code>
constexpr std::uint8_t answer_to = communication::row_of(code, direction::to_service).answered_by;

// Answers a request with the operation that its row names.
template <std::uint8_t code>
service_status answer(const request& what, const outbox::body<answer_to<code>>& body) {
    what.out.send<answer_to<code>>(what.from.address, what.tag, body);
    return service_status::nil;
}

constexpr bool is_flag(std::uint8_t value) {
    return value <= 1;
}

std::string_view on_or_off(bool enabled) {
    return enabled ? "on" : "off";
}

service_status open_it(const request& what, device& which) {
    if (what.from.find_opened(which.id) == nullptr) {
        start_streams(what.from.opened.emplace_back(open_device{which.id}), what.state_period_ns,
                      what.now_ns);
    }
    tell(what, "opened device {}", which.id);
    return answer<op_code::device_open>(what, {which.id});
}

service_status close_it(const request& what, device& which) {
    std::erase_if(what.from.opened, [&which](const open_device& one) { return one.id == which.id; });
    tell(what, "closed device {}", which.id);
    return answer<op_code::device_close>(what, {which.id});
}

service_status tell_orientation(const request& what, device& which) {
    return answer<op_code::orientation_get>(what, {which.id, orientation_at(which, what.now_ns)});
}

service_status save_configuration(const request& what, device& which) {
    if (what.save && !what.save(which)) {
        return service_status::device_communication_error;
    }
    tell(what, "saved the configuration of device {}", which.id);
    return answer<op_code::config_save>(what, {which.id, {1}});
}

template <std::uint8_t code> service_status tell_gravity_compensation(const request& what, device& which) {
    const configuration& settings = which.settings;
    const std::uint8_t enabled = settings.gravity_compensation ? 1 : 0;
    return answer<code>(what, {which.id, {enabled, settings.scaling_factor}});
}

service_status set_gravity_compensation(const request& what, device& which) {
    const auto argument = argument_of<op_code::config_gravity_compensation_set>(what);
    const float factor = argument.scaling_factor;
    if (!is_flag(argument.enabled) || !is_scaling_factor(factor)) {
        return service_status::invalid_argument;
    }
    which.settings.gravity_compensation = argument.enabled == 1;
    which.settings.scaling_factor = factor;
    tell(what, "set gravity compensation of device {} {}, factor {}", which.id,
         on_or_off(which.settings.gravity_compensation), factor);
    return tell_gravity_compensation<op_code::config_gravity_compensation_set>(what, which);
}

template <std::uint8_t code> service_status tell_torque_scaling(const request& what, device& which) {
    const std::uint8_t enabled = which.settings.torque_scaling ? 1 : 0;
    return answer<code>(what, {which.id, {enabled}});
}

service_status set_torque_scaling(const request& what, device& which) {
    const auto argument = argument_of<op_code::config_torque_scaling_set>(what);
    if (!is_flag(argument.enabled)) {
        return service_status::invalid_argument;
    }
    which.settings.torque_scaling = argument.enabled == 1;
    tell(what, "set torque scaling of device {} {}", which.id, on_or_off(which.settings.torque_scaling));
    return tell_torque_scaling<op_code::config_torque_scaling_set>(what, which);
}

service_status set_handedness(const request& what, device& which) {
    const auto argument = argument_of<op_code::config_handedness_set>(what);
    if (!is_handedness(argument.handedness)) {
        return service_status::invalid_argument;
    }
    which.settings.handedness = argument.handedness;
    tell(what, "set device {} {}-handed", which.id,
         argument.handedness == vantu_orvanta_handedness_left ? "left" : "right");
    const service_status status = answer<op_code::config_handedness_set>(what, {which.id, argument});
    // Clients keep the hand with the device's details: all of them need these anew.
    send_orvanta3_details(what.out, what.clients.all(), which);
    return status;
}

enum class device_kind : std::uint8_t { any, orvanta3 };
enum class opening : std::uint8_t { not_needed, needed };

struct rule {
    std::uint8_t code;
    device_kind kind;
    opening opened;
    service_status (*carry_out)(const request& what, device& which);
};

constexpr std::array rules{
    rule{op_code::device_open, device_kind::any, opening::not_needed, &open_it},
    rule{op_code::device_close, device_kind::any, opening::needed, &close_it},
    rule{op_code::orientation_get, device_kind::orvanta3, opening::needed, &tell_orientation},
    rule{op_code::config_save, device_kind::orvanta3, opening::needed, &save_configuration},
    rule{op_code::config_gravity_compensation_get, device_kind::orvanta3, opening::needed,
         &tell_gravity_compensation<op_code::config_gravity_compensation_get>},
    rule{op_code::config_gravity_compensation_set, device_kind::orvanta3, opening::needed,
         &set_gravity_compensation},
    rule{op_code::config_torque_scaling_get, device_kind::orvanta3, opening::needed,
         &tell_torque_scaling<op_code::config_torque_scaling_get>},
    rule{op_code::config_torque_scaling_set, device_kind::orvanta3, opening::needed, &set_torque_scaling},
    rule{op_code::config_handedness_set, device_kind::orvanta3, opening::needed, &set_handedness},
};

const rule* find_rule(std::uint8_t code) {
    const auto found =
        std::find_if(rules.begin(), rules.end(), [code](const rule& one) { return one.code == code; });
    return found == rules.end() ? nullptr : &*found;
}

// Every operation to the service but the keep-alive is a request; those of a connection itself have no rule.
consteval bool every_request_has_an_answer_and_a_rule() {
    for (const operation& row : operations) {
        const bool is_request = row.way == direction::to_service && row.code != op_code::keep_alive;
        const bool is_of_a_connection = row.code == op_code::connect || row.code == op_code::disconnect;
        const auto count = std::count_if(rules.begin(), rules.end(), [&row](const rule& one) {
            return row.way == direction::to_service && one.code == row.code;
        });
        if (is_request != (row.answered_by != op_code::none) ||
            count != (is_request && !is_of_a_connection ? 1 : 0)) {
            return false;
        }
    }
    return true;
}
static_assert(every_request_has_an_answer_and_a_rule());

} // namespace

std::uint32_t named_device(std::span<const std::byte> body) noexcept {
    proto::device_body named{0};
    if (body.size() >= sizeof named) {
        std::memcpy(&named, body.data(), sizeof named);
    }
    return named.device_id;
}

service_status carry_out(const request& what) {
    const rule* found = find_rule(what.code);
    if (found == nullptr) {
        return service_status::invalid_operation;
    }
    device* which = find_device(what.devices, named_device(what.body));
    if (which == nullptr) {
        return service_status::invalid_device_id;
    }
    if (found->kind == device_kind::orvanta3 && !which->is_orvanta3()) {
        return service_status::invalid_device_type;
    }
    if (found->opened == opening::needed && what.from.find_opened(which->id) == nullptr) {
        return service_status::device_not_opened;
    }
    return found->carry_out(what, *which);
}

} // namespace vantu::orvanta::simulator
