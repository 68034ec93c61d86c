// Starts the sockets of the process before all tests, for programs that use them without the client
// library.
#include "network/socket.hpp"

namespace {

[[maybe_unused]] const bool sockets_are_started = [] {
    vantu::orvanta::socket_startup();
    return true;
}();

} // namespace
