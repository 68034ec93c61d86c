// The console tool: connects to the service and serves the user until "Exit" is chosen. An exception ends the
// process: without a connection (labelled "client.connect"), when a request cannot be sent, and when the
// input ends at a prompt.
#include "app/callbacks.hpp"
#include "app/menus.hpp"

#include "vantu/orvanta/orvanta.h"

#include <cstdio>
#include <iostream>

namespace vantu::orvanta::app {
namespace {

constexpr const char* client_name = "Device Config";
constexpr std::uint64_t keep_alive_ns = 5'000'000'000;
constexpr std::uint64_t reply_timeout_ns = 1'000'000'000;

// 'Find device' is the banner's own wording; the menu says "Find Orvanta3".
constexpr const char* banner =
    "Vantu Orvanta Command Line Interface\nPlease make sure to start with the 'Find device'\n";

void run_tool(console& terminal) {
    vantu_orvanta_init();
    application_state state;
    client connection(make_callbacks(state, terminal));
    check_result(
        vantu_orvanta_connect(connection.context(), client_name, 0, 0, keep_alive_ns, reply_timeout_ns),
        "client.connect");
    vantu_orvanta_poll_thread* thread =
        vantu_orvanta_poll_thread_start(connection.context(), &client::dispatch_event, &connection);
    terminal.print("%s", banner);
    session current{terminal, connection, state};
    run_main_menu(current);
    vantu_orvanta_poll_thread_stop(thread);
}

} // namespace
} // namespace vantu::orvanta::app

int main() {
    vantu::orvanta::app::console terminal(std::cin, stdout, stderr);
    vantu::orvanta::app::run_tool(terminal);
}
