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
    const uint8_t uuid[16] = {[15] = 1};
    char text[VANTU_ORVANTA_UUID_TEXT_SIZE];
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
    EXPECT(vantu_orvanta_sleep(1) == 0);
    vantu_orvanta_disconnect(context);
    vantu_orvanta_disconnect(NULL);
    return 0;
}
