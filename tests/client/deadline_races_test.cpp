// Answers, deadlines, cancels, ends of all requests and the service's goodbye at once, on several threads:
// each request ends in one of these ways, once.
#include "support/client_session.hpp"

#include <atomic>
#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace orvanta_tests;
using namespace std::chrono_literals;
using vantu::orvanta::client;
using vantu::orvanta::outcome;
using vantu::orvanta::request_options;
using vantu::orvanta::request_ticket;

// One request: the way it ended is written by its handler, on the polling thread.
struct request {
    std::int32_t code{-1};
    bool is_cancelled{false};
    std::atomic<int> calls{0};
    std::atomic<outcome> end{outcome::acknowledged};
    std::atomic<std::uint32_t> error{0};
};

// The requests of one thread, with every kind of deadline, a third of them cancelled.
class sender {
  public:
    explicit sender(client& subject) : thread_([this, &subject] { run(subject); }) {}

    void join() { thread_.join(); }
    [[nodiscard]] const std::deque<request>& requests() const { return requests_; }

  private:
    void run(client& subject) {
        constexpr std::chrono::nanoseconds timeouts[]{0ns, 50us, 1ms, 1h, std::chrono::nanoseconds::max()};
        for (std::size_t i = 0; requests_.empty() || requests_.back().code != 3; ++i) {
            request& one = requests_.emplace_back();
            request_ticket ticket;
            const request_options options{timeouts[i % std::size(timeouts)], &ticket};
            one.code = subject.config_save(
                5,
                [&one](client&, const auto& answer) {
                    ++one.calls;
                    one.end = answer.result;
                    one.error = answer.error == nullptr ? 0 : std::uint32_t{answer.error->status};
                },
                options);
            one.is_cancelled = i % 3 == 0 && subject.cancel(ticket);
            if (one.code == vantu_orvanta_request_queue_full || i % 16 == 0) {
                std::this_thread::sleep_for(100us); // for the others
            }
        }
    }

    std::deque<request> requests_;
    std::thread thread_;
};

TEST(races_of_answer_deadline_cancel_and_end, end_each_request_once_in_one_way) {
    std::atomic<int> received{0}; // outlives the service, which may still read when all has been tested
    client::config callbacks;
    callbacks.on_ack = [](client& from, unsigned) { from.fail_requests(vantu_orvanta_os_socket_error); };
    client_session session(std::move(callbacks));
    session.service().respond_with([&](const bytes& datagram_of_request) {
        const int number = ++received;
        const bytes answer = op(64, datagram_of_request.at(10), join({id_5, {1}}));
        return number % 32 == 0  ? std::vector<bytes>{datagram({op(2, 0)})}
               : number % 2 == 0 ? std::vector<bytes>{datagram({answer})}
                                 : std::vector<bytes>{};
    });
    client& subject = session.client();
    auto* polling = vantu_orvanta_poll_thread_start(subject.context(), client::dispatch_event, &subject);
    std::deque<sender> senders;
    for (int i = 0; i < 3; ++i) {
        senders.emplace_back(subject);
    }
    EXPECT_TRUE(wait_until([&] {
        // Ends all requests: else lost ones without a deadline may come to hold every tag.
        session.service().push(datagram({op(2, 0)}));
        return received > 3000;
    }));
    EXPECT_TRUE(wait_until([&] {
        session.service().push(datagram({op(6, 0)}));
        return vantu_orvanta_poll_thread_result(polling) != 0;
    }));
    for (sender& one : senders) {
        one.join();
    }
    vantu_orvanta_poll_thread_stop(polling);

    std::map<outcome, int> ends;
    int cancels = 0;
    for (const sender& one : senders) {
        for (const request& sent : one.requests()) {
            const bool is_called = sent.code == vantu_orvanta_success && !sent.is_cancelled;
            ASSERT_EQ(sent.calls, is_called ? 1 : 0);
            ends[sent.end] += is_called ? 1 : 0;
            cancels += sent.is_cancelled ? 1 : 0;
            ASSERT_EQ(sent.end == outcome::timed_out, sent.error == vantu_orvanta_timed_out);
        }
    }
    EXPECT_GT(ends[outcome::replied], 0);
    EXPECT_GT(ends[outcome::timed_out], 0);
    EXPECT_GT(ends[outcome::failed], 0);
    EXPECT_GT(cancels, 0);
}

TEST(a_ticket, is_written_before_the_handler_can_run) {
    client_session session;
    session.service().respond_with([](const bytes&) { return std::vector<bytes>{}; });
    client& subject = session.client();
    std::atomic<int> calls{0};
    std::atomic<bool> done{false};
    std::thread dispatching([&] {
        while (!done) {
            subject.expire_requests();
        }
    });
    for (int round = 1; round <= 200; ++round) {
        request_ticket ticket;
        const auto compare = [&](client&, const auto&) {
            EXPECT_NE(ticket, request_ticket{});
            ++calls;
        };
        while (subject.config_save(5, compare, {0ns, &ticket}) != vantu_orvanta_success) {
            std::this_thread::yield(); // the system has no room
        }
        while (calls != round) {
            std::this_thread::yield();
        }
    }
    done = true;
    dispatching.join();
}

} // namespace
