// The socket that senders share with the one thread that closes it.
#include "runtime/shared_socket.hpp"

#include "runtime/context.hpp"
#include "support/open_handles.hpp"
#include "support/service_session.hpp"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

socket_handle new_socket() {
    static const std::int32_t started = vantu_orvanta_init();
    EXPECT_EQ(started, vantu_orvanta_success);
    const opened_socket opened = open_bound_socket("localhost", "0");
    EXPECT_EQ(opened.status, socket_status::ok);
    return opened.socket;
}

TEST(a_shared_socket, is_closed_at_first_and_gives_no_lease) {
    shared_socket subject;
    EXPECT_FALSE(subject.is_open());
    EXPECT_EQ(shared_socket::lease(subject).get(), invalid_socket);
}

TEST(a_shared_socket, gives_leases_until_it_is_closed_and_again_after_the_next_attach) {
    shared_socket subject;
    for (int round = 0; round < 3; ++round) {
        const socket_handle socket = new_socket();
        subject.attach(socket);
        EXPECT_TRUE(subject.is_open());
        {
            const shared_socket::lease first(subject);
            const shared_socket::lease second(subject);
            EXPECT_EQ(first.get(), socket);
            EXPECT_EQ(second.get(), socket);
        }
        subject.close();
        EXPECT_FALSE(subject.is_open());
        EXPECT_EQ(shared_socket::lease(subject).get(), invalid_socket);
        subject.close();
    }
}

TEST(a_shared_socket, leaves_no_socket_open) {
    EXPECT_EQ(handles_left_by([] {
                  shared_socket subject;
                  subject.attach(new_socket());
                  subject.attach(new_socket());
              }),
              0);
}

TEST(closing_a_shared_socket, waits_for_the_leases_under_way) {
    shared_socket subject;
    subject.attach(new_socket());
    auto first = std::make_unique<shared_socket::lease>(subject);
    auto second = std::make_unique<shared_socket::lease>(subject);
    std::atomic<bool> closed{false};
    std::thread closer([&] {
        subject.close();
        closed = true;
    });
    EXPECT_TRUE(wait_until([&] { return !subject.is_open(); }));
    first.reset();
    EXPECT_FALSE(closed.load());
    second.reset();
    closer.join();
}

TEST(closing_a_shared_socket, does_not_wait_for_those_that_it_refused) {
    shared_socket subject;
    subject.attach(new_socket());
    auto granted = std::make_unique<shared_socket::lease>(subject);
    std::atomic<bool> closed{false};
    std::thread closer([&] {
        subject.close();
        closed = true;
    });
    EXPECT_TRUE(wait_until([&] { return !subject.is_open(); }));
    auto refused = std::make_unique<shared_socket::lease>(subject);
    EXPECT_EQ(refused->get(), invalid_socket);
    granted.reset();
    EXPECT_TRUE(wait_until([&] { return closed.load(); }));
    refused.reset();
    closer.join();
}

// Handle 0 is one that closing only forgets.
TEST(closing_a_shared_socket, ends_every_time_beside_a_thread_that_never_stops_sending) {
    shared_socket subject;
    std::atomic<bool> stop{false};
    std::thread sender([&] {
        while (!stop) {
            const shared_socket::lease lease(subject);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 2'000; ++round) {
        subject.attach(0);
        std::this_thread::yield();
        subject.close();
    }
    stop = true;
    sender.join();
}

// The goodbye of the service while threads call requests on the connection that is being closed.
void close_against(int threads) {
    service_session session;
    auto granted = std::make_unique<shared_socket::lease>(session.context->socket);
    session.service.push(goodbye_received());
    std::atomic<bool> closed{false};
    std::thread poller([&] {
        EXPECT_EQ(poll_until_something(session.context).event.event_type, +vantu_orvanta_event_disconnected);
        closed = true;
    });
    EXPECT_TRUE(wait_until([&] { return !session.context->socket.is_open(); }));
    std::atomic<int> calling{0};
    std::atomic<int> wrong_codes{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i) {
        callers.emplace_back([&] {
            for (bool first = true; !stop; first = false) {
                const std::int32_t code = vantu_orvanta_config_save_request(session.context, 5, 0);
                wrong_codes += code != vantu_orvanta_invalid_connection_state ? 1 : 0;
                calling += first ? 1 : 0;
            }
        });
    }
    EXPECT_TRUE(wait_until([&] { return calling.load() == threads; }));
    EXPECT_FALSE(closed.load());
    granted.reset();
    EXPECT_TRUE(wait_until([&] { return closed.load(); }));
    stop = true;
    poller.join();
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(wrong_codes.load(), 0);
}

TEST(a_goodbye_of_the_service, is_taken_while_16_threads_keep_calling_requests) {
    close_against(16);
}

TEST(a_goodbye_of_the_service, is_taken_while_64_threads_keep_calling_requests) {
    close_against(64);
}

} // namespace
} // namespace orvanta_tests
