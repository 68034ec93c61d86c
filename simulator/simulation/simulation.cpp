// The service, its devices and the stage of faults, by ticks.
#include "simulator/simulation/simulation.hpp"

#include "simulator/service/device_shelf.hpp"
#include "simulator/simulation/observation.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

// Ids of clients differ from seed to seed, and go on through restarts.
std::uint64_t first_client_id_of(std::uint64_t seed) {
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U;
    constexpr std::uint64_t upper_half = 0xFFFFFFFF00000000U;
    return ((seed * odd) & upper_half) + 1;
}

// The first tick at or behind the time; never_ns stays what it is.
std::int64_t tick_at_or_behind(std::int64_t time_ns) {
    const std::int64_t above = time_ns % tick_ns == 0 ? 0 : tick_ns - time_ns % tick_ns;
    return time_ns > never_ns - above ? never_ns : time_ns + above;
}

// Set for as long as it lives.
class settling_mark {
  public:
    explicit settling_mark(bool& flag) : flag_(flag) { flag_ = true; }
    ~settling_mark() { flag_ = false; }
    settling_mark(const settling_mark&) = delete;
    settling_mark& operator=(const settling_mark&) = delete;

  private:
    bool& flag_;
};

} // namespace

class simulation::implementation {
  public:
    explicit implementation(simulation_settings settings)
        : shelf(settings.state), stage(settings.seed), core(settings_of(settings), shelved(settings.devices)),
          warn(std::move(settings.warn)), seed(settings.seed) {}

    void receive(const peer& from, std::span<const std::byte> datagram) {
        ++counters.received;
        stage.from_socket(from, datagram, now_ns);
        settle();
    }

    void advance_to(std::int64_t target_ns) {
        const std::int64_t target = target_ns - target_ns % tick_ns;
        while (next_due_ns() <= target) {
            now_ns = next_due_ns();
            carry_out_late_actions();
            stage.tick(now_ns);
            settle();
            core.tick(now_ns);
            settle();
        }
        now_ns = std::max(now_ns, target);
        counters.ticks = static_cast<std::uint64_t>(now_ns / tick_ns);
    }

    [[nodiscard]] std::int64_t next_due_ns() const {
        const std::int64_t next_tick = now_ns + tick_ns;
        const std::int64_t due =
            late_actions.empty() ? std::min(core.next_due_ns(), stage.next_due_ns()) : next_tick;
        return std::max(next_tick, tick_at_or_behind(due));
    }

    // Hands on what waits between service and stage until all is quiet. The observer may call back.
    void settle() {
        if (settling) {
            return;
        }
        const settling_mark mark(settling);
        deliver();
        act(stage.take_actions());
        // What an observer has asked for meanwhile waits for the next tick.
        for (const requested_action& one : stage.take_actions()) {
            late_actions.push_back(one);
        }
    }

    void restart() {
        std::vector<device> devices;
        for (const device& one : core.devices()) {
            devices.push_back(shelf.as_saved(one.id));
        }
        core.restart(std::move(devices));
        ++counters.restarts;
        settle();
    }

    std::uint32_t plug(std::uint8_t device_type) {
        const auto next = shelf.next_free(device_type, core.devices());
        if (!next) {
            return 0;
        }
        shelf.keep(*next);
        core.plug(shelf.as_saved(next->id));
        settle();
        return next->id;
    }

    device_shelf shelf;
    fault_stage stage;
    service core;
    narrate_function warn;
    std::uint64_t seed;
    std::int64_t now_ns{0};
    std::vector<departure> outgoing;
    std::vector<requested_action> late_actions;
    std::function<void(const observed_operation&)> observer;
    simulation_counters counters;
    bool settling{false};

  private:
    service_settings settings_of(const simulation_settings& settings) {
        service_settings made;
        made.announce = settings.announce;
        made.single_client = settings.single_client;
        made.rate_hz = settings.rate_hz;
        made.first_client_id = first_client_id_of(settings.seed);
        made.save = [this](const device& which) { return save(which); };
        made.narrate = settings.narrate;
        return made;
    }

    std::vector<device> shelved(const std::vector<device>& devices) {
        std::vector<device> made;
        for (const device& one : devices) {
            shelf.keep(one);
            made.push_back(shelf.as_saved(one.id));
        }
        return made;
    }

