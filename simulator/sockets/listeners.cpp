#include "simulator/sockets/listeners.hpp"

#include "network/internet_address.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <stdexcept>

namespace vantu::orvanta::simulator {
namespace {

constexpr const char* ipv4_host = listener_hosts[0];
constexpr const char* ipv6_host = listener_hosts[1];

bool system_has_ipv6() {
    opened_socket probe = open_bound_socket(ipv6_host, "0");
    const bool has = probe.status == socket_status::ok;
    close_socket(probe.socket);
    return has;
}

} // namespace

listeners::listeners(const std::string& port) {
    // A free port of one address may be taken on the other; another one will do.
    const int attempts = port == "0" ? 32 : 1;
    std::string refused_host;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        refused_host = try_open(port);
        if (refused_host.empty()) {
            return;
        }
        close_all();
    }
    throw std::runtime_error(formatted(
        "cannot listen on {} port {}: another program holds it, or it is not allowed", refused_host, port));
}

listeners::~listeners() {
    close_all();
}

// Returns the host that cannot be had, or an empty text.
std::string listeners::try_open(const std::string& port) {
    const opened_socket ipv4 = open_bound_socket(ipv4_host, port);
    if (ipv4.status != socket_status::ok) {
        return ipv4_host;
    }
    sockets_.push_back(ipv4.socket);
    port_ = std::to_string(local_address_of(ipv4.socket).port);
    const opened_socket ipv6 = open_bound_socket(ipv6_host, port_);
    if (ipv6.status == socket_status::ok) {
        sockets_.push_back(ipv6.socket);
        return {};
    }
    return system_has_ipv6() ? ipv6_host : "";
}

void listeners::close_all() {
    for (socket_handle& socket : sockets_) {
        close_socket(socket);
    }
    sockets_.clear();
}

} // namespace vantu::orvanta::simulator
