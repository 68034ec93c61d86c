// Nothing on the way of a request or of an event touches the heap after the first of its kind.
#include "allocation_trap.hpp"
#include "support/client_session.hpp"

#include <array>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <new>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::client;

constexpr int repetitions = 50;

// How many allocations the repetitions make after a first one. The calls of work are not counted as such:
// it is a plain template argument.
template <typename Work> std::size_t allocations_after_the_first(Work work) {
    work();
    const allocation_trap trap;
    for (int i = 0; i < repetitions; ++i) {
        work();
    }
    return allocation_trap::allocations();
}

TEST(allocation_trap, sees_each_way_to_allocate) {
    const allocation_trap trap;
    // Called through volatile pointers: a compiler may leave out an allocation that nobody uses.
    void* (*volatile allocate)(std::size_t) = std::malloc;
    std::free(allocate(10));
    EXPECT_GE(allocation_trap::allocations(), 1U);
    const std::size_t before = allocation_trap::allocations();
    ::operator delete(::operator new(10));
    EXPECT_EQ(allocation_trap::allocations(), before + 1);
    const std::unique_ptr<int> owned(new (std::nothrow) int(1));
    EXPECT_EQ(allocation_trap::allocations(), before + 2);
    ::operator delete (::operator new (64, std::align_val_t{64}), std::align_val_t{64});
    EXPECT_EQ(allocation_trap::allocations(), before + 3);
}

TEST(a_request_of_the_flat_api, allocates_nothing) {
    service_session session;
    session.service.respond_with([](const bytes&) { return std::vector<bytes>{}; });
    vantu_orvanta_context* context = session.context;
    std::int32_t codes = 0;
    const std::uint8_t left = 2;
    EXPECT_EQ(allocations_after_the_first([&] {
                  codes |= vantu_orvanta_device_open(context, 5, 1, 0);
                  codes |= vantu_orvanta_device_close(context, 5, 1);
                  codes |= vantu_orvanta_orientation_get(context, 5, 1);
                  codes |= vantu_orvanta_config_save_request(context, 5, 1);
                  codes |= vantu_orvanta_config_gravity_compensation_get(context, 5, 1);
                  codes |= vantu_orvanta_config_gravity_compensation_set(context, 5, 1, &gravity);
                  codes |= vantu_orvanta_config_torque_scaling_get(context, 5, 1);
                  codes |= vantu_orvanta_config_torque_scaling_set(context, 5, 1, &torque);
                  codes |= vantu_orvanta_config_handedness_set(context, 5, 1, &left);
              }),
              0U);
    EXPECT_EQ(codes, vantu_orvanta_success);
}

TEST(telling_a_traffic_sink, allocates_nothing) {
    service_session session;
    session.service.respond_with([](const bytes& request) {
        return std::vector<bytes>{datagram({op(64, request.at(10), {5, 0, 0, 0, 1})})};
    });
    int told = 0;
    const auto count = [](void* user_data, const vantu_orvanta_traffic*) { ++*static_cast<int*>(user_data); };
    ASSERT_EQ(vantu_orvanta_traffic_sink_set(session.context, count, &told), vantu_orvanta_success);
    std::int32_t codes = 0;
    EXPECT_EQ(allocations_after_the_first([&] {
                  codes |= vantu_orvanta_config_save_request(session.context, 5, 1);
                  vantu_orvanta_event event{};
                  while (codes == 0 && event.event_type == 0) {
                      codes |= vantu_orvanta_poll(session.context, &event);
                  }
              }),
              0U);
    EXPECT_EQ(codes, vantu_orvanta_success);
    EXPECT_EQ(told, 2 * (repetitions + 1));
    ASSERT_EQ(vantu_orvanta_traffic_sink_set(session.context, nullptr, nullptr), vantu_orvanta_success);
}

TEST(an_empty_poll, allocates_nothing) {
    service_session session;
    vantu_orvanta_event event;
    std::int32_t codes = 0;
    EXPECT_EQ(allocations_after_the_first([&] { codes |= vantu_orvanta_poll(session.context, &event); }), 0U);
    EXPECT_EQ(codes, vantu_orvanta_success);
}

TEST(a_wait, allocates_nothing_and_neither_do_its_handle_and_its_wake) {
    service_session session;
    std::intptr_t handle = 0;
    std::uint64_t due_ns = 0;
    std::int32_t codes = 0;
    EXPECT_EQ(allocations_after_the_first([&] {
                  codes |= vantu_orvanta_wait_handle(session.context, &handle);
                  codes |= vantu_orvanta_wake(session.context);
                  codes |= vantu_orvanta_wait(session.context, 0);
                  codes |= vantu_orvanta_next_due(session.context, &due_ns);
              }),
              0U);
    EXPECT_EQ(codes, vantu_orvanta_success);
}

