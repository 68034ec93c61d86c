#include "sessions/reference_reader.hpp"

#include <algorithm>
#include <cstring>

namespace orvanta_tests {
namespace {

// Where an event's payload comes from. Each body is the device's id and then the payload, or all payload.
enum class layout : std::uint8_t { nothing, id_and_payload, payload };

struct known_operation {
    std::uint8_t code;
    std::uint16_t body;
    std::uint32_t event_type;
    bool tagged;
    layout kind;
};

constexpr layout addressed = layout::id_and_payload;
constexpr layout opaque = layout::payload;

constexpr std::array<known_operation, 24> known_operations{{
    {2, 0, 1, true, layout::nothing}, {6, 0, 2, false, layout::nothing}, {16, 24, 16, false, addressed},
    {17, 4, 17, false, addressed},    {19, 4, 18, true, addressed},      {21, 4, 19, true, addressed},
    {22, 20, 32, true, addressed},    {23, 13, 20, false, addressed},    {24, 12, 21, false, addressed},
    {33, 28, 48, false, addressed},   {37, 28, 49, false, addressed},    {40, 22, 50, false, addressed},
    {47, 20, 51, true, addressed},    {64, 5, 64, true, addressed},      {66, 9, 65, true, addressed},
    {68, 5, 66, true, addressed},     {70, 5, 67, true, addressed},      {80, 16, 80, true, addressed},
    {81, 5, 81, true, addressed},     {96, 128, 112, true, opaque},      {97, 301, 113, true, opaque},
    {224, 12, 96, false, opaque},     {225, 52, 97, false, addressed},   {240, 5, 255, true, addressed},
}};

const known_operation* find_operation(std::uint8_t code) {
    for (const known_operation& one : known_operations) {
        if (one.code == code) {
            return &one;
        }
    }
    return nullptr;
}

constexpr int lost_datagram = 1;
constexpr int refused_value = 2;
constexpr int not_connected = 3;
constexpr int no_answer = 4;
constexpr int not_understood = 6;
constexpr int no_such_device = 7;
constexpr std::size_t header_size = 6;
constexpr std::size_t record_size = 5;

// Places in an event and in a device's record.
constexpr std::size_t event_id = 4;
constexpr std::size_t event_tag = 8;
constexpr std::size_t event_payload = 9;
constexpr std::size_t device_type = 8;
constexpr std::size_t device_information = 28;
constexpr std::size_t device_detail = 36;
constexpr std::size_t device_state_kind = 53;
constexpr std::size_t device_state = 54;

template <std::size_t size>
void put_number(std::array<std::uint8_t, size>& into, std::size_t place, std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i) {
        into[place++] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint32_t code_of_status(std::uint8_t status) {
    constexpr std::array<std::uint8_t, 14> unchanged{0,   160, 161, 162, 163, 176, 177,
                                                     178, 192, 193, 194, 195, 208, 209};
    if (status >= 179 && status <= 181) {
        return status - 170U; // 9, 10 and 11
    }
    return std::find(unchanged.begin(), unchanged.end(), status) != unchanged.end() ? status : 255U;
}

void count_update(device_octets& record) {
    for (std::size_t i = 0; i < 8 && ++record[i] == 0; ++i) {
    }
}

} // namespace

std::span<const operation_size> operation_sizes() {
    static const auto listed = [] {
        std::array<operation_size, known_operations.size()> made{};
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] = {known_operations[i].code, known_operations[i].body};
        }
        return made;
    }();
    return listed;
}

std::uint32_t expected_poll::event_type() const {
    return event[0] + 256U * event[1] + 65'536U * event[2] + 16'777'216U * event[3];
}

std::uint64_t reference_reader::number_at(std::size_t place, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
        value = value * 256 + bytes_.at(place + i);
    }
    return value;
}

const device_octets* reference_reader::device(std::uint32_t id) const {
    const auto found = table_.records.find(id);
    return found == table_.records.end() ? nullptr : &found->second;
}

int reference_reader::open_datagram(octets taken) {
    drop();
    if (taken.size() > bytes_.size()) {
        return lost_datagram;
    }
    std::copy_n(reinterpret_cast<const std::uint8_t*>(taken.data()), taken.size(), bytes_.begin());
    size_ = taken.size();
    if (left() < header_size || number_at(0, 2) != 0x9EE9 || number_at(2, 2) != 1) {
        drop();
        return not_understood;
    }
    at_ = header_size;
    return 0;
}

expected_handshake reference_reader::connect_without_answer() {
    return {no_answer, false};
}

expected_handshake reference_reader::connect(octets answer, std::int64_t now_ns) {
    const auto refused = [this](int code) {
        drop();
        return expected_handshake{code, false};
    };
    if (const int code = open_datagram(answer); code != 0) {
        return refused(code);
    }
    device_entries listed;
    while (left() >= record_size && bytes_[at_] == 0xFF) {
        const std::uint8_t code = bytes_[at_ + 1];
        if (code == 4 || code == 240) {
            at_ += record_size;
            if (left() < (code == 4 ? 8U : 5U)) {
                drop();
                return {not_understood, true};
            }
            if (code == 240) {
                const std::uint8_t status = bytes_[at_ + 4];
                return refused(status == 178 ? 178 : status == 179 ? 9 : not_understood);
            }
            client_id_ = number_at(at_, 8);
            at_ += 8;
            connected_ = true;
            table_ = std::move(listed);
            last_send_ns_ = now_ns;
            return {0, false};
        }
        if (code != 16 && code != 23 && code != 24) {
            break;
        }
        expected_poll one;
        take_operation(one, listed);
        if (one.code != 0) {
            return refused(one.code);
        }
    }
    return refused(not_understood);
}

