// Each rule against services that are wrong in one way.
#include "conformance/matrix.hpp"
#include "conformance/run.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::conformance;

std::vector<wrong_service> all_wrong_services() {
    std::vector<wrong_service> all = faulty_simulators();
    for (wrong_service& one : tampered_services()) {
        all.push_back(std::move(one));
    }
    return all;
}

const std::vector<wrong_service>& services() {
    static const std::vector<wrong_service> all = all_wrong_services();
    return all;
}

// Each rule meets a service of its own, so that no rule spoils another.
finding judged(const rule& what, const wrong_service& by) {
    tampered_service service(by.wrong);
    surroundings around = service.surroundings();
    around.may_save = true;
    return look_at(std::array{&what}, around, [](const finding&) {}).front();
}

class wrong_services : public testing::TestWithParam<std::size_t> {};

TEST_P(wrong_services, break_the_rules_that_they_should_and_no_other) {
    const wrong_service& tested = services()[GetParam()];
    SCOPED_TRACE(tested.what);
    std::vector<std::string_view> failed;
    std::string texts;
    for (const rule& one : rules()) {
        const finding found = judged(one, tested);
        texts += found.how == outcome::fails ? std::string(one.name) + ": " + found.text + '\n' : "";
        if (found.how == outcome::fails) {
            failed.push_back(one.name);
        }
        if (found.how == outcome::stopped) {
            const std::string broken = found.text.substr(0, found.text.find(':'));
            EXPECT_THAT(tested.failed, testing::Contains(broken))
                << one.name << " is stopped by " << found.text;
        }
    }
    EXPECT_THAT(failed, testing::ElementsAreArray(tested.failed)) << texts;
}

INSTANTIATE_TEST_SUITE_P(matrix, wrong_services, testing::Range<std::size_t>(0, all_wrong_services().size()));

TEST(the_matrix, sees_every_rule_fail) {
    std::set<std::string_view> seen;
    for (const wrong_service& one : services()) {
        seen.insert(one.failed.begin(), one.failed.end());
    }
    for (const rule& one : rules()) {
        EXPECT_TRUE(seen.contains(one.name)) << one.name << " has no service that breaks it";
    }
    EXPECT_EQ(seen.size(), rules().size());
}

} // namespace
} // namespace orvanta_tests
