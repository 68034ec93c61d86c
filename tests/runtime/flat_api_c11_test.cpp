// The flat API from C.
#include <gtest/gtest.h>

extern "C" int orvanta_c11_calls_without_a_connection(void);

namespace {

TEST(flat_api, is_compiled_as_c11_and_every_function_answers_there) {
    EXPECT_EQ(orvanta_c11_calls_without_a_connection(), 0) << "the line of flat_api_c11.c that failed";
}

} // namespace
