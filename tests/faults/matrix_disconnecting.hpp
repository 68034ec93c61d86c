// A client that is destroyed under each fault, goodbye included.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array disconnecting_rows{
    matrix_row{"drop @op=6,dir=out",              1, "goodbye taken after 100 ms", "-",                                                           "connect 0"},
    matrix_row{"drop @op=5,dir=in",               1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"duplicate 1@op=6,dir=out",        1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"duplicate 1@op=5,dir=in",         1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"reorder 1@op=6,dir=out",          1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"reorder 1@op=5,dir=in",           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"delay 20@op=6,dir=out",           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"delay 20@op=5,dir=in",            1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"truncate 10@op=6,dir=out",        1, "goodbye taken",              "vantu_orvanta_poll: Cannot read communication::proto::op",    "connect 0"},
    matrix_row{"truncate 10@op=5,dir=in",         1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"extend 9@op=6,dir=out",           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"extend 9@op=5,dir=in",            1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"oversize 2049@op=6,dir=out",      1, "goodbye taken",              "message: unable to recv packet with code: Message too long",  "connect 0"},
    matrix_row{"oversize 2049@op=5,dir=in",       1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"oversize 65507@op=6,dir=out",     1, "goodbye taken",              "message: unable to recv packet with code: Message too long",  "connect 0"},
    matrix_row{"oversize 65507@op=5,dir=in",      1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"empty @op=6,dir=out",             1, "goodbye taken",              "vantu_orvanta_poll: Cannot read header",                      "connect 0"},
    matrix_row{"empty @op=5,dir=in",              1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"flip 1@op=6,dir=out",             1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"flip 1@op=5,dir=in",              1, "goodbye lost",               "-",                                                           "connect 0"},
    matrix_row{"bad-magic @op=6,dir=out",         1, "goodbye taken",              "vantu_orvanta_poll: Header magic mismatch",                   "connect 0"},
    matrix_row{"bad-magic @op=5,dir=in",          1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"bad-version @op=6,dir=out",       1, "goodbye taken",              "vantu_orvanta_poll: Header version mismatch",                 "connect 0"},
    matrix_row{"bad-version @op=5,dir=in",        1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"bad-operation @op=6,dir=out",     1, "goodbye taken",              "vantu_orvanta_poll: communication::proto::op magic mismatch", "connect 0"},
    matrix_row{"bad-operation @op=5,dir=in",      1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"unknown-operation @op=6,dir=out", 1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"unknown-operation @op=5,dir=in",  1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"lying-operation @op=6,dir=out",   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"lying-operation @op=5,dir=in",    1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"short-body @op=6,dir=out",        0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"short-body @op=5,dir=in",         0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"bad-between @op=6,dir=out",       1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"bad-between @op=5,dir=in",        1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"late 20@op=6",                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"flood 1000@op=6",                 1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"retag 9@op=6",                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"readdress 77@op=6",               0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"stale @op=6",                     1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"silence 150@op=6,dir=out",        1, "goodbye taken after 100 ms", "-",                                                           "connect 0"},
    matrix_row{"silence 150@op=5,dir=in",         1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"refuse 0xB2",                     0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"error 0xD0@op=5",                 0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"error 0xD0",                      1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"short-acceptance 3",              0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"goodbye",                         1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"goodbye @op=6",                   0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"restart @op=6,dir=out",           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"restart @op=5,dir=in",            1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"unplug 1@op=6,dir=out",           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"unplug 1@op=5,dir=in",            1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"plug orvanta3@op=6,dir=out",      1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"plug palmetron@op=5,dir=in",      1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"inject 3@op=6",                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"inject 3",                        1, "goodbye taken",              "-",                                                           "connect 0"},
};
// clang-format on

static_assert(is_complete(disconnecting_rows, true), "every fault has its row");

} // namespace orvanta_tests
