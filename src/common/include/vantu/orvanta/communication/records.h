/** @file
 * The public records: the event that a poll fills, the payload records that are views of it, and the stored
 * device record. C11 and C++17. All are packed, little-endian and may stand at any address.
 *
 * Where a field is "not specified", the protocol does not say what it means, nor its unit: the library hands
 * it on as the service sends it. */
#ifndef VANTU_ORVANTA_COMMUNICATION_RECORDS_H
#define VANTU_ORVANTA_COMMUNICATION_RECORDS_H

#include <stddef.h>
#include <stdint.h>

/** Lets the compiler hold the layout of the records. */
#ifdef __cplusplus
#define VANTU_ORVANTA_STATIC_ASSERT(condition) static_assert(condition, #condition)
#else
#define VANTU_ORVANTA_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/** Event types, with the record that the payload of each begins with. */
enum vantu_orvanta_event_type {
    vantu_orvanta_event_none = 0, /**< Nothing happened. */
    vantu_orvanta_event_ack = 1,  /**< The service took the request with this tag and sends no record. */
    vantu_orvanta_event_disconnected = 2,  /**< The service said goodbye; names no device. */
    vantu_orvanta_event_device_added = 16, /**< A device is listed: bytes 8 to 27 of vantu_orvanta_device. */
    vantu_orvanta_event_device_removed = 17,  /**< A device is gone; no record. */
    vantu_orvanta_event_device_opened = 18,   /**< Answer to vantu_orvanta_device_open; no record. */
    vantu_orvanta_event_device_closed = 19,   /**< Answer to vantu_orvanta_device_close; no record. */
    vantu_orvanta_event_orvanta3_info = 20,   /**< vantu_orvanta_orvanta3_info */
    vantu_orvanta_event_palmetron_info = 21,  /**< vantu_orvanta_palmetron_info */
    vantu_orvanta_event_device_block = 32,    /**< vantu_orvanta_device_block */
    vantu_orvanta_event_cursor_state = 48,    /**< vantu_orvanta_cursor_state, of the first stream. */
    vantu_orvanta_event_cursor_state_b = 49,  /**< vantu_orvanta_cursor_state, of the second stream. */
    vantu_orvanta_event_palmetron_state = 50, /**< vantu_orvanta_palmetron_state */
    vantu_orvanta_event_orientation = 51,     /**< vantu_orvanta_orientation */
    vantu_orvanta_event_config_save = 64,     /**< vantu_orvanta_config_save */
    vantu_orvanta_event_config_gravity_compensation = 65, /**< vantu_orvanta_config_gravity_compensation */
    vantu_orvanta_event_config_torque_scaling = 66,       /**< vantu_orvanta_config_torque_scaling */
    vantu_orvanta_event_config_handedness = 67,           /**< vantu_orvanta_config_handedness */
    vantu_orvanta_event_status_motor_current = 80,        /**< vantu_orvanta_status_motor_current */
    vantu_orvanta_event_status_power_supply = 81,         /**< vantu_orvanta_status_power_supply */
    vantu_orvanta_event_service_stream_a = 96, /**< vantu_orvanta_service_stream_a; names no device. */
    vantu_orvanta_event_service_stream_b = 97, /**< vantu_orvanta_service_stream_b */
    vantu_orvanta_event_table_block_128 = 112, /**< vantu_orvanta_table_block_128; names no device. */
    vantu_orvanta_event_table_block_301 = 113, /**< vantu_orvanta_table_block_301; names no device. */
    vantu_orvanta_event_error = 255            /**< A request failed: vantu_orvanta_error. */
};

/** Values of vantu_orvanta_device.device_type; a service may list others. */
enum vantu_orvanta_device_type {
    vantu_orvanta_device_type_none = 0,     /**< The listing has not come yet. */
    vantu_orvanta_device_type_orvanta3 = 1, /**< An Orvanta3, the motorised device. */
    vantu_orvanta_device_type_palmetron = 2 /**< A Palmetron, the grip. */
};

/** Values of handedness. */
enum vantu_orvanta_handedness {
    vantu_orvanta_handedness_none = 0,  /**< Not told yet. */
    vantu_orvanta_handedness_right = 1, /**< Right-handed. */
    vantu_orvanta_handedness_left = 2   /**< Left-handed. */
};

/** Bytes of vantu_orvanta_event.payload. */
#define VANTU_ORVANTA_PAYLOAD_SIZE 301

#pragma pack(push, 1)

/** The event of one poll. */
typedef struct vantu_orvanta_event {
    uint32_t event_type;                         /**< enum vantu_orvanta_event_type */
    uint32_t device_id;                          /**< 0 where the event names no device. */
    uint8_t tag;                                 /**< The request tag of a reply; 0: nobody waits. */
    uint8_t payload[VANTU_ORVANTA_PAYLOAD_SIZE]; /**< Begins with the record of the event type; zero after
                                                      that. */
} vantu_orvanta_event;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_event) == 310);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, event_type) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, device_id) == 4);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, tag) == 8);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, payload) == 9);

/** The state of a device's cursor. */
typedef struct vantu_orvanta_cursor_state {
    float values[6]; /**< In wire order; meaning and units not specified. */
} vantu_orvanta_cursor_state;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_cursor_state) == 24);

/** The device's orientation as a quaternion, without unit. The frame that it refers to, and whether its norm
 * is 1, are not specified. */
typedef struct vantu_orvanta_orientation {
    float r; /**< Real part. */
    float x; /**< First imaginary part. */
    float y; /**< Second imaginary part. */
    float z; /**< Third imaginary part. */
} vantu_orvanta_orientation;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_orientation) == 16);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, r) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, x) == 4);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, y) == 8);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, z) == 12);

