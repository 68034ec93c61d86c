// A client that has opened a device, under each fault, while three of the device's states come.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array streaming_rows{
    matrix_row{"drop @op=33,n=1",              1, "cursor_state 2; cursor_state 3",                                                               "-",                                                           "opened"},
    matrix_row{"duplicate 1@op=33,n=1",        1, "cursor_state 1; cursor_state 1; cursor_state 2; cursor_state 3",                               "-",                                                           "opened"},
    matrix_row{"reorder 1@op=33,n=1",          1, "cursor_state 2; cursor_state 1; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"delay 15@op=33,n=1",           1, "cursor_state 2; cursor_state 1; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"truncate 12@op=33,n=1",        1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"extend 9@op=33,n=1",           1, "cursor_state 1; code 6; cursor_state 2; cursor_state 3",                                       "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"oversize 2049@op=33,n=1",      1, "code 1; cursor_state 2; cursor_state 3",                                                       "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"oversize 65507@op=33,n=1",     1, "code 1; cursor_state 2; cursor_state 3",                                                       "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"empty @op=33,n=1",             1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Cannot read header",                      "opened"},
    matrix_row{"flip 1@op=33,n=1",             1, "cursor_state of no time; cursor_state 2; cursor_state 3",                                      "-",                                                           "opened"},
    matrix_row{"bad-magic @op=33,n=1",         1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Header magic mismatch",                   "opened"},
    matrix_row{"bad-version @op=33,n=1",       1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Header version mismatch",                 "opened"},
    matrix_row{"bad-operation @op=33,n=1",     1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"unknown-operation @op=33,n=1", 1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"lying-operation @op=33,n=1",   1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"short-body @op=33,n=1",        1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"bad-between @op=33,n=1",       1, "cursor_state 1; code 6; cursor_state 1; cursor_state 2; cursor_state 3",                       "-",                                                           "opened"},
    matrix_row{"late 20@op=33",                0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"flood 1000@op=33,n=1",          1, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"retag 9@op=33",                0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"readdress 77@op=33",           0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"stale @op=33",                 0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"silence 15@op=33,n=1",          1, "cursor_state 3",                                                                               "-",                                                           "opened"},
    matrix_row{"refuse 0xB2",                  0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"error 0xD0",                   1, "service_error 208; cursor_state 1; cursor_state 2; cursor_state 3",                            "-",                                                           "opened"},
    matrix_row{"short-acceptance 3",           0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"goodbye @op=33",               1, "cursor_state 1; disconnected",                                                                 "-",                                                           "code 3"},
    matrix_row{"restart @op=33",               1, "cursor_state 1",                                                                               "-",                                                           "refused 176"},
    matrix_row{"unplug 1@op=33,n=1",           1, "cursor_state 1; device_removed",                                                               "-",                                                           "refused 192"},
    matrix_row{"plug orvanta3@op=33,n=1",      1, "cursor_state 1; device_added of 2; device_info_orvanta3 of 2; cursor_state 2; cursor_state 3", "-",                                                           "opened"},
    matrix_row{"inject 3@op=33,n=1",           1, "cursor_state 1; device_added of 4095; config_gravity_compensation_get of 4095; disconnected",  "-",                                                           "code 3"},
};
// clang-format on

static_assert(is_complete(streaming_rows, false), "every fault has its row");

} // namespace orvanta_tests
