// The client library in an Asio io_context, with a timer for its keep-alives and signals for Ctrl-C:
// usage: asio_loop PORT [STATES].
#include "states.h"

#include <asio.hpp>
#include <chrono>
#include <csignal>

namespace {

class states_in_asio {
  public:
    states_in_asio(asio::io_context& loop, states& printed)
        : loop_(loop), printed_(printed), service_(loop, handle_of(printed)), timer_(loop),
          signals_(loop, SIGINT, SIGTERM) {
        signals_.async_wait([this](asio::error_code, int) { loop_.stop(); });
        turn();
        watch();
    }
    // The library closes its handle itself.
    ~states_in_asio() { service_.release(); }
    states_in_asio(const states_in_asio&) = delete;
    states_in_asio& operator=(const states_in_asio&) = delete;

  private:
    static int handle_of(const states& printed) {
        std::intptr_t handle = -1;
        vantu_orvanta_wait_handle(printed.context, &handle);
        return static_cast<int>(handle);
    }

    // After each wait, whatever ended it.
    void turn() {
        if (!states_poll(&printed_)) {
            loop_.stop();
            return;
        }
        std::uint64_t due_ns = 0;
        vantu_orvanta_next_due(printed_.context, &due_ns);
        // This ends the wait for the time before, with an error.
        timer_.expires_at(std::chrono::steady_clock::time_point(std::chrono::nanoseconds(due_ns)));
        timer_.async_wait([this](asio::error_code error) {
            if (!error) {
                turn();
            }
        });
    }

    void watch() {
        service_.async_wait(asio::posix::stream_descriptor::wait_read, [this](asio::error_code) {
            turn();
            watch();
        });
    }

    asio::io_context& loop_;
    states& printed_;
    asio::posix::stream_descriptor service_;
    asio::steady_timer timer_;
    asio::signal_set signals_;
};

} // namespace

int main(int argc, char** argv) {
    states printed{};
    if (!states_begin(&printed, argc, argv)) {
        return 1;
    }
    {
        asio::io_context loop;
        const states_in_asio client(loop, printed);
        loop.run();
    }
    return states_end(&printed);
}
