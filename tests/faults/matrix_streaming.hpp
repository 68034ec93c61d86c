// A client that has opened a device, under each fault, while three of the device's states come.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array streaming_rows{
    matrix_row{"drop @op=33,nth=1",                                                     1, "cursor_state 2; cursor_state 3",                                                               "-",                                                           "opened"},
    matrix_row{"duplicate 1@op=33,nth=1",                                               1, "cursor_state 1; cursor_state 1; cursor_state 2; cursor_state 3",                               "-",                                                           "opened"},
    matrix_row{"reorder 1@op=33,nth=1",                                                 1, "cursor_state 2; cursor_state 1; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"delay 15@op=33,nth=1",                                                  1, "cursor_state 2; cursor_state 1; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"truncate 12@op=33,nth=1",                                               1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"extend 9@op=33,nth=1",                                                  1, "cursor_state 1; code 6; cursor_state 2; cursor_state 3",                                       "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"extend 2010@op=33,nth=1",                                               1, "code 1; cursor_state 2; cursor_state 3",                                                       "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"extend 65507@op=33,nth=1",                                              1, "code 1; cursor_state 2; cursor_state 3",                                                       "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"truncate 0@op=33,nth=1",                                                1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Cannot read header",                      "opened"},
    matrix_row{"flip 1@op=33,nth=1",                                                    1, "cursor_state of no time; cursor_state 2; cursor_state 3",                                      "-",                                                           "opened"},
    matrix_row{"patch header.magic=other@op=33,nth=1",                                  1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Header magic mismatch",                   "opened"},
    matrix_row{"patch header.version=other@op=33,nth=1",                                1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: Header version mismatch",                 "opened"},
    matrix_row{"patch op.magic=other@op=33,nth=1",                                      1, "code 6; cursor_state 2; cursor_state 3",                                                       "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"patch op.code=other@op=33,nth=1",                                       1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"patch op.length=65535@op=33,nth=1 and patch op.code=other@op=33,nth=1", 2, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"cut 1@op=33,nth=1",                                                     1, "code 6; cursor_state 2; cursor_state 3",                                                       "-",                                                           "opened"},
    matrix_row{"insert ff5704000001020304@op=33,nth=1",                                 1, "code 6; cursor_state 1; cursor_state 2; cursor_state 3",                                       "-",                                                           "opened"},
    matrix_row{"delay 20@dir=answer",                                                   0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"flood 1000@op=33,nth=1",                                                1, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"patch tag=9@dir=answer",                                                0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"patch device=77@dir=answer",                                            0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"stale",                                                                 0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"silence 15@op=33,nth=1",                                                1, "cursor_state 3",                                                                               "-",                                                           "opened"},
    matrix_row{"error 0xB2@op=connect",                                                 0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"error 0xD0",                                                            1, "service_error 208; cursor_state 1; cursor_state 2; cursor_state 3",                            "-",                                                           "opened"},
    matrix_row{"cut 5@op=connected",                                                    0, "cursor_state 1; cursor_state 2; cursor_state 3",                                               "-",                                                           "opened"},
    matrix_row{"goodbye @op=33",                                                        1, "cursor_state 1; disconnected",                                                                 "-",                                                           "code 3"},
    matrix_row{"restart @op=33",                                                        1, "cursor_state 1",                                                                               "-",                                                           "refused 176"},
    matrix_row{"unplug 1@op=33,nth=1",                                                  1, "cursor_state 1; device_removed",                                                               "-",                                                           "refused 192"},
    matrix_row{"plug orvanta3@op=33,nth=1",                                             1, "cursor_state 1; device_added of 2; device_info_orvanta3 of 2; cursor_state 2; cursor_state 3", "-",                                                           "opened"},
    matrix_row{"inject 3@op=33,nth=1",                                                  1, "cursor_state 1; device_added of 4095; config_gravity_compensation_get of 4095; disconnected",  "-",                                                           "code 3"},
};
// clang-format on

static_assert(is_complete(streaming_rows, false), "every fault has its row");

} // namespace orvanta_tests
