// The socket layer when memory runs out: at each allocation of a call in turn, the call reports what it
// reports otherwise, throws nothing and keeps no descriptor. Only its log line may be missing.
#include "network/loopback.hpp"
#include "network/socket_waiter.hpp"
#include "runtime/allocation_trap.hpp"
#include "support/library_sockets.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"
#include "support/traps.hpp"
#include "vantu/orvanta/common/assume.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <netdb.h>
#include <new>
#include <string>
#include <unistd.h>
#include <utility>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

// Runs work with its first, second, ... allocation failing, until a run makes no such allocation. Each run
// comes after prepare and must return what is expected and leave the descriptors as they were. Returns the
// number of runs in which an allocation failed.
template <typename Prepare, typename Work, typename Result>
std::size_t fail_each_allocation(Prepare prepare, Work work, const Result& expected) {
    for (std::size_t nth = 1;; ++nth) {
        prepare();
        const auto before = open_descriptors();
        const auto run = [&] {
            const allocation_failure failure(nth);
            const Result result = work();
            return std::pair{result, allocation_failure::happened()};
        };
        std::pair<Result, bool> outcome{expected, true};
        EXPECT_NO_THROW(outcome = run()) << "allocation " << nth;
        EXPECT_EQ(outcome.first, expected) << "allocation " << nth;
        EXPECT_EQ(open_descriptors(), before) << "allocation " << nth;
        if (!outcome.second) {
            return nth - 1;
        }
    }
}

constexpr auto nothing = [] {};
const std::string host = "127.0.0.1";
const std::string unknown_port = "a port that no system knows by this name";

int lowest_free_descriptor() {
    const int descriptor = dup(0);
    ::close(descriptor);
    return descriptor;
}

class memory_that_runs_out : public testing::Test {
  protected:
    // Fails the next calls, whichever memory is there.
    auto failing(system_call call, int error) {
        return [this, call, error] { calls.fail(call, error, 1, scripted_calls::always); };
    }
    auto failing_resolver(int result, int error) {
        return [this, result, error] { calls.end_with(system_call::getaddrinfo, result, error); };
    }

    loopback_socket socket{host};
    loopback_socket peer{host};
    byte_buffer packet{buffer_of({1, 2, 3})};
    buffered_record record;
    log_capture log;
    scripted_calls calls;
};

TEST_F(memory_that_runs_out, leaves_a_failed_look_up_of_the_service_an_os_error) {
    const auto resolve = [] { return resolve_address(host, unknown_port).status; };
    EXPECT_GE(fail_each_allocation(nothing, resolve, socket_status::os_error), 2U);
    EXPECT_GE(fail_each_allocation(failing_resolver(EAI_SYSTEM, ENFILE), resolve, socket_status::os_error),
              2U);
    calls.resolve_to_nothing();
    EXPECT_GE(fail_each_allocation(nothing, resolve, socket_status::os_error), 1U);
}

TEST_F(memory_that_runs_out, leaves_a_failed_opening_its_status) {
    const auto open = [this] { return open_bound_socket(host, peer.port()).status; };
    EXPECT_GE(fail_each_allocation(nothing, open, socket_status::unavailable), 1U);
    EXPECT_GE(fail_each_allocation(failing_resolver(EAI_SYSTEM, ENFILE), open, socket_status::os_error), 2U);
}

// The layer leaves this socket open on purpose: its number is closed after each run.
TEST_F(memory_that_runs_out, leaves_an_opening_without_non_blocking_mode_an_os_error) {
    const int left_open = lowest_free_descriptor();
    const auto open = [left_open] {
        const socket_status status = open_bound_socket(host, "0").status;
        EXPECT_EQ(::close(left_open), 0);
        return status;
    };
    EXPECT_GE(fail_each_allocation(failing(system_call::ioctl, ENOTTY), open, socket_status::os_error), 2U);
}

TEST_F(memory_that_runs_out, hinders_no_opening_and_no_closing) {
    const auto open_and_close = [] {
        opened_socket opened = open_bound_socket(host, "0");
        close_socket(opened.socket);
        return opened.status;
    };
    EXPECT_EQ(fail_each_allocation(nothing, open_and_close, socket_status::ok), 0U);
    EXPECT_EQ(fail_each_allocation(
                  nothing, [] { return default_port() == "54320"; }, true),
              0U);
}

TEST_F(memory_that_runs_out, leaves_a_failed_send_its_status) {
    const auto send = [this] { return send_packet(socket.handle(), packet, peer.address()); };
    EXPECT_GE(fail_each_allocation(failing(system_call::sendto, ENOBUFS), send, socket_status::os_error), 2U);
    EXPECT_EQ(fail_each_allocation(failing(system_call::sendto, EAGAIN), send, socket_status::would_block),
              0U);
    EXPECT_EQ(packet.read_len(), 3U);
}

