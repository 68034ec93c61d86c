// Damaged datagrams without number: no error in Lua, and the dissector reads what client and service read.

#include "core/connection.hpp"
#include "dissector/samples.hpp"
#include "simulator/service/service.hpp"
#include "vantu/orvanta/error_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>
#include <span>
#include <sstream>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

constexpr std::size_t datagram_count = 20'000;

class damaged_datagram_source {
  public:
    [[nodiscard]] sent_datagram next() {
        bytes content = from_hex("E9 9E 01 00 00 00");
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            const sample& one = samples()[below(samples().size())];
            const bytes operation = join({from_hex(one.record), body_of(one)});
            content.insert(content.end(), operation.begin(), operation.end());
        }
        for (std::size_t count = below(4); count > 0; --count) {
            damage(content);
        }
        return below(2) == 0 ? sent_to_service(content) : sent_to_client(content);
    }

  private:
    std::size_t below(std::size_t end) { return chance_() % end; }

    void damage(bytes& content) {
        const std::size_t place = below(content.size());
        const auto at = content.begin() + static_cast<std::ptrdiff_t>(place);
        switch (below(3)) {
        case 0:
            content.resize(std::max<std::size_t>(place, 1));
            break;
        case 1:
            content.insert(at, static_cast<std::uint8_t>(below(256)));
            break;
        default:
            *at = static_cast<std::uint8_t>(below(256));
        }
    }

    std::mt19937 chance_{20240229};
};

// One word an operation: its code, and a '!' where it was not understood.
using words = std::vector<std::string>;

words read_by_client(const bytes& content) {
    connection client;
    byte_buffer& buffer = client.receive_buffer();
    std::memcpy(buffer.unwritten(), content.data(), content.size());
    buffer.skip_write(content.size());
    rejection rejected;
    if (client.begin_datagram(rejected) != vantu_orvanta_success) {
        return {"dropped"};
    }
    words read;
    while (client.has_operation()) {
        const auto code = std::to_integer<unsigned>(buffer.unread()[1]);
        vantu_orvanta_event event{};
        const bool is_understood = client.decode(event, rejected) != vantu_orvanta_protocol_parse_failed;
        if (rejected.reason != reject_reason::none) {
            read.emplace_back("dropped");
            break;
        }
        read.push_back(std::to_string(code) + (is_understood ? "" : "!"));
    }
    return read;
}

// The statuses with which the service refuses what it cannot read: A0 a version, A1 an operation, A2 a body.
words refused_by_service(const bytes& content) {
    simulator::service service({}, {});
    service.receive({}, std::as_bytes(std::span(content)), 0);
    words refused;
    for (const simulator::outgoing_datagram& sent : service.take_outgoing()) {
        const std::span<const std::byte> answer(sent.bytes.unread(), sent.bytes.read_len());
        constexpr std::size_t code_place = 7;
        if (answer[code_place] == std::byte{240} && answer.back() <= std::byte{0xA2}) {
            refused.push_back(hex({std::to_integer<std::uint8_t>(answer.back())}));
        }
    }
    return refused;
}

// The column's parts: operations, and damage in brackets after the operation that has it.
words parts_of(const std::string& info) {
    words parts;
    for (std::size_t at = 0; at < info.size();) {
        const std::size_t end = std::min(info.find("; ", at), info.size());
        parts.push_back(info.substr(at, end - at));
        at = end + 2;
    }
    return parts;
}

words read_by_client_as_dissected(const shown_fields& shown) {
    words read;
    std::istringstream codes(shown.contains("orvanta.op.code") ? shown.at("orvanta.op.code") : "");
    for (const std::string& part : parts_of(shown.at("info"))) {
        if (!part.starts_with('[')) {
            std::string code;
            std::getline(codes, code, ';');
            read.push_back(code);
        } else if (part == "[unknown_code]" || part == "[wrong_way]" || part == "[body_short]" ||
                   part == "[tail_short]") {
            read.back() += '!';
        } else if (part.starts_with("[header_") || part.starts_with("[record_")) {
            read.emplace_back("dropped");
        }
    }
    return read;
}

words refused_by_service_as_dissected(const shown_fields& shown) {
    words refused;
    std::string operation;
    for (const std::string& part : parts_of(shown.at("info"))) {
        if (part == "[header_version]") {
            refused.emplace_back("A0");
        } else if (part == "[record_magic]" || part == "[unknown_code]" ||
                   (part == "[wrong_way]" && !operation.starts_with("service_error"))) {
            refused.emplace_back("A1");
        } else if (part == "[body_short]" || part == "[length_wrong]") {
            refused.emplace_back("A2");
        } else {
            operation = part;
        }
    }
    return refused;
}

bool has_acceptance(const words& read) {
    return std::any_of(read.begin(), read.end(),
                       [](const std::string& word) { return word.starts_with("4"); });
}

TEST(random_damaged_datagrams, are_read_as_client_and_service_read_them) {
    damaged_datagram_source source;
    std::vector<sent_datagram> datagrams(datagram_count);
    std::generate(datagrams.begin(), datagrams.end(), [&source] { return source.next(); });
    const std::vector<shown_fields> shown = dissect(datagrams, {}, {"orvanta.op.code"});
    std::size_t damaged = 0;
    for (std::size_t i = 0; i < datagrams.size(); ++i) {
        const bytes& content = datagrams[i].content;
        damaged += shown[i].at("info").find('[') != std::string::npos ? 1 : 0;
        if (datagrams[i].to == 54320) {
            ASSERT_EQ(refused_by_service_as_dissected(shown[i]), refused_by_service(content)) << hex(content);
            continue;
        }
        const words read = read_by_client(content);
        // After the handshake a client does not understand the acceptance; the dissector does.
        if (!has_acceptance(read)) {
            ASSERT_EQ(read_by_client_as_dissected(shown[i]), read) << hex(content);
        }
    }
    EXPECT_GT(damaged, datagram_count / 2);
}

} // namespace
} // namespace orvanta_tests
