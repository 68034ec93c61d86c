#include <cstdio>
#include <future>
#include <vantu/orvanta/session.hpp>
int main(int count, char** arguments) try {
    const std::chrono::seconds duration(count == 2 ? std::stoi(arguments[1]) : 10);
    std::promise<std::string> lost;
    vantu::orvanta::session::options options{.name = "cursor to CSV"};
    options.callbacks.on_arrival = [](auto& here, const auto& device) { here.open(device.id, nullptr); };
    options.callbacks.on_cursor = [](auto&, const auto& sample) {
        const auto& [x, y, z, a, b, c] = sample.values;
        std::printf("%u,%g,%g,%g,%g,%g,%g\n", sample.device_id, x, y, z, a, b, c);
    };
    options.callbacks.on_lost = [&lost](auto&, const auto& why) { lost.set_value(why.message); };
    vantu::orvanta::session session(options);
    if (auto ended = lost.get_future(); ended.wait_for(duration) == std::future_status::ready)
        throw std::runtime_error(ended.get());
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
