// The script at the port that a file tells with a token.
#include "support/control_client.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <winsock2.h>

namespace orvanta_tests {
namespace {

// For the whole process, at the first socket.
void start_winsock() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    static_cast<void>(started);
}

} // namespace

control_client::control_client(const std::string& path, std::string_view greeting) : socket_(0) {
    std::uint16_t port = 0;
    std::string token;
    std::ifstream(path) >> port >> token;
    start_winsock();
    socket_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (port == 0 || connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        closesocket(socket_);
        throw std::runtime_error("cannot connect to the port of " + path);
    }
    send(greeting.empty() ? token + '\n' : std::string(greeting));
}

control_client::~control_client() {
    closesocket(socket_);
}

bool control_client::send(std::string_view text) {
    while (!text.empty()) {
        const int count = ::send(socket_, text.data(), static_cast<int>(text.size()), 0);
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void control_client::end_sending() {
    shutdown(socket_, SD_SEND);
}

bool control_client::has_more() const {
    fd_set asked;
    FD_ZERO(&asked);
    FD_SET(socket_, &asked);
    timeval at_once{};
    return select(0, &asked, nullptr, nullptr, &at_once) > 0;
}

bool control_client::receive() {
    constexpr DWORD longest_ms = 60'000;
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&longest_ms),
               sizeof longest_ms);
    std::array<char, 4096> piece{};
    const int count = recv(socket_, piece.data(), piece.size(), 0);
    if (count < 0 && WSAGetLastError() == WSAETIMEDOUT) {
        throw std::runtime_error("no answer after: " + received_);
    }
    received_.append(piece.data(), static_cast<std::size_t>(std::max(count, 0)));
    return count > 0;
}

} // namespace orvanta_tests
