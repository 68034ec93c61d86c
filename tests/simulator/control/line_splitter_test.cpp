// Lines out of bytes, in pieces cut anywhere.
#include "simulator/control/line_splitter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vantu::orvanta::simulator::line_splitter;

TEST(lines, end_in_either_way_wherever_the_bytes_are_cut) {
    const std::string bytes = "drop 0.3\r\n\nheal\nwait 5\r\nqu\rit\n";
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        line_splitter tested;
        std::vector<std::string> lines = tested.take(std::string_view(bytes).substr(0, first));
        for (std::string& line : tested.take(std::string_view(bytes).substr(first))) {
            lines.push_back(std::move(line));
        }
        EXPECT_THAT(lines, ElementsAre("drop 0.3", "", "heal", "wait 5", "qu\rit")) << first;
        EXPECT_THAT(tested.end(), IsEmpty());
    }
}

TEST(lines, wait_for_their_end_or_that_of_the_bytes) {
    line_splitter tested;
    EXPECT_THAT(tested.take("he"), IsEmpty());
    EXPECT_THAT(tested.take("al\r"), IsEmpty());
    EXPECT_THAT(tested.end(), ElementsAre("heal"));
    EXPECT_THAT(tested.end(), IsEmpty());
}

TEST(lines, come_in_pieces_when_they_are_too_long) {
    line_splitter tested;
    const std::string letters(2 * line_splitter::longest_line, 'a');
    const std::string piece(line_splitter::longest_line, 'a');
    EXPECT_THAT(tested.take(letters), ElementsAre(piece));
    EXPECT_THAT(tested.take("b\n"), ElementsAre(piece, "b"));
}

} // namespace
} // namespace orvanta_tests