bool reference_reader::wants_datagram() const {
    return connected_ && left() < record_size;
}

expected_poll reference_reader::begin_poll(std::int64_t now_ns) {
    expected_poll outcome;
    if (!connected_) {
        outcome.code = not_connected;
        return outcome;
    }
    outcome.keep_alive = keep_alive_due_ns() <= now_ns;
    if (outcome.keep_alive) {
        last_send_ns_ = now_ns;
    }
    return outcome;
}

expected_poll reference_reader::poll(std::int64_t now_ns) {
    expected_poll outcome = begin_poll(now_ns);
    if (outcome.code == 0 && left() >= record_size) {
        take_operation(outcome, table_);
    } else {
        outcome.tells_event = outcome.code == 0; // nothing was there
    }
    return outcome;
}

expected_poll reference_reader::poll(std::int64_t now_ns, octets taken) {
    expected_poll outcome = begin_poll(now_ns);
    if (outcome.code != 0) {
        return outcome;
    }
    outcome.code = open_datagram(taken);
    if (outcome.code == 0 && left() < record_size) {
        drop();
        outcome.code = not_understood;
    }
    if (outcome.code == 0) {
        take_operation(outcome, table_);
    }
    return outcome;
}

void reference_reader::take_operation(expected_poll& outcome, device_entries& table) {
    outcome.code = not_understood;
    if (bytes_[at_] != 0xFF) {
        drop();
        return;
    }
    const std::uint8_t code = bytes_[at_ + 1];
    const std::uint64_t length = number_at(at_ + 2, 2);
    const std::uint8_t tag = bytes_[at_ + 4];
    at_ += record_size;
    const known_operation* known = find_operation(code);
    const std::uint64_t needed = known != nullptr ? known->body : length;
    if (left() < needed) {
        drop();
        return;
    }
    const std::size_t body = at_;
    at_ += needed;
    if (known == nullptr) {
        return;
    }
    std::size_t tail = 0;
    if (code == 40) {
        tail = bytes_[body + 21];
        if (left() < tail) {
            drop();
            return;
        }
        at_ += tail;
    }
    put_number(outcome.event, 0, code == 2 && tag == 0 ? 0 : known->event_type, 4);
    outcome.event[event_tag] = known->tagged ? tag : 0;
    if (known->kind == layout::id_and_payload) {
        outcome.device_id = static_cast<std::uint32_t>(number_at(body, 4));
        put_number(outcome.event, event_id, outcome.device_id, 4);
        std::copy_n(&bytes_[body] + 4, needed - 4 + tail, outcome.event.begin() + event_payload);
    } else {
        std::copy_n(bytes_.begin() + body, needed, outcome.event.begin() + event_payload);
    }
    if (code == 240) {
        outcome.event[event_payload] = 0;
        put_number(outcome.event, event_payload, code_of_status(bytes_[body + 4]), 4);
    }
    connected_ = connected_ && code != 6;
    outcome.code = store(code, outcome.device_id, body, table);
    outcome.tells_event = outcome.code == 0 || outcome.code == refused_value;
}

int reference_reader::store(std::uint8_t code, std::uint32_t id, std::size_t body, device_entries& table) {
    const auto copy = [&](device_octets& record, std::size_t into, std::size_t from, std::size_t size) {
        std::copy_n(bytes_.begin() + body + from, size, record.begin() + into);
    };
    switch (code) {
    case 16: {
        device_octets& record = table.find_or_make(id);
        record.fill(0);
        record[0] = 1;
        copy(record, device_type, 4, 20);
        return 0;
    }
    case 17:
        table.remove(id);
        return 0;
    case 23:
    case 24: {
        device_octets* record = table.find(id);
        if (record == nullptr || (*record)[device_type] != (code == 23 ? 1 : 2)) {
            drop();
            return no_such_device;
        }
        copy(*record, device_information, 4, 8);
        if (code == 23) {
            copy(*record, device_detail, 12, 1);
        }
        return 0;
    }
    case 33:
    case 37: {
        device_octets& record = table.find_or_make(id);
        count_update(record);
        record[device_state_kind] = code == 33 ? 1 : 2;
        copy(record, device_state, 4, 24);
        return 0;
    }
    case 40:
        if (device_octets* record = table.find(id); record != nullptr) {
            count_update(*record);
            if ((*record)[device_type] == 2) {
                // The first eight bytes of a tail; zeros follow a shorter one.
                const std::size_t tail = std::min<std::size_t>(bytes_[body + 21], 8);
                copy(*record, device_detail, 4, 18 + tail);
                std::fill_n(record->begin() + device_detail + 18 + tail, 8 - tail, std::uint8_t{0});
            }
        }
        return 0;
    case 70:
        return bytes_[body + 4] == 0 ? refused_value : 0;
    default:
        return 0;
    }
}

device_octets* reference_reader::device_entries::find(std::uint32_t id) {
    const auto found = records.find(id);
    return found == records.end() ? nullptr : &found->second;
}

device_octets& reference_reader::device_entries::find_or_make(std::uint32_t id) {
    const auto [found, made] = records.try_emplace(id);
    if (made) {
        ids.push_back(id);
    }
    return found->second;
}

void reference_reader::device_entries::remove(std::uint32_t id) {
    if (records.erase(id) != 0) {
        std::erase(ids, id);
    }
}

} // namespace orvanta_tests
