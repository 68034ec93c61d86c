#include <cstdio>
#include <string>
#include <vantu/orvanta/session.hpp>
using namespace std::chrono_literals;
int main(int count, char** arguments) try {
    const float factor = count == 2 ? std::stof(arguments[1]) : 1.0F;
    vantu::orvanta::session session({.name = "set scaling factor"});
    const auto device = session.wait_for_device(2s).value();
    session.open(device.id).value();
    const auto now = session.set_scaling_factor(device.id, factor, 1s).value();
    std::printf("gravity compensation %s, factor %g\n", now.enabled ? "on" : "off", now.scaling_factor);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
