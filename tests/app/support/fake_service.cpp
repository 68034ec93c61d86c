// A service in the test process.
#include "app/support/fake_service.hpp"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::uint8_t keep_alive_code = 1;
constexpr std::uint8_t connect_code = 3;
constexpr std::uint8_t disconnect_code = 5;
constexpr std::size_t code_offset = 7;
constexpr auto longest_wait = std::chrono::minutes(1);

} // namespace

fake_service::fake_service(std::uint16_t port)
    : service_(std::to_string(port), {"127.0.0.1", "::1"},
               [this](const bytes& datagram) { return take(datagram); }) {}

void fake_service::answer(std::uint8_t code, bytes datagram) {
    const std::lock_guard lock(mutex_);
    answers_[code] = std::move(datagram);
}

void fake_service::accept_with(const std::string& operations) {
    answer(connect_code, datagram(operations + accepted));
    answer(disconnect_code, datagram(disconnected));
}

bytes fake_service::next(std::uint8_t code) {
    std::unique_lock lock(mutex_);
    std::deque<bytes>& queue = waiting_[code];
    if (!arrived_.wait_for(lock, longest_wait, [&] { return !queue.empty(); })) {
        throw std::runtime_error("no datagram with code " + std::to_string(code));
    }
    bytes result = std::move(queue.front());
    queue.pop_front();
    return result;
}

datagrams fake_service::first_requests(std::size_t count) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, longest_wait, [&] { return requests_.size() >= count; })) {
        throw std::runtime_error("only " + std::to_string(requests_.size()) + " datagrams came");
    }
    return requests_;
}

datagrams fake_service::requests() {
    return first_requests(0);
}

datagrams fake_service::take(const bytes& datagram) {
    const std::uint8_t code = datagram.size() > code_offset ? datagram[code_offset] : std::uint8_t{0};
    const std::lock_guard lock(mutex_);
    if (code != keep_alive_code) {
        requests_.push_back(datagram);
    }
    waiting_[code].push_back(datagram);
    arrived_.notify_all();
    const auto found = answers_.find(code);
    return found == answers_.end() ? datagrams{} : datagrams{found->second};
}

} // namespace orvanta_tests
