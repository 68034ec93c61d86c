// A port of this machine. The file tells it with the token that lets a script in, and stays open: that keeps
// other simulators from it, and lets the next one take it when this one was killed.
#include "simulator/control/control_socket.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <bcrypt.h>
#include <limits>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace vantu::orvanta::simulator {
namespace {

constexpr int most_that_wait = 16;
constexpr std::size_t letters_of_token = 32;

[[noreturn]] void refuse(const std::string& path, std::string_view why) {
    throw std::runtime_error(formatted("{}: {}", path, why));
}

[[noreturn]] void refuse_for(const std::string& path, DWORD error) {
    std::string text = std::system_category().message(static_cast<int>(error));
    text.erase(std::min(text.size(), text.find_first_of("\r\n")));
    refuse(path, text);
}

std::string new_token(const std::string& path) {
    std::array<unsigned char, letters_of_token / 2> random{};
    if (BCryptGenRandom(nullptr, random.data(), random.size(), BCRYPT_USE_SYSTEM_PREFERRED_RNG) < 0) {
        refuse(path, "the system has no random numbers");
    }
    std::string token;
    for (const unsigned char byte : random) {
        token += formatted("{:02x}", byte);
    }
    return token;
}

// "PORT TOKEN", as a simulator leaves it behind.
bool is_of_a_simulator(HANDLE file) {
    std::array<char, 64> bytes{};
    DWORD count = 0;
    if (ReadFile(file, bytes.data(), bytes.size(), &count, nullptr) == 0) {
        return false;
    }
    return std::regex_match(std::string(bytes.data(), count), std::regex("[0-9]+ [0-9a-f]{32}\r?\n"));
}

HANDLE open_file(const std::string& path) {
    auto* const file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                   OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = GetLastError();
    if (file == INVALID_HANDLE_VALUE) {
        if (error == ERROR_SHARING_VIOLATION) {
            refuse(path, "a program that runs has it open; another name would be right");
        }
        refuse_for(path, error);
    }
    if (error == ERROR_ALREADY_EXISTS && !is_of_a_simulator(file)) {
        CloseHandle(file);
        refuse(path, "is there and no simulator's; another name would be right");
    }
    return file;
}

bool write_whole(HANDLE file, const std::string& text) {
    DWORD written = 0;
    return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(file) != 0 &&
           WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
}

void make_non_blocking(socket_handle socket) {
    u_long on = 1;
    (void)ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}

struct open_listener {
    socket_handle socket{invalid_socket};
    std::uint16_t port{0};
};

open_listener listen_on_loopback() {
    open_listener made{
        WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT)};
    if (made.socket == invalid_socket) {
        return made;
    }
    const int exclusive = 1;
    (void)setsockopt(made.socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
                     sizeof exclusive);
    make_non_blocking(made.socket);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (bind(made.socket, name, length) != 0 || getsockname(made.socket, name, &length) != 0 ||
        listen(made.socket, most_that_wait) != 0) {
        const int error = WSAGetLastError();
        close_socket(made.socket);
        WSASetLastError(error);
        return {};
    }
    made.port = ntohs(address.sin_port);
    return made;
}

HANDLE handle_of(std::uintptr_t file) {
    return reinterpret_cast<HANDLE>(file);
}

} // namespace

control_socket::control_socket(std::string path) : path_(std::move(path)), token_(new_token(path_)) {
    auto* const file = open_file(path_);
    open_listener made = listen_on_loopback();
    if (made.socket == invalid_socket || !write_whole(file, formatted("{} {}\n", made.port, token_))) {
        const DWORD error = GetLastError();
        close_socket(made.socket);
        CloseHandle(file);
        DeleteFileA(path_.c_str());
        refuse_for(path_, error);
    }
    listener_ = made.socket;
    file_ = reinterpret_cast<std::uintptr_t>(file);
}

control_socket::~control_socket() {
    CloseHandle(handle_of(file_));
    DeleteFileA(path_.c_str());
    close_socket(listener_);
}

socket_handle control_socket::accept() noexcept {
    const socket_handle taken = ::accept(listener_, nullptr, nullptr);
    if (taken != invalid_socket) {
        make_non_blocking(taken);
    }
    return taken;
}

std::string control_connection::receive() {
    std::array<char, 4096> bytes{};
    const int count = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (count > 0) {
        return {bytes.data(), static_cast<std::size_t>(count)};
    }
    ended_ = count == 0 || WSAGetLastError() != WSAEWOULDBLOCK;
    return {};
}

std::size_t control_connection::send(std::string_view bytes) {
    const auto length =
        static_cast<int>(std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max()));
    const int count = ::send(socket_, bytes.data(), length, 0);
    if (count < 0) {
        gone_ = gone_ || WSAGetLastError() != WSAEWOULDBLOCK;
        return 0;
    }
    return static_cast<std::size_t>(count);
}

bool control_connection::is_gone() noexcept {
    char next = 0;
    gone_ = gone_ || (::recv(socket_, &next, 1, MSG_PEEK) < 0 && WSAGetLastError() != WSAEWOULDBLOCK);
    return gone_;
}

} // namespace vantu::orvanta::simulator
