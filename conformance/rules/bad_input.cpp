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

bytes whole_request(const device_owner& who, const operation& row) {
    if (row.code == op_code::connect) {
        return datagram_of(row.code, 1, bytes_of(introduction()));
    }
    return row.body_size == 0 ? datagram_of(row.code, 1) : who.idle_request(row.code);
}

} // namespace

void other_magics_are_ignored(client& who) {
    std::vector<bytes> requests(sizeof proto::header_magic, datagram_of(op_code::disconnect, 1));
    for (std::size_t place = 0; place < requests.size(); ++place) {
        requests[place][place] ^= std::byte{1};
    }
    expect_ignored(who, "disconnect with another magic", requests);
}

void short_datagrams_are_ignored(client& who) {
    std::vector<bytes> shorter;
    for (bytes request = datagram_of(op_code::disconnect, 1); !request.empty();) {
        request.pop_back();
        shorter.push_back(request);
    }
    expect_ignored(who, "disconnect cut short", shorter);
}

void service_errors_are_ignored(client& who) {
    expect_ignored(
        who, "service_error",
        {datagram_of(op_code::service_error, 1, bytes(5)), datagram_of(op_code::service_error, 1)});
}

void truncations_are_survived(surroundings& around) {
    device_owner who(around, any_type);
    for (const operation& row : operations) {
        if (row.way != direction::to_service) {
            continue;
        }
        const bytes request = whole_request(who, row);
        for (std::size_t size = 0; size < request.size(); ++size) {
            who.send(std::span(request).first(size));
            who.forget();
        }
        expect_survival(who, formatted("every truncation of {}", row.name));
    }
}

void unknown_codes_are_survived(device_user& who) {
    for (unsigned code = 0; code < codes; ++code) {
        if (find_operation(static_cast<std::uint8_t>(code), direction::to_service) == nullptr) {
            who.send(datagram_of(static_cast<std::uint8_t>(code), 1, bytes(code % 8)));
            who.forget();
        }
    }
    expect_survival(who, "unknown operations");
}

void lengths_past_the_end_are_survived(device_user& who) {
    for (unsigned code = 0; code < codes; ++code) {
        who.send(
            with_length(datagram_of(static_cast<std::uint8_t>(code), 1), code % 2 == 0 ? 0xFFFF : 0x00FF));
        who.forget();
    }
    expect_survival(who, "lengths past the end");
}

void long_datagrams_are_survived(device_user& who) {
    for (const std::size_t size : {largest_of_clients, largest_of_clients + 1, largest_of_udp}) {
        bytes request = datagram_of(op_code::keep_alive, 0);
        request.resize(size);
        who.send(request);
        expect_survival(who, formatted("a datagram of {} bytes", size));
    }
}

} // namespace vantu::orvanta::conformance::look
