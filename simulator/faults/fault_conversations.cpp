// What the stage of faults knows of each client.
#include "simulator/faults/fault_conversations.hpp"

#include "simulator/faults/fault_datagrams.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

// Beyond these the oldest are forgotten, so that nobody can fill the memory.
constexpr std::size_t most_known = 512;
constexpr std::size_t most_awaited = 256;
constexpr std::size_t most_answers = 256;

struct answered_by {
    std::uint8_t request;
    std::uint8_t answer;
};
constexpr std::array answers{
    answered_by{op_code::connect, op_code::connected},
    answered_by{op_code::disconnect, op_code::disconnected},
    answered_by{op_code::device_open, op_code::device_opened},
    answered_by{op_code::device_close, op_code::device_closed},
    answered_by{op_code::orientation_get, op_code::orientation_get},
    answered_by{op_code::config_save, op_code::config_save},
    answered_by{op_code::config_gravity_compensation_get, op_code::config_gravity_compensation_get},
    answered_by{op_code::config_gravity_compensation_set, op_code::config_gravity_compensation_get},
    answered_by{op_code::config_torque_scaling_get, op_code::config_torque_scaling_get},
    answered_by{op_code::config_torque_scaling_set, op_code::config_torque_scaling_get},
    answered_by{op_code::config_handedness_set, op_code::config_handedness}};

// Every operation to the service but the keep-alive is a request.
consteval bool every_request_has_its_answer() {
    std::size_t requests = 0;
    for (const operation& row : operations) {
        if (row.way == direction::to_service && row.code != op_code::keep_alive) {
            ++requests;
        }
    }
    for (const answered_by& pair : answers) {
        (void)body_size_of(pair.request, direction::to_service);
        (void)body_size_of(pair.answer, direction::to_client);
    }
    return requests == answers.size();
}
static_assert(every_request_has_its_answer());

template <typename Element> void keep_latest(std::deque<Element>& elements, std::size_t most) {
    while (elements.size() > most) {
        elements.pop_front();
    }
}

} // namespace

const conversations::conversation* conversations::find(const peer& who) const {
    const auto found = std::find_if(known_.rbegin(), known_.rend(),
                                    [&who](const conversation& one) { return same_peer(one.with, who); });
    return found != known_.rend() ? &*found : nullptr;
}

conversations::conversation& conversations::with(const peer& who) {
    const auto found = std::find_if(known_.begin(), known_.end(),
                                    [&who](const conversation& one) { return same_peer(one.with, who); });
    if (found != known_.end()) {
        return *found;
    }
    known_.push_back({who, 0, {}});
    keep_latest(known_, most_known);
    return known_.back();
}

void conversations::note_requests(const peer& from, std::span<const std::byte> datagram) {
    for (const operation_place& place : operations_in(datagram)) {
        const auto* const pair =
            std::find_if(answers.begin(), answers.end(),
                         [&place](const answered_by& one) { return one.request == place.code; });
        if (pair != answers.end()) {
            auto& waiting = with(from).waiting;
            waiting.push_back({pair->answer, place.tag});
            keep_latest(waiting, most_awaited);
        }
    }
}

std::optional<std::uint8_t> conversations::note_answers(const peer& to, std::span<const std::byte> datagram) {
    if (find(to) == nullptr) {
        return std::nullopt; // it has asked for nothing
    }
    std::optional<std::uint8_t> first;
    conversation& own = with(to);
    for (const operation_place& place : operations_in(datagram)) {
        if (place.code == op_code::connected) {
            own.session = ++sessions_;
        }
        const auto answered =
            std::find_if(own.waiting.begin(), own.waiting.end(), [&place](const awaited& one) {
                return one.tag == place.tag &&
                       (one.code == place.code || place.code == op_code::service_error);
            });
        if (answered != own.waiting.end()) {
            own.waiting.erase(answered);
            first = first.value_or(place.code);
        }
    }
    if (first.has_value()) {
        answers_.push_back({to, own.session, *first, {datagram.begin(), datagram.end()}});
        keep_latest(answers_, most_answers);
    }
    return first;
}

const datagram_bytes* conversations::earlier_answer(const peer& to, std::uint8_t code) const {
    const conversation* const own = find(to);
    const std::uint64_t session = own != nullptr ? own->session : 0;
    const answer* best = nullptr;
    int best_worth = -1;
    for (const answer& one : answers_) {
        const int worth = (same_peer(one.to, to) ? 2 : 0) + (one.code == code ? 1 : 0);
        if (one.session < session && worth >= best_worth) {
            best = &one;
            best_worth = worth;
        }
    }
    return best != nullptr ? &best->bytes : nullptr;
}

} // namespace vantu::orvanta::simulator
