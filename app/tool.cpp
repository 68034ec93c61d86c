// The whole tool, from connecting to "Exit".
#include "app/tool.hpp"

#include "app/callbacks.hpp"
#include "app/main_menu.hpp"

#include "vantu/orvanta/orvanta.h"

namespace vantu::orvanta::app {
namespace {

constexpr const char* client_name = "Device Config";
constexpr std::uint64_t keep_alive_ns = 5'000'000'000;
constexpr std::uint64_t reply_timeout_ns = 1'000'000'000;

// 'Find device' is the banner's own wording; the menu says "Find Orvanta3".
constexpr const char* banner =
    "Vantu Orvanta Command Line Interface\nPlease make sure to start with the 'Find device'\n";

} // namespace

int run_tool(console& terminal) {
    vantu_orvanta_init();
    application_state state;
    client service(make_callbacks(state, terminal));
    check_result(vantu_orvanta_connect(service.context(), client_name, 0, 0, keep_alive_ns, reply_timeout_ns),
                 "client.connect");
    vantu_orvanta_poll_thread* thread =
        vantu_orvanta_poll_thread_start(service.context(), &client::dispatch_event, &service);
    terminal.print("%s", banner);
    session current{terminal, service, state};
    run_main_menu(current);
    vantu_orvanta_poll_thread_stop(thread);
    return 0;
}

} // namespace vantu::orvanta::app
