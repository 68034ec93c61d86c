#include "sessions/virtual_world.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

constexpr int first_port = 40'000;

// As many small datagrams as the system's default receive buffer keeps.
constexpr std::size_t receive_buffer = 256;

virtual_world* current_world = nullptr;

simulator::peer peer_at(int port) {
    simulator::peer made;
    made.address.length = sizeof port;
    std::memcpy(made.address.address.bytes, &port, sizeof port);
    return made;
}

int port_of(const simulator::peer& one) {
    int port = 0;
    std::memcpy(&port, one.address.address.bytes, sizeof port);
    return port;
}

} // namespace

virtual_world::virtual_world(simulator::simulation& service) : service_(service) {
    current_world = this;
}

virtual_world::~virtual_world() {
    current_world = nullptr;
}

virtual_world& virtual_world::current() {
    if (current_world == nullptr) {
        throw std::logic_error("the library used a socket outside a session");
    }
    return *current_world;
}

void virtual_world::advance_to(std::int64_t when_ns) {
    now_ns_ = std::max(now_ns_, when_ns);
    service_.advance_to(now_ns_);
    collect();
}

int virtual_world::open(int port) {
    if (port == 0) {
        for (port = first_port; open_ports_.count(port) != 0;) {
            ++port;
        }
    }
    return open_ports_.try_emplace(port).second ? port : -1;
}

void virtual_world::close(int port) {
    open_ports_.erase(port);
}

void virtual_world::send(int from_port, octets bytes) {
    sent_.emplace_back(bytes.begin(), bytes.end());
    service_.receive(peer_at(from_port), bytes);
    collect();
}

void virtual_world::await_datagram(int port, std::int64_t deadline_ns) {
    while (!has_datagram(port) && now_ns_ < deadline_ns) {
        // A tick at the least, so that time goes on whatever is due.
        advance_to(
            std::min(deadline_ns, std::max(service_.next_due_ns(), now_ns_ + simulator::simulation_tick_ns)));
    }
}

packet virtual_world::take_datagram(int port) {
    std::deque<packet>& waiting = open_ports_.at(port);
    taken_.push_back(std::move(waiting.front()));
    waiting.pop_front();
    return taken_.back();
}

void virtual_world::collect() {
    for (simulator::departure& one : service_.take_outgoing()) {
        const auto found = open_ports_.find(port_of(one.to));
        if (found != open_ports_.end() && found->second.size() < receive_buffer) {
            found->second.push_back(std::move(one.bytes));
        }
    }
}

} // namespace orvanta_tests
