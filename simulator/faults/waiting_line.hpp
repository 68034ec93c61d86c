// Datagrams that wait to go on, as many as a system's buffers might hold: what comes beyond is lost.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {

[[nodiscard]] constexpr bool leaves_no_room(std::size_t datagrams, std::size_t bytes) {
    constexpr std::size_t most_datagrams = 300'000;
    constexpr std::size_t most_bytes = 64U << 20U;
    return datagrams >= most_datagrams || bytes >= most_bytes;
}

template <typename Datagram> class waiting_line {
  public:
    [[nodiscard]] bool is_full() const noexcept { return leaves_no_room(waiting_.size(), bytes_); }

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
