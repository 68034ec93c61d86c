/** @file
 * Requests to a device. Each sends one datagram and does not wait for its answer, which comes later as the
 * event that each function names, or as vantu_orvanta_event_error. The answer carries the request's tag; tag
 * 0 means that nobody waits for this answer in particular. Any thread. A datagram that goes out puts the next
 * keep-alive off by a second. */
#ifndef VANTU_ORVANTA_REQUESTS_H
#define VANTU_ORVANTA_REQUESTS_H

#include "vantu/orvanta/connection.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Opens a device, so that its states are sent and its configuration can be changed. Answer:
 * vantu_orvanta_event_device_opened.
 * @param value handed to the service as it is; 0 will do
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_open(vantu_orvanta_context* context, uint32_t device_id,
                                                    uint8_t tag, uint16_t value);

/** Closes a device. Answer: vantu_orvanta_event_device_closed.
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_close(vantu_orvanta_context* context, uint32_t device_id,
                                                     uint8_t tag);

/** Asks for the orientation. Answer: vantu_orvanta_event_orientation.
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_orientation_get(vantu_orvanta_context* context, uint32_t device_id,
                                                        uint8_t tag);

/** Saves the configuration on the device. Answer: vantu_orvanta_event_config_save.
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_save_request(vantu_orvanta_context* context,
                                                            uint32_t device_id, uint8_t tag);

/** Asks for the gravity compensation. Answer: vantu_orvanta_event_config_gravity_compensation.
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_gravity_compensation_get(vantu_orvanta_context* context,
                                                                        uint32_t device_id, uint8_t tag);

/** Sets the gravity compensation. Answer: vantu_orvanta_event_config_gravity_compensation, with the values
 * now in force.
 * @param value copied before the return; its values are not range-checked here
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context or value is null, or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t
vantu_orvanta_config_gravity_compensation_set(vantu_orvanta_context* context, uint32_t device_id, uint8_t tag,
                                              const vantu_orvanta_config_gravity_compensation* value);

/** Asks for the torque scaling. Answer: vantu_orvanta_event_config_torque_scaling.
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context is null or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_torque_scaling_get(vantu_orvanta_context* context,
                                                                  uint32_t device_id, uint8_t tag);

/** Sets the torque scaling. Answer: vantu_orvanta_event_config_torque_scaling, with the value now in force.
 * @param value copied before the return; its value is not range-checked here
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context or value is null, or device_id is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t
vantu_orvanta_config_torque_scaling_set(vantu_orvanta_context* context, uint32_t device_id, uint8_t tag,
                                        const vantu_orvanta_config_torque_scaling* value);

/** Sets the handedness. Answer: vantu_orvanta_event_config_handedness, with the value now in force.
 * @param handedness enum vantu_orvanta_handedness; values above 2 are not refused here
 * @retval vantu_orvanta_success                  the datagram was sent
 * @retval vantu_orvanta_invalid_argument         context or handedness is null, device_id is 0, or the
 * handedness is 0
 * @retval vantu_orvanta_invalid_connection_state not connected
 * @return otherwise a transport code */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_handedness_set(vantu_orvanta_context* context,
                                                              uint32_t device_id, uint8_t tag,
                                                              const uint8_t* handedness);

#ifdef __cplusplus
}
#endif

#endif
