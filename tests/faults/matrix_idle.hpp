// A client that is connected and idle, under each fault, while a second Orvanta3 is plugged in.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array idle_rows{
    matrix_row{"drop @op=16,dir=out",                                                       1, "nothing",                                                                                           "-",                                                           "opened"},
    matrix_row{"duplicate 1@op=16,dir=out",                                                 1, "device_added of 2; device_info_orvanta3 of 2; device_added of 2; device_info_orvanta3 of 2",        "-",                                                           "opened"},
    matrix_row{"reorder 1@op=16,dir=out",                                                   1, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"delay 20@op=16,dir=out",                                                    1, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"truncate 12@op=16,dir=out",                                                 1, "code 6",                                                                                            "-",                                                           "opened"},
    matrix_row{"extend 9@op=16,dir=out",                                                    1, "device_added of 2; device_info_orvanta3 of 2; code 6",                                              "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"extend 1996@op=16,dir=out",                                                 1, "code 1",                                                                                            "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"extend 65507@op=16,dir=out",                                                1, "code 1",                                                                                            "message: unable to recv packet with code: Message too long",  "opened"},
    matrix_row{"truncate 0@op=16,dir=out",                                                  1, "code 6",                                                                                            "vantu_orvanta_poll: Cannot read header",                      "opened"},
    matrix_row{"flip 1@op=16,dir=out",                                                      1, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"patch header.magic=other@op=16,dir=out",                                    1, "code 6",                                                                                            "vantu_orvanta_poll: Header magic mismatch",                   "opened"},
    matrix_row{"patch header.version=other@op=16,dir=out",                                  1, "code 6",                                                                                            "vantu_orvanta_poll: Header version mismatch",                 "opened"},
    matrix_row{"patch op.magic=other@op=16,dir=out",                                        1, "code 6",                                                                                            "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"patch op.code=other@op=16,dir=out",                                         1, "code 6; code 7",                                                                                    "-",                                                           "opened"},
    matrix_row{"patch op.length=65535@op=16,dir=out and patch op.code=other@op=16,dir=out", 2, "code 6",                                                                                            "-",                                                           "opened"},
    matrix_row{"cut 1@op=16,dir=out",                                                       1, "device_added of 2; code 6",                                                                         "vantu_orvanta_poll: communication::proto::op magic mismatch", "opened"},
    matrix_row{"insert ff5704000001020304@op=23",                                           1, "device_added of 2; code 6; device_info_orvanta3 of 2",                                              "-",                                                           "opened"},
    matrix_row{"delay 20@dir=answer",                                                       0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"flood 1000",                                                                1, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"patch tag=9@dir=answer",                                                    0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"patch device=77@dir=answer",                                                0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"stale",                                                                     0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"silence 50",                                                                1, "nothing",                                                                                           "-",                                                           "opened"},
    matrix_row{"error 0xB2@op=connect",                                                     0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"error 0xD0",                                                                1, "service_error 208; device_added of 2; device_info_orvanta3 of 2",                                   "-",                                                           "opened"},
    matrix_row{"error 0xB4",                                                                1, "service_error 10; device_added of 2; device_info_orvanta3 of 2",                                    "-",                                                           "opened"},
    matrix_row{"error 0x42",                                                                1, "service_error 255; device_added of 2; device_info_orvanta3 of 2",                                   "-",                                                           "opened"},
    matrix_row{"cut 5@op=connected",                                                        0, "device_added of 2; device_info_orvanta3 of 2",                                                      "-",                                                           "opened"},
    matrix_row{"goodbye",                                                                   1, "disconnected",                                                                                      "-",                                                           "code 3"},
    matrix_row{"restart",                                                                   1, "nothing",                                                                                           "-",                                                           "refused 176"},
    matrix_row{"unplug",                                                                    1, "device_removed; device_added; device_info_orvanta3",                                                "-",                                                           "opened"},
    matrix_row{"plug palmetron",                                                            1, "device_added of 1001; device_info_palmetron of 1001; device_added of 2; device_info_orvanta3 of 2", "-",                                                           "opened"},
    matrix_row{"inject 3",                                                                  1, "device_added of 4095; config_gravity_compensation_get of 4095; disconnected",                       "-",                                                           "code 3"},
};
// clang-format on

static_assert(is_complete(idle_rows, false), "every fault has its row");

} // namespace orvanta_tests
