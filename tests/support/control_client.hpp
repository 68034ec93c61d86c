// A script at the simulator's control socket; nothing of the code under test. One source file a platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvanta_tests {

// Receiving throws std::runtime_error after a minute without a byte.
class control_client {
  public:
    // Connects to the socket of the file. What the file tells a script to say first is said, unless it is
    // replaced by `greeting`.
    explicit control_client(const std::string& path, std::string_view greeting = {});
    ~control_client();
    control_client(const control_client&) = delete;
    control_client& operator=(const control_client&) = delete;

    // Whether all of it could be sent.
    bool send(std::string_view text);
    // Sends nothing more; receiving goes on.
    void end_sending();

    // The next answer with its line feed, or less where the connection ends before.
    [[nodiscard]] std::string line() {
        while (received_.find('\n') == std::string::npos && receive()) {
        }
        const std::string first = received_.substr(0, received_.find('\n') + 1);
        received_.erase(0, first.size());
        return first;
    }
    // Everything up to the end of the connection.
    [[nodiscard]] std::string rest() {
        while (receive()) {
        }
        return received_;
    }
    // Whether bytes are there to be received now.
    [[nodiscard]] bool has_more() const;

  private:
    // Waits for bytes; whether there are any before the end.
    bool receive();

    std::uintptr_t socket_;
    std::string received_;
};

} // namespace orvanta_tests
