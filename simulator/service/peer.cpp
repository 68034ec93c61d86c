// Comparing peers.
#include "simulator/service/peer.hpp"

#include <algorithm>

namespace vantu::orvanta::simulator {

bool same_peer(const peer& left, const peer& right) noexcept {
    const auto& one = left.address.address.bytes;
    const auto& other = right.address.address.bytes;
    const auto used = static_cast<std::size_t>(std::clamp<std::int32_t>(left.address.length, 0, sizeof one));
    return left.listener == right.listener && left.address.length == right.address.length &&
           std::equal(one, one + used, other);
}

} // namespace vantu::orvanta::simulator
