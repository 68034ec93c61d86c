/* The flat API as a C11 program sees it. */
#include "vantu/orvanta/orvanta.h"

#include <string.h>

int orvanta_c11_calls_without_a_connection(void);

static void take_event(void* user, const vantu_orvanta_event* event) {
    (void)user;
    (void)event;
}

static void take_line(uint64_t opaque, uint32_t level, const char* path, uint64_t line, const char* message) {
    (void)opaque;
    (void)level;
    (void)path;
    (void)line;
    (void)message;
}

/* Calls every function once; the line of the first one that answered wrongly, or 0. */
int orvanta_c11_calls_without_a_connection(void) {
    vantu_orvanta_event event;
    vantu_orvanta_device device;
    vantu_orvanta_config_gravity_compensation gravity = {1, 0.75f};
    vantu_orvanta_config_torque_scaling torque = {1};
    const uint8_t left = vantu_orvanta_handedness_left;
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
    EXPECT(vantu_orvanta_init() == 0);
    EXPECT(vantu_orvanta_log_sink_set(take_line) == 0 && vantu_orvanta_log_sink_set(NULL) == 0);
    EXPECT(vantu_orvanta_connect(NULL, "c", 0, 0, 1, 1) == 2);
    EXPECT(vantu_orvanta_connect_ports(NULL, "0", "0", "c", 0, 0, 1, 1) == 2);
    EXPECT(vantu_orvanta_poll(context, &event) == 3);
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
