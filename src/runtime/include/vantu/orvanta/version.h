/** @file
 * The version of the headers that a program is compiled with, and that of the library that it runs with. */
#ifndef VANTU_ORVANTA_VERSION_H
#define VANTU_ORVANTA_VERSION_H

#include "vantu/orvanta/export.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Rises with changes that break programs. */
#define VANTU_ORVANTA_VERSION_MAJOR 2
/** Rises with additions; 0 to 255. */
#define VANTU_ORVANTA_VERSION_MINOR 0
/** Rises with repairs; 0 to 255. */
#define VANTU_ORVANTA_VERSION_PATCH 0
/** The three as one number that rises with the version, also for the preprocessor: 0x020000 is 2.0.0. */
#define VANTU_ORVANTA_VERSION_NUMBER                                                                         \
    ((VANTU_ORVANTA_VERSION_MAJOR << 16) | (VANTU_ORVANTA_VERSION_MINOR << 8) | VANTU_ORVANTA_VERSION_PATCH)
/** The three as a text. */
#define VANTU_ORVANTA_VERSION "2.0.0"

/** Tells the version of the library that runs, which may be newer than the headers. Does not block; any
 * thread.
 * @return a constant in the form of VANTU_ORVANTA_VERSION, never freed */
VANTU_ORVANTA_API const char* vantu_orvanta_version(void);

/** Tells the version of the library that runs. Does not block; any thread.
 * @return a number in the form of VANTU_ORVANTA_VERSION_NUMBER */
VANTU_ORVANTA_API uint32_t vantu_orvanta_version_number(void);

#ifdef __cplusplus
}
#endif

#endif