TEST_F(memory_that_runs_out, leaves_a_failed_receive_its_status) {
    const auto receive = [this] { return recv_packet(socket.handle(), record); };
    EXPECT_EQ(fail_each_allocation(nothing, receive, socket_status::would_block), 0U);
    EXPECT_GE(fail_each_allocation(failing(system_call::recvfrom, EIO), receive, socket_status::os_error),
              2U);
}

TEST_F(memory_that_runs_out, leaves_a_failed_wait_for_a_reply_its_status) {
    const auto arm = [this] { return recv_packet_overlapped(socket.handle(), record); };
    const auto wait = [this] { return get_overlapped_result(socket.handle(), record, 1); };
    EXPECT_EQ(fail_each_allocation(nothing, arm, socket_status::ok), 0U);
    EXPECT_EQ(fail_each_allocation(nothing, wait, socket_status::would_block), 0U);
    EXPECT_GE(fail_each_allocation(failing(system_call::recvmsg, EIO), arm, socket_status::os_error), 2U);
    EXPECT_GE(fail_each_allocation(failing(system_call::recvfrom, EIO), wait, socket_status::os_error), 2U);
}

TEST_F(memory_that_runs_out, ends_a_wait_for_several_sockets_with_false) {
    const auto look = [this] {
        const socket_handle sockets[] = {socket.handle(), peer.handle()};
        return wait_for_packets(sockets, 0);
    };
    EXPECT_EQ(fail_each_allocation(nothing, look, false), 1U);
    EXPECT_GE(fail_each_allocation(failing(system_call::ppoll, ENOMEM), look, false), 2U);
}

TEST_F(memory_that_runs_out, makes_no_waiter_and_hinders_none) {
    std::uint32_t error = 0;
    std::size_t refusals = 0;
    EXPECT_EQ(fail_each_allocation([&] { error = 0; },
                                   [&] {
                                       const auto made = socket_waiter::create(error);
                                       refusals += made == nullptr && error == ENOMEM ? 1 : 0;
                                       return (made == nullptr) == (error != 0);
                                   },
                                   true),
              1U);
    EXPECT_EQ(refusals, 1U);
    const std::unique_ptr<socket_waiter> waiter = socket_waiter::create(error);
    const auto use = [&] {
        const std::uint32_t refused = waiter->watch(socket.handle());
        waiter->wake();
        waiter->clear_wakes();
        const auto waited = waiter->wait_until(0);
        waiter->forget(socket.handle());
        return refused == 0 && waited.outcome == socket_waiter::status::timed_out;
    };
    EXPECT_EQ(fail_each_allocation(nothing, use, true), 0U);
    const auto report = [] {
        log_wait_failure(ENOMEM);
        return true;
    };
    EXPECT_GE(fail_each_allocation(nothing, report, true), 2U);
}

// These return a text, for which there may be no memory.
TEST_F(memory_that_runs_out, leaves_an_address_without_a_text_or_throws) {
    const auto text_or_nothing = [](const std::function<std::string()>& stringify) {
        try {
            return stringify().empty();
        } catch (const std::bad_alloc&) {
            return true;
        }
    };
    const auto refused_socket = [&] {
        return text_or_nothing([this] { return stringify_socket(socket.handle()); });
    };
    const auto refused_address = [&] { return text_or_nothing([] { return stringify_addr(endpoint{}); }); };
    EXPECT_GE(fail_each_allocation(failing(system_call::getsockname, ENOBUFS), refused_socket, true), 2U);
    EXPECT_GE(fail_each_allocation(nothing, refused_address, true), 2U);
}

TEST_F(memory_that_runs_out, drops_a_line_of_the_default_writer_and_no_call) {
    set_log_sink(nullptr);
    testing::internal::CaptureStderr();
    const auto report = [] {
        log_send_failure(ENOBUFS);
        return true;
    };
    EXPECT_GE(fail_each_allocation(nothing, report, true), 3U);
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_THAT(written, testing::EndsWith(
                             "MSG message: unable to send packet with code: No buffer space available\n"));
    EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1);
}

TEST_F(memory_that_runs_out, installs_a_sink_all_the_same) {
    const auto install = [] {
        set_log_sink([](auto&&...) {});
        return true;
    };
    EXPECT_EQ(fail_each_allocation(nothing, install, true), 0U);
}

using memory_that_runs_out_death_test = testing::Test;

TEST_F(memory_that_runs_out_death_test, does_not_save_the_process_from_a_failed_check) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const std::size_t nth : {1U, 2U, 3U}) {
        const auto check = [nth] {
            try {
                const allocation_failure failure(nth);
                assume(1 + 1 == 3);
            } catch (const std::bad_alloc&) {
            }
        };
        EXPECT_EXIT(check(), ended_by_trap, "");
    }
}

} // namespace
} // namespace orvanta_tests
