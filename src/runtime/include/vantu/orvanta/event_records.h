/** @file
 * The record of an event, copied out of its payload by type. No function here blocks; all may be called from
 * any thread.
 *
 * A record is packed, and so is the copy: take a field by its value, as in float r = record.r, and no pointer
 * to a field, which would not be aligned. */
#ifndef VANTU_ORVANTA_EVENT_RECORDS_H
#define VANTU_ORVANTA_EVENT_RECORDS_H

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/export.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Copies the listing of a device out of a vantu_orvanta_event_device_added: device_type, second_byte,
 * short_id and uuid; the rest is zero.
 * @param device written on success alone
 * @retval vantu_orvanta_success          the listing was copied
 * @retval vantu_orvanta_invalid_argument an argument is null, or the event is of another type */
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_device_added(const vantu_orvanta_event* event,
                                                               vantu_orvanta_device* device);

/** @{ */
/** Copies the record of an event whose type has the name that follows "get_".
 * @param record written on success alone
 * @retval vantu_orvanta_success          the record was copied
 * @retval vantu_orvanta_invalid_argument an argument is null, or the event is of another type */
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_orvanta3_info(const vantu_orvanta_event* event,
                                                                vantu_orvanta_orvanta3_info* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_palmetron_info(const vantu_orvanta_event* event,
                                                                 vantu_orvanta_palmetron_info* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_device_block(const vantu_orvanta_event* event,
                                                               vantu_orvanta_device_block* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_cursor_state(const vantu_orvanta_event* event,
                                                               vantu_orvanta_cursor_state* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_cursor_state_b(const vantu_orvanta_event* event,
                                                                 vantu_orvanta_cursor_state* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_palmetron_state(const vantu_orvanta_event* event,
                                                                  vantu_orvanta_palmetron_state* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_orientation(const vantu_orvanta_event* event,
                                                              vantu_orvanta_orientation* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_config_save(const vantu_orvanta_event* event,
                                                              vantu_orvanta_config_save* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_config_gravity_compensation(
    const vantu_orvanta_event* event, vantu_orvanta_config_gravity_compensation* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_config_torque_scaling(
    const vantu_orvanta_event* event, vantu_orvanta_config_torque_scaling* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_config_handedness(const vantu_orvanta_event* event,
                                                                    vantu_orvanta_config_handedness* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_status_motor_current(
    const vantu_orvanta_event* event, vantu_orvanta_status_motor_current* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_status_power_supply(
    const vantu_orvanta_event* event, vantu_orvanta_status_power_supply* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_service_stream_a(const vantu_orvanta_event* event,
                                                                   vantu_orvanta_service_stream_a* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_service_stream_b(const vantu_orvanta_event* event,
                                                                   vantu_orvanta_service_stream_b* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_table_block_128(const vantu_orvanta_event* event,
                                                                  vantu_orvanta_table_block_128* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_table_block_301(const vantu_orvanta_event* event,
                                                                  vantu_orvanta_table_block_301* record);
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_error(const vantu_orvanta_event* event,
                                                        vantu_orvanta_error* record);
/** @} */

/** The most bytes that the tail of a grip's state has. */
#define VANTU_ORVANTA_PALMETRON_TAIL_SIZE 255

/** Copies the whole tail out of a vantu_orvanta_event_palmetron_state, of which the record has the first 8
 * bytes.
 * @param tail room for VANTU_ORVANTA_PALMETRON_TAIL_SIZE bytes
 * @param size receives the number of bytes written, at most VANTU_ORVANTA_PALMETRON_TAIL_SIZE
 * @retval vantu_orvanta_success          the tail was copied
 * @retval vantu_orvanta_invalid_argument an argument is null, or the event is of another type */
VANTU_ORVANTA_API int32_t vantu_orvanta_event_get_palmetron_tail(
    const vantu_orvanta_event* event, uint8_t tail[VANTU_ORVANTA_PALMETRON_TAIL_SIZE], size_t* size);

#ifdef __cplusplus
}
#endif

#endif
