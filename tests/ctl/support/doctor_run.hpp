// orvantactl doctor, run to its end, and its document read.
#pragma once

#include "ctl/support/ctl_run.hpp"
#include "vantu/orvanta/session.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace orvanta_tests {

struct doctor_run {
    ending end;
    nlohmann::json document;
    std::string errors;

    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const nlohmann::json& one : document.at("checks")) {
            all.push_back(one.at("name"));
        }
        return all;
    }
    [[nodiscard]] nlohmann::json check(const std::string& name) const {
        for (const nlohmann::json& one : document.at("checks")) {
            if (one.at("name") == name) {
                return one;
            }
        }
        throw std::runtime_error("there is no check " + name);
    }
    [[nodiscard]] std::string outcome(const std::string& name) const { return check(name).at("outcome"); }
    [[nodiscard]] std::string seen(const std::string& name) const { return check(name).at("seen"); }
    [[nodiscard]] std::string remedy(const std::string& name) const {
        return check(name).value("remedy", "");
    }
    [[nodiscard]] double figure(const std::string& name, const std::string& of) const {
        return check(name).at("figures").at(of);
    }
    // The first failure, "service-port: nobody holds UDP port 54320"; empty when there is none.
    [[nodiscard]] std::string failure() const {
        for (const std::string& name : names()) {
            if (outcome(name) == "failed") {
                return name + ": " + seen(name);
            }
        }
        return "";
    }
};

inline doctor_run doctor(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"doctor", "--json"});
    const run_of_a_program run = ctl(options);
    return {run.end, nlohmann::json::parse(run.output), run.errors};
}

// A program that is connected to the service: the test's own.
class another_client {
  public:
    another_client() : session_(options()) {}

  private:
    static vantu::orvanta::session::options options() {
        vantu::orvanta::session::options wanted;
        wanted.name = "another client";
        return wanted;
    }
    vantu::orvanta::session session_;
};

} // namespace orvanta_tests
