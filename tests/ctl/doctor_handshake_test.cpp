// The judgement of the doctor on an answer to a request to connect. The bytes are those of docs/protocol.md.
#include "ctl/doctor/handshake.hpp"
#include "support/bytes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>
#include <string>

namespace {

using namespace std::chrono_literals;
using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;
using namespace orvanta_tests;

handshake_answer answer_of(const std::string& hexadecimal) {
    const bytes datagram = from_hex(hexadecimal);
    return read_answer(std::as_bytes(std::span(datagram)));
}

const std::string header = "E9 9E 01 00 00 00 ";
const std::string acceptance = "FF 04 08 00 00  01 02 03 04 05 06 07 08";
const std::string listing = "FF 10 18 00 00  07 00 00 00 01 00 01 30  "
                            "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F ";
const std::string refusal_by_another_client = "FF F0 05 00 00  00 00 00 00 B2";

finding checked(const handshake_answer& answer, std::chrono::nanoseconds time = 1ms,
                const std::optional<failure>& of_the_library = std::nullopt) {
    return check_handshake({answer, time}, "netcat (process 9)", 2s, of_the_library);
}

TEST(handshake_answer, is_an_acceptance_after_listings_too) {
    EXPECT_EQ(answer_of(header + acceptance).kind, answer_kind::accepted);
    EXPECT_EQ(answer_of(header + listing + acceptance).kind, answer_kind::accepted);
    EXPECT_EQ(answer_of(header + acceptance + listing).kind, answer_kind::accepted);
}

TEST(handshake_answer, is_a_refusal_with_its_status) {
    const handshake_answer answer = answer_of(header + refusal_by_another_client);
    EXPECT_EQ(answer.kind, answer_kind::refused);
    EXPECT_EQ(answer.status, 0xB2);
}

TEST(handshake_answer, is_of_another_version) {
    const handshake_answer by_header = answer_of("E9 9E 02 00 00 00 " + acceptance);
    EXPECT_EQ(by_header.kind, answer_kind::other_version);
    EXPECT_EQ(by_header.version, 2);
    EXPECT_EQ(answer_of(header + "FF F0 05 00 00  00 00 00 00 A0").kind, answer_kind::other_version);
}

TEST(handshake_answer, is_foreign) {
    EXPECT_EQ(answer_of("").kind, answer_kind::foreign);
    EXPECT_EQ(answer_of("E9 9E 01 00 00").kind, answer_kind::foreign);
    EXPECT_EQ(answer_of("E8 9E 01 00 00 00 " + acceptance).kind, answer_kind::foreign);
    EXPECT_EQ(answer_of(header + "FE 04 08 00 00  01 02 03 04 05 06 07 08").kind, answer_kind::foreign);
    // A cursor state comes before no acceptance.
    EXPECT_EQ(answer_of(header + "FF 21 00 00 00 " + acceptance).kind, answer_kind::foreign);
    const bytes too_long(2049, 0xE9);
    EXPECT_EQ(read_answer(std::as_bytes(std::span(too_long))).kind, answer_kind::foreign);
}

TEST(handshake_answer, is_cut_short_at_any_byte_of_its_operations) {
    const bytes whole = from_hex(header + listing + acceptance);
    for (std::size_t size = 6; size < whole.size(); ++size) {
        const std::span part = std::span(whole).first(size);
        EXPECT_EQ(read_answer(std::as_bytes(part)).kind, answer_kind::cut_short) << size << " bytes";
    }
    EXPECT_EQ(answer_of(header + "FF F0 05 00 00  00 00 00 00").kind, answer_kind::cut_short);
}

TEST(handshake_answer, shows_its_size_and_first_bytes) {
    EXPECT_EQ(answer_of("").raw, "0 bytes");
    EXPECT_EQ(answer_of("68 69").raw, "2 bytes: 68 69");
    EXPECT_EQ(answer_of(header + acceptance).raw,
              "19 bytes: E9 9E 01 00 00 00 FF 04 08 00 00 01 02 03 04 05 ...");
}

TEST(handshake_answer, is_looked_through_for_an_operation) {
    const bytes goodbye = from_hex(header + listing + "FF 06 00 00 00");
    EXPECT_TRUE(has_operation(std::as_bytes(std::span(goodbye)), 6));
    EXPECT_FALSE(has_operation(std::as_bytes(std::span(goodbye)), 4));
    const bytes cut = from_hex(header + "FF 10 18 00 00 07");
    EXPECT_FALSE(has_operation(std::as_bytes(std::span(cut)), 6));
}

TEST(handshake_check, is_well_after_a_prompt_acceptance) {
    const finding found = checked({answer_kind::accepted}, 1500us);
    EXPECT_EQ(found.outcome, check_outcome::ok);
    EXPECT_EQ(found.seen, "the service accepts a client after 1.50 ms");
}

TEST(handshake_check, warns_of_an_acceptance_later_than_a_connect_waits) {
    EXPECT_EQ(checked({answer_kind::accepted}, 125ms).outcome, check_outcome::ok);
    const finding found = checked({answer_kind::accepted}, 126ms);
    EXPECT_EQ(found.outcome, check_outcome::warning);
    EXPECT_EQ(found.seen,
              "the service accepts a client after 126 ms; a connect of 2000 ms waits 125 ms on each port");
    EXPECT_EQ(found.remedy, "relieve the machine, or give programs a longer time to connect, as orvantactl "
                            "--timeout 5s does");
}

TEST(handshake_check, fails_when_the_library_does_not_connect) {
    const finding late = checked({answer_kind::accepted}, 200ms, failure{error_code::socket_bind_failed, ""});
    EXPECT_EQ(late.outcome, check_outcome::failed);
    EXPECT_EQ(late.status, exit_status::timed_out);
    EXPECT_THAT(late.seen, testing::EndsWith("the library does not get there: unable to bind the client "
                                             "socket (5)"));
    EXPECT_THAT(late.remedy, testing::EndsWith("orvantactl --timeout 7s does"));
    const finding refused =
        checked({answer_kind::accepted}, 1ms, failure{error_code::protocol_parse_failed, ""});
    EXPECT_EQ(refused.status, exit_status::no_service);
    EXPECT_EQ(refused.remedy, "run it again; if it stays so, start the service anew");
}

struct failed_handshake {
    handshake_answer answer;
    exit_status status;
    const char* seen;
    const char* remedy;
};

TEST(handshake_check, tells_each_failure_from_the_others) {
    const failed_handshake failures[] = {
        {{answer_kind::refused, 0xB2},
         exit_status::no_service,
         "the service refuses the connection: status 0xB2, another client is already connected",
         "end the other program that is connected to the service: it serves one at a time"},
        {{answer_kind::refused, 0xB3},
         exit_status::no_service,
         "the service refuses the connection: status 0xB3, an internal buffer is either full or empty",
         "end one of the programs that are connected to the service: it has no room for one more"},
        {{answer_kind::refused, 0xA3},
         exit_status::no_service,
         "the service refuses the connection: status 0xA3, invalid argument",
         "use the library that fits the service, or start the service anew"},
        {{answer_kind::other_version, 0xA0},
         exit_status::no_service,
         "the service does not know version 1 of the protocol: status 0xA0, invalid version",
         "use the library that fits the service, or the service that fits the library"},
        {{answer_kind::other_version, 0, 2, "6 bytes: E9 9E 02 00 00 00"},
         exit_status::no_service,
         "the answer is of version 2 of the protocol, the library speaks 1: 6 bytes: E9 9E 02 00 00 00",
         "use the library that fits the service, or the service that fits the library"},
        {{answer_kind::foreign, 0, 0, "2 bytes: 68 69"},
         exit_status::no_service,
         "what answers does not speak the protocol of the service: 2 bytes: 68 69",
         "end netcat (process 9) if it is not the device service, and start that"},
        {{answer_kind::cut_short, 0, 0, "6 bytes: E9 9E 01 00 00 00"},
         exit_status::no_service,
         "the answer of the service is cut short: 6 bytes: E9 9E 01 00 00 00",
         "update the service: programs with this library end at such an answer"},
        {{answer_kind::closed_port},
         exit_status::no_service,
         "UDP port 54320 is closed, tells the system",
         "start the device service, or orvanta-simulator where there is no device"},
        {{answer_kind::silence},
         exit_status::timed_out,
         "no answer from UDP port 54320 within 2000 ms",
         "end netcat (process 9) if it is not the device service; else start it anew, and see whether a "
         "packet "
         "filter drops UDP on the loopback"},
        {{answer_kind::not_sent, 0, 0, "Operation not permitted"},
         exit_status::refused,
         "the system refuses to send to the service: Operation not permitted",
         "see whether a packet filter refuses UDP on the loopback"},
    };
    for (const failed_handshake& one : failures) {
        const finding found = checked(one.answer);
        EXPECT_EQ(found.outcome, check_outcome::failed);
        EXPECT_EQ(found.status, one.status) << one.seen;
        EXPECT_EQ(found.seen, one.seen);
        EXPECT_EQ(found.remedy, one.remedy);
    }
}

} // namespace
