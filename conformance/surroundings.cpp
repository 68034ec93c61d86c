#include "conformance/surroundings.hpp"

#include "conformance/visitor.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <array>
#include <stdexcept>

namespace vantu::orvanta::conformance {
namespace {

using namespace communication;

constexpr int first_client_port = 54321;
constexpr int client_port_count = 16;

} // namespace

pace real_pace() {
    return {platform::steady_now_ns, [](socket_handle socket, std::int64_t deadline_ns) {
                (void)wait_for_packets(std::array{socket}, deadline_ns);
            }};
}

surroundings surroundings_of(const std::string& service_port) {
    const resolved_endpoint service = resolve_address("localhost", service_port);
    if (service.status != socket_status::ok) {
        throw std::runtime_error("localhost has no address");
    }
    surroundings around;
    around.service = service.address;
    for (int i = 0; i < client_port_count; ++i) {
        around.client_ports.push_back(std::to_string(first_client_port + i));
    }
    return around;
}

void expect_service(surroundings& around) {
    visitor first(around);
    (void)first.try_connect();
    if (has_no_room(first.answer_to_connect())) {
        throw std::runtime_error("the service has no room for another client: " +
                                 text_of(first.answer_to_connect()));
    }
    first.send(datagram_of(op_code::disconnect, 0));
    first.listen(first.datagrams() == 0 ? around.answer_time_ns : 0);
    if (first.datagrams() + first.refused_datagrams() == 0) {
        throw std::runtime_error("nobody answers at the port");
    }
}

} // namespace vantu::orvanta::conformance
