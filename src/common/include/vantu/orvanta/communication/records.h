/* The public records: the event that a poll fills, the payload records that are views of it, and the
 * stored device record. C11 and C++20. All are packed, little-endian and may stand at any address. */
#ifndef VANTU_ORVANTA_COMMUNICATION_RECORDS_H
#define VANTU_ORVANTA_COMMUNICATION_RECORDS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define VANTU_ORVANTA_STATIC_ASSERT(condition) static_assert(condition, #condition)
#else
#define VANTU_ORVANTA_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/* Event types, as vantu_orvanta_event.event_type carries them. */
enum vantu_orvanta_event_type {
    vantu_orvanta_event_none = 0,
    vantu_orvanta_event_ack = 1,
    vantu_orvanta_event_disconnected = 2,
    vantu_orvanta_event_device_added = 16,
    vantu_orvanta_event_device_removed = 17,
    vantu_orvanta_event_device_opened = 18,
    vantu_orvanta_event_device_closed = 19,
    vantu_orvanta_event_orvanta3_info = 20,
    vantu_orvanta_event_palmetron_info = 21,
    vantu_orvanta_event_device_block = 32,
    vantu_orvanta_event_cursor_state = 48,
    vantu_orvanta_event_cursor_state_b = 49,
    vantu_orvanta_event_palmetron_state = 50,
    vantu_orvanta_event_orientation = 51,
    vantu_orvanta_event_config_save = 64,
    vantu_orvanta_event_config_gravity_compensation = 65,
    vantu_orvanta_event_config_torque_scaling = 66,
    vantu_orvanta_event_config_handedness = 67,
    vantu_orvanta_event_status_motor_current = 80,
    vantu_orvanta_event_status_power_supply = 81,
    vantu_orvanta_event_service_stream_a = 96,
    vantu_orvanta_event_service_stream_b = 97,
    vantu_orvanta_event_table_block_128 = 112,
    vantu_orvanta_event_table_block_301 = 113,
    vantu_orvanta_event_error = 255
};

/* Values of device_type. */
enum vantu_orvanta_device_type {
    vantu_orvanta_device_type_none = 0,
    vantu_orvanta_device_type_orvanta3 = 1,
    vantu_orvanta_device_type_palmetron = 2
};

/* Values of handedness. */
enum vantu_orvanta_handedness {
    vantu_orvanta_handedness_none = 0,
    vantu_orvanta_handedness_right = 1,
    vantu_orvanta_handedness_left = 2
};

#define VANTU_ORVANTA_PAYLOAD_SIZE 301

#pragma pack(push, 1)

/* The event of one poll. */
typedef struct vantu_orvanta_event {
    uint32_t event_type; /* enum vantu_orvanta_event_type; 0: nothing happened */
    uint32_t device_id;  /* 0 where the event concerns no device */
    uint8_t tag;         /* the request tag of a reply; 0: nobody waits */
    uint8_t payload[VANTU_ORVANTA_PAYLOAD_SIZE];
} vantu_orvanta_event;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_event) == 310);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, event_type) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, device_id) == 4);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, tag) == 8);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_event, payload) == 9);

/* Six values of the device's cursor, passed on as the service sends them, in wire order. */
typedef struct vantu_orvanta_cursor_state {
    float values[6];
} vantu_orvanta_cursor_state;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_cursor_state) == 24);

/* The device's orientation as a quaternion. */
typedef struct vantu_orvanta_orientation {
    float r;
    float x;
    float y;
    float z;
} vantu_orvanta_orientation;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_orientation) == 16);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, r) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, x) == 4);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, y) == 8);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orientation, z) == 12);

typedef struct vantu_orvanta_config_save {
    uint8_t saved; /* the service's answer to a save request, passed on */
} vantu_orvanta_config_save;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_save) == 1);

typedef struct vantu_orvanta_config_gravity_compensation {
    uint8_t enabled;      /* 0 off, 1 on */
    float scaling_factor; /* no unit; the service checks its range */
} vantu_orvanta_config_gravity_compensation;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_gravity_compensation) == 5);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_config_gravity_compensation, enabled) == 0);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_config_gravity_compensation, scaling_factor) == 1);

