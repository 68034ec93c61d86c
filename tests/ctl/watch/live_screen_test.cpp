// How one block is drawn over another.
#include "ctl/watch/live_screen.hpp"

#include <gtest/gtest.h>

namespace {

using vantu::orvanta::ctl::live_screen;

TEST(the_screen, is_written_below_what_is_there_and_then_over_itself) {
    live_screen screen;
    EXPECT_EQ(screen.redraw({"one", "two"}, 80, 24), "one\x1b[K\ntwo\x1b[K\n\x1b[J");
    EXPECT_EQ(screen.redraw({"three"}, 80, 24), "\r\x1b[2Athree\x1b[K\n\x1b[J");
    EXPECT_EQ(screen.redraw({"four"}, 80, 24), "\r\x1b[1Afour\x1b[K\n\x1b[J");
}

TEST(the_screen, is_cleared_when_the_terminal_has_another_size) {
    live_screen screen;
    (void)screen.redraw({"one"}, 80, 24);
    EXPECT_EQ(screen.redraw({"two"}, 40, 24), "\x1b[H\x1b[Jtwo\x1b[K\n\x1b[J");
    EXPECT_EQ(screen.redraw({"two"}, 40, 20), "\x1b[H\x1b[Jtwo\x1b[K\n\x1b[J");
    EXPECT_EQ(screen.redraw({"two"}, 40, 20), "\r\x1b[1Atwo\x1b[K\n\x1b[J");
}

} // namespace
