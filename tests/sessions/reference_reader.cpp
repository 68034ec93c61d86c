// The second reading of the protocol.
#include "sessions/reference_reader.hpp"

#include <array>

namespace session_tests {
namespace {

// Operations to the client, from the protocol's table: code, body, event type, whether the tag is copied,
// whether the body begins with a device id.
struct known_operation {
    int code;
    std::size_t body;
    std::uint32_t event_type;
    bool tagged;
    bool addressed;
};

constexpr std::array<known_operation, 25> known_operations{{
    {2, 0, 1, true, false},      {6, 0, 2, false, false},     {16, 24, 16, false, true},
    {17, 4, 17, false, true},    {19, 4, 18, true, true},     {21, 4, 19, true, true},
    {22, 20, 32, true, true},    {23, 13, 20, false, true},   {24, 12, 21, false, true},
    {33, 28, 48, false, true},   {37, 28, 49, false, true},   {40, 22, 50, false, true},
    {47, 20, 51, true, true},    {64, 5, 64, true, true},     {66, 9, 65, true, true},
    {68, 5, 66, true, true},     {70, 5, 67, true, true},     {80, 16, 80, true, true},
    {81, 5, 81, true, true},     {96, 128, 112, true, false}, {97, 301, 113, true, false},
    {224, 12, 96, false, false}, {225, 52, 97, false, true},  {240, 5, 255, true, true},
    {4, 8, 0, false, false}, // of the handshake alone
}};

const known_operation* find(int code) {
    for (const known_operation& one : known_operations) {
        if (one.code == code && one.event_type != 0) {
            return &one;
        }
    }
    return nullptr;
}

constexpr int not_understood = 6;
constexpr std::size_t header_size = 6;
constexpr std::size_t record_size = 5;

} // namespace

std::uint32_t reference_reader::number_at(std::size_t place, int size) const {
    std::uint32_t value = 0;
    for (int i = size; i-- > 0;) {
        value = value * 256 + std::to_integer<std::uint32_t>(bytes_.at(place + static_cast<std::size_t>(i)));
    }
    return value;
}

void reference_reader::drop() {
    bytes_.clear();
    at_ = 0;
}

int reference_reader::open_datagram(const delivery& taken) {
    drop();
    if (!taken.fits) {
        return 1;
    }
    bytes_ = taken.bytes;
    if (left() < header_size || number_at(0, 2) != 0x9EE9 || number_at(2, 2) != 1) {
        drop();
        return not_understood;
    }
    at_ = header_size;
    return 0;
}

expected_handshake reference_reader::connect(const std::optional<delivery>& answer) {
    if (!answer) {
        return {4, false};
    }
    if (const int code = open_datagram(*answer); code != 0) {
        return {code, false};
    }
    while (left() >= record_size) {
        if (number_at(at_, 1) != 0xFF) {
            break;
        }
        const auto code = static_cast<int>(number_at(at_ + 1, 1));
        if (code == 4 || code == 240) {
            at_ += record_size;
            if (left() < (code == 4 ? 8U : 5U)) {
                return {not_understood, true};
            }
            if (code == 4) {
                at_ += 8;
                connected_ = true;
                return {0, false};
            }
            const std::uint32_t status = number_at(at_ + 4, 1);
            drop();
            return {status == 178 ? 178 : status == 179 ? 9 : not_understood, false};
        }
        if (code != 16 && code != 23 && code != 24) {
            break;
        }
        if (const expected_poll one = take_operation(); one.code != 0) {
            drop();
            return {one.code, false};
        }
    }
    drop();
    return {not_understood, false};
}

expected_poll reference_reader::poll(const std::optional<delivery>& taken) {
    if (!connected_) {
        return {3, 0, 0, 0};
    }
    if (taken) {
        if (const int code = open_datagram(*taken); code != 0) {
            return {code, 0, 0, 0};
        }
        if (left() < record_size) {
            drop();
            return {not_understood, 0, 0, 0};
        }
    } else if (left() < record_size) {
        return {};
    }
    return take_operation();
}

expected_poll reference_reader::take_operation() {
    if (number_at(at_, 1) != 0xFF) {
        drop();
        return {not_understood, 0, 0, 0};
    }
    const std::uint32_t code = number_at(at_ + 1, 1);
    const std::size_t length = number_at(at_ + 2, 2);
    const auto tag = static_cast<std::uint8_t>(number_at(at_ + 4, 1));
    at_ += record_size;
    const known_operation* known = find(static_cast<int>(code));
    if (known == nullptr) {
        if (length <= left()) {
            at_ += length;
        } else {
            drop();
        }
        return {not_understood, 0, 0, 0};
    }
    if (left() < known->body) {
        drop();
        return {not_understood, 0, 0, 0};
    }
    expected_poll outcome{0, known->event_type, 0, known->tagged ? tag : std::uint8_t{0}};
    if (known->addressed) {
        outcome.device_id = number_at(at_, 4);
    }
    const std::size_t body = at_;
    at_ += known->body;
    outcome.code = apply(static_cast<std::uint8_t>(code), outcome.device_id, body);
    if (code == 2 && tag == 0) {
        outcome.event_type = 0; // nobody waits
    }
    if (code == 6) {
        connected_ = false;
    }
    return outcome;
}

int reference_reader::apply(std::uint8_t code, std::uint32_t device_id, std::size_t body) {
    switch (code) {
    case 16:
        devices_[device_id] = {static_cast<int>(number_at(body + 4, 1)), 1};
        return 0;
    case 17:
        devices_.erase(device_id);
        return 0;
    case 23:
    case 24: {
        const auto found = devices_.find(device_id);
        if (found == devices_.end() || found->second.type != (code == 23 ? 1 : 2)) {
            drop();
            return 7;
        }
        return 0;
    }
    case 33:
    case 37:
        ++devices_[device_id].updates;
        return 0;
    case 40: {
        const std::size_t tail = number_at(body + 21, 1);
        if (left() < tail) {
            drop();
            return not_understood;
        }
        at_ += tail;
        if (const auto found = devices_.find(device_id); found != devices_.end()) {
            ++found->second.updates;
        }
        return 0;
    }
    case 70:
        return number_at(body + 4, 1) == 0 ? 2 : 0;
    default:
        return 0;
    }
}

} // namespace session_tests
