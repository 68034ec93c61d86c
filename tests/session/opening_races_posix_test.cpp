// Calls of another thread at the worst moment: just before a device that is kept open is opened again.
#include "scripted_session.hpp"
#include "support/system_calls.hpp"

#include <future>
#include <utility>

namespace {

using namespace orvanta_tests;
using vantu::orvanta::session;

// A session that keeps device 5 open. The service hears its openings and closings, and answers none of them
// once the device has gone and come back: each datagram that is sent from there on counts.
class a_device_that_comes_back : public testing::Test {
  protected:
    a_device_that_comes_back() {
        service.respond_with([this](const bytes& request) { return answers_to(request); });
        auto options = options_for(service);
        options.keep_alive = 1h;
        connected = std::make_unique<session>(options);
        connected->open(5).value();
    }

    // Runs before the nth datagram that the session sends by itself or for other threads, as one of those.
    void before(int nth, std::function<void()> action) {
        const auto elsewhere = [action = std::move(action)] { std::thread(action).join(); };
        calls.before(system_call::sendto, 1 + nth, elsewhere); // the service's own is the first
    }

    void come_back() {
        mute = true;
        service.push(datagram({op(17, 0, id_5), device_listed(5, 1), details_of(5)}));
    }

    // The openings (18) and closings (20) from the beginning. The first answer comes after what the session's
    // thread was about, the second after the service has heard of that.
    std::vector<int> asked_for() {
        EXPECT_EQ(last_action.get_future().wait_for(patience), std::future_status::ready);
        EXPECT_TRUE(connected->get_orientation(5));
        EXPECT_TRUE(connected->get_orientation(5));
        const std::lock_guard lock(mutex);
        return heard_of;
    }

    std::mutex mutex;
    std::vector<int> heard_of;
    std::atomic<bool> mute{false};
    scripted_service service;
    std::unique_ptr<session> connected;
    scripted_calls calls;
    std::promise<void> last_action;

  private:
    std::vector<bytes> answers_to(const bytes& request) {
        const std::uint8_t code = request.at(7);
        if (code == 47) {
            return {datagram({op(47, request.at(10), join({id_5, bytes(16)}))})};
        }
        if (code == 18 || code == 20) {
            const std::lock_guard lock(mutex);
            heard_of.push_back(code);
            if (mute) {
                return {};
            }
        }
        return service_of_device_5()(request);
    }
};

TEST_F(a_device_that_comes_back, stays_closed_when_it_is_closed_just_before_it_is_opened_again) {
    before(1, [this] {
        connected->close(5, nullptr);
        last_action.set_value();
    });
    come_back();
    EXPECT_EQ(asked_for(), (std::vector<int>{18, 20, 18, 20}));
}

TEST_F(a_device_that_comes_back, stays_closed_whatever_other_device_is_opened) {
    before(1, [this] {
        connected->close(5, nullptr);
        connected->open(6, nullptr);
        last_action.set_value();
    });
    come_back();
    EXPECT_EQ(asked_for(), (std::vector<int>{18, 20, 18, 18, 20}));
}

TEST_F(a_device_that_comes_back, stays_open_when_it_is_closed_and_opened_just_before) {
    before(1, [this] {
        connected->close(5, nullptr);
        connected->open(5, nullptr);
        last_action.set_value();
    });
    come_back();
    EXPECT_EQ(asked_for(), (std::vector<int>{18, 20, 18, 18}));
}

TEST_F(a_device_that_comes_back, stays_open_when_it_is_opened_just_before_it_is_closed_again) {
    before(1, [this] { connected->close(5, nullptr); });
    before(3, [this] {
        connected->open(5, nullptr);
        last_action.set_value();
    });
    come_back();
    EXPECT_EQ(asked_for(), (std::vector<int>{18, 20, 18, 18, 20, 18}));
}

} // namespace
