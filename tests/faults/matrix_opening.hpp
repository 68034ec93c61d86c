// A client that connects under each fault: the code of the connect, then the codes and events of its polls.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array opening_rows{
    matrix_row{"drop @op=4,dir=out",              1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"drop @op=3,dir=in",               1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"duplicate 1@op=4,dir=out",        1, "connect 0; device_added; device_info_orvanta3; code 6",                                  "-",                                                                       "opened"},
    matrix_row{"duplicate 1@op=3,dir=in",         1, "connect 0; device_added; device_info_orvanta3; code 6",                                  "-",                                                                       "opened"},
    matrix_row{"reorder 1@op=4,dir=out",          1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"reorder 1@op=3,dir=in",           1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"delay 20@op=4,dir=out",           1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"delay 20@op=3,dir=in",            1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"truncate 12@op=4,dir=out",        1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"truncate 12@op=3,dir=in",         1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"extend 9@op=4,dir=out",           1, "connect 0; code 6",                                                                      "vantu_orvanta_poll: communication::proto::op magic mismatch",             "opened"},
    matrix_row{"extend 9@op=3,dir=in",            1, "connect 0; service_error 161",                                                           "-",                                                                       "opened"},
    matrix_row{"oversize 2049@op=4,dir=out",      1, "connect 1",                                                                              "message: unable to get overlapped IO result with code: Message too long", "connect 0"},
    matrix_row{"oversize 2049@op=3,dir=in",       1, "connect 0; service_error 161",                                                           "-",                                                                       "opened"},
    matrix_row{"oversize 65507@op=4,dir=out",     1, "connect 1",                                                                              "message: unable to get overlapped IO result with code: Message too long", "connect 0"},
    matrix_row{"oversize 65507@op=3,dir=in",      1, "connect 0; service_error 161",                                                           "-",                                                                       "opened"},
    matrix_row{"empty @op=4,dir=out",             1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"empty @op=3,dir=in",              1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"flip 1@op=4,dir=out",             1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"flip 1@op=3,dir=in",              1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"bad-magic @op=4,dir=out",         1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-magic @op=3,dir=in",          1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-version @op=4,dir=out",       1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-version @op=3,dir=in",        1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-operation @op=4,dir=out",     1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-operation @op=3,dir=in",      1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"unknown-operation @op=4,dir=out", 1, "connect 6",                                                                              "vantu_orvanta_connect_ports cannot handle op [0x57]",                     "connect 0"},
    matrix_row{"unknown-operation @op=3,dir=in",  1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"lying-operation @op=4,dir=out",   1, "connect 6",                                                                              "vantu_orvanta_connect_ports cannot handle op [0x57]",                     "connect 0"},
    matrix_row{"lying-operation @op=3,dir=in",    1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"short-body @op=4,dir=out",        1, "the process ends",                                                                       "assumption failed: can_read<T>()",                                        "-"},
    matrix_row{"short-body @op=3,dir=in",         1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"bad-between @op=4,dir=out",       1, "connect 0; code 6; code 6",                                                              "-",                                                                       "opened"},
    matrix_row{"bad-between @op=3,dir=in",        1, "connect 0; service_error 161; device_added; device_info_orvanta3; code 6",               "-",                                                                       "opened"},
    matrix_row{"late 20@op=4",                    1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"flood 1000@op=4",                 1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"retag 9@op=4",                    1, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"readdress 77@op=4",               0, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"stale @op=4",                     1, "connect 0; device_added; device_info_orvanta3; code 6",                                  "-",                                                                       "opened"},
    matrix_row{"silence 50@op=4,dir=out",         1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"silence 50@op=3,dir=in",          1, "connect 4",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"refuse 0xB2",                     1, "connect 178",                                                                            "-",                                                                       "connect 0"},
    matrix_row{"refuse 0xB3",                     1, "connect 9",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"refuse 0xA0",                     1, "connect 6",                                                                              "-",                                                                       "connect 0"},
    matrix_row{"error 0xD0@op=3",                 0, "connect 0",                                                                              "-",                                                                       "opened"},
    matrix_row{"short-acceptance 3",              1, "the process ends",                                                                       "assumption failed: can_read<T>()",                                        "-"},
    matrix_row{"short-acceptance 0",              1, "the process ends",                                                                       "assumption failed: can_read<T>()",                                        "-"},
    matrix_row{"goodbye @op=4",                   1, "connect 0; disconnected",                                                                "-",                                                                       "code 3"},
    matrix_row{"restart @op=4,dir=out",           1, "connect 0",                                                                              "-",                                                                       "refused 176"},
    matrix_row{"restart @op=3,dir=in",            1, "connect 0",                                                                              "-",                                                                       "refused 176"},
    matrix_row{"unplug 1@op=4,dir=out",           1, "connect 0; device_removed",                                                              "-",                                                                       "refused 192"},
    matrix_row{"unplug 1@op=3,dir=in",            1, "connect 0; device_removed",                                                              "-",                                                                       "refused 192"},
    matrix_row{"plug orvanta3@op=4,dir=out",      1, "connect 0; device_added of 2; device_info_orvanta3 of 2",                                "-",                                                                       "opened"},
    matrix_row{"plug palmetron@op=3,dir=in",      1, "connect 0; device_added of 1001; device_info_palmetron of 1001",                         "-",                                                                       "opened"},
    matrix_row{"inject 3@op=4",                   1, "connect 0; device_added of 4095; config_gravity_compensation_get of 4095; disconnected", "-",                                                                       "code 3"},
};
// clang-format on

static_assert(is_complete(opening_rows, true), "every fault has its row");

} // namespace orvanta_tests
