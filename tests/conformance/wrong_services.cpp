#include "conformance/wrong_services.hpp"

#include <memory>

namespace orvanta_tests {
namespace {

constexpr std::size_t header_size = 6;
constexpr std::size_t record_size = 5;
constexpr std::size_t head_size = header_size + record_size;

std::size_t length_at(const bytes& datagram, std::size_t record) {
    return datagram[record + 2] + 256U * datagram[record + 3];
}

// The places of all records, as far as the datagram is right.
std::vector<std::size_t> records_of(const bytes& datagram) {
    std::vector<std::size_t> places;
    for (std::size_t at = header_size; at + record_size <= datagram.size() && datagram[at] == 0xFF;
         at += record_size + length_at(datagram, at)) {
        places.push_back(at);
    }
    return places;
}

std::size_t record_of(const bytes& datagram, std::uint8_t code) {
    for (const std::size_t at : records_of(datagram)) {
        if (datagram[at + 1] == code) {
            return at;
        }
    }
    return 0;
}

bool is_whole(const bytes& datagram) {
    return datagram.size() >= head_size && datagram.size() == head_size + length_at(datagram, header_size);
}

} // namespace

std::uint8_t code_of(const bytes& datagram) {
    const bool has_one = datagram.size() >= head_size && datagram[0] == 0xE9 && datagram[1] == 0x9E &&
                         datagram[2] == 1 && datagram[header_size] == 0xFF;
    return has_one ? datagram[header_size + 1] : 0;
}

bool has_operation(const bytes& datagram, std::uint8_t code) {
    return record_of(datagram, code) != 0;
}

tamper without(std::uint8_t code) {
    return [code](const bytes& datagram) {
        return code_of(datagram) == code ? std::vector<bytes>{} : std::vector<bytes>{datagram};
    };
}

tamper followed(std::uint8_t code, const std::vector<bytes>& by) {
    return [code, by](const bytes& datagram) {
        std::vector<bytes> all{datagram};
        if (code_of(datagram) == code && is_whole(datagram)) {
            all.insert(all.end(), by.begin(), by.end());
        }
        return all;
    };
}

tamper replaced(const std::function<bool(const bytes&)>& which, const bytes& by) {
    return [which, by](const bytes& datagram) { return std::vector<bytes>{which(datagram) ? by : datagram}; };
}

tamper with_byte(std::uint8_t code, std::size_t place, std::uint8_t value) {
    return [code, place, value](bytes datagram) {
        if (code_of(datagram) == code && place < datagram.size()) {
            datagram[place] = value;
        }
        return std::vector<bytes>{datagram};
    };
}

tamper with_body_byte(std::uint8_t code, std::size_t place, std::uint8_t value) {
    return [code, place, value](bytes datagram) {
        if (const std::size_t record = record_of(datagram, code); record != 0) {
            datagram[record + record_size + place] = value;
        }
        return std::vector<bytes>{datagram};
    };
}

tamper with_status(std::uint8_t from, std::uint8_t to) {
    return [from, to](bytes datagram) {
        if (code_of(datagram) == 240 && datagram.back() == from) {
            datagram.back() = to;
        }
        return std::vector<bytes>{datagram};
    };
}

tamper dead_after(const std::function<bool(const bytes&)>& which) {
    return [which, dead = false](const bytes& datagram) mutable {
        const bool passes = !dead;
        dead = dead || which(datagram);
        return passes ? std::vector<bytes>{datagram} : std::vector<bytes>{};
    };
}

bytes opening(std::uint32_t device) {
    return datagram({op(18, 77, join({u32(device), u16(0)}))});
}

bytes closing(std::uint32_t device) {
    return datagram({op(20, 77, u32(device))});
}

wrongs forgets_what_was_set(std::uint8_t get, std::size_t place, std::uint8_t value) {
    const auto last = std::make_shared<std::uint8_t>();
    wrongs wrong;
    wrong.to_service = [last](const bytes& datagram) {
        *last = code_of(datagram);
        return std::vector<bytes>{datagram};
    };
    wrong.to_client = [last, get, change = with_body_byte(get, place, value)](const bytes& datagram) {
        return *last == get ? change(datagram) : std::vector<bytes>{datagram};
    };
    return wrong;
}

wrongs changes_what_it_refuses() {
    const auto swallowed = std::make_shared<std::size_t>();
    wrongs wrong;
    wrong.to_service = [swallowed](const bytes& request) {
        std::vector<bytes> passed{request};
        if (code_of(request) == 69 && is_whole(request) && request.back() == 2) {
            ++*swallowed;
            passed.push_back(request);
            passed.front().back() = 0;
        }
        return passed;
    };
    wrong.to_client = [swallowed](const bytes& answer) {
        if (code_of(answer) == 68 && *swallowed > 0) {
            --*swallowed;
            return std::vector<bytes>{};
        }
        return std::vector<bytes>{answer};
    };
    return wrong;
}

tamper without_repeats(std::size_t count) {
    return [count, last = bytes{}, passed_over = std::size_t{0}](const bytes& datagram) mutable {
        const bool is_meant = code_of(datagram) == 20 && has_operation(datagram, 20) &&
                              datagram.back() == 0xFF && datagram == last;
        last = datagram;
        if (is_meant && passed_over < count) {
            ++passed_over;
            return std::vector<bytes>{};
        }
        return std::vector<bytes>{datagram};
    };
}

tamper without_goodbyes_of_strangers() {
    return [known = false](const bytes& datagram) mutable {
        known = known || code_of(datagram) == 3;
        return code_of(datagram) == 5 && !known ? std::vector<bytes>{} : std::vector<bytes>{datagram};
    };
}

tamper with_ever_new_ids() {
    return [next = std::uint8_t{0}](const bytes& datagram) mutable {
        return has_operation(datagram, 4) ? with_body_byte(4, 0, ++next)(datagram)
                                          : std::vector<bytes>{datagram};
    };
}

} // namespace orvanta_tests
