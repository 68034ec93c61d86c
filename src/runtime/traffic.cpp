#include "traffic.hpp"

#include "context.hpp"
#include "network/internet_address.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>

namespace vantu::orvanta {
namespace {

constexpr std::int64_t between_looks_ns = 50'000;

thread_local int sinks_of_this_thread = 0;

vantu_orvanta_traffic_address told_address(const internet_address& numbers) {
    vantu_orvanta_traffic_address told{};
    static_assert(sizeof told.address == sizeof numbers.bytes);
    std::memcpy(told.address, numbers.bytes.data(), sizeof told.address);
    told.port = numbers.port;
    told.version = numbers.version;
    return told;
}

} // namespace

std::int32_t traffic_tap::set(vantu_orvanta_traffic_sink sink, void* user_data) {
    if (sinks_of_this_thread != 0) {
        return vantu_orvanta_invalid_argument;
    }
    const std::lock_guard lock(setting_);
    place* const before = current_.load(std::memory_order_relaxed);
    place* next = nullptr;
    if (sink != nullptr) {
        next = before == places_.data() ? &places_[1] : places_.data();
        next->sink = sink;
        next->user_data = user_data;
    }
    // In one order with tell: it sees that the place is no longer the current one, or the loop sees it
    // inside.
    current_.store(next, std::memory_order_seq_cst);
    while (before != nullptr && before->inside.load(std::memory_order_seq_cst) != 0) {
        platform::sleep_until_ns(platform::steady_now_ns() + between_looks_ns);
    }
    return vantu_orvanta_success;
}

void traffic_tap::tell(const vantu_orvanta_traffic& told) noexcept {
    place* here = current_.load(std::memory_order_seq_cst);
    while (here != nullptr) {
        here->inside.fetch_add(1, std::memory_order_seq_cst);
        place* const now = current_.load(std::memory_order_seq_cst);
        if (now == here) {
            ++sinks_of_this_thread;
            here->sink(here->user_data, &told);
            --sinks_of_this_thread;
        }
        here->inside.fetch_sub(1, std::memory_order_seq_cst);
        if (now == here) {
            return;
        }
        here = now;
    }
}

moment moment_now() noexcept {
    using namespace std::chrono;
    const auto since_1970 = duration_cast<nanoseconds>(system_clock::now().time_since_epoch());
    return {static_cast<std::uint64_t>(platform::steady_now_ns()),
            static_cast<std::uint64_t>(since_1970.count())};
}

void noted_datagram::note_sent(const moment& before, socket_handle from, std::span<const std::byte> bytes,
                               const endpoint& to) {
    note(before, vantu_orvanta_traffic_sent, from, bytes);
    told_.peer = told_address(internet_address_of(to.address, to.length));
}

void noted_datagram::note_received(socket_handle at, const receive_record& record) {
    const bool dropped = record.dropped.length != 0;
    const std::byte* first = dropped ? record.buffer.unwritten() : record.buffer.unread();
    note(moment_now(), vantu_orvanta_traffic_received, at,
         {first, dropped ? record.dropped.length : record.buffer.read_len()});
    if (dropped) {
        told_.whole_length = record.dropped.whole;
    }
    told_.peer = told_address(internet_address_of(record.from, record.from_length));
}

void noted_datagram::note(const moment& when, std::uint32_t way, socket_handle local,
                          std::span<const std::byte> bytes) {
    told_.size = sizeof told_;
    told_.steady_ns = when.steady_ns;
    told_.system_ns = when.system_ns;
    told_.length = std::min(bytes.size(), bytes_.size());
    std::copy_n(bytes.begin(), told_.length, bytes_.begin());
    told_.whole_length = told_.length;
    told_.way = way;
    told_.local = told_address(local_address_of(local));
}

void noted_datagram::tell(traffic_tap& to) const noexcept {
    if (told_.size != 0) {
        vantu_orvanta_traffic told = told_;
        told.bytes = reinterpret_cast<const std::uint8_t*>(bytes_.data());
        to.tell(told);
    }
}

} // namespace vantu::orvanta

using namespace vantu::orvanta;

std::int32_t vantu_orvanta_traffic_sink_set(vantu_orvanta_context* context, vantu_orvanta_traffic_sink sink,
                                            void* user_data) {
    return context == nullptr ? vantu_orvanta_invalid_argument : context->traffic.set(sink, user_data);
}
