// A device service at its own port that answers as a test says and remembers every request of orvantactl.
// It has device 5, a right-handed Orvanta3 with the uuid 60616263-6465-6667-6869-6a6b6c6d6e6f.
#pragma once

#include "support/bytes.hpp"
#include "support/scripted_service.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace orvanta_tests {

using datagrams = std::vector<bytes>;

class wire_service {
  public:
    wire_service()
        : service_("54320", {"127.0.0.1", "::1"}, [this](const bytes& request) { return take(request); }) {}
    wire_service(const wire_service&) = delete;
    wire_service& operator=(const wire_service&) = delete;

    // The answer to the next request of this code that has none yet, under the request's tag. A request
    // without one is not answered.
    wire_service& answer(std::uint8_t request, std::uint8_t code, const bytes& body) {
        const std::lock_guard lock(mutex_);
        answers_[request].emplace_back(code, body);
        return *this;
    }

    // All that came but connects, keep-alives and goodbyes, and questions for the orientation, by which the
    // library looks for a service that is slow.
    [[nodiscard]] datagrams requests() {
        const std::lock_guard lock(mutex_);
        return requests_;
    }
    [[nodiscard]] std::size_t connects() {
        const std::lock_guard lock(mutex_);
        return connects_;
    }

  private:
    datagrams take(const bytes& request) {
        const std::lock_guard lock(mutex_);
        const std::uint8_t code = request.at(7);
        const std::uint8_t tag = request.at(10);
        const bytes id{5, 0, 0, 0};
        switch (code) {
        case 1:
        case 47:
            return {};
        case 3:
            ++connects_;
            return {
                datagram({op(16, 0, join({id, {1, 7}, u16(0xBEEF), counting(0x60, 16)})),
                          op(23, 0, join({id, counting(0x30, 8), {1}})), op(4, 0, u64(0x1122334455667788))})};
        case 5:
            return {datagram({op(6, 0)})};
        default:
            break;
        }
        requests_.push_back(request);
        if (code == 18) {
            return {datagram({op(19, tag, id)})};
        }
        std::deque<std::pair<std::uint8_t, bytes>>& waiting = answers_[code];
        if (waiting.empty()) {
            return {};
        }
        const auto [answer_code, body] = waiting.front();
        waiting.pop_front();
        return {datagram({op(answer_code, tag, join({id, body}))})};
    }

    std::mutex mutex_;
    std::map<std::uint8_t, std::deque<std::pair<std::uint8_t, bytes>>> answers_;
    datagrams requests_;
    std::size_t connects_{0};

    scripted_service service_; // its thread ends before the rest goes
};

} // namespace orvanta_tests
