// The doctor's handshake with nobody, which Linux tells.
#include "ctl/doctor/handshake.hpp"
#include "ctl/doctor/probe_socket.hpp"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace vantu::orvanta::ctl;

TEST(handshake, meets_a_closed_port_without_waiting) {
    const auto start = std::chrono::steady_clock::now();
    const handshake_view seen = shake_hands("127.0.0.1", 54321, 60s);
    EXPECT_EQ(seen.answer.kind, answer_kind::closed_port);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 60s);
}

TEST(handshake, is_not_sent_from_a_port_that_is_taken) {
    const probe_socket taken("127.0.0.1", 54321);
    const handshake_view seen = shake_hands("127.0.0.1", 54321, 60s);
    EXPECT_EQ(seen.answer.kind, answer_kind::not_sent);
    EXPECT_EQ(seen.answer.raw, "Address already in use");
}

} // namespace
