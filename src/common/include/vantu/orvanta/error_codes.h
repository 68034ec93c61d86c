/** @file
 * The error codes that every function of the library returns as int32_t. C11 and C++.
 * vantu_orvanta_error_message has the text of each. */
#ifndef VANTU_ORVANTA_ERROR_CODES_H
#define VANTU_ORVANTA_ERROR_CODES_H

/** Lets the compiler warn where the result of a function is ignored and something is lost with it. */
#if defined(__cplusplus)
#define VANTU_ORVANTA_NODISCARD [[nodiscard]]
#elif defined(__GNUC__)
#define VANTU_ORVANTA_NODISCARD __attribute__((warn_unused_result))
#else
#define VANTU_ORVANTA_NODISCARD
#endif

/** The codes. 9 to 11 and 160 to 209 are statuses of the service: the error of a reply, or of a connect. 255,
 * which has no name, is a status that the library does not know. */
enum vantu_orvanta_error_code {
    vantu_orvanta_success = 0,          /**< The call did what it was asked to do. */
    vantu_orvanta_unexpected_error = 1, /**< The system refused, or memory ran out; a refusal was logged as a
                                             warning. */
    vantu_orvanta_invalid_argument = 2, /**< An argument cannot be used: a null, device id 0, or a value out
                                           of its range. */
    vantu_orvanta_invalid_connection_state = 3, /**< The context is not connected; for a connect: it already
                                                     is. */
    vantu_orvanta_timed_out = 4,                /**< No answer came in time. */
    vantu_orvanta_socket_bind_failed = 5,    /**< The local port or the service's address cannot be used. */
    vantu_orvanta_protocol_parse_failed = 6, /**< Bytes of the service are not understood. */
    vantu_orvanta_no_matching_device = 7,    /**< The device is not listed, or is listed with another
                                                  type. */
    vantu_orvanta_disconnected_from_service = 8, /**< The service's port is closed, or the service said
                                                      goodbye. */
    vantu_orvanta_buffer_full_or_empty = 9,      /**< A buffer or an array is too small. */
    vantu_orvanta_request_queue_empty = 10,      /**< The service has no request to answer. */
    vantu_orvanta_request_queue_full = 11,       /**< No request tag is free. */
    vantu_orvanta_invalid_version = 160,         /**< The service's "invalid version". */
    vantu_orvanta_invalid_operation = 161,       /**< The service's "invalid operation". */
    vantu_orvanta_invalid_body = 162,            /**< The service's "invalid body". */
    vantu_orvanta_invalid_request_argument =
        163, /**< The service's "invalid argument": a value of the request is out of its range. */
    vantu_orvanta_client_not_connected = 176,       /**< The service does not know this client. */
    vantu_orvanta_device_not_opened = 177,          /**< The device was not opened. */
    vantu_orvanta_another_client_connected = 178,   /**< The service serves another client only. */
    vantu_orvanta_invalid_device_id = 192,          /**< The service's "invalid device identifier". */
    vantu_orvanta_invalid_device_type = 193,        /**< The service's "invalid device type". */
    vantu_orvanta_unsupported_device_model = 194,   /**< The service does not support the device's model. */
    vantu_orvanta_unparsable_device_pointer = 195,  /**< The service cannot parse the device pointer. */
    vantu_orvanta_device_communication_error = 208, /**< The service cannot talk to the device. */
    vantu_orvanta_unknown_client_id = 209,          /**< The client id does not exist. */
    vantu_orvanta_os_socket_error = 254             /**< The system has no room to send now. */
};

#endif
