// Every operation's datagram at every length: what is whole is shown, and what is missing is told.

#include "dissector/samples.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

constexpr std::size_t header_size = 6;
constexpr std::size_t record_size = 5;

bytes from_place(const bytes& content, std::size_t place) {
    return {content.begin() + static_cast<std::ptrdiff_t>(place), content.end()};
}

// All that is to be seen of a sample's record and of the part of its body that is there.
shown_fields shown_part(const sample& of, const bytes& content) {
    shown_fields shown = shown_record(of);
    std::size_t at = header_size + record_size;
    for (const sample_field& field : of.fields) {
        const std::size_t size = from_hex(field.wire).size();
        const bool is_tail = field.name == "tail";
        if (at + size > content.size()) {
            shown[is_tail ? "orvanta.damage.tail_short" : "orvanta.damage.body_short"] = "1";
            break;
        }
        shown[filter_of(of, field)] = field.shown;
        at += size;
    }
    if (at < content.size()) {
        shown["orvanta.unread"] = plain_hex(from_place(content, at));
    }
    return shown;
}

shown_fields expected_of(const sample& of, const bytes& content) {
    if (content.empty()) {
        return {}; // no dissector is given an empty datagram
    }
    if (content.size() < header_size) {
        return {{"orvanta.damage.header_short", "1"}};
    }
    if (content.size() < header_size + record_size) {
        shown_fields shown = shown_header();
        shown["orvanta.damage.record_short"] = "1";
        if (content.size() > header_size) {
            shown["orvanta.unread"] = plain_hex(from_place(content, header_size));
        }
        return shown;
    }
    return shown_part(of, content);
}

TEST(truncated_datagrams, show_what_is_whole_and_tell_what_is_missing) {
    struct truncation {
        const sample* of;
        bytes content;
    };
    std::vector<truncation> cut;
    std::vector<sent_datagram> datagrams;
    for (const sample& one : samples()) {
        const sent_datagram whole = datagram_of(one);
        for (std::size_t size = 0; size <= whole.content.size(); ++size) {
            sent_datagram part = whole;
            part.content.resize(size);
            cut.push_back({&one, part.content});
            datagrams.push_back(std::move(part));
        }
    }
    std::vector<shown_fields> shown = dissect(datagrams);
    std::size_t damaged = 0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        shown_fields& got = shown[i];
        const bool tells_damage = got["info"].find('[') != std::string::npos;
        for (const char* other :
             {"info", "orvanta.response_in", "orvanta.request_in", "orvanta.response_time"}) {
            got.erase(other);
        }
        const bool is_whole = cut[i].content.size() == datagram_of(*cut[i].of).content.size();
        EXPECT_EQ(got, expected_of(*cut[i].of, cut[i].content))
            << cut[i].of->name << ' ' << cut[i].content.size();
        EXPECT_EQ(tells_damage, !is_whole && !cut[i].content.empty()) << cut[i].of->name;
        damaged += tells_damage ? 1 : 0;
    }
    RecordProperty("datagrams", static_cast<int>(datagrams.size()));
    EXPECT_EQ(damaged, datagrams.size() - 2 * samples().size());
}

} // namespace
} // namespace orvanta_tests
