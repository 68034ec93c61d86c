// The scripts at the control socket: each has a console of its own, and answers that wait to be read.
#pragma once

#include "simulator/control/console.hpp"
#include "simulator/control/control_socket.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>

namespace vantu::orvanta::simulator {

class control_scripts {
  public:
    // The next ones wait until one of these is gone.
    static constexpr std::size_t most_scripts = 16;
    // A script that leaves more answers than these unread is shut out. The system holds some more.
    static constexpr std::size_t most_unread_bytes = 1U << 20U;

    using make_console = std::function<console(console::print_function print)>;

    // Throws as control_socket does.
    control_scripts(std::string path, make_console make);
    ~control_scripts();
    control_scripts(const control_scripts&) = delete;
    control_scripts& operator=(const control_scripts&) = delete;

    // Takes the lines that have come, does them as consoles do, and sends the answers. Never waits.
    void attend(std::int64_t now_ns);

  private:
    class script;

    control_socket socket_;
    make_console make_;
    std::list<script> scripts_;
};

} // namespace vantu::orvanta::simulator
