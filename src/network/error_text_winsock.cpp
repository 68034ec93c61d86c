// Winsock's error numbers as text: the system's message table first, then one of our own.
#include "socket_shared.hpp"

#include <algorithm>
#include <array>
#include <winsock2.h>

namespace vantu::orvanta::socket_shared {
namespace {

struct own_text {
    std::uint32_t error;
    const char* text;
};

// The errors that a socket of this library can meet.
constexpr std::array own_texts{
    own_text{WSAEINTR, "The call was interrupted."},
    own_text{WSAEACCES, "Access to the address is not allowed."},
    own_text{WSAEFAULT, "A pointer is not valid."},
    own_text{WSAEINVAL, "An argument is not valid."},
    own_text{WSAEMFILE, "There are too many open sockets."},
    own_text{WSAEWOULDBLOCK, "The call would have to wait."},
    own_text{WSAENOTSOCK, "The handle is not a socket."},
    own_text{WSAEMSGSIZE, "The datagram is larger than the room for it."},
    own_text{WSAEAFNOSUPPORT, "The address family is not supported."},
    own_text{WSAEADDRINUSE, "The address is in use."},
    own_text{WSAEADDRNOTAVAIL, "The address is not one of this computer."},
    own_text{WSAENETDOWN, "The network is down."},
    own_text{WSAENETUNREACH, "The network cannot be reached."},
    own_text{WSAECONNRESET, "The connection was reset by the other side."},
    own_text{WSAENOBUFS, "There is no buffer space left."},
    own_text{WSAECONNREFUSED, "The connection was refused."},
    own_text{WSAEHOSTUNREACH, "The host cannot be reached."},
    own_text{WSASYSNOTREADY, "The network is not ready for use."},
    own_text{WSAVERNOTSUPPORTED, "The version of Windows Sockets is not supported."},
    own_text{WSANOTINITIALISED, "Windows Sockets was not started."},
    own_text{WSATYPE_NOT_FOUND, "The service is not known."},
    own_text{WSAHOST_NOT_FOUND, "The host is not known."},
    own_text{WSATRY_AGAIN, "The host could not be looked up this time."},
    own_text{WSANO_RECOVERY, "The look-up failed for good."},
    own_text{WSANO_DATA, "The host has no address of this kind."},
};
static_assert(std::is_sorted(own_texts.begin(), own_texts.end(),
                             [](const own_text& left, const own_text& right) {
                                 return left.error < right.error;
                             }));

const char* own_text_of(std::uint32_t error) {
    const auto* found = std::find_if(own_texts.begin(), own_texts.end(),
                                     [error](const own_text& row) { return row.error == error; });
    return found == own_texts.end() ? nullptr : found->text;
}

} // namespace

std::string error_text(std::int64_t error) {
    const auto number = static_cast<DWORD>(error);
    std::array<char, 256> text{};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        number, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    return one_line_of(length == 0 ? own_text_of(number) : text.data());
}

} // namespace vantu::orvanta::socket_shared
