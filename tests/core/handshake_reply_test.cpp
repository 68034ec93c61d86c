// The answer to a connect: what is read before the acceptance, and why it may be refused.
#include "core/handshake.hpp"

#include "support/buffer_bytes.hpp"
#include "support/service_operations.hpp"
#include "support/traps.hpp"
#include "vantu/orvanta/error_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;

class a_handshake_reply : public testing::Test {
  protected:
    std::int32_t read(const bytes& datagram) {
        buffer.reset();
        put(buffer, datagram);
        reply = {};
        return read_handshake_reply(buffer, reply);
    }

    [[nodiscard]] std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> all(100);
        std::size_t count = all.size();
        EXPECT_TRUE(reply.devices.copy_ids(all.data(), count));
        all.resize(count);
        return all;
    }

    byte_buffer buffer{constants::mode_read};
    handshake_reply reply;
};

const bytes accepted = op(4, 0, {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11});

TEST_F(a_handshake_reply, tells_the_client_id) {
    EXPECT_EQ(read(datagram({accepted})), vantu_orvanta_success);
    EXPECT_EQ(reply.client_id, 0x1122334455667788U);
    EXPECT_EQ(buffer.read_len(), 0U);
}

TEST_F(a_handshake_reply, may_have_any_reserved_field_length_and_tag) {
    EXPECT_EQ(read(join({{0xE9, 0x9E, 1, 0, 0xAB, 0xCD}, op_of_length(4, 200, 0, u64(1))})),
              vantu_orvanta_success);
}

TEST_F(a_handshake_reply, lists_devices_and_their_details_before_the_acceptance) {
    EXPECT_EQ(read(datagram({device_listed(9, 2), device_listed(5, 1),
                             op(23, 0, join({id_5, counting(0x30, 8), {2}})),
                             op(24, 0, join({u32(9), counting(0x40, 8)})), accepted})),
              vantu_orvanta_success);
    EXPECT_THAT(ids(), ElementsAre(9U, 5U));
    vantu_orvanta_device device{};
    ASSERT_TRUE(reply.devices.copy_device(5, device));
    EXPECT_EQ(
        hex(bytes_of(device)),
        hex(join({u64(1), {1, 7, 0xEF, 0xBE}, counting(0x60, 16), counting(0x30, 8), {2}, filled(41, 0)})));
}

TEST_F(a_handshake_reply, leaves_what_follows_the_acceptance_in_the_buffer) {
    EXPECT_EQ(read(datagram({accepted, op(2, 7)})), vantu_orvanta_success);
    EXPECT_EQ(buffer.read_len(), 5U);
}

TEST_F(a_handshake_reply, is_not_understood_cut_short) {
    const bytes whole = datagram({accepted});
    for (std::ptrdiff_t size = 0; size < 11; ++size) {
        EXPECT_EQ(read(bytes(whole.begin(), whole.begin() + size)), vantu_orvanta_protocol_parse_failed)
            << size;
    }
    EXPECT_EQ(read(datagram({device_listed(5, 1)})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(read(datagram({device_listed(5, 1), {0xFF, 4, 8, 0}})), vantu_orvanta_protocol_parse_failed);
    EXPECT_EQ(reply.rejected.reason, reject_reason::none) << "nothing is logged";
}

TEST_F(a_handshake_reply, is_not_understood_with_another_magic_or_version) {
    for (const std::size_t place : {0U, 1U, 2U, 3U, 6U}) {
        bytes bad = datagram({accepted});
        bad[place] = static_cast<std::uint8_t>(bad[place] ^ 0x10U);
        EXPECT_EQ(read(bad), vantu_orvanta_protocol_parse_failed) << "byte " << place;
        EXPECT_EQ(reply.rejected.reason, reject_reason::none);
    }
}

TEST_F(a_handshake_reply, may_refuse) {
    for (int status = 0; status < 256; ++status) {
        std::int32_t code = vantu_orvanta_protocol_parse_failed;
        code = status == 178 ? vantu_orvanta_another_client_connected : code;
        code = status == 179 ? vantu_orvanta_buffer_full_or_empty : code;
        EXPECT_EQ(read(datagram({op(240, 0, {0, 0, 0, 0, static_cast<std::uint8_t>(status)})})), code)
            << status;
    }
}

TEST_F(a_handshake_reply, has_no_place_for_any_other_operation) {
    for (int code = 0; code < 256; ++code) {
        if (code == 4 || code == 16 || code == 23 || code == 24 || code == 240) {
            continue;
        }
        EXPECT_EQ(read(datagram({op(static_cast<std::uint8_t>(code), 0, filled(301, 0)), accepted})),
                  vantu_orvanta_protocol_parse_failed);
        EXPECT_EQ(reply.rejected.reason, reject_reason::handshake_operation) << code;
        EXPECT_EQ(reply.rejected.op_code, code);
    }
}

TEST_F(a_handshake_reply, is_not_understood_with_a_listing_cut_short) {
    for (const std::uint8_t code : {std::uint8_t{16}, std::uint8_t{23}, std::uint8_t{24}}) {
        EXPECT_EQ(read(datagram({op(code, 0, filled(11, 0))})), vantu_orvanta_protocol_parse_failed) << +code;
    }
}

TEST_F(a_handshake_reply, gives_no_details_of_a_device_that_is_not_listed_with_that_type) {
    const bytes orvanta3 = op(23, 0, join({id_5, filled(9, 1)}));
    const bytes palmetron = op(24, 0, join({id_5, filled(8, 1)}));
    EXPECT_EQ(read(datagram({orvanta3, accepted})), vantu_orvanta_no_matching_device);
    EXPECT_EQ(read(datagram({device_listed(5, 2), orvanta3, accepted})), vantu_orvanta_no_matching_device);
    EXPECT_EQ(read(datagram({device_listed(5, 1), palmetron, accepted})), vantu_orvanta_no_matching_device);
}

class handshake_reply_death_test : public death_test {
  protected:
    static void read(const bytes& datagram) {
        byte_buffer buffer(constants::mode_read);
        put(buffer, datagram);
        handshake_reply reply;
        static_cast<void>(read_handshake_reply(buffer, reply));
    }
    static constexpr const char* line_69 = "ERROR data 69 MSG assumption failed: can_read<T>()\n";
};

TEST_F(handshake_reply_death_test, an_acceptance_cut_short) {
    EXPECT_TRAP(read(datagram({op(4, 0, filled(7, 0))})), line_69);
    EXPECT_TRAP(read(datagram({op(4, 0)})), line_69);
}

TEST_F(handshake_reply_death_test, a_refusal_cut_short) {
    EXPECT_TRAP(read(datagram({op(240, 0, filled(4, 0))})), line_69);
}

} // namespace
} // namespace orvanta_tests
