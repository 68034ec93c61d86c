#include "ctl/doctor/machine_checks.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <system_error>

namespace vantu::orvanta::ctl {
namespace {

constexpr const char* loopback_name = "loopback";
constexpr const char* service_port_name = "service-port";
constexpr const char* client_ports_name = "client-ports";
constexpr const char* versions_name = "versions";

constexpr const char* four = "127.0.0.1";
constexpr const char* six = "::1";

constexpr std::size_t comfortable_ports = 4;
constexpr std::uint32_t minor_and_patch_bits = 16;

std::string failure_of_a_datagram_to_oneself(const char* address, probe_socket::time_point until) {
    try {
        probe_socket socket(address, 0);
        socket.connect(address, socket.port());
        constexpr std::array sent{std::byte{'l'}, std::byte{'o'}};
        socket.send(sent);
        const reception came = socket.receive(until);
        switch (came.kind) {
        case reception_kind::datagram:
            return std::equal(sent.begin(), sent.end(), came.bytes.begin(), came.bytes.end())
                       ? ""
                       : "another datagram came than was sent";
        case reception_kind::silence:
            return "a datagram sent there did not arrive";
        case reception_kind::closed_port:
            return "the port of an open socket is told to be closed";
        case reception_kind::refused:
            return came.refusal;
        }
        return came.refusal;
    } catch (const std::system_error& refused) {
        return refused.code().message();
    }
}

const std::string& failure_at(const loopback_view& seen, const std::string& address) {
    return address == six ? seen.failure_of_six : seen.failure_of_four;
}

std::string names_of(const resolution& localhost) {
    return "localhost is " + enumerated(localhost.addresses);
}

} // namespace

loopback_view look_at_loopback(std::chrono::nanoseconds time) {
    const auto begin = std::chrono::steady_clock::now();
    loopback_view seen;
    seen.localhost = resolve("localhost");
    seen.failure_of_four = failure_of_a_datagram_to_oneself(four, begin + time / 2);
    seen.failure_of_six = failure_of_a_datagram_to_oneself(six, begin + time);
    return seen;
}

finding check_loopback(const loopback_view& seen) {
    if (seen.localhost.addresses.empty()) {
        return failed(loopback_name, exit_status::refused,
                      "the name localhost is not known: " + seen.localhost.refusal,
                      "put the line '127.0.0.1 localhost' into the system's hosts file");
    }
    const std::string& used = seen.localhost.addresses.front();
    if (used != four && used != six) {
        return failed(loopback_name, exit_status::refused,
                      names_of(seen.localhost) + ", and the first is not of this machine's loopback",
                      "let localhost be 127.0.0.1 in the system's hosts file");
    }
    if (const std::string& failure = failure_at(seen, used); !failure.empty()) {
        return failed(loopback_name, exit_status::refused,
                      formatted("{}, and {} carries nothing: {}", names_of(seen.localhost), used, failure),
                      "bring the loopback interface up, and let the packet filter pass UDP there");
    }
    const std::string other = used == four ? six : four;
    const std::string& failure = failure_at(seen, other);
    const auto& named = seen.localhost.addresses;
    if (failure.empty()) {
        return passed(loopback_name, names_of(seen.localhost) + "; 127.0.0.1 and ::1 carry datagrams");
    }
    if (std::find(named.begin(), named.end(), other) == named.end()) {
        return passed(loopback_name, formatted("{}, which carries datagrams; {} does not, and is not needed",
                                               names_of(seen.localhost), other));
    }
    return warned(loopback_name,
                  formatted("{}; {} carries nothing: {}", names_of(seen.localhost), other, failure),
                  formatted("as long as localhost is {} first this does no harm; else take {} out of the "
                            "system's hosts file",
                            used, other));
}

finding check_service_port(const std::optional<std::vector<port_holder>>& holders,
                           const std::string& address) {
    if (!holders) {
        return warned(service_port_name,
                      formatted("the system does not tell who holds UDP port {}", service_port),
                      "see whether the handshake below brings an answer");
    }
    if (holders->empty()) {
        return failed(service_port_name, exit_status::no_service,
                      formatted("nobody holds UDP port {}", service_port),
                      "start the device service, or orvanta-simulator where there is no device");
    }
    const std::string seen = formatted("UDP port {} is held by {} on {}", service_port,
                                       processes_of(*holders), addresses_of(*holders));
    const bool is_heard = std::any_of(holders->begin(), holders->end(), [&](const port_holder& holder) {
        return address.empty() || listens_at(holder, address);
    });
    if (!is_heard) {
        return failed(service_port_name, exit_status::no_service,
                      formatted("{}, but localhost is {} first", seen, address),
                      formatted("let the service listen on {} too, or let localhost be {} first (hosts file; "
                                "on Linux also /etc/gai.conf)",
                                address, addresses_of(*holders)));
    }
    return passed(service_port_name, seen);
}

std::vector<std::uint16_t> taken_client_ports(const std::string& address) {
    std::vector<std::uint16_t> taken;
    for (std::uint16_t port = first_client_port; port <= last_client_port; ++port) {
        try {
            const probe_socket free(address, port);
        } catch (const std::system_error&) {
            taken.push_back(port);
        }
    }
    return taken;
}

finding check_client_ports(const std::vector<std::uint16_t>& taken, const std::vector<port_holder>& holders) {
    const std::string range = formatted("UDP ports {} to {}", first_client_port, last_client_port);
    if (taken.empty()) {
        return passed(client_ports_name, formatted("all of the {} {} are free", client_port_count, range));
    }
    std::vector<port_holder> of_taken;
    std::copy_if(holders.begin(), holders.end(), std::back_inserter(of_taken), [&](const port_holder& one) {
        return std::find(taken.begin(), taken.end(), one.port) != taken.end();
    });
    const std::string by = of_taken.empty() ? "" : ", taken by " + processes_of(of_taken);
    const std::size_t free = client_port_count - taken.size();
    const std::string seen =
        formatted("{} of the {} {} {} free{}", free, client_port_count, range, free == 1 ? "is" : "are", by);
    if (free == 0) {
        return failed(client_ports_name, exit_status::refused, seen,
                      "end one of the programs that hold them: each connection needs a port of its own");
    }
    if (free < comfortable_ports) {
        return warned(client_ports_name, seen,
                      "each connection needs a port of its own: end programs that need none");
    }
    return passed(client_ports_name, seen);
}

finding check_versions(const version_of_code& program, const version_of_code& library) {
    const std::string seen =
        formatted("orvantactl {}, library {}; the protocol does not tell the service's version", program.text,
                  library.text);
    constexpr const char* remedy =
        "install program and library of one version, and see which library the system finds";
    if (program.number >> minor_and_patch_bits != library.number >> minor_and_patch_bits) {
        return failed(versions_name, exit_status::refused, seen, remedy);
    }
    if (library.number < program.number) {
        return warned(versions_name, seen, remedy);
    }
    return passed(versions_name, seen);
}

} // namespace vantu::orvanta::ctl
