/** @file
 * Texts of values that the library gives out as numbers. No function here blocks; all may be called from any
 * thread. A text that one returns is a constant, never null and never freed. A name is that of the enumerator
 * without its prefix; "unknown" for a value without an enumerator. */
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

/** Names an error code.
 * @param code enum vantu_orvanta_error_code
 * @return its name, such as "timed_out" */
VANTU_ORVANTA_API const char* vantu_orvanta_error_name(int32_t code);

/** Names a type of event.
 * @param event_type enum vantu_orvanta_event_type
 * @return its name, such as "device_added" */
VANTU_ORVANTA_API const char* vantu_orvanta_event_type_name(uint32_t event_type);

/** Names a type of device.
 * @param device_type enum vantu_orvanta_device_type
 * @return its name, such as "orvanta3" */
VANTU_ORVANTA_API const char* vantu_orvanta_device_type_name(uint8_t device_type);

/** Names a handedness.
 * @param handedness enum vantu_orvanta_handedness
 * @return its name, such as "right" */
VANTU_ORVANTA_API const char* vantu_orvanta_handedness_name(uint8_t handedness);

/** Names a log level.
 * @param level enum vantu_orvanta_log_level
 * @return its name, such as "warning" */
VANTU_ORVANTA_API const char* vantu_orvanta_log_level_name(uint32_t level);

/** Bytes of a uuid's text: 32 digits, 4 dashes and the final zero. */
#define VANTU_ORVANTA_UUID_TEXT_SIZE 37

/** Writes a uuid as text in groups of 8, 4, 4, 4 and 12 digits, lower case, the bytes in the order in which
 * they stand: 00010203-0405-0607-0809-0a0b0c0d0e0f. Writes nothing when an argument is null.
 * @param text receives the text and a zero after it */
VANTU_ORVANTA_API void vantu_orvanta_uuid_text(const uint8_t uuid[16],
                                               char text[VANTU_ORVANTA_UUID_TEXT_SIZE]);

#ifdef __cplusplus
}
#endif

#endif
