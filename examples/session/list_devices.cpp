#include <cstdio>
#include <vantu/orvanta/session.hpp>
int main() try {
    vantu::orvanta::session session({.name = "list devices"});
    for (const auto& device : session.devices())
        std::printf("%-10s %5u  %s\n", name_of(device.type), device.id, device.uuid.c_str());
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
