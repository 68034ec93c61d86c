// A client that is destroyed under each fault, goodbye included.
#pragma once

#include "faults/matrix.hpp"

#include <array>

namespace orvanta_tests {

// clang-format off
inline constexpr std::array disconnecting_rows{
    matrix_row{"drop @op=6,dir=out",                                                      1, "goodbye taken after 100 ms", "-",                                                           "connect 0"},
    matrix_row{"drop @op=5,dir=in",                                                       1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"duplicate 1@op=6,dir=out",                                                1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"duplicate 1@op=5,dir=in",                                                 1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"reorder 1@op=6,dir=out",                                                  1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"reorder 1@op=5,dir=in",                                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"delay 20@op=6,dir=out",                                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"delay 20@op=5,dir=in",                                                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"truncate 10@op=6,dir=out",                                                1, "goodbye taken",              "vantu_orvanta_poll: Cannot read communication::proto::op",    "connect 0"},
    matrix_row{"truncate 10@op=5,dir=in",                                                 1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"extend 9@op=6,dir=out",                                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"extend 9@op=5,dir=in",                                                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"extend 2038@op=6,dir=out",                                                1, "goodbye taken",              "message: unable to recv packet with code: Message too long",  "connect 0"},
    matrix_row{"extend 2038@op=5,dir=in",                                                 1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"extend 65507@op=6,dir=out",                                               1, "goodbye taken",              "message: unable to recv packet with code: Message too long",  "connect 0"},
    matrix_row{"extend 65507@op=5,dir=in",                                                1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"truncate 0@op=6,dir=out",                                                 1, "goodbye taken",              "vantu_orvanta_poll: Cannot read header",                      "connect 0"},
    matrix_row{"truncate 0@op=5,dir=in",                                                  1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"flip 1@op=6,dir=out",                                                     1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"flip 1@op=5,dir=in",                                                      1, "goodbye lost",               "-",                                                           "connect 0"},
    matrix_row{"patch header.magic=other@op=6,dir=out",                                   1, "goodbye taken",              "vantu_orvanta_poll: Header magic mismatch",                   "connect 0"},
    matrix_row{"patch header.magic=other@op=5,dir=in",                                    1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"patch header.version=other@op=6,dir=out",                                 1, "goodbye taken",              "vantu_orvanta_poll: Header version mismatch",                 "connect 0"},
    matrix_row{"patch header.version=other@op=5,dir=in",                                  1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"patch op.magic=other@op=6,dir=out",                                       1, "goodbye taken",              "vantu_orvanta_poll: communication::proto::op magic mismatch", "connect 0"},
    matrix_row{"patch op.magic=other@op=5,dir=in",                                        1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"patch op.code=other@op=6,dir=out",                                        1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"patch op.code=other@op=5,dir=in",                                         1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"patch op.length=65535@op=6,dir=out and patch op.code=other@op=6,dir=out", 2, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"patch op.length=65535@op=5,dir=in and patch op.code=other@op=5,dir=in",   2, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"cut 1@dir=out",                                                           0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"cut 1@dir=in",                                                            0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"insert ff5704000001020304@op=6,dir=out",                                  1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"insert ff5704000001020304@op=5,dir=in",                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"delay 20@op=6,dir=answer",                                                1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"flood 1000@op=6",                                                         1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"patch tag=9@op=6,dir=answer",                                             1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"patch device=77@dir=answer",                                              0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"stale @op=6",                                                             1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"silence 150@op=6,dir=out",                                                1, "goodbye taken after 100 ms", "-",                                                           "connect 0"},
    matrix_row{"silence 150@op=5,dir=in",                                                 1, "goodbye lost after 100 ms",  "-",                                                           "connect 0"},
    matrix_row{"error 0xB2@op=connect",                                                   0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"error 0xD0@nth=1",                                                        0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"error 0xD0",                                                              1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"cut 5@op=connected",                                                      0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"goodbye",                                                                 1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"goodbye @op=6",                                                           0, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"restart @op=6,dir=out",                                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"restart @op=5,dir=in",                                                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"unplug 1@op=6,dir=out",                                                   1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"unplug 1@op=5,dir=in",                                                    1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"plug orvanta3@op=6,dir=out",                                              1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"plug palmetron@op=5,dir=in",                                              1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"inject 3@op=6",                                                           1, "goodbye taken",              "-",                                                           "connect 0"},
    matrix_row{"inject 3",                                                                1, "goodbye taken",              "-",                                                           "connect 0"},
};
// clang-format on

static_assert(is_complete(disconnecting_rows, true), "every fault has its row");

} // namespace orvanta_tests
