#include "datagrams.hpp"

#include <cstring>

namespace orvanta_fuzz {
namespace {

// The bytes that an operation's body needs; those of a code that no client receives are the script's choice.
std::size_t body_size(std::uint8_t code, std::uint8_t otherwise) {
    for (const orvanta_tests::operation_size& one : orvanta_tests::operation_sizes()) {
        if (one.code == code) {
            return one.body;
        }
    }
    return otherwise;
}

constexpr std::uint8_t code_of_palmetron_state = 40;
constexpr std::size_t place_of_tail_count = 21;
constexpr std::size_t most_of_an_operation = 5 + 301 + 255;

} // namespace

void datagram_builder::put(std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i) {
        bytes_[size_++] = static_cast<std::byte>(value >> (8 * i) & 0xFF);
    }
}

void datagram_builder::begin() {
    size_ = 0;
    put(0x9EE9, 2);
    put(1, 2);
    put(0, 2);
}

void datagram_builder::append_operation(script& input) {
    if (bytes_.size() - size_ < most_of_an_operation) {
        return;
    }
    // Every other code of the low half of the numbers is one that clients receive.
    const std::uint8_t choice = input.byte();
    const auto known = orvanta_tests::operation_sizes();
    const std::uint8_t code = choice < 2 * known.size() ? known[choice / 2].code : choice;
    const std::uint8_t tag = input.byte();
    const std::uint8_t device = input.byte();
    const std::uint8_t seed = input.byte();
    const std::size_t size = body_size(code, seed);
    put(0xFF, 1);
    put(code, 1);
    put(size, 2);
    put(tag, 1);
    const std::size_t body = size_;
    for (std::size_t i = 0; i < size; ++i) {
        put(i == 0 ? device : i < 4 ? 0U : i == 4 ? seed : seed * i, 1);
    }
    if (code == code_of_palmetron_state) {
        bytes_[body + place_of_tail_count] = std::byte{seed};
        for (std::size_t i = 0; i < seed; ++i) {
            put(device + i, 1);
        }
    }
}

void datagram_builder::append_acceptance(std::uint64_t client_id) {
    put(0xFF, 1);
    put(4, 1);
    put(8, 2);
    put(0, 1);
    put(client_id, 8);
}

void datagram_builder::take_raw(script& input) {
    const auto taken = input.bytes(input.number(2) % (bytes_.size() + 1));
    std::memcpy(bytes_.data(), taken.data(), taken.size());
    size_ = taken.size();
}

namespace {

// Another byte in the header or the first operation, or bytes off the end.
void spoil_now_and_then(datagram_builder& built, script& input) {
    constexpr std::uint8_t changes = 160;
    constexpr std::uint8_t cuts = 192;
    const std::uint8_t choice = input.byte();
    if (choice >= cuts) {
        built.cut(choice - cuts + 1U);
    } else if (choice >= changes) {
        built.invert(choice - changes);
    }
}

void append_some(datagram_builder& built, std::size_t count, script& input) {
    for (std::size_t i = 0; i < count && !input.has_ended(); ++i) {
        built.append_operation(input);
    }
}

} // namespace

void build_datagram(datagram_builder& built, std::uint8_t step, script& input) {
    if (step % 16 == 0) {
        built.take_raw(input);
        return;
    }
    built.begin();
    append_some(built, step % 8 + 1U, input);
    spoil_now_and_then(built, input);
}

void build_answer(datagram_builder& built, std::uint8_t step, script& input) {
    if (step % 4 == 0) {
        built.take_raw(input);
        return;
    }
    built.begin();
    append_some(built, step % 4 - 1U, input);
    built.append_acceptance(0x0123456789ABCDEFU * step);
    append_some(built, step / 4 % 4, input);
    spoil_now_and_then(built, input);
}

} // namespace orvanta_fuzz
