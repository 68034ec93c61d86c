// The formatting library, which has a function of the name of our check: the two headers can stand
// in any order when fmt comes in through this one.
#pragma once

#pragma push_macro("assume")
#undef assume
#include <fmt/format.h>
#pragma pop_macro("assume")
