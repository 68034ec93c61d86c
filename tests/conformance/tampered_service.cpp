#include "conformance/tampered_service.hpp"

#include "support/library_sockets.hpp"
#include "vantu/orvanta/common/log.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanta_tests {

using namespace vantu::orvanta;

namespace {

const started_sockets sockets_of_the_program;

// Datagrams that are too long for a buffer are no news here.
struct quiet_log {
    quiet_log() {
        set_log_sink([](std::uint64_t, log_level, const std::string&, std::uint64_t, const std::string&) {});
    }
};
const quiet_log log_of_the_program;

constexpr std::int64_t step_ns = 20'000'000;

service_simulator::settings by_hand(service_simulator::settings settings) {
    settings.manual_clock = true;
    settings.seed = 1;
    return settings;
}

// Another port of the same address: it stands in network order after the family.
udp_address with_port(udp_address address, const std::string& port) {
    const int number = std::stoi(port);
    address.storage[2] = static_cast<std::byte>(number >> 8);
    address.storage[3] = static_cast<std::byte>(number & 0xFF);
    return address;
}

} // namespace

tampered_service::tampered_service(const wrongs& wrong, service_simulator::settings settings)
    : wrong_(wrong), simulator_(by_hand(std::move(settings))),
      front_(udp_socket::bound_to("localhost", "0").value()),
      service_(with_port(front_.address(), simulator_.port())) {
    for (const std::string& fault : wrong_.faults) {
        simulator_.command(fault);
    }
}

conformance::surroundings tampered_service::surroundings() {
    conformance::surroundings around = conformance::surroundings_of(front_.port());
    around.client_ports = {"0"};
    around.answer_time_ns = 300'000'000;
    around.time = {[this] { return simulator_.now().count(); },
                   [this](socket_handle, std::int64_t deadline_ns) { sleep(deadline_ns); }};
    return around;
}

std::size_t tampered_service::passage_of(const udp_address& client) {
    const auto known = std::find_if(passages_.begin(), passages_.end(),
                                    [&client](const passage& one) { return one.client == client; });
    if (known != passages_.end()) {
        return static_cast<std::size_t>(known - passages_.begin());
    }
    passages_.push_back({client, udp_socket::bound_to("localhost", "0").value()});
    return passages_.size() - 1;
}

std::vector<bytes> tampered_service::passed(const tamper& by, std::size_t client,
                                            const bytes& datagram) const {
    const bool is_meant = wrong_.client == 0 || wrong_.client == client + 1;
    return by && is_meant ? by(datagram) : std::vector<bytes>{datagram};
}

// Whether anything has passed.
bool tampered_service::relay() {
    bool moved = false;
    while (const auto came = front_.receive()) {
        moved = true;
        const std::size_t from = passage_of(came->from);
        for (const bytes& one : passed(wrong_.to_service, from, came->content)) {
            (void)passages_[from].socket.send(one, service_);
        }
    }
    moved = simulator_.serve_waiting() != 0 || moved;
    for (std::size_t to = 0; to < passages_.size(); ++to) {
        while (const auto came = passages_[to].socket.receive()) {
            moved = true;
            for (const bytes& one : passed(wrong_.to_client, to, came->content)) {
                (void)front_.send(one, passages_[to].client);
            }
        }
    }
    return moved;
}

void tampered_service::sleep(std::int64_t deadline_ns) {
    if (relay()) {
        return;
    }
    const std::int64_t left_ns = deadline_ns - simulator_.now().count();
    simulator_.advance(std::chrono::nanoseconds(std::clamp<std::int64_t>(left_ns, 0, step_ns)));
    relay();
}

} // namespace orvanta_tests
