// A session of class client over the flat API: its sockets and clock are the virtual world's, put in their
// place when linking.
#include "sessions/chance.hpp"
#include "sessions/differences.hpp"
#include "sessions/random_service.hpp"
#include "sessions/random_session.hpp"
#include "sessions/reference_reader.hpp"
#include "sessions/virtual_world.hpp"
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using library_client = vantu::orvanta::client;

constexpr std::uint64_t reply_timeout_ns = 100 * ns_per_millisecond;
constexpr std::uint64_t keep_alive_ns = 5'000 * ns_per_millisecond;
constexpr std::int64_t longest_goodbye_ns = 101 * ns_per_millisecond;
constexpr std::uint32_t process_id = 4711; // of the virtual system
constexpr int most_polls_in_a_row = 600;

class session {
  public:
    explicit session(std::uint64_t seed) : choose_(seed), faults_(random_faults(choose_)) {}

    session_counts run() {
        // Thousands of sessions have nothing to say to anybody.
        set_log_sink([](std::uint64_t, log_level, const std::string&, std::uint64_t, const std::string&) {});
        simulator::simulation service(random_settings(choose_));
        add_faults(service, faults_);
        service_ = &service;
        virtual_world world(service);
        world_ = &world;
        client_ = std::make_unique<library_client>(library_client::config{});
        try {
            const std::uint64_t steps = choose_.between(8, 48);
            for (std::uint64_t step = 0; step < steps; ++step) {
                take_step();
            }
            check_devices();
            say_goodbye();
        } catch (const failed_assumption&) {
            client_.reset();
            if (!end_was_expected_) {
                throw;
            }
            ++counts_.ends_of_process;
        } catch (...) {
            client_.reset(); // while there is a world to say goodbye to
            throw;
        }
        if (world.open(0) != 40'000) {
            throw difference("a socket was left open");
        }
        check_handlers();
        for (const simulator::fault_row& row : simulator::faults) {
            counts_.faults[static_cast<std::size_t>(row.kind)] = service.faults().happened(row.kind);
        }
        return counts_;
    }

  private:
    void take_step() {
        if (!reader_.is_connected()) {
            connect();
            return;
        }
        switch (choose_.below(12)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
            poll_on();
            break;
        case 5:
        case 6:
        case 7:
            request();
            break;
        case 8:
        case 9:
        case 10:
            pass_time();
            break;
        default:
            if (choose_.one_in(2)) {
                check_devices();
            } else {
                happen_to(*service_, choose_);
            }
        }
    }

    void connect() {
        forget_traffic();
        std::optional<int> code;
        try {
            code = vantu_orvanta_connect_ports(client_->context(), "0", "54320", "random", 12, 34,
                                               keep_alive_ns, reply_timeout_ns);
        } catch (const failed_assumption&) {
        }
        compare_sent(world_->sent(),
                     {reference_connect({12, 34, keep_alive_ns, process_id, "random", version.version_text})},
                     "a connect");
        const std::vector<packet> taken = world_->taken();
        const expected_handshake expected = taken.empty() ? reference_reader::connect_without_answer()
                                                          : reader_.connect(taken.front(), world_->now_ns());
        if (taken.size() > 1 || expected.ends_the_process != !code || (code && *code != expected.code)) {
            throw difference("connect gave " + (code ? std::to_string(*code) : "the end") + ", not " +
                             std::to_string(expected.code));
        }
        ++counts_.connects;
        if (!code) {
            end_was_expected_ = true;
            throw failed_assumption("a body of the handshake was cut short");
        }
        ++counts_.connect_codes[*code];
    }

    // True while there may be more.
    bool poll_once() {
        forget_traffic();
        vantu_orvanta_event event{};
        const int code = vantu_orvanta_poll(client_->context(), &event);
        const std::vector<packet> taken = world_->taken();
        const expected_poll expected =
            taken.empty() ? reader_.poll(world_->now_ns()) : reader_.poll(world_->now_ns(), taken.front());
        if (taken.size() > 1 || code != expected.code) {
            throw difference("a poll gave " + said(code, expected.code));
        }
        if (expected.tells_event) {
            compare_bytes(event, expected.event, "an event");
        }
        compare_sent(world_->sent(),
                     std::vector<packet>(expected.keep_alive ? 1 : 0, reference_datagram(1, 0, {})),
                     "a poll");
        ++counts_.polls;
        ++counts_.poll_codes[code];
        if (code == 0) {
            client_->dispatch(event);
        }
        return reader_.is_connected() && (code != 0 || event.event_type != 0);
    }

    void say_goodbye() {
        forget_traffic();
        const std::int64_t begin_ns = world_->now_ns();
        client_.reset();
        const std::size_t goodbyes = reader_.is_connected() ? 1 : 0;
        compare_sent(world_->sent(), std::vector<packet>(goodbyes, reference_datagram(5, 0, {})),
                     "a goodbye");
        if (world_->now_ns() - begin_ns > longest_goodbye_ns) {
            throw difference("a goodbye took too long");
        }
    }

    void forget_traffic() {
        (void)world_->taken();
        (void)world_->sent();
    }

    void poll_on() {
        for (int polls = 0; polls < most_polls_in_a_row && poll_once(); ++polls) {
        }
    }

    // From a tenth of a millisecond to seconds.
    void pass_time() {
        const std::int64_t unit = ns_per_millisecond / 10;
        world_->advance_to(world_->now_ns() +
                           unit * static_cast<std::int64_t>(1 + choose_.below(1ULL << choose_.below(16))));
    }

