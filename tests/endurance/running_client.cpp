// A client with its polling thread.
#include "endurance/running_client.hpp"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace orvanta_tests {

using vantu::orvanta::client;

void wait_until(const char* what, const std::function<bool()>& condition, std::uint64_t seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            FAIL() << "waited in vain: " << what;
        }
        vantu_orvanta_sleep(200'000);
    }
}

std::uint64_t number_from(const char* variable, std::uint64_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::stoull(text);
}

belongings belongings_of_this_process() {
    const auto count = [](const char* folder) {
        const std::filesystem::directory_iterator entries(folder);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    };
    return {count("/proc/self/fd"), count("/proc/self/task")};
}

running_client::running_client() : client_(callbacks()) {}

running_client::~running_client() {
    vantu_orvanta_poll_thread_stop(thread_);
}

client::config running_client::callbacks() {
    client::config made;
    made.on_disconnected = [this](client&) { dismissed = true; };
    made.on_device_opened = [this](client&, unsigned id) { opened = id; };
    made.on_device_closed = [this](client&, unsigned id) { closed = id; };
    made.on_cursor_state = [this](client&, unsigned, const vantu_orvanta_cursor_state&) { ++states; };
    made.on_error = [this](client&, unsigned, const vantu_orvanta_error& error) { refusal = error.status; };
    return made;
}

std::int32_t running_client::connect(std::uint64_t reply_timeout_ns) {
    constexpr std::uint64_t keep_alive_ns = 60'000'000'000;
    const std::int32_t code =
        vantu_orvanta_connect(client_.context(), "endurance test", 0, 0, keep_alive_ns, reply_timeout_ns);
    if (code == vantu_orvanta_success) {
        thread_ = vantu_orvanta_poll_thread_start(client_.context(), client::dispatch_event, &client_);
    }
    return code;
}

std::int32_t running_client::ask_to_open(std::uint32_t device_id, std::uint8_t tag) {
    return vantu_orvanta_device_open(client_.context(), device_id, tag, 0);
}

std::int32_t running_client::ask_to_close(std::uint32_t device_id) {
    return vantu_orvanta_device_close(client_.context(), device_id, 0);
}

std::uint32_t running_client::thread_result() const {
    return vantu_orvanta_poll_thread_result(thread_);
}

} // namespace orvanta_tests
