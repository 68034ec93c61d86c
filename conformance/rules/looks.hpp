// The functions of the rules, by the source file that has them.
#pragma once

#include "conformance/rules/steps.hpp"

namespace vantu::orvanta::conformance::look {

using look_function = void(surroundings& around);
using client_function = void(client& who);
using user_function = void(device_user& who);
using owner_function = void(device_owner& who); // of an Orvanta3

// handshake.cpp
look_function connect_is_answered, values_of_a_connect_are_free, texts_of_a_connect_end_in_zero;
client_function client_ids_differ, connect_again_keeps_the_id, devices_are_listed_once,
    details_follow_each_listing;
user_function connect_again_closes_the_devices, a_second_client_is_served_or_refused;

// answers.cpp
look_function device_open_is_answered, config_save_is_answered;
client_function disconnect_is_answered, keep_alives_are_not_answered;
user_function device_close_is_answered;
void answer_to_request(device_owner& who, std::uint8_t code);
template <std::uint8_t code> void answer_to(device_owner& who) {
    answer_to_request(who, code);
}
owner_function answers_copy_the_tag, answers_name_the_device, a_request_has_one_answer;

// settings.cpp
owner_function sets_are_answered_with_their_values, gravity_compensation_is_kept, torque_scaling_is_kept,
    handedness_is_kept, handedness_is_told_to_all_clients, refused_requests_change_nothing;

// refusals.cpp
look_function other_device_types_are_refused;
client_function other_versions_are_refused, unknown_operations_are_refused, records_without_magic_are_refused,
    refusals_copy_the_tag, refusals_name_the_device;
user_function closed_devices_are_refused;
owner_function strangers_are_refused, unlisted_devices_are_refused, unopened_devices_are_refused,
    wrong_lengths_are_refused, wrong_arguments_are_refused, refusals_have_an_order;

// lifetime.cpp
look_function silence_ends_the_connection, keep_alives_keep_the_connection, requests_keep_the_connection,
    a_stranger_may_say_goodbye;
client_function a_goodbye_ends_the_connection;

// streams.cpp
look_function an_open_orvanta3_streams, an_open_palmetron_streams, unopened_devices_stream_nothing;
user_function streams_have_tag_0, closed_devices_stream_nothing, a_goodbye_ends_the_streams;

// bad_input.cpp
client_function other_magics_are_ignored, short_datagrams_are_ignored, service_errors_are_ignored;
look_function truncations_are_survived;
user_function unknown_codes_are_survived, lengths_past_the_end_are_survived, long_datagrams_are_survived;

// layout.cpp
void no_damage(surroundings& around, damage kind);
template <damage kind> void layout(surroundings& around) {
    no_damage(around, kind);
}
look_function datagrams_fit_the_buffer;

} // namespace vantu::orvanta::conformance::look
