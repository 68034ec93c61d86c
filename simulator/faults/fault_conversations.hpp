// The conversations that pass through the pipeline of faults: each client's requests that wait for an answer,
// and the answers of earlier sessions.
#pragma once

#include "simulator/faults/fault_mutations.hpp"
#include "simulator/service/peer.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta::simulator {

class conversations {
  public:
    // Takes note of the requests in a datagram from a client.
    void note_requests(const peer& from, std::span<const std::byte> datagram);

    // Takes note of a datagram to a client: an acceptance begins a session. Returns the code of the first
    // operation in it that answers a request, and remembers the datagram in that case.
    [[nodiscard]] std::optional<std::uint8_t> note_answers(const peer& to,
                                                           std::span<const std::byte> datagram);

    // The latest answer of a session before the client's present one, its own sessions first, and one of
    // this code first; null where there is none. Valid until the next note.
    [[nodiscard]] const datagram_bytes* earlier_answer(const peer& to, std::uint8_t code);

  private:
    struct awaited {
        std::uint8_t code; // the answer's operation
        std::uint8_t tag;
    };
    struct conversation {
        peer with;
        std::uint64_t session{0};
        std::deque<awaited> waiting;
    };
    struct answer {
        peer to;
        std::uint64_t session;
        std::uint8_t code;
        datagram_bytes bytes;
    };

    [[nodiscard]] conversation& with(const peer& who);
    // Null where it has asked for nothing.
    [[nodiscard]] conversation* find(const peer& who);

    std::deque<conversation> known_;
    std::deque<answer> answers_;
    std::uint64_t sessions_{0};
};

} // namespace vantu::orvanta::simulator