// One operation of each kind that the service sends to a connected client, but for its goodbye.
bytes operations_of_every_kind() {
    const bytes id = u32(5);
    return datagram({op(2, 9),
                     device_listed(5, 1),
                     op(23, 0, join({id, filled(9, 1)})),
                     device_listed(6, 2),
                     op(24, 0, join({u32(6), filled(8, 1)})),
                     op(33, 0, join({id, filled(24, 1)})),
                     op(37, 0, join({id, filled(24, 1)})),
                     op(40, 0, join({u32(6), filled(17, 1), {8}, filled(8, 1)})),
                     op(19, 9, id),
                     op(21, 9, id),
                     op(22, 9, join({id, filled(16, 1)})),
                     op(47, 9, join({id, filled(16, 1)})),
                     op(64, 9, join({id, {1}})),
                     op(66, 9, join({id, filled(5, 1)})),
                     op(68, 9, join({id, {1}})),
                     op(70, 9, join({id, {1}})),
                     op(80, 9, join({id, filled(12, 1)})),
                     op(81, 9, join({id, {1}})),
                     op(96, 9, filled(128, 1)),
                     op(97, 9, filled(301, 1)),
                     op(224, 0, filled(12, 1)),
                     op(225, 0, join({id, filled(48, 1)})),
                     op(240, 9, join({id, {0xB1}}))});
}
constexpr int kinds = 23;

TEST(receiving_and_dispatching, allocates_nothing_for_events_of_every_kind) {
    int calls = 0;
    // Captures more than a std::function holds without the heap, so that a copy of it would show.
    std::array<int*, 4> large{&calls, &calls, &calls, &calls};
    const auto count_device = [large](client&, unsigned) { ++*large[3]; };
    const auto count_record = [large](client&, unsigned, const auto&) { ++*large[3]; };
    client::config config;
    config.on_ack = count_device;
    config.on_device = count_record;
    config.on_device_opened = count_device;
    config.on_device_closed = count_device;
    config.on_orvanta3_info = count_record;
    config.on_palmetron_info = count_record;
    config.on_device_block = count_record;
    config.on_cursor_state = count_record;
    config.on_cursor_state_b = count_record;
    config.on_palmetron_state = count_record;
    config.on_orientation = count_record;
    config.on_config_save = count_record;
    config.on_config_gravity_compensation = count_record;
    config.on_config_torque_scaling = count_record;
    config.on_config_handedness = count_record;
    config.on_status_motor_current = count_record;
    config.on_status_power_supply = count_record;
    config.on_service_stream_a = [large](client&, const auto&) { ++*large[3]; };
    config.on_service_stream_b = count_record;
    config.on_table_block_128 = count_record;
    config.on_table_block_301 = count_record;
    config.on_error = count_record;
    client_session session(std::move(config));
    const bytes packed = operations_of_every_kind();
    ASSERT_LE(packed.size(), 2048U);
    // One for the first of each kind, the others for the count.
    for (int i = 0; i <= repetitions; ++i) {
        session.service().push(packed);
    }
    vantu_orvanta_event event;
    EXPECT_EQ(allocations_after_the_first([&] {
                  for (int i = 0; i < kinds; ++i) {
                      static_cast<void>(vantu_orvanta_poll(session.client().context(), &event));
                      session.client().dispatch(event);
                  }
              }),
              0U);
    EXPECT_EQ(calls, (repetitions + 1) * kinds);
}

TEST(a_request_with_a_handler, allocates_nothing_and_neither_does_its_reply) {
    client_session session;
    session.service().respond_with([](const bytes& request) {
        return std::vector<bytes>{datagram({op(64, request.at(10), {5, 0, 0, 0, 1})})};
    });
    int calls = 0;
    int failures = 0;
    EXPECT_EQ(allocations_after_the_first([&] {
                  failures +=
                      session.client().config_save(5, [&calls](client&, const auto&) { ++calls; }) != 0;
                  vantu_orvanta_event event{};
                  while (event.event_type == 0) {
                      failures += vantu_orvanta_poll(session.client().context(), &event) != 0;
                  }
                  session.client().dispatch(event);
              }),
              0U);
    EXPECT_EQ(calls, repetitions + 1);
    EXPECT_EQ(failures, 0);
}

TEST(a_removed_device, costs_no_allocation) {
    service_session session;
    session.service.push(datagram({device_listed(5, 1)}));
    EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_device_added);
    for (int i = 0; i <= repetitions; ++i) {
        session.service.push(datagram({op(17, 0, u32(5))}));
    }
    vantu_orvanta_event event;
    EXPECT_EQ(
        allocations_after_the_first([&] { static_cast<void>(vantu_orvanta_poll(session.context, &event)); }),
        0U);
}

} // namespace
