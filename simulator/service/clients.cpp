#include "simulator/service/clients.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {

open_device* client::find_opened(std::uint32_t device_id) noexcept {
    const auto found = std::find_if(opened.begin(), opened.end(),
                                    [device_id](const open_device& one) { return one.id == device_id; });
    return found == opened.end() ? nullptr : &*found;
}

std::int64_t client::alive_until_ns() const noexcept {
    const auto left = static_cast<std::uint64_t>(never_ns) - static_cast<std::uint64_t>(last_heard_ns);
    if (keep_alive_ns == 0 || keep_alive_ns >= left) {
        return never_ns;
    }
    return last_heard_ns + static_cast<std::int64_t>(keep_alive_ns);
}

client* client_registry::find(const peer& who) noexcept {
    const auto found = std::find_if(clients_.begin(), clients_.end(),
                                    [&who](const client& one) { return same_peer(one.address, who); });
    return found == clients_.end() ? nullptr : &*found;
}

client& client_registry::admit(const peer& who) {
    client* known = find(who);
    const std::uint64_t id = known != nullptr ? known->id : next_id_++;
    client& admitted = known != nullptr ? *known : clients_.emplace_back();
    admitted = client{};
    admitted.id = id;
    admitted.address = who;
    return admitted;
}

void client_registry::forget(const peer& who) {
    forgotten_ += std::erase_if(clients_, [&who](const client& one) { return same_peer(one.address, who); });
}

bool client_registry::take_silent(std::int64_t now_ns, client& taken) {
    const auto found = std::find_if(clients_.begin(), clients_.end(),
                                    [now_ns](const client& one) { return one.alive_until_ns() < now_ns; });
    if (found == clients_.end()) {
        return false;
    }
    taken = std::move(*found);
    clients_.erase(found);
    ++forgotten_;
    return true;
}

} // namespace vantu::orvanta::simulator