typedef struct vantu_orvanta_config_torque_scaling {
    uint8_t enabled; /* 0 off, 1 on */
} vantu_orvanta_config_torque_scaling;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_torque_scaling) == 1);

typedef struct vantu_orvanta_config_handedness {
    uint8_t handedness; /* enum vantu_orvanta_handedness; never 0 */
} vantu_orvanta_config_handedness;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_config_handedness) == 1);

/* The currents of the three motors. */
typedef struct vantu_orvanta_status_motor_current {
    float values[3];
} vantu_orvanta_status_motor_current;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_status_motor_current) == 12);

typedef struct vantu_orvanta_status_power_supply {
    uint8_t state; /* passed on as the service sends it */
} vantu_orvanta_status_power_supply;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_status_power_supply) == 1);

/* The state of a grip: passed on as the service sends it. The event's payload goes on with the rest
 * of a tail of more than 8 bytes. */
typedef struct vantu_orvanta_palmetron_state {
    uint8_t first;
    uint8_t block[16];
    uint8_t tail_count; /* bytes of tail that the service sent, 0 to 255 */
    uint8_t tail[8];    /* the first 8 of them */
} vantu_orvanta_palmetron_state;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_palmetron_state) == 26);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, block) == 1);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, tail_count) == 17);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_palmetron_state, tail) == 18);

/* A failed request. */
typedef struct vantu_orvanta_error {
    uint32_t status; /* a client error code: vantu_orvanta_error_message gives its text */
} vantu_orvanta_error;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_error) == 4);

/* Device details of an Orvanta3: eight opaque bytes and its handedness. */
typedef struct vantu_orvanta_orvanta3_info {
    uint8_t information[8];
    uint8_t handedness; /* enum vantu_orvanta_handedness */
} vantu_orvanta_orvanta3_info;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_orvanta3_info) == 9);
VANTU_ORVANTA_STATIC_ASSERT(offsetof(vantu_orvanta_orvanta3_info, handedness) == 8);

/* Device details of a Palmetron: eight opaque bytes. */
typedef struct vantu_orvanta_palmetron_info {
    uint8_t information[8];
} vantu_orvanta_palmetron_info;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_palmetron_info) == 8);

/* Opaque blocks, passed on as the service sends them. */
typedef struct vantu_orvanta_device_block {
    uint8_t bytes[16];
} vantu_orvanta_device_block;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_device_block) == 16);

typedef struct vantu_orvanta_service_stream_a {
    uint8_t bytes[12];
} vantu_orvanta_service_stream_a;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_service_stream_a) == 12);

typedef struct vantu_orvanta_service_stream_b {
    uint8_t bytes[48];
} vantu_orvanta_service_stream_b;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_service_stream_b) == 48);

typedef struct vantu_orvanta_table_block_128 {
    uint8_t bytes[128];
} vantu_orvanta_table_block_128;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_table_block_128) == 128);

typedef struct vantu_orvanta_table_block_301 {
    uint8_t bytes[301];
} vantu_orvanta_table_block_301;
VANTU_ORVANTA_STATIC_ASSERT(sizeof(vantu_orvanta_table_block_301) == 301);

/* The record that the library keeps of a device. The two kinds share the bytes of detail: read the member
 * that goes with device_type. A device whose listing has not come yet has device_type 0. */
typedef struct vantu_orvanta_device {
    uint64_t update_count; /* 1 with the listing, one more with every state */
    uint8_t device_type;   /* enum vantu_orvanta_device_type */
    uint8_t second_byte;   /* of the listing; not interpreted */
    uint16_t short_id;
    uint8_t uuid[16];
    uint8_t information[8]; /* of the device details; not interpreted */
    union {
        struct {
            uint8_t handedness; /* enum vantu_orvanta_handedness */
            uint8_t unused[16];
            uint8_t state_kind; /* 0: no state yet; 1 or 2: which cursor stream it came from */
            vantu_orvanta_cursor_state cursor_state;
        } orvanta3;
        vantu_orvanta_palmetron_state palmetron_state;
    } detail;
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
