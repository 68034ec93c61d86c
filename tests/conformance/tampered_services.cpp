// Services that are wrong in ways that no fault of the simulator is. Where a row has more rules than its
// wrong seems to break, the reason stands beside it.
#include "conformance/matrix.hpp"

#include <algorithm>

namespace orvanta_tests {
namespace {

wrongs to_service(tamper how, std::size_t client = 0) {
    return {{}, std::move(how), {}, client};
}

wrongs to_client(tamper how, std::size_t client = 0) {
    return {{}, {}, std::move(how), client};
}

const bytes connect = datagram({op(3, 0, join({u16(0), u16(0), u64(0), u32(1), bytes(96)}))});
const bytes refused = closing(0xFFFFFFF0);

// Places in a datagram of one operation.
constexpr std::size_t reserved = 4;
constexpr std::size_t tag = 10;
constexpr std::size_t body = 11;

std::vector<wrong_service> wrong_handshakes() {
    const auto has_no_process_id = [](const bytes& request) {
        const bytes none(4);
        return code_of(request) == 3 && request.size() == connect.size() && request[8] == connect[8] &&
               std::equal(none.begin(), none.end(), request.begin() + body + 12);
    };
    return {
        {"gives all clients one id", to_client(with_body_byte(4, 0, 7)), {"client_ids_differ"}},
        {"gives a client another id with each connect",
         to_client(with_ever_new_ids()),
         {"connect_again_keeps_the_id"}},
        {"refuses clients without a process id",
         to_service(replaced(has_no_process_id, refused)),
         {"values_of_a_connect_are_free"}},
        {"takes names without an end",
         to_service(with_byte(3, body + 47, 0)),
         {"texts_of_a_connect_end_in_zero"}},
        {"takes version texts without an end",
         to_service(with_byte(3, body + 111, 0)),
         {"texts_of_a_connect_end_in_zero"}},
        {"opens a device for each client",
         to_service(followed(3, {opening(1)})),
         {"connect_again_closes_the_devices", "unopened_devices_stream_nothing"}},
        // Strangers and clients that come after bad input are second ones.
        {"hears the first client alone",
         to_service([](const bytes&) { return std::vector<bytes>{}; }, 2),
         {"a_second_client_is_served_or_refused", "strangers_are_refused", "refusals_have_an_order",
          "truncations_are_survived", "unknown_codes_are_survived", "lengths_past_the_end_are_survived",
          "long_datagrams_are_survived"}},
        {"lists devices of an unknown type",
         to_client(with_body_byte(16, 4, 3)),
         {"details_follow_each_listing"}},
        {"lists devices without details",
         to_client(with_body_byte(23, 0, 9)),
         {"details_follow_each_listing", "handedness_is_kept", "handedness_is_told_to_all_clients"}},
    };
}

std::vector<wrong_service> wrong_settings() {
    return {
        {"answers keep-alives",
         to_service(replaced([](const bytes& one) { return one == datagram({op(1, 0)}); }, refused)),
         {"keep_alives_are_not_answered"}},
        {"answers a set of the handedness with another one",
         to_client(with_body_byte(70, 4, 3)),
         {"sets_are_answered_with_their_values"}},
        {"forgets the scaling factor", forgets_what_was_set(66, 8, 0x3E), {"gravity_compensation_is_kept"}},
        {"forgets the torque scaling", forgets_what_was_set(68, 4, 0), {"torque_scaling_is_kept"}},
        {"lists the same handedness for ever",
         to_client([](const bytes& datagram) {
             return has_operation(datagram, 4) ? with_body_byte(23, 12, 1)(datagram)
                                               : std::vector<bytes>{datagram};
         }),
         {"handedness_is_kept"}},
        {"tells nobody of a new handedness", to_client(without(23)), {"handedness_is_told_to_all_clients"}},
        {"tells one client of a new handedness",
         to_client(without(23), 2),
         {"handedness_is_told_to_all_clients"}},
        {"changes what it refuses to set", changes_what_it_refuses(), {"refused_requests_change_nothing"}},
    };
}

std::vector<wrong_service> wrong_refusals() {
    const auto is_cut = [](const bytes& request) {
        return request.size() >= body && code_of(request) != 0 &&
               request.size() != body + request[8] + 256U * request[9];
    };
    return {
        {"refuses other versions as unknown operations",
         to_client(with_status(160, 161)),
         {"other_versions_are_refused", "refusals_have_an_order"}},
        {"refuses unknown operations as wrong bodies",
         to_client(with_status(161, 162)),
         {"unknown_operations_are_refused", "records_without_magic_are_refused"}},
        {"refuses wrong bodies as wrong arguments",
         to_client(with_status(162, 163)),
         {"wrong_lengths_are_refused", "refusals_have_an_order"}},
        {"ignores bodies that are cut off",
         to_service(replaced(is_cut, datagram({op(1, 0)}))),
         {"wrong_lengths_are_refused", "refusals_have_an_order"}},
        {"refuses wrong arguments as wrong bodies",
         to_client(with_status(163, 162)),
         {"texts_of_a_connect_end_in_zero", "wrong_arguments_are_refused"}},
        // A client that is forgotten is known by this refusal.
        {"refuses strangers as if they had opened nothing",
         to_client(with_status(176, 177)),
         {"strangers_are_refused", "refusals_have_an_order", "silence_ends_the_connection",
          "a_goodbye_ends_the_connection"}},
        {"refuses unopened devices as if they were not there",
         to_client(with_status(177, 192)),
         {"connect_again_closes_the_devices", "unopened_devices_are_refused", "closed_devices_are_refused",
          "refusals_have_an_order"}},
        // A client that is still known is known by this refusal.
        {"refuses devices that are not there as of another type",
         to_client(with_status(192, 193)),
         {"unlisted_devices_are_refused", "refusals_have_an_order", "keep_alives_keep_the_connection",
          "requests_keep_the_connection"}},
        {"refuses devices of another type as if they were not there",
         to_client(with_status(193, 192)),
         {"other_device_types_are_refused"}},
    };
}

std::vector<wrong_service> wrong_lifetimes() {
    return {
        {"never forgets a client",
         to_service([](bytes datagram) {
             const std::size_t end = code_of(datagram) == 3 ? std::min<std::size_t>(datagram.size(), 23) : 0;
             for (std::size_t at = 15; at < end; ++at) {
                 datagram[at] = 0;
             }
             return std::vector<bytes>{datagram};
         }),
         {"silence_ends_the_connection"}},
        {"takes requests for silence", to_service(without_repeats(19)), {"requests_keep_the_connection"}},
        {"takes a client back after its goodbye",
         to_service(followed(5, {connect})),
         {"a_goodbye_ends_the_connection"}},
        {"streams on after a goodbye",
         to_service(followed(5, {connect, opening(1)})),
         {"a_goodbye_ends_the_connection", "a_goodbye_ends_the_streams"}},
        {"has no ear for strangers",
         to_service(without_goodbyes_of_strangers()),
         {"a_stranger_may_say_goodbye"}},
        {"streams with a tag", to_client(with_byte(33, tag, 5)), {"streams_have_tag_0"}},
        // It opens what it has closed.
        {"streams on after a closing",
         to_service([](const bytes& request) {
             const bool is_of_the_first = request.size() == body + 4 && request[body] == 1;
             return is_of_the_first ? followed(20, {opening(1)})(request) : std::vector<bytes>{request};
         }),
         {"unopened_devices_are_refused", "closed_devices_are_refused", "refusals_have_an_order",
          "closed_devices_stream_nothing"}},
    };
}

std::vector<wrong_service> wrong_with_bad_input() {
    const auto is_short = [](const bytes& request) { return request.size() < body; };
    return {
        {"takes any magic for its own",
         to_service([](bytes request) {
             if (request.size() >= body) {
                 request[0] = 0xE9;
                 request[1] = 0x9E;
             }
             return std::vector<bytes>{request};
         }),
         {"other_magics_are_ignored"}},
        {"answers short datagrams", to_service(replaced(is_short, refused)), {"short_datagrams_are_ignored"}},
        {"answers errors",
         to_service(replaced([](const bytes& request) { return code_of(request) == 240; }, refused)),
         {"service_errors_are_ignored"}},
        {"dies of short datagrams", to_service(dead_after(is_short)), {"truncations_are_survived"}},
        // The unknown operation stands in three rules.
        {"dies of operation 200",
         to_service(dead_after([](const bytes& request) { return code_of(request) == 200; })),
         {"unknown_operations_are_refused", "unknown_codes_are_survived",
          "lengths_past_the_end_are_survived"}},
        {"dies of great lengths",
         to_service(
             dead_after([](const bytes& request) { return code_of(request) != 0 && request[9] == 0xFF; })),
         {"lengths_past_the_end_are_survived"}},
        {"dies of great datagrams",
         to_service(dead_after([](const bytes& request) { return request.size() > 2048; })),
         {"long_datagrams_are_survived"}},
        {"fills the reserved field",
         to_client([](bytes datagram) {
             datagram[reserved] = 1;
             return std::vector<bytes>{datagram};
         }),
         {"reserved_bytes_are_0"}},
    };
}

} // namespace

std::vector<wrong_service> tampered_services() {
    std::vector<wrong_service> all;
    for (auto* const some :
         {&wrong_handshakes, &wrong_settings, &wrong_refusals, &wrong_lifetimes, &wrong_with_bad_input}) {
        for (wrong_service& one : some()) {
            all.push_back(std::move(one));
        }
    }
    return all;
}

} // namespace orvanta_tests
