#include "ctl/replay/replay.hpp"

#include "ctl/replay/played_client.hpp"
#include "shared/datagram_operations.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <tuple>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

using namespace communication;

constexpr std::uint16_t usual_service_port = 54320;

bool asks_for_a_connection(std::span<const std::byte> datagram) {
    const auto first = find_operation_in(datagram, std::nullopt);
    return has_the_header(datagram) && first && first->code == op_code::connect &&
           first->body_size == body_size_of(op_code::connect, direction::to_service);
}

} // namespace

bool capture_replay::by_place::operator()(const socket_place& a, const socket_place& b) const {
    return std::tie(a.is_ipv6, a.address, a.port) < std::tie(b.is_ipv6, b.address, b.port);
}

capture_replay::capture_replay(replay_listener told) : told_(std::move(told)) {}

capture_replay::~capture_replay() = default;

void capture_replay::play(const captured_datagram& one) {
    if (!std::exchange(has_begun_, true)) {
        first_ns_ = one.time_ns;
    }
    const std::int64_t time_ns = one.time_ns - first_ns_;
    if (asks_for_a_connection(one.bytes)) {
        services_.insert(one.to);
        client_at(one.from).send_connect();
    } else if (is_service(one.to)) {
        if (find_operation_in(one.bytes, op_code::disconnect)) {
            client_at(one.from).send_goodbye(time_ns);
        }
    } else if (is_service(one.from) || clients_.contains(one.to)) {
        client_at(one.to).receive(time_ns, one.bytes, [&](replayed_outcome outcome) {
            told_({time_ns, one.to, std::move(outcome)});
        });
    } else {
        ++counts_.others;
    }
}

bool capture_replay::is_service(const socket_place& place) const {
    return place.port == usual_service_port || services_.contains(place);
}

played_client& capture_replay::client_at(const socket_place& place) {
    std::unique_ptr<played_client>& found = clients_[place];
    if (found == nullptr) {
        found = std::make_unique<played_client>(counts_);
    }
    return *found;
}

} // namespace vantu::orvanta::ctl
