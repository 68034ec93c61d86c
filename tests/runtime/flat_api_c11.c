/* The flat API as a C11 program sees it. */
#include "vantu/orvanta/orvanta.h"

#include <string.h>

int orvanta_c11_calls_without_a_connection(void);

static void take_event(void* user, const vantu_orvanta_event* event) {
    (void)user;
    (void)event;
}

static void take_traffic(void* user_data, const vantu_orvanta_traffic* told) {
    (void)user_data;
    (void)told;
}

static void take_line(uint64_t opaque, uint32_t level, const char* path, uint64_t line, const char* message) {
    (void)opaque;
    (void)level;
    (void)path;
    (void)line;
    (void)message;
}

/* Gets each record of an event without one. */
static int gets_no_record(const vantu_orvanta_event* event) {
    int refused = 0;
    uint8_t tail[VANTU_ORVANTA_PALMETRON_TAIL_SIZE];
    size_t size = 0;
#define GETS(name, type)                                                                                     \
    do {                                                                                                     \
        vantu_orvanta_##type record;                                                                         \
        refused += vantu_orvanta_event_get_##name(event, &record) == vantu_orvanta_invalid_argument;         \
    } while (0)
    GETS(device_added, device);
    GETS(orvanta3_info, orvanta3_info);
    GETS(palmetron_info, palmetron_info);
    GETS(device_block, device_block);
    GETS(cursor_state, cursor_state);
    GETS(cursor_state_b, cursor_state);
    GETS(palmetron_state, palmetron_state);
    GETS(orientation, orientation);
    GETS(config_save, config_save);
    GETS(config_gravity_compensation, config_gravity_compensation);
    GETS(config_torque_scaling, config_torque_scaling);
    GETS(config_handedness, config_handedness);
    GETS(status_motor_current, status_motor_current);
    GETS(status_power_supply, status_power_supply);
    GETS(service_stream_a, service_stream_a);
    GETS(service_stream_b, service_stream_b);
    GETS(table_block_128, table_block_128);
    GETS(table_block_301, table_block_301);
    GETS(error, error);
    refused += vantu_orvanta_event_get_palmetron_tail(event, tail, &size) == vantu_orvanta_invalid_argument;
    return refused;
}

/* Calls every function once; the line of the first one that answered wrongly, or 0. */
int orvanta_c11_calls_without_a_connection(void) {
    vantu_orvanta_event event;
    vantu_orvanta_device device;
    vantu_orvanta_config_gravity_compensation gravity = {1, 0.75f};
    vantu_orvanta_config_torque_scaling torque = {1};
    const uint8_t left = vantu_orvanta_handedness_left;
    const uint8_t uuid[16] = {[15] = 1};
    char text[VANTU_ORVANTA_UUID_TEXT_SIZE];
    intptr_t handle = 0;
    uint64_t due_ns = 0;
    uint32_t id = 0;
    size_t count = 1;
    vantu_orvanta_context* context = vantu_orvanta_context_create();
#define EXPECT(condition)                                                                                    \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            return __LINE__;                                                                                 \
        }                                                                                                    \
    } while (0)
    EXPECT(context != NULL);
    EXPECT(sizeof(event) == 310 && sizeof(device) == 78);
    EXPECT(strcmp(vantu_orvanta_error_message(vantu_orvanta_timed_out), "operation timed out") == 0);
    EXPECT(strcmp(vantu_orvanta_error_name(vantu_orvanta_timed_out), "timed_out") == 0);
    EXPECT(strcmp(vantu_orvanta_event_type_name(vantu_orvanta_event_ack), "ack") == 0);
    EXPECT(strcmp(vantu_orvanta_device_type_name(vantu_orvanta_device_type_orvanta3), "orvanta3") == 0);
    EXPECT(strcmp(vantu_orvanta_handedness_name(left), "left") == 0);
    EXPECT(strcmp(vantu_orvanta_log_level_name(vantu_orvanta_log_info), "info") == 0);
    vantu_orvanta_uuid_text(uuid, text);
    EXPECT(strcmp(text, "00000000-0000-0000-0000-000000000001") == 0);
    EXPECT(strcmp(vantu_orvanta_version(), VANTU_ORVANTA_VERSION) == 0);
    EXPECT(vantu_orvanta_version_number() == VANTU_ORVANTA_VERSION_NUMBER);
    EXPECT(vantu_orvanta_init() == 0);
    EXPECT(vantu_orvanta_log_sink_set(take_line) == 0 && vantu_orvanta_log_sink_set(NULL) == 0);
    EXPECT(vantu_orvanta_traffic_sink_set(context, take_traffic, NULL) == 0);
    EXPECT(vantu_orvanta_connect(NULL, "c", 0, 0, 1, 1) == 2);
    EXPECT(vantu_orvanta_connect_ports(NULL, "0", "0", "c", 0, 0, 1, 1) == 2);
    EXPECT(vantu_orvanta_poll(context, &event) == 3);
    EXPECT(gets_no_record(NULL) == 20);
    EXPECT(vantu_orvanta_poll_thread_start(NULL, take_event, NULL) == NULL);
    EXPECT(vantu_orvanta_poll_thread_result(NULL) == 0);
    vantu_orvanta_poll_thread_stop(NULL);
    EXPECT(vantu_orvanta_device_ids(context, &id, &count) == 3);
    EXPECT(vantu_orvanta_device_info(context, 1, &device) == 3);
    EXPECT(vantu_orvanta_device_open(context, 1, 0, 0) == 3);
    EXPECT(vantu_orvanta_device_close(context, 1, 0) == 3);
    EXPECT(vantu_orvanta_orientation_get(context, 1, 0) == 3);
    EXPECT(vantu_orvanta_config_save_request(context, 1, 0) == 3);
    EXPECT(vantu_orvanta_config_gravity_compensation_get(context, 1, 0) == 3);
    EXPECT(vantu_orvanta_config_gravity_compensation_set(context, 1, 0, &gravity) == 3);
    EXPECT(vantu_orvanta_config_torque_scaling_get(context, 1, 0) == 3);
    EXPECT(vantu_orvanta_config_torque_scaling_set(context, 1, 0, &torque) == 3);
    EXPECT(vantu_orvanta_config_handedness_set(context, 1, 0, &left) == 3);
    EXPECT(vantu_orvanta_wait(context, 0) == 3);
    EXPECT(vantu_orvanta_wake(context) == 0);
    EXPECT(vantu_orvanta_wait_handle(context, &handle) == 0);
    EXPECT(vantu_orvanta_next_due(context, &due_ns) == 3);
    EXPECT(vantu_orvanta_sleep(1) == 0);
    vantu_orvanta_disconnect(context);
    vantu_orvanta_disconnect(NULL);
    return 0;
}
