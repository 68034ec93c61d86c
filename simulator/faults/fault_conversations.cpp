#include "simulator/faults/fault_conversations.hpp"

#include "simulator/faults/fault_datagrams.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <algorithm>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

// Beyond these the oldest are forgotten, so that nobody can fill the memory.
constexpr std::size_t most_known = 512;
constexpr std::size_t most_awaited = 256;
constexpr std::size_t most_answers = 256;

template <typename Element> void keep_latest(std::deque<Element>& elements, std::size_t most) {
    while (elements.size() > most) {
        elements.pop_front();
    }
}

} // namespace

conversations::conversation* conversations::find(const peer& who) {
    const auto found = std::find_if(known_.rbegin(), known_.rend(),
                                    [&who](const conversation& one) { return same_peer(one.with, who); });
    return found != known_.rend() ? &*found : nullptr;
}

conversations::conversation& conversations::with(const peer& who) {
    if (conversation* const known = find(who); known != nullptr) {
        return *known;
    }
    known_.push_back({who, 0, {}});
    keep_latest(known_, most_known);
    return known_.back();
}

void conversations::note_requests(const peer& from, std::span<const std::byte> datagram) {
    for (const operation_place& place : operations_in(datagram)) {
        const operation* const row = find_operation(place.code, direction::to_service);
        if (row != nullptr && row->answered_by != op_code::none) {
            auto& waiting = with(from).waiting;
            waiting.push_back({row->answered_by, place.tag});
            keep_latest(waiting, most_awaited);
        }
    }
}

std::optional<std::uint8_t> conversations::note_answers(const peer& to, std::span<const std::byte> datagram) {
    conversation* const own = find(to);
    if (own == nullptr) {
        return std::nullopt; // it has asked for nothing
    }
    std::optional<std::uint8_t> first;
    for (const operation_place& place : operations_in(datagram)) {
        if (place.code == op_code::connected) {
            own->session = ++sessions_;
        }
        const auto answered =
            std::find_if(own->waiting.begin(), own->waiting.end(), [&place](const awaited& one) {
                return one.tag == place.tag &&
                       (one.code == place.code || place.code == op_code::service_error);
            });
        if (answered != own->waiting.end()) {
            own->waiting.erase(answered);
            first = first.value_or(place.code);
        }
    }
    if (first.has_value()) {
        answers_.push_back({to, own->session, *first, {datagram.begin(), datagram.end()}});
        keep_latest(answers_, most_answers);
    }
    return first;
}

const datagram_bytes* conversations::earlier_answer(const peer& to, std::uint8_t code) {
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
