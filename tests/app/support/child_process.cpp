// A program run by a test.
#include "app/support/child_process.hpp"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orvanta_tests {

std::string child_process::read_until(std::string_view text) {
    return take_until(printed_[0], text);
}

std::string child_process::read_errors_until(std::string_view text) {
    return take_until(printed_[1], text);
}

std::string child_process::read_until(const std::function<bool(const std::string&)>& enough) {
    while (!enough(printed_[0])) {
        await("more");
    }
    return std::exchange(printed_[0], {});
}

std::string child_process::take_until(std::string& from, std::string_view text) {
    std::size_t found = from.find(text);
    while (found == std::string::npos) {
        await(text);
        found = from.find(text);
    }
    std::string taken = from.substr(0, found + text.size());
    from.erase(0, taken.size());
    return taken;
}

void child_process::await(std::string_view what) {
    if (!program_.read(printed_)) {
        throw std::runtime_error("waited for \"" + std::string(what) + "\", got \"" + printed_[0] +
                                 "\" and errors \"" + printed_[1] + "\"");
    }
}

void child_process::wait_for_threads(std::size_t count) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience_ms);
    while (threads() != count) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the program keeps " + std::to_string(threads()) + " threads");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

ending child_process::wait() {
    while (program_.read(printed_)) {
    }
    if (program_.is_open()) {
        throw std::runtime_error("the program goes on after: \"" + printed_[0] + "\"");
    }
    return program_.wait();
}

} // namespace orvanta_tests
