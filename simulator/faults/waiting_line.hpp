// Datagrams that wait to go on, as many as a system's buffers might hold: what comes beyond is lost.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {

inline constexpr std::size_t most_datagrams_waiting = 300'000;
inline constexpr std::size_t most_bytes_waiting = 64U << 20U;

template <typename Datagram> class waiting_line {
  public:
    [[nodiscard]] bool is_full() const noexcept {
        return waiting_.size() >= most_datagrams_waiting || bytes_ >= most_bytes_waiting;
    }

    void add(Datagram&& one) {
        if (!is_full()) {
            bytes_ += one.bytes.size();
            waiting_.push_back(std::move(one));
        }
    }

    [[nodiscard]] std::vector<Datagram> take() {
        bytes_ = 0;
        return std::exchange(waiting_, {});
    }

  private:
    std::vector<Datagram> waiting_;
    std::size_t bytes_{0};
};

} // namespace vantu::orvanta::simulator
