// The script at a socket of the file system.
#include "support/control_client.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvanta_tests {
namespace {

int descriptor_of(std::uintptr_t socket) {
    return static_cast<int>(socket);
}

} // namespace

control_client::control_client(const std::string& path, std::string_view greeting)
    : socket_(static_cast<std::uintptr_t>(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    if (::connect(descriptor_of(socket_), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor_of(socket_));
        throw std::runtime_error("cannot connect to " + path);
    }
    send(greeting);
}

control_client::~control_client() {
    ::close(descriptor_of(socket_));
}

bool control_client::send(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::send(descriptor_of(socket_), text.data(), text.size(), MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void control_client::end_sending() {
    ::shutdown(descriptor_of(socket_), SHUT_WR);
}

bool control_client::has_more() const {
    pollfd asked{descriptor_of(socket_), POLLIN, 0};
    return ::poll(&asked, 1, 0) > 0;
}

bool control_client::receive() {
    constexpr int longest_ms = 60'000;
    pollfd asked{descriptor_of(socket_), POLLIN, 0};
    if (::poll(&asked, 1, longest_ms) <= 0) {
        throw std::runtime_error("no answer after: " + received_);
    }
    std::array<char, 4096> piece{};
    const ssize_t count = ::recv(descriptor_of(socket_), piece.data(), piece.size(), 0);
    received_.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

} // namespace orvanta_tests
