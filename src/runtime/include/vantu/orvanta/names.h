/** @file
 * Texts of values that the library gives out as numbers. No function here blocks; all may be called from any
 * thread, and a text that one returns is a constant that is never null and never freed. */
#ifndef VANTU_ORVANTA_NAMES_H
#define VANTU_ORVANTA_NAMES_H

#include "vantu/orvanta/export.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Tells an error code to people.
 * @return the text of the code; "nil" for 0, "unknown" for a code without a text of its own */
VANTU_ORVANTA_API const char* vantu_orvanta_error_message(int32_t code);

#ifdef __cplusplus
}
#endif

#endif