    bool save(const device& which) {
        const std::string failure = shelf.save(which);
        if (!failure.empty() && warn) {
            warn(failure);
        }
        return failure.empty();
    }

    void deliver() {
        for (bool quiet = false; !quiet;) {
            quiet = true;
            for (const arrival& one : stage.take_arrivals()) {
                core.receive(one.from, one.bytes, now_ns);
                observe_operations(one.bytes, communication::direction::to_service, observer);
                quiet = false;
            }
            for (const outgoing_datagram& one : core.take_outgoing()) {
                stage.from_service(one, now_ns);
                quiet = false;
            }
            for (const departure& one : stage.take_departures()) {
                ++counters.sent;
                quiet = false;
                outgoing.push_back(one);
                if (!one.forged) {
                    observe_operations(one.bytes, communication::direction::to_client, observer);
                }
            }
        }
    }

    void act(const std::vector<requested_action>& wanted) {
        if (wanted.empty()) {
            return;
        }
        stage.begin_action();
        for (const requested_action& one : wanted) {
            carry_out(one);
        }
        deliver();
        stage.end_action();
    }

    void carry_out_late_actions() {
        const settling_mark mark(settling);
        act(std::exchange(late_actions, {}));
    }

    void carry_out(const requested_action& what) {
        switch (what.kind) {
        case fault_kind::goodbye:
            what.client ? core.say_goodbye_to(*what.client) : core.say_goodbye();
            break;
        case fault_kind::restart:
            restart();
            break;
        case fault_kind::unplug:
            if (what.argument) {
                core.unplug(*what.argument);
            } else if (!core.devices().empty()) {
                core.unplug(core.devices().front().id);
            }
            break;
        case fault_kind::plug:
            plug(static_cast<std::uint8_t>(what.argument.value_or(vantu_orvanta_device_type_orvanta3)));
            break;
        default:
            break;
        }
    }
};

simulation::simulation(simulation_settings settings)
    : implementation_(std::make_unique<implementation>(std::move(settings))) {}

simulation::~simulation() = default;

void simulation::receive(const peer& from, std::span<const std::byte> datagram) {
    implementation_->receive(from, datagram);
}

void simulation::advance_to(std::int64_t since_start_ns) {
    implementation_->advance_to(since_start_ns);
}

std::int64_t simulation::now_ns() const noexcept {
    return implementation_->now_ns;
}

std::int64_t simulation::next_due_ns() const {
    return implementation_->next_due_ns();
}

std::vector<departure> simulation::take_outgoing() {
    return std::exchange(implementation_->outgoing, {});
}

void simulation::add_fault(const fault_rule& rule) {
    std::vector<peer> peers;
    for (const client& one : clients()) {
        peers.push_back(one.address);
    }
    implementation_->stage.add(rule, peers, now_ns());
    implementation_->settle();
}

fault_stage& simulation::faults() noexcept {
    return implementation_->stage;
}

const fault_stage& simulation::faults() const noexcept {
    return implementation_->stage;
}

std::uint32_t simulation::plug(std::uint8_t device_type) {
    return implementation_->plug(device_type);
}

bool simulation::plug(const device& which) {
    const auto is_same = [&which](const device& one) { return one.id == which.id; };
    if (std::any_of(devices().begin(), devices().end(), is_same)) {
        return false;
    }
    implementation_->core.plug(implementation_->shelf.keep(which));
    implementation_->settle();
    return true;
}

bool simulation::unplug(std::uint32_t device_id) {
    const bool done = implementation_->core.unplug(device_id);
    implementation_->settle();
    return done;
}

bool simulation::configure(std::uint32_t device_id, const configuration& settings) {
    const bool done = implementation_->core.configure(device_id, settings);
    implementation_->settle();
    return done;
}

void simulation::restart() {
    implementation_->restart();
}

void simulation::say_goodbye() {
    implementation_->core.say_goodbye();
    implementation_->settle();
}

void simulation::observe(std::function<void(const observed_operation&)> observer) {
    implementation_->observer = std::move(observer);
}

const std::vector<client>& simulation::clients() const noexcept {
    return implementation_->core.clients();
}

const std::vector<device>& simulation::devices() const noexcept {
    return implementation_->core.devices();
}

const simulation_counters& simulation::counters() const noexcept {
    return implementation_->counters;
}

std::uint64_t simulation::seed() const noexcept {
    return implementation_->seed;
}

} // namespace vantu::orvanta::simulator