    // A handler that counts its calls, and now and then asks for more.
    template <typename Record> reply_handler<Record> handler() {
        calls_.push_back({});
        return [this, index = calls_.size() - 1](library_client&, const reply<Record>&) {
            ++calls_[index].calls;
            if (choose_.one_in(8) && calls_.size() < 200) {
                request();
            }
        };
    }

    void request() {
        const auto device = static_cast<std::uint32_t>(choose_.one_in(8) ? 1001 : choose_.below(5));
        library_client& asked = *client_;
        const std::size_t index = calls_.size();
        const auto value = static_cast<std::uint8_t>(choose_.below(4));
        const vantu_orvanta_config_gravity_compensation gravity{1, 0.5F};
        int code = 0;
        packet expected; // with tag 0
        (void)world_->sent();
        switch (choose_.below(10)) {
        case 0:
        case 1:
            code = asked.device_open(device, 0x0201, handler<void>());
            expected = reference_datagram(18, 0, {{device, 4}, {0x0201, 2}});
            break;
        case 2:
            code = asked.device_close(device, handler<void>());
            expected = reference_datagram(20, 0, {{device, 4}});
            break;
        case 3:
            code = asked.orientation_get(device, handler<vantu_orvanta_orientation>());
            expected = reference_datagram(47, 0, {{device, 4}});
            break;
        case 4:
            code = asked.config_save(device, handler<vantu_orvanta_config_save>());
            expected = reference_datagram(64, 0, {{device, 4}});
            break;
        case 5:
            code = asked.config_gravity_compensation_get(
                device, handler<vantu_orvanta_config_gravity_compensation>());
            expected = reference_datagram(66, 0, {{device, 4}});
            break;
        case 6:
            code = asked.config_gravity_compensation_set(
                device, gravity, handler<vantu_orvanta_config_gravity_compensation>());
            expected = reference_datagram(67, 0, {{device, 4}, {1, 1}, {0x3F000000, 4}});
            break;
        case 7:
            code = asked.config_torque_scaling_get(device, handler<vantu_orvanta_config_torque_scaling>());
            expected = reference_datagram(68, 0, {{device, 4}});
            break;
        case 8:
            code = asked.config_torque_scaling_set(device, {value},
                                                   handler<vantu_orvanta_config_torque_scaling>());
            expected = reference_datagram(69, 0, {{device, 4}, {value, 1}});
            break;
        default:
            code = asked.config_handedness_set(device, value, handler<vantu_orvanta_config_handedness>());
            expected = reference_datagram(71, 0, {{device, 4}, {value, 1}});
        }
        calls_[index].sent = code == 0;
        check_request(code, device, std::move(expected));
        ++counts_.requests;
    }

    // A request that was sent has the tag that it chose.
    void check_request(int code, std::uint32_t device, packet expected) {
        std::vector<packet> sent = world_->sent();
        if (code == 0 && (device == 0 || !reader_.is_connected())) {
            throw difference("a request that cannot be sent gave 0");
        }
        if (code != 0) {
            compare_sent(sent, {}, "a failed request");
            return;
        }
        reader_.note_send(world_->now_ns());
        constexpr std::size_t place_of_tag = 10;
        if (sent.size() == 1 && sent[0].size() > place_of_tag) {
            if (sent[0][place_of_tag] == std::byte{0}) {
                throw difference("a request with a handler has no tag");
            }
            expected[place_of_tag] = sent[0][place_of_tag];
        }
        compare_sent(sent, {std::move(expected)}, "a request");
    }

    void check_devices() {
        std::vector<std::uint32_t> ids(512);
        std::size_t count = ids.size();
        const int code = vantu_orvanta_device_ids(client_->context(), ids.data(), &count);
        if (!reader_.is_connected()) {
            if (code != vantu_orvanta_invalid_connection_state) {
                throw difference("device_ids gave " + std::to_string(code) + " when not connected");
            }
            return;
        }
        ids.resize(count);
        if (code != 0 || ids != reader_.device_ids()) {
            throw difference("the ids are others, or in another order");
        }
        for (const std::uint32_t id : ids) {
            if (id == 0) {
                continue; // in the table where it was announced, and cannot be asked for
            }
            vantu_orvanta_device device{};
            if (vantu_orvanta_device_info(client_->context(), id, &device) != 0) {
                throw difference("a listed device has no record");
            }
            compare_bytes(device, *reader_.device(id), "a device's record");
        }
    }

    void check_handlers() {
        for (const one_shot& one : calls_) {
            if (one.calls > (one.sent ? 1 : 0)) {
                throw difference("a one-shot handler was called " + std::to_string(one.calls) +
                                 " times, its request " + (one.sent ? "sent" : "not sent"));
            }
            counts_.answers += static_cast<std::uint64_t>(one.calls);
        }
    }

    struct one_shot {
        int calls{0};
        bool sent{false};
    };

    chance choose_;
    std::vector<fault_text> faults_;
    simulator::simulation* service_{nullptr};
    virtual_world* world_{nullptr};
    std::unique_ptr<library_client> client_;
    reference_reader reader_;
    std::vector<one_shot> calls_;
    bool end_was_expected_{false};
    session_counts counts_;
};

} // namespace

session_counts run_random_session(std::uint64_t seed) {
    return session(seed).run();
}

} // namespace orvanta_tests
