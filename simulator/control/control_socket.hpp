// The socket at which scripts reach a running simulator, and the connection of one script. Nothing here
// waits. One source file a platform implements it: a socket of the file system, or a port of this machine
// that a file tells.
#pragma once

#include "network/socket.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

class control_connection {
  public:
    explicit control_connection(socket_handle socket) noexcept : socket_(socket) {}
    ~control_connection() { close_socket(socket_); }
    control_connection(const control_connection&) = delete;
    control_connection& operator=(const control_connection&) = delete;

    // Some of the bytes that have come; none when there are none yet, or never will be.
    [[nodiscard]] std::string receive();
    // Sends what the system has room for, and returns how many bytes these are.
    [[nodiscard]] std::size_t send(std::string_view bytes);

    // Whether the other side sends nothing more, and whether it also hears nothing more, as far as the system
    // tells: Windows does after an answer that did not arrive.
    [[nodiscard]] bool has_ended() const noexcept { return ended_; }
    [[nodiscard]] bool is_gone() noexcept;

  private:
    socket_handle socket_;
    bool ended_{false};
    bool gone_{false};
};

class control_socket {
  public:
    // Takes the place of a file that a simulator has left behind that did not end by itself. Throws
    // std::runtime_error with one line for one that a running simulator has, for any other file, and for a
    // socket that cannot be had.
    explicit control_socket(std::string path);
    // Removes the file.
    ~control_socket();
    control_socket(const control_socket&) = delete;
    control_socket& operator=(const control_socket&) = delete;

    // The first line of each connection must be this; empty: any, as the file's rights decide.
    [[nodiscard]] const std::string& token() const noexcept { return token_; }

    // The next connection, to be closed by the caller; invalid_socket where there is none.
    [[nodiscard]] socket_handle accept() noexcept;

  private:
    std::string path_;
    std::string token_;
    socket_handle listener_{invalid_socket};
    std::uintptr_t file_{0}; // the system's own name of the file
};

} // namespace vantu::orvanta::simulator