/** The answer to vantu_orvanta_config_save_request. */
typedef struct vantu_orvanta_config_save {
    uint8_t saved; /**< Not specified. */
} vantu_orvanta_config_save;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_save) == 1);

/** The gravity compensation. */
typedef struct vantu_orvanta_config_gravity_compensation {
    uint8_t enabled;      /**< 0 off, 1 on. */
    float scaling_factor; /**< Without unit; the service checks its range. */
} vantu_orvanta_config_gravity_compensation;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_gravity_compensation) == 5);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_config_gravity_compensation, enabled) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_config_gravity_compensation, scaling_factor) == 1);

/** The torque scaling. */
typedef struct vantu_orvanta_config_torque_scaling {
    uint8_t enabled; /**< 0 off, 1 on. */
} vantu_orvanta_config_torque_scaling;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_torque_scaling) == 1);

/** The handedness now in force. */
typedef struct vantu_orvanta_config_handedness {
    uint8_t handedness; /**< enum vantu_orvanta_handedness; never 0. */
} vantu_orvanta_config_handedness;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_handedness) == 1);

/** The currents of the motors. */
typedef struct vantu_orvanta_status_motor_current {
    float values[3]; /**< One for each of three motors; order and unit not specified. */
} vantu_orvanta_status_motor_current;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_status_motor_current) == 12);

/** The state of the power supply. */
typedef struct vantu_orvanta_status_power_supply {
    uint8_t state; /**< Values not specified. */
} vantu_orvanta_status_power_supply;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_status_power_supply) == 1);

/** The state of a grip. The event's payload goes on with the rest of a tail of more than 8 bytes. */
typedef struct vantu_orvanta_palmetron_state {
    uint8_t first;      /**< Not specified. */
    uint8_t block[16];  /**< Not specified. */
    uint8_t tail_count; /**< Bytes of tail that the service sent, 0 to 255. */
    uint8_t tail[8];    /**< The first 8 of them, zero where there are fewer; not specified. */
} vantu_orvanta_palmetron_state;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_palmetron_state) == 26);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, block) == 1);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, tail_count) == 17);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, tail) == 18);

/** A failed request. */
typedef struct vantu_orvanta_error {
    uint32_t status; /**< An error code, as vantu_orvanta_error_message takes it. */
} vantu_orvanta_error;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_error) == 4);

/** Details of an Orvanta3. */
typedef struct vantu_orvanta_orvanta3_info {
    uint8_t information[8]; /**< Not specified. */
    uint8_t handedness;     /**< enum vantu_orvanta_handedness */
} vantu_orvanta_orvanta3_info;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_orvanta3_info) == 9);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orvanta3_info, handedness) == 8);

/** Details of a Palmetron. */
typedef struct vantu_orvanta_palmetron_info {
    uint8_t information[8]; /**< Not specified. */
} vantu_orvanta_palmetron_info;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_palmetron_info) == 8);

/** A block of bytes of a device. */
typedef struct vantu_orvanta_device_block {
    uint8_t bytes[16]; /**< Not specified. */
} vantu_orvanta_device_block;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_device_block) == 16);

/** A block of the first stream of the service itself. */
typedef struct vantu_orvanta_service_stream_a {
    uint8_t bytes[12]; /**< Not specified. */
} vantu_orvanta_service_stream_a;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_service_stream_a) == 12);

/** A block of the second stream of the service, which names a device. */
typedef struct vantu_orvanta_service_stream_b {
    uint8_t bytes[48]; /**< Not specified. */
} vantu_orvanta_service_stream_b;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_service_stream_b) == 48);

/** A table of 128 bytes. */
typedef struct vantu_orvanta_table_block_128 {
    uint8_t bytes[128]; /**< Not specified. */
} vantu_orvanta_table_block_128;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_table_block_128) == 128);

/** A table of 301 bytes. */
typedef struct vantu_orvanta_table_block_301 {
    uint8_t bytes[301]; /**< Not specified. */
} vantu_orvanta_table_block_301;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_table_block_301) == 301);

/** The record that the library keeps of a device. */
typedef struct vantu_orvanta_device {
    uint64_t update_count; /**< 1 with the listing, one more with every state. */
    uint8_t device_type;   /**< enum vantu_orvanta_device_type */
    uint8_t second_byte;   /**< Part of the listing; not specified. */
    uint16_t short_id;     /**< A short number of the device, which people read as four hexadecimal digits. */
    uint8_t uuid[16];      /**< The device's unique number, in wire order. */
    uint8_t information[8]; /**< Part of the details; not specified. */
    union {
        struct {
            uint8_t handedness; /**< enum vantu_orvanta_handedness */
            uint8_t unused[16]; /**< Not used. */
            uint8_t state_kind; /**< 0: no state yet; 1: from vantu_orvanta_event_cursor_state; 2: from
                                     vantu_orvanta_event_cursor_state_b. */
            vantu_orvanta_cursor_state cursor_state;   /**< The latest state. */
        } orvanta3;                                    /**< For vantu_orvanta_device_type_orvanta3. */
        vantu_orvanta_palmetron_state palmetron_state; /**< For vantu_orvanta_device_type_palmetron: the
                                                          latest state. */
    } detail; /**< The kinds of device share these bytes: read the member that goes with device_type. */
} vantu_orvanta_device;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_device) == 78);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, update_count) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, device_type) == 8);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, second_byte) == 9);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, short_id) == 10);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, uuid) == 12);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, information) == 28);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, detail) == 36);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, detail.orvanta3.handedness) == 36);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, detail.orvanta3.state_kind) == 53);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_device, detail.orvanta3.cursor_state) == 54);

#pragma pack(pop)

#endif
