// How each status of the service becomes a code of the client.
#include "core/service_codes.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <set>

namespace orvanta_tests {
namespace {

using vantu::orvanta::client_code_from_service_status;
using vantu::orvanta::is_own_client_code;

const std::set<int> kept{0, 160, 161, 162, 163, 176, 177, 178, 192, 193, 194, 195, 208, 209};

TEST(a_service_status, keeps_its_number_where_the_client_has_it_too) {
    for (int status = 0; status < 256; ++status) {
        EXPECT_EQ(is_own_client_code(status), kept.count(status) != 0) << status;
    }
    EXPECT_FALSE(is_own_client_code(-96));
    EXPECT_FALSE(is_own_client_code(256 + 160));
}

TEST(a_service_status, becomes_a_code_of_the_client) {
    for (int status = 0; status < 256; ++status) {
        std::uint32_t code = kept.count(status) != 0 ? static_cast<std::uint32_t>(status) : 255;
        code = status == 179 ? std::uint32_t{vantu_orvanta_buffer_full_or_empty} : code;
        code = status == 180 ? std::uint32_t{vantu_orvanta_request_queue_empty} : code;
        code = status == 181 ? std::uint32_t{vantu_orvanta_request_queue_full} : code;
        EXPECT_EQ(client_code_from_service_status(static_cast<std::uint8_t>(status)), code) << status;
    }
}

} // namespace
} // namespace orvanta_tests
