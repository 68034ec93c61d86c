#include "vantu/orvanta/event_records.h"

#include "vantu/orvanta/communication/bodies.hpp"

#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace {

using namespace vantu::orvanta::communication;

template <typename Record>
std::int32_t copy_record(const vantu_orvanta_event* event, std::uint32_t event_type, Record* record) {
    static_assert(sizeof(Record) <= sizeof(event->payload));
    if (event == nullptr || record == nullptr || event->event_type != event_type) {
        return vantu_orvanta_invalid_argument;
    }
    std::memcpy(record, event->payload, sizeof(Record));
    return vantu_orvanta_success;
}

// The record that each type of event has a getter for; void for those without one.
template <std::uint32_t event_type> struct gotten { using type = void; };

} // namespace

// event type, record
#define GETTERS                                                                                              \
    GETTER(orvanta3_info, orvanta3_info)                                                                     \
    GETTER(palmetron_info, palmetron_info)                                                                   \
    GETTER(device_block, device_block)                                                                       \
    GETTER(cursor_state, cursor_state)                                                                       \
    GETTER(cursor_state_b, cursor_state)                                                                     \
    GETTER(palmetron_state, palmetron_state)                                                                 \
    GETTER(orientation, orientation)                                                                         \
    GETTER(config_save, config_save)                                                                         \
    GETTER(config_gravity_compensation, config_gravity_compensation)                                         \
    GETTER(config_torque_scaling, config_torque_scaling)                                                     \
    GETTER(config_handedness, config_handedness)                                                             \
    GETTER(status_motor_current, status_motor_current)                                                       \
    GETTER(status_power_supply, status_power_supply)                                                         \
    GETTER(service_stream_a, service_stream_a)                                                               \
    GETTER(service_stream_b, service_stream_b)                                                               \
    GETTER(table_block_128, table_block_128)                                                                 \
    GETTER(table_block_301, table_block_301)                                                                 \
    GETTER(error, error)

#define GETTER(name, record_type)                                                                            \
    template <> struct gotten<vantu_orvanta_event_##name> { using type = vantu_orvanta_##record_type; };
namespace {
template <> struct gotten<vantu_orvanta_event_device_added> { using type = proto::device_description; };
GETTERS
} // namespace
#undef GETTER

namespace {

// The record that a body brings into the payload.
template <typename Body> struct brought { using type = Body; };
template <typename Record> struct brought<proto::addressed<Record>> { using type = Record; };
template <> struct brought<proto::empty_body> { using type = void; };
template <> struct brought<proto::device_body> { using type = void; };
template <> struct brought<proto::addressed<proto::palmetron_head>> {
    using type = vantu_orvanta_palmetron_state;
};
template <> struct brought<proto::addressed<proto::status_byte>> { using type = vantu_orvanta_error; };

template <std::size_t row> consteval bool event_has_the_getter_of_its_record() {
    constexpr std::uint32_t event_type = operations[row].event_type;
    if constexpr (event_type == vantu_orvanta_event_none) {
        return true;
    } else {
        using record = typename brought<proto::body<operations[row].code, operations[row].way>>::type;
        return std::is_same_v<record, typename gotten<event_type>::type>;
    }
}

template <std::size_t... rows> consteval bool every_record_has_its_getter(std::index_sequence<rows...>) {
    return (event_has_the_getter_of_its_record<rows>() && ...);
}

static_assert(every_record_has_its_getter(std::make_index_sequence<operations.size()>{}),
              "every event with a record has a getter of its type");

} // namespace

#define GETTER(name, record_type)                                                                            \
    std::int32_t vantu_orvanta_event_get_##name(const vantu_orvanta_event* event,                            \
                                                vantu_orvanta_##record_type* record) {                       \
        return copy_record(event, vantu_orvanta_event_##name, record);                                       \
    }
GETTERS
#undef GETTER

std::int32_t vantu_orvanta_event_get_device_added(const vantu_orvanta_event* event,
                                                  vantu_orvanta_device* device) {
    proto::device_description listing{};
    const std::int32_t code = copy_record(event, vantu_orvanta_event_device_added, &listing);
    if (code != vantu_orvanta_success || device == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    *device = {};
    device->device_type = listing.device_type;
    device->second_byte = listing.second_byte;
    device->short_id = listing.short_id;
    std::memcpy(device->uuid, listing.uuid, sizeof(device->uuid));
    return vantu_orvanta_success;
}

std::int32_t vantu_orvanta_event_get_palmetron_tail(const vantu_orvanta_event* event,
                                                    std::uint8_t tail[VANTU_ORVANTA_PALMETRON_TAIL_SIZE],
                                                    std::size_t* size) {
    proto::palmetron_head head{};
    static_assert(sizeof(head) + VANTU_ORVANTA_PALMETRON_TAIL_SIZE <= sizeof(event->payload));
    static_assert(VANTU_ORVANTA_PALMETRON_TAIL_SIZE == std::numeric_limits<decltype(head.tail_count)>::max());
    const std::int32_t code = copy_record(event, vantu_orvanta_event_palmetron_state, &head);
    if (code != vantu_orvanta_success || tail == nullptr || size == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    std::memcpy(tail, event->payload + sizeof(head), head.tail_count);
    *size = head.tail_count;
    return vantu_orvanta_success;
}
