// Rules of datagrams that no client sends.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <limits>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

constexpr unsigned codes = 256;
constexpr std::size_t largest_of_clients = constants::buffer_capacity;
constexpr std::size_t largest_of_udp = 65507;

bytes whole_request(const kept_settings& kept, const operation& row, std::uint32_t device) {
    if (row.code == op_code::connect) {
        return datagram_of(row.code, 1, bytes_of(introduction()));
    }
    return row.body_size == 0 ? datagram_of(row.code, 1)
                              : device_request(row.code, 1, device, kept.argument_of(row.code));
}

} // namespace

void other_magics_are_ignored(surroundings& around) {
    visitor who(around);
    who.connect();
    who.forget();
    for (std::size_t place = 0; place < sizeof proto::header_magic; ++place) {
        bytes request = datagram_of(op_code::disconnect, 1);
        request[place] ^= std::byte{1};
        who.send(request);
    }
    who.listen(around.quiet_time_ns);
    expect_no_answer(who, "disconnect with another magic");
}

void short_datagrams_are_ignored(surroundings& around) {
    visitor who(around);
    who.connect();
    who.forget();
    const bytes request = datagram_of(op_code::disconnect, 1);
    for (std::size_t size = 0; size < request.size(); ++size) {
        who.send(std::span(request).first(size));
    }
    who.listen(around.quiet_time_ns);
    expect_no_answer(who, "disconnect cut short");
}

void service_errors_are_ignored(surroundings& around) {
    visitor who(around);
    who.connect();
    who.forget();
    who.send(datagram_of(op_code::service_error, 1, bytes(5)));
    who.send(datagram_of(op_code::service_error, 1));
    who.listen(around.quiet_time_ns);
    expect_no_answer(who, "service_error");
}

void truncations_are_survived(surroundings& around) {
    device_user who(around);
    const kept_settings kept(who);
    for (const operation& row : operations) {
        if (row.way != direction::to_service) {
            continue;
        }
        const bytes request = whole_request(kept, row, who.device());
        for (std::size_t size = 0; size < request.size(); ++size) {
            who.send(std::span(request).first(size));
            who.forget();
        }
        expect_survival(who, formatted("every truncation of {}", row.name));
    }
}

void unknown_codes_are_survived(surroundings& around) {
    device_user who(around);
    for (unsigned code = 0; code < codes; ++code) {
        if (find_operation(static_cast<std::uint8_t>(code), direction::to_service) == nullptr) {
            who.send(datagram_of(static_cast<std::uint8_t>(code), 1, bytes(code % 8)));
            who.forget();
        }
    }
    expect_survival(who, "unknown operations");
}

void lengths_past_the_end_are_survived(surroundings& around) {
    device_user who(around);
    for (unsigned code = 0; code < codes; ++code) {
        bytes request = datagram_of(static_cast<std::uint8_t>(code), 1);
        const std::size_t place = sizeof(proto::header) + offsetof(proto::op, length);
        request[place] = std::byte{0xFF};
        request[place + 1] = static_cast<std::byte>(code % 2 == 0 ? 0xFF : 0x00);
        who.send(request);
        who.forget();
    }
    expect_survival(who, "lengths past the end");
}

void long_datagrams_are_survived(surroundings& around) {
    device_user who(around);
    for (const std::size_t size : {largest_of_clients, largest_of_clients + 1, largest_of_udp}) {
        bytes request = datagram_of(op_code::keep_alive, 0);
        request.resize(size);
        who.send(request);
        expect_survival(who, formatted("a datagram of {} bytes", size));
    }
}

} // namespace vantu::orvanta::conformance::look
