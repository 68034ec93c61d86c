// orvanta-conformance as a program beside the simulator: its lines, its files, its exit statuses.
#include "app/support/child_process.hpp"
#include "support/scratch_folder.hpp"
#include "support/udp_socket.hpp"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;

// On a port that the system picks.
class simulator_process {
  public:
    explicit simulator_process(const std::vector<std::string>& options = {})
        : program_(command(options), attachment::pipes) {
        program_.read_until("listening on port ");
        port_ = program_.read_until("\n");
        port_.erase(port_.find_first_not_of("0123456789"));
    }
    ~simulator_process() {
        program_.kill();
        program_.wait();
    }
    simulator_process(const simulator_process&) = delete;
    simulator_process& operator=(const simulator_process&) = delete;

    [[nodiscard]] const std::string& port() const { return port_; }

  private:
    static std::vector<std::string> command(const std::vector<std::string>& options) {
        std::vector<std::string> all{ORVANTA_SIMULATOR_PATH, "--port", "0", "--seed", "1"};
        all.insert(all.end(), options.begin(), options.end());
        return all;
    }

    child_process program_;
    std::string port_;
};

struct run {
    ending end;
    std::string output;
    std::string errors;
};

run conformance(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORVANTA_CONFORMANCE_PATH);
    child_process program(arguments, attachment::pipes);
    const ending end = program.wait();
    std::string output = program.rest();
    std::erase(output, '\r');
    std::string errors = program.rest_of_errors();
    std::erase(errors, '\r');
    return {end, output, errors};
}

ending status(int number) {
    return {number, 0};
}

TEST(the_kit, finds_that_the_simulator_keeps_every_rule) {
    const simulator_process service;
    const run all = conformance({"--port", service.port(), "--save", "--timeout", "10000"});
    EXPECT_EQ(all.end, status(0)) << all.output << all.errors;
    EXPECT_THAT(all.output, HasSubstr("ok   answers_copy_the_tag\n"));
    EXPECT_THAT(all.output, HasSubstr("67 rules: 67 ok, 0 failed, 0 stopped, 0 skipped\n"));
    EXPECT_EQ(all.errors, "");
}

TEST(the_kit, ends_with_1_when_a_rule_does_not_hold) {
    const simulator_process service({"--drop", "@op=orientation_get,dir=out"});
    const scratch_folder folder;
    const std::string junit = folder.file("rules.xml");
    const run one = conformance({"--port", service.port(), "--timeout", "50", "--junit", junit, "--rule",
                                 "orientation_get_is_answered", "connect_is_answered"});
    EXPECT_EQ(one.end, status(1));
    EXPECT_EQ(one.output,
              "ok   connect_is_answered\n"
              "FAIL orientation_get_is_answered: orientation_get: nothing; expected orientation_get\n"
              "2 rules: 1 ok, 1 failed, 0 stopped, 0 skipped\n");
    std::ifstream written(junit);
    const std::string xml{std::istreambuf_iterator<char>(written), {}};
    EXPECT_THAT(xml,
                HasSubstr("<testsuite name=\"orvanta-conformance\" tests=\"2\" failures=\"1\" errors=\"0\""));
    const run unwritten = conformance({"--port", service.port(), "--rule", "connect_is_answered", "--junit",
                                       folder.file("missing") + "/rules.xml"});
    EXPECT_EQ(unwritten.end, status(1));
    EXPECT_THAT(unwritten.errors, HasSubstr("rules.xml cannot be written\n"));
}

TEST(the_kit, prints_json_alone_when_it_is_asked_to) {
    const simulator_process service;
    const run one = conformance({"--port", service.port(), "--json", "--rule", "connect_is_answered"});
    EXPECT_EQ(one.end, status(0));
    EXPECT_THAT(one.output,
                testing::StartsWith("{\"rules\":[{\"name\":\"connect_is_answered\",\"outcome\":\"ok\","));
    EXPECT_THAT(one.output, testing::EndsWith("\"ok\":1,\"failed\":0,\"stopped\":0,\"skipped\":0}\n"));
}

TEST(the_kit, ends_with_2_for_a_wrong_command_line_and_with_0_for_its_help) {
    const run wrong = conformance({"--rule", "nonsense"});
    EXPECT_EQ(wrong.end, status(2));
    EXPECT_EQ(wrong.output, "");
    EXPECT_EQ(wrong.errors,
              "orvanta-conformance: --rule: there is no rule 'nonsense'; --list tells them all\n");
    EXPECT_EQ(conformance({"--help"}).end, status(0));
    EXPECT_EQ(conformance({"--list"}).end, status(0));
}

TEST(the_kit, ends_with_3_where_no_service_answers) {
    const auto silent = udp_socket::bound_to("localhost", "0").value();
    const run none = conformance({"--port", silent.port(), "--timeout", "50"});
    EXPECT_EQ(none.end, status(3));
    EXPECT_EQ(none.output, "");
    EXPECT_EQ(none.errors, "orvanta-conformance: port " + silent.port() + ": nobody answers at the port\n");
}

} // namespace
} // namespace orvanta_tests
