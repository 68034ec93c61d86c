// A socket of the file system, which its owner alone may connect to.
#include "simulator/control/control_socket.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

constexpr int most_that_wait = 16;

[[noreturn]] void refuse(const std::string& path, std::string_view why) {
    throw std::runtime_error(formatted("{}: {}", path, why));
}

std::string error_text(int error) {
    return std::generic_category().message(error);
}

bool would_wait(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

int descriptor_of(socket_handle socket) {
    return static_cast<int>(socket);
}

sockaddr_un address_of(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        refuse(path, formatted("is too long for a socket; a path of {} bytes or fewer would be right",
                               sizeof address.sun_path - 1));
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

// Binds or connects; 0 or the number of an error.
int error_of(int (*call)(int, const sockaddr*, socklen_t), socket_handle socket, const sockaddr_un& address) {
    const auto* const name = reinterpret_cast<const sockaddr*>(&address);
    return call(descriptor_of(socket), name, sizeof address) == 0 ? 0 : errno;
}

socket_handle new_socket(const std::string& path) {
    const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (made < 0) {
        refuse(path, error_text(errno));
    }
    return static_cast<socket_handle>(made);
}

// Nobody answers at the socket of a simulator that was killed.
void remove_stale(const std::string& path, const sockaddr_un& address) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        return;
    }
    if (!S_ISSOCK(found.st_mode)) {
        refuse(path, "is there and no socket; another name would be right");
    }
    socket_handle probe = new_socket(path);
    const int error = error_of(&::connect, probe, address);
    close_socket(probe);
    if (error == 0 || would_wait(error)) {
        refuse(path, "a program that runs listens there; another name would be right");
    }
    if (error != ECONNREFUSED) {
        refuse(path, error_text(error));
    }
    ::unlink(path.c_str()); // where it fails, so does the bind
}

} // namespace

control_socket::control_socket(std::string path) : path_(std::move(path)) {
    const sockaddr_un address = address_of(path_);
    remove_stale(path_, address);
    listener_ = new_socket(path_);
    // The file has the rights of the socket from the moment it is there.
    const bool is_private = ::fchmod(descriptor_of(listener_), S_IRUSR | S_IWUSR) == 0;
    const int error = is_private ? error_of(&::bind, listener_, address) : errno;
    struct stat file {};
    if (error != 0 || ::listen(descriptor_of(listener_), most_that_wait) != 0 ||
        ::lstat(path_.c_str(), &file) != 0) {
        const std::string why = error_text(error != 0 ? error : errno);
        close_socket(listener_);
        refuse(path_, why);
    }
    file_ = file.st_ino;
}

control_socket::~control_socket() {
    struct stat found {};
    if (::lstat(path_.c_str(), &found) == 0 && found.st_ino == file_) {
        ::unlink(path_.c_str());
    }
    close_socket(listener_);
}

socket_handle control_socket::accept() noexcept {
    const int taken = ::accept4(descriptor_of(listener_), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    return taken < 0 ? invalid_socket : static_cast<socket_handle>(taken);
}

std::string control_connection::receive() {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::recv(descriptor_of(socket_), bytes.data(), bytes.size(), 0);
    if (count > 0) {
        return {bytes.data(), static_cast<std::size_t>(count)};
    }
    ended_ = count == 0 || !would_wait(errno);
    return {};
}

std::size_t control_connection::send(std::string_view bytes) {
    const ssize_t count = ::send(descriptor_of(socket_), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) {
        gone_ = gone_ || !would_wait(errno);
        return 0;
    }
    return static_cast<std::size_t>(count);
}

bool control_connection::is_gone() noexcept {
    pollfd asked{descriptor_of(socket_), 0, 0};
    gone_ = gone_ || (::poll(&asked, 1, 0) > 0 && (asked.revents & (POLLHUP | POLLERR)) != 0);
    return gone_;
}

} // namespace vantu::orvanta::simulator
