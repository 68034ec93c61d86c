// The events of the service that no client asks for: devices come and go, connections end.
#include "simulator/service/service.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

void service::say_goodbye() {
    while (!clients_.all().empty()) {
        const peer to = clients_.all().front().address;
        say_goodbye_to(to);
    }
}

void service::say_goodbye_to(const peer& who) {
    if (const client* known = clients_.find(who); known != nullptr) {
        tell(formatted("client {}: told goodbye", known->id));
        out_.send<op_code::disconnected>(who, 0, {});
        clients_.forget(who);
    }
}

void service::restart(std::vector<device> devices) {
    tell(formatted("restarted, clients forgotten: {}", clients_.all().size()));
    clients_.forget_all();
    devices_ = std::move(devices);
}

bool service::plug(const device& which) {
    if (find_device(devices_, which.id) != nullptr) {
        return false;
    }
    const auto behind = std::find_if(devices_.begin(), devices_.end(),
                                     [&which](const device& one) { return one.id > which.id; });
    devices_.insert(behind, which);
    tell(formatted("device {}: plugged in", which.id));
    announce_device(out_, clients_.all(), which);
    return true;
}

bool service::unplug(std::uint32_t device_id) {
    const auto is_meant = [device_id](const auto& one) { return one.id == device_id; };
    if (std::erase_if(devices_, is_meant) == 0) {
        return false;
    }
    tell(formatted("device {}: unplugged", device_id));
    for (client& one : clients_.all()) {
        std::erase_if(one.opened, is_meant);
        out_.send<op_code::device_removed>(one.address, 0, {device_id});
    }
    return true;
}

bool service::configure(std::uint32_t device_id, const configuration& settings) {
    device* which = find_device(devices_, device_id);
    if (which == nullptr) {
        return false;
    }
    const bool other_hand = which->settings.handedness != settings.handedness;
    which->settings = settings;
    tell(formatted("device {}: configured", device_id));
    if (other_hand && which->is_orvanta3()) {
        send_orvanta3_details(out_, clients_.all(), *which);
    }
    return true;
}

} // namespace vantu::orvanta::simulator
