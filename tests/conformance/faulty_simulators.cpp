// The simulator with one fault at a time. Where a row has more rules than its fault seems to break, the
// reason stands beside it.
#include "conformance/matrix.hpp"

namespace orvanta_tests {
namespace {

wrong_service fault(const char* line, std::vector<std::string_view> failed) {
    return {line, {{line}}, std::move(failed)};
}

} // namespace

std::vector<wrong_service> faulty_simulators() {
    return {
        // Faults that break no rule: a service may be slow, and acknowledge what nobody waits for.
        fault("delay 100", {}),
        fault("flood 50@op=orientation_get", {}),

        // Operations that never come.
        fault("drop @op=connected,dir=out", {"connect_is_answered", "values_of_a_connect_are_free"}),
        fault("drop @op=device_opened,dir=out", {"device_open_is_answered"}),
        // The closing also shows that the first client is served.
        fault("drop @op=device_closed,dir=out",
              {"a_second_client_is_served_or_refused", "device_close_is_answered"}),
        fault("drop @op=orientation_get,dir=out", {"orientation_get_is_answered"}),
        fault("drop @op=config_save,dir=out", {"config_save_is_answered"}),
        // One operation answers both requests.
        fault("drop @op=config_gravity_compensation_get,dir=out",
              {"config_gravity_compensation_get_is_answered", "config_gravity_compensation_set_is_answered"}),
        fault("drop @op=config_torque_scaling_get,dir=out",
              {"config_torque_scaling_get_is_answered", "config_torque_scaling_set_is_answered"}),
        fault("drop @op=config_handedness,dir=out", {"config_handedness_set_is_answered"}),
        fault("drop @op=disconnected,dir=out", {"disconnect_is_answered", "a_stranger_may_say_goodbye"}),
        // A client that is still known shows it by the reason of a refusal.
        fault("drop @op=service_error,dir=out",
              {"texts_of_a_connect_end_in_zero", "connect_again_closes_the_devices",
               "other_versions_are_refused", "unknown_operations_are_refused",
               "records_without_magic_are_refused", "wrong_lengths_are_refused", "strangers_are_refused",
               "unlisted_devices_are_refused", "other_device_types_are_refused",
               "unopened_devices_are_refused", "closed_devices_are_refused", "wrong_arguments_are_refused",
               "refusals_have_an_order", "silence_ends_the_connection", "keep_alives_keep_the_connection",
               "requests_keep_the_connection", "a_goodbye_ends_the_connection"}),
        fault("drop @op=cursor_state,dir=out", {"an_open_orvanta3_streams"}),
        fault("drop @op=palmetron_state,dir=out", {"an_open_palmetron_streams"}),
        // Keep-alives of a wrong length are lost as well, and so they are not refused.
        fault("drop @op=keep_alive,dir=in", {"wrong_lengths_are_refused", "keep_alives_keep_the_connection"}),

        // Answers that are others, or more.
        fault("error 0xA1@op=connect",
              {"connect_is_answered", "values_of_a_connect_are_free", "texts_of_a_connect_end_in_zero"}),
        // The fault refuses before the service itself looks at sender, device and body.
        fault("error 0xD0@op=orientation_get",
              {"orientation_get_is_answered", "wrong_lengths_are_refused", "strangers_are_refused",
               "unlisted_devices_are_refused", "other_device_types_are_refused",
               "unopened_devices_are_refused"}),
        fault("patch tag=9@dir=answer", {"answers_copy_the_tag", "refusals_copy_the_tag"}),
        fault("patch device=77@op=orientation_get,dir=out", {"answers_name_the_device"}),
        fault("patch device=77@op=service_error,dir=out", {"refusals_name_the_device"}),
        fault("duplicate 1@op=orientation_get,dir=out", {"a_request_has_one_answer"}),
        fault("duplicate 1@op=connected,dir=out", {"devices_are_listed_once"}),
        // A connect that comes twice is one again, which lists the devices anew.
        fault("duplicate 1@dir=in", {"devices_are_listed_once", "a_request_has_one_answer"}),

        // Answers that no client can read, so that the request has none.
        fault("patch header.magic=other@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "headers_have_magic_and_version"}),
        fault("patch header.version=other@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "headers_have_magic_and_version"}),
        fault("patch op.magic=other@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "records_have_their_magic"}),
        fault("patch op.code=other@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "operations_are_those_of_the_table"}),
        {"patch op.code=other, op.length=65535",
         {{"patch op.length=65535@op=orientation_get,dir=out",
           "patch op.code=other@op=orientation_get,dir=out"}},
         {"orientation_get_is_answered", "operations_are_those_of_the_table"}},
        fault("cut 1@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "bodies_have_their_length"}),
        fault("truncate 12@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "datagrams_hold_whole_operations"}),
        fault("truncate 0@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "datagrams_hold_whole_operations"}),
        fault("truncate 20@op=connected,dir=out",
              {"connect_is_answered", "values_of_a_connect_are_free", "datagrams_hold_whole_operations"}),
        fault("extend 2018@op=orientation_get,dir=out",
              {"orientation_get_is_answered", "datagrams_fit_the_buffer"}),

        // Answers with more behind them, which clients read.
        fault("extend 3@op=orientation_get,dir=out", {"datagrams_hold_whole_operations"}),
        // Nine bytes are enough for a record, which random bytes do not begin as one does.
        fault("extend 9@op=orientation_get,dir=out", {"records_have_their_magic"}),
        fault("insert ff57000000@op=orientation_get,dir=out", {"operations_are_those_of_the_table"}),
        // A client goes by what the operation needs.
        fault("patch op.length=65535@op=orientation_get,dir=out", {"datagrams_hold_whole_operations"}),
        fault("patch header.reserved=1@dir=out", {"reserved_bytes_are_0"}),
    };
}

} // namespace orvanta_tests
