// The one error with a text of the system's that a fault of the service leads to: a datagram that is larger
// than the buffer. Winsock has two numbers for it, and not every Windows a text.
#include "faults/system_text.hpp"

#include <array>
#include <string_view>

namespace orvanta_tests {

std::string with_text_of_linux(std::string message) {
    constexpr std::array<std::string_view, 2> failures{
        "message: unable to recv packet with code: ",
        "message: unable to get overlapped IO result with code: "};
    for (const std::string_view failure : failures) {
        if (message.starts_with(failure)) {
            return std::string(failure) + "Message too long";
        }
    }
    return message;
}

} // namespace orvanta_tests
