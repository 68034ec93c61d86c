// A simulator in virtual time with a relay before it, which changes what passes: services that are wrong in
// ways that the simulator's faults do not know.
#pragma once

#include "conformance/surroundings.hpp"
#include "support/udp_socket.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orvanta_tests {

// Gets each datagram of one direction and returns those that pass on in its place. A copy begins anew.
using tamper = std::function<std::vector<bytes>(const bytes& datagram)>;

struct wrongs {
    std::vector<std::string> faults{}; // lines of the simulator's console
    tamper to_service{};
    tamper to_client{};
    // The client whose datagrams are tampered with, counted from 1 by their first datagrams; 0: each.
    std::size_t client{0};
};

class tampered_service {
  public:
    explicit tampered_service(const wrongs& wrong = {},
                              vantu::orvanta::service_simulator::settings settings = {});
    tampered_service(const tampered_service&) = delete;
    tampered_service& operator=(const tampered_service&) = delete;

    // The relay's address, the simulator's clock, and short times.
    [[nodiscard]] vantu::orvanta::conformance::surroundings surroundings();

    [[nodiscard]] vantu::orvanta::service_simulator& simulator() { return simulator_; }

  private:
    struct passage {
        udp_address client;
        udp_socket socket; // towards the simulator
    };

    bool relay();
    void sleep(std::int64_t deadline_ns);
    [[nodiscard]] std::vector<bytes> passed(const tamper& by, std::size_t client,
                                            const bytes& datagram) const;
    std::size_t passage_of(const udp_address& client);

    wrongs wrong_;
    vantu::orvanta::service_simulator simulator_;
    udp_socket front_;
    udp_address service_;
    std::vector<passage> passages_;
};

} // namespace orvanta_tests
