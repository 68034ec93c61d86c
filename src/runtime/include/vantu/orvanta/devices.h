/** @file
 * The devices that the service has listed, from the library's own table: no traffic. The poll fills it. */
#ifndef VANTU_ORVANTA_DEVICES_H
#define VANTU_ORVANTA_DEVICES_H

#include "vantu/orvanta/connection.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Copies the ids of the devices, in the order of their announcement. Waits for one table update at most; any
 * thread.
 * @param ids   room for count ids
 * @param count in: the room in ids; out: the number written
 * @retval vantu_orvanta_success                  all ids were written
 * @retval vantu_orvanta_invalid_argument         an argument is null
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @retval vantu_orvanta_buffer_full_or_empty     there are more devices than room: the array is full and
 *                                                usable */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_device_ids(vantu_orvanta_context* context,
                                                                           uint32_t* ids, size_t* count);

/** Copies what the library keeps of one device: its listing, details and latest state. Waits for one table
 * update at most; any thread.
 * @param device written on success alone
 * @retval vantu_orvanta_success                  the record was copied
 * @retval vantu_orvanta_invalid_argument         context or device is null, or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @retval vantu_orvanta_no_matching_device       no such device is listed */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_device_info(vantu_orvanta_context* context,
                                                                            uint32_t device_id,
                                                                            vantu_orvanta_device* device);

#ifdef __cplusplus
}
#endif

#endif
