// A connect ends the program over a name without room and over two bodies that are read unchecked.
#include "support/service_session.hpp"

#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;

class handshake_death : public testing::Test {
  protected:
    handshake_death() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void connect_and_be_answered(const bytes& reply) {
    vantu_orvanta_init();
    scripted_service service;
    service.expect(connect_request()).answer(reply);
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    static_cast<void>(connect_to(service, context));
}

void connect_with_name(const std::string& name) {
    vantu_orvanta_init();
    scripted_service service;
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    static_cast<void>(
        vantu_orvanta_connect_ports(context, "0", service.port().c_str(), name.c_str(), 0, 0, 0, 1'000'000));
}

TEST_F(handshake_death, ends_for_a_name_of_32_characters) {
    EXPECT_DEATH(connect_with_name(std::string(32, 'n')), "ERROR utils 85 MSG assumption failed: size < N");
}

TEST_F(handshake_death, ends_for_a_name_of_300_characters) {
    EXPECT_DEATH(connect_with_name(std::string(300, 'n')), "ERROR utils 85 MSG assumption failed: size < N");
}

TEST_F(handshake_death, ends_for_an_acceptance_of_7_bytes) {
    EXPECT_DEATH(connect_and_be_answered(datagram({op(4, 0, filled(7, 0))})),
                 "ERROR data 69 MSG assumption failed: can_read<T>\\(\\)");
}

TEST_F(handshake_death, ends_for_an_acceptance_without_a_body) {
    EXPECT_DEATH(connect_and_be_answered(datagram({op(4, 0)})),
                 "ERROR data 69 MSG assumption failed: can_read<T>\\(\\)");
}

TEST_F(handshake_death, ends_for_a_refusal_of_4_bytes) {
    EXPECT_DEATH(connect_and_be_answered(datagram({op(240, 0, filled(4, 0))})),
                 "ERROR data 69 MSG assumption failed: can_read<T>\\(\\)");
}

} // namespace
