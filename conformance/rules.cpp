#include "conformance/rules.hpp"

#include "conformance/rules/looks.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::conformance {
namespace {

using namespace communication;
using namespace look;

// The function of a rule that looks with such a visitor.
template <typename Who, void look(Who&)> void with(surroundings& around) {
    Who who(around);
    look(who);
}

// clang-format off
constexpr std::array table{
    rule{"connect_is_answered",                  "`connect` is answered with `connected`", need::nothing, &connect_is_answered},
    rule{"values_of_a_connect_are_free",         "the caller's values, the process id and the texts of a `connect` may be any", need::nothing, &values_of_a_connect_are_free},
    rule{"texts_of_a_connect_end_in_zero",       "a `connect` whose name or version text has no zero is refused with 163", need::nothing, &texts_of_a_connect_end_in_zero},
    rule{"client_ids_differ",                    "each client that is connected has a client id of its own", need::second_client, &with<client, client_ids_differ>},
    rule{"connect_again_keeps_the_id",           "a second `connect` from the same address and port is accepted under the same id", need::nothing, &with<client, connect_again_keeps_the_id>},
    rule{"connect_again_closes_the_devices",     "after a second `connect` no device is opened", need::device, &with<device_user, connect_again_closes_the_devices>},
    rule{"a_second_client_is_served_or_refused", "a second client is accepted, or refused with 178 or 179; the first is served as before", need::device, &with<device_user, a_second_client_is_served_or_refused>},
    rule{"devices_are_listed_once",              "around the acceptance each device is listed with one `device_added`", need::device, &with<client, devices_are_listed_once>},
    rule{"details_follow_each_listing",          "the type is 1 or 2, and the details of that type follow each listing", need::device, &with<client, details_follow_each_listing>},

    rule{"device_open_is_answered",                     "`device_open` is answered with `device_opened`, also for a device that is opened", need::device, &device_open_is_answered},
    rule{"device_close_is_answered",                    "`device_close` is answered with `device_closed`", need::device, &with<device_user, device_close_is_answered>},
    rule{"orientation_get_is_answered",                 "`orientation_get` is answered with `orientation_get`", need::orvanta3, &with<device_owner, answer_to<op_code::orientation_get>>},
    rule{"config_save_is_answered",                     "`config_save` is answered with `config_save`", need::save, &config_save_is_answered},
    rule{"config_gravity_compensation_get_is_answered", "`config_gravity_compensation_get` is answered with `config_gravity_compensation_get`", need::orvanta3, &with<device_owner, answer_to<op_code::config_gravity_compensation_get>>},
    rule{"config_gravity_compensation_set_is_answered", "`config_gravity_compensation_set` is answered with `config_gravity_compensation_get`", need::orvanta3, &with<device_owner, answer_to<op_code::config_gravity_compensation_set>>},
    rule{"config_torque_scaling_get_is_answered",       "`config_torque_scaling_get` is answered with `config_torque_scaling_get`", need::orvanta3, &with<device_owner, answer_to<op_code::config_torque_scaling_get>>},
    rule{"config_torque_scaling_set_is_answered",       "`config_torque_scaling_set` is answered with `config_torque_scaling_get`", need::orvanta3, &with<device_owner, answer_to<op_code::config_torque_scaling_set>>},
    rule{"config_handedness_set_is_answered",           "`config_handedness_set` is answered with `config_handedness`", need::orvanta3, &with<device_owner, answer_to<op_code::config_handedness_set>>},
    rule{"disconnect_is_answered",                      "`disconnect` is answered with `disconnected`", need::nothing, &with<client, disconnect_is_answered>},
    rule{"keep_alives_are_not_answered",                "`keep_alive` has no answer", need::nothing, &with<client, keep_alives_are_not_answered>},
    rule{"answers_copy_the_tag",                        "an answer carries its request's tag, 1 to 255", need::orvanta3, &with<device_owner, answers_copy_the_tag>},
    rule{"answers_name_the_device",                     "an answer names its request's device", need::orvanta3, &with<device_owner, answers_name_the_device>},
    rule{"a_request_has_one_answer",                    "a request has one answer", need::orvanta3, &with<device_owner, a_request_has_one_answer>},

    rule{"sets_are_answered_with_their_values", "the answer to a set has the values that were set", need::orvanta3, &with<device_owner, sets_are_answered_with_their_values>},
    rule{"gravity_compensation_is_kept",        "a get tells the gravity compensation that was set", need::orvanta3, &with<device_owner, gravity_compensation_is_kept>},
    rule{"torque_scaling_is_kept",              "a get tells the torque scaling that was set", need::orvanta3, &with<device_owner, torque_scaling_is_kept>},
    rule{"handedness_is_kept",                  "the details of a later `connect` tell the handedness that was set", need::orvanta3, &with<device_owner, handedness_is_kept>},
    rule{"handedness_is_told_to_all_clients",   "after a handedness was set all clients get the device's details anew", need::orvanta3, &with<device_owner, handedness_is_told_to_all_clients>},
    rule{"refused_requests_change_nothing",     "a set that is refused changes nothing", need::orvanta3, &with<device_owner, refused_requests_change_nothing>},

    rule{"other_versions_are_refused",          "a datagram of another version is refused with 160 and dropped", need::nothing, &with<client, other_versions_are_refused>},
    rule{"unknown_operations_are_refused",      "an operation that goes to no service is refused with 161", need::nothing, &with<client, unknown_operations_are_refused>},
    rule{"records_without_magic_are_refused",   "a record that does not begin with 0xFF is refused with 161", need::nothing, &with<client, records_without_magic_are_refused>},
    rule{"wrong_lengths_are_refused",           "a body that is cut off, or is not as long as the operation table says, is refused with 162", need::orvanta3, &with<device_owner, wrong_lengths_are_refused>},
    rule{"strangers_are_refused",               "a request for a device before `connect` is refused with 176", need::orvanta3, &with<device_owner, strangers_are_refused>},
    rule{"unlisted_devices_are_refused",        "a request for a device that is not there is refused with 192", need::orvanta3, &with<device_owner, unlisted_devices_are_refused>},
    rule{"other_device_types_are_refused",      "a request for an Orvanta3 is refused with 193 where the device is a Palmetron", need::palmetron, &other_device_types_are_refused},
    rule{"unopened_devices_are_refused",        "a request for a device that the client has not opened is refused with 177", need::orvanta3, &with<device_owner, unopened_devices_are_refused>},
    rule{"closed_devices_are_refused",          "`device_close` for a device that is closed already is refused with 177", need::device, &with<device_user, closed_devices_are_refused>},
    rule{"wrong_arguments_are_refused",         "enabled other than 0 and 1, a factor that is no number from 0 to 1 and a handedness other than 1 and 2 are refused with 163", need::orvanta3, &with<device_owner, wrong_arguments_are_refused>},
    rule{"refusals_have_an_order",              "of several reasons the first is told: version, operation, body, client, device, type, opened, argument", need::orvanta3, &with<device_owner, refusals_have_an_order>},
    rule{"refusals_copy_the_tag",               "a refusal carries its request's tag, 1 to 255", need::nothing, &with<client, refusals_copy_the_tag>},
    rule{"refusals_name_the_device",            "a refusal names its request's device, and 0 where none is known", need::nothing, &with<client, refusals_name_the_device>},

    rule{"silence_ends_the_connection",     "a client that was silent for longer than its keep-alive time is forgotten, at the latest after twice that time", need::nothing, &silence_ends_the_connection},
    rule{"keep_alives_keep_the_connection", "keep-alives break the silence", need::nothing, &keep_alives_keep_the_connection},
    rule{"requests_keep_the_connection",    "requests break the silence as well", need::nothing, &requests_keep_the_connection},
    rule{"a_goodbye_ends_the_connection",   "after `disconnected` the client is a stranger", need::nothing, &with<client, a_goodbye_ends_the_connection>},
    rule{"a_stranger_may_say_goodbye",      "`disconnect` is answered to a stranger as well", need::nothing, &a_stranger_may_say_goodbye},

    rule{"an_open_orvanta3_streams",        "an opened Orvanta3 streams `cursor_state` or `cursor_state_b`", need::orvanta3, &an_open_orvanta3_streams},
    rule{"an_open_palmetron_streams",       "an opened Palmetron streams `palmetron_state`", need::palmetron, &an_open_palmetron_streams},
    rule{"streams_have_tag_0",              "what is streamed has tag 0", need::device, &with<device_user, streams_have_tag_0>},
    rule{"unopened_devices_stream_nothing", "a client gets no states of a device that it has not opened", need::device, &unopened_devices_stream_nothing},
    rule{"closed_devices_stream_nothing",   "after `device_closed` no more of its states come", need::device, &with<device_user, closed_devices_stream_nothing>},
    rule{"a_goodbye_ends_the_streams",      "after `disconnected` no more states come", need::device, &with<device_user, a_goodbye_ends_the_streams>},

    rule{"other_magics_are_ignored",         "a datagram with another magic in its header has no answer", need::nothing, &with<client, other_magics_are_ignored>},
    rule{"short_datagrams_are_ignored",      "a datagram with fewer bytes than a header and a record has no answer, an empty one neither", need::nothing, &with<client, short_datagrams_are_ignored>},
    rule{"service_errors_are_ignored",       "`service_error` has no answer, so that two services do not answer each other for ever", need::nothing, &with<client, service_errors_are_ignored>},
    rule{"truncations_are_survived",         "after requests cut to any size clients are served as before", need::device, &truncations_are_survived},
    rule{"unknown_codes_are_survived",       "the same after operations of any other code", need::device, &with<device_user, unknown_codes_are_survived>},
    rule{"lengths_past_the_end_are_survived", "the same after lengths past the end of the datagram", need::device, &with<device_user, lengths_past_the_end_are_survived>},
    rule{"long_datagrams_are_survived",      "the same after datagrams of 2048 bytes and more", need::device, &with<device_user, long_datagrams_are_survived>},

    rule{"headers_have_magic_and_version",     "each datagram begins with the header's magic and version", need::nothing, &layout<damage::header>},
    rule{"reserved_bytes_are_0",               "the header's reserved field is 0", need::nothing, &layout<damage::reserved>},
    rule{"datagrams_hold_whole_operations",    "one whole operation or more follows the header, and nothing else", need::nothing, &layout<damage::not_whole>},
    rule{"records_have_their_magic",           "each operation record begins with 0xFF", need::nothing, &layout<damage::record_magic>},
    rule{"operations_are_those_of_the_table",  "each operation is one that goes to clients", need::nothing, &layout<damage::unknown_code>},
    rule{"bodies_have_their_length",           "length field and body are as the operation table says", need::nothing, &layout<damage::body_length>},
    rule{"datagrams_fit_the_buffer",           "no datagram has more than 2048 bytes", need::nothing, &datagrams_fit_the_buffer},
};
// clang-format on

} // namespace

std::span<const rule> rules() {
    return table;
}

const rule* find_rule(std::string_view name) {
    const auto found =
        std::find_if(table.begin(), table.end(), [name](const rule& one) { return one.name == name; });
    return found == table.end() ? nullptr : &*found;
}

} // namespace vantu::orvanta::conformance
