// A session's steps.
#include "sessions/random_session.hpp"

#include "sessions/chance.hpp"
#include "sessions/random_faults.hpp"
#include "sessions/reference_reader.hpp"
#include "sessions/virtual_world.hpp"
#include "simulator/simulation/simulation.hpp"
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace session_tests {
namespace {

using namespace vantu::orvanta;
using library_client = vantu::orvanta::client;

constexpr std::uint64_t reply_timeout_ns = 100 * ns_per_millisecond;
constexpr std::uint64_t keep_alive_ns = 5'000 * ns_per_millisecond;
constexpr int most_polls_in_a_row = 600;

std::string text_of(const expected_poll& one) {
    return "code " + std::to_string(one.code) + ", event " + std::to_string(one.event_type) + ", device " +
           std::to_string(one.device_id) + ", tag " + std::to_string(one.tag);
}

simulator::simulation_settings random_settings(chance& choose) {
    constexpr double rates[]{0, 20, 100, 1000};
    simulator::simulation_settings settings;
    settings.announce =
        choose.one_in(2) ? simulator::announce_order::before : simulator::announce_order::after;
    settings.single_client = choose.one_in(10);
    settings.rate_hz = rates[choose.below(4)];
    settings.seed = choose.any();
    const std::uint64_t orvanta3_count = choose.below(choose.one_in(20) ? 60 : 4);
    settings.devices = simulator::make_devices(orvanta3_count, choose.below(3));
    return settings;
}

class session {
  public:
    explicit session(std::uint64_t seed) : choose_(seed), faults_(random_faults(choose_)) {}

    [[nodiscard]] const std::vector<fault_text>& faults() const { return faults_; }

    session_counts run() {
        // Thousands of sessions have nothing to say to anybody.
        set_log_sink([](std::uint64_t, log_level, const std::string&, std::uint64_t, const std::string&) {});
        simulator::simulation service(random_settings(choose_));
        for (const auto& [name, value] : faults_) {
            service.add_fault(simulator::parse_fault(simulator::find_fault(name)->kind, value));
        }
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
            client_.reset();
        } catch (const end_of_process&) {
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
            throw std::runtime_error("a socket was left open");
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
                happen_to_service();
            }
        }
    }

    void connect() {
        (void)world_->take_deliveries();
        std::optional<int> code;
        try {
            code = vantu_orvanta_connect_ports(client_->context(), "0", "54320", "random", 0, 0,
                                               keep_alive_ns, reply_timeout_ns);
        } catch (const end_of_process&) {
        }
        const std::vector<delivery> taken = world_->take_deliveries();
        const expected_handshake expected =
            reader_.connect(taken.empty() ? std::nullopt : std::optional(taken.front()));
        if (taken.size() > 1 || expected.ends_the_process != !code || (code && *code != expected.code)) {
            throw std::runtime_error("connect gave " + (code ? std::to_string(*code) : "the end") + " not " +
                                     std::to_string(expected.code));
        }
        ++counts_.connects;
        if (!code) {
            end_was_expected_ = true;
            throw end_of_process("a body of the handshake was cut short");
        }
        ++counts_.connect_codes[*code];
    }

    // True while there may be more.
    bool poll_once() {
        (void)world_->take_deliveries();
        vantu_orvanta_event event{};
        const int code = vantu_orvanta_poll(client_->context(), &event);
        const std::vector<delivery> taken = world_->take_deliveries();
        const expected_poll expected =
            reader_.poll(taken.empty() ? std::nullopt : std::optional(taken.front()));
        expected_poll happened{code, event.event_type, event.device_id, event.tag};
        if (code != 0) {
            happened = {code, expected.event_type, expected.device_id, expected.tag};
        }
        if (taken.size() > 1 || happened != expected) {
            throw std::runtime_error("a poll gave " + text_of(happened) + " not " + text_of(expected));
        }
        ++counts_.polls;
        ++counts_.poll_codes[code];
        if (code == 0) {
            client_->dispatch(event);
        }
        return reader_.is_connected() && (code != 0 || event.event_type != 0);
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

    void happen_to_service() {
        switch (choose_.below(4)) {
        case 0:
            (void)service_->unplug(static_cast<std::uint32_t>(choose_.between(1, 4)));
            break;
        case 1:
            (void)service_->plug(static_cast<std::uint8_t>(choose_.between(1, 2)));
            break;
        case 2:
            if (choose_.one_in(3)) {
                service_->restart();
            }
            break;
        default:
            if (choose_.one_in(4)) {
                service_->say_goodbye();
            }
        }
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
        int code = 0;
        switch (choose_.below(10)) {
        case 0:
        case 1:
            code = asked.device_open(device, 0, handler<void>());
            break;
        case 2:
            code = asked.device_close(device, handler<void>());
            break;
        case 3:
            code = asked.orientation_get(device, handler<vantu_orvanta_orientation>());
            break;
        case 4:
            code = asked.config_save(device, handler<vantu_orvanta_config_save>());
            break;
        case 5:
            code = asked.config_gravity_compensation_get(
                device, handler<vantu_orvanta_config_gravity_compensation>());
            break;
        case 6:
            code = asked.config_gravity_compensation_set(
                device, {1, 0.5F}, handler<vantu_orvanta_config_gravity_compensation>());
            break;
        case 7:
            code = asked.config_torque_scaling_get(device, handler<vantu_orvanta_config_torque_scaling>());
            break;
        case 8:
            code = asked.config_torque_scaling_set(device, {static_cast<std::uint8_t>(choose_.below(3))},
                                                   handler<vantu_orvanta_config_torque_scaling>());
            break;
        default:
            code = asked.config_handedness_set(device, static_cast<std::uint8_t>(choose_.below(4)),
                                               handler<vantu_orvanta_config_handedness>());
        }
        calls_[index].sent = code == 0;
        const bool refused_here = device == 0 || !reader_.is_connected();
        if (refused_here && code == 0) {
            throw std::runtime_error("a request that cannot be sent gave 0");
        }
        ++counts_.requests;
    }

    void check_devices() {
        std::uint32_t ids[512];
        std::size_t count = 512;
        const int code = vantu_orvanta_device_ids(client_->context(), ids, &count);
        if (!reader_.is_connected()) {
            if (code != 3) {
                throw std::runtime_error("device_ids gave " + std::to_string(code) + " when not connected");
            }
            return;
        }
        std::map<std::uint32_t, expected_device> table;
        for (std::size_t i = 0; code == 0 && i < count; ++i) {
            vantu_orvanta_device device{};
            // Device 0 is in the table where somebody announced it, and cannot be asked for.
            if (ids[i] != 0 && vantu_orvanta_device_info(client_->context(), ids[i], &device) != 0) {
                throw std::runtime_error("a listed device has no record");
            }
            table[ids[i]] = {device.device_type, device.update_count};
        }
        auto expected = reader_.devices();
        if (const auto nobody = expected.find(0); nobody != expected.end()) {
            nobody->second = {};
        }
        if (code != 0 || table != expected) {
            throw std::runtime_error("the device table is not what was delivered");
        }
    }

    void check_handlers() {
        for (const one_shot& one : calls_) {
            if (one.calls > (one.sent ? 1 : 0)) {
                throw std::runtime_error("a one-shot handler was called " + std::to_string(one.calls) +
                                         " times, its request " + (one.sent ? "sent" : "not sent"));
            }
            counts_.handlers += static_cast<std::uint64_t>(one.calls);
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

void session_counts::add(const session_counts& other) {
    connects += other.connects;
    polls += other.polls;
    requests += other.requests;
    handlers += other.handlers;
    ends_of_process += other.ends_of_process;
    for (const auto& [code, times] : other.connect_codes) {
        connect_codes[code] += times;
    }
    for (const auto& [code, times] : other.poll_codes) {
        poll_codes[code] += times;
    }
    for (std::size_t i = 0; i < faults.size(); ++i) {
        faults[i] += other.faults[i];
    }
}

session_counts run_random_session(std::uint64_t seed) {
    return session(seed).run();
}

std::string faults_of_session(std::uint64_t seed) {
    std::string text;
    const session named(seed);
    for (const auto& [name, value] : named.faults()) {
        text += "  " + name + ' ' + value + '\n';
    }
    return text.empty() ? "  none\n" : text;
}

} // namespace session_tests
