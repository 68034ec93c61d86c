// The stage of faults on the test bench.
#include "simulator/stage_bench.hpp"

#include "simulator/text/text_lines.hpp"

#include <cstring>
#include <utility>

namespace simulator_tests {

using namespace vantu::orvanta::simulator;

namespace {

unsigned number_of(const peer& who) {
    unsigned number = 0;
    std::memcpy(&number, who.address.address.bytes, sizeof number);
    return number;
}

bytes bytes_of(const std::vector<std::byte>& content) {
    const auto* begin = reinterpret_cast<const std::uint8_t*>(content.data());
    return {begin, begin + content.size()};
}

std::vector<bytes> contents_of(const sent_list& list) {
    std::vector<bytes> contents;
    for (const sent& one : list) {
        contents.push_back(one.content);
    }
    return contents;
}

} // namespace

void stage_bench::add(std::string_view line, std::initializer_list<unsigned> clients) {
    const fault_row* row = find_fault(take_word(line));
    ASSERT_NE(row, nullptr);
    std::vector<peer> peers;
    for (const unsigned who : clients) {
        peers.push_back(peer_of(who));
    }
    stage.add(parse_fault(row->kind, line), peers, now);
}

std::vector<bytes> stage_bench::arrivals() {
    std::vector<bytes> contents;
    for (const arrival& one : stage.take_arrivals()) {
        contents.push_back(bytes_of(one.bytes));
    }
    return contents;
}

sent_list stage_bench::departures() {
    sent_list list;
    for (const departure& one : stage.take_departures()) {
        list.push_back({number_of(one.to), bytes_of(one.bytes)});
    }
    return list;
}

std::vector<bytes> stage_bench::in(const bytes& content, unsigned from) {
    const bytes exact(content); // of just this size, so that a read past the end is seen
    stage.from_socket(peer_of(from), std::as_bytes(std::span(exact)), now);
    return arrivals();
}

std::vector<bytes> stage_bench::out(const bytes& content, unsigned to) {
    outgoing_datagram datagram;
    datagram.to = peer_of(to);
    for (const std::uint8_t value : content) {
        datagram.bytes.write(value);
    }
    stage.from_service(datagram, now);
    return contents_of(departures());
}

sent_list stage_bench::wait(std::int64_t nanoseconds) {
    now += nanoseconds;
    stage.tick(now);
    return departures();
}

std::vector<std::string> stage_bench::actions() {
    std::vector<std::string> texts;
    for (const requested_action& one : stage.take_actions()) {
        std::string text(row_of(one.kind).name);
        if (one.argument.has_value()) {
            text += ' ' + std::to_string(*one.argument);
        }
        if (one.client.has_value()) {
            text += " client " + std::to_string(number_of(*one.client));
        }
        texts.push_back(text);
    }
    return texts;
}

void stage_bench::connect(unsigned who) {
    (void)in(datagram({connect_operation(0)}), who);
    (void)out(acceptance, who);
}

std::string stage_bench::counts(fault_kind kind) const {
    for (const rule_state& state : stage.rules()) {
        if (state.rule.kind == kind) {
            return std::to_string(state.fitted) + '/' + std::to_string(state.happened);
        }
    }
    return "none";
}

} // namespace simulator_tests
