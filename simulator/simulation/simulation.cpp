#include "simulator/simulation/simulation.hpp"

#include "simulator/simulation/verbs.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

// Ids of clients differ from seed to seed, and go on through restarts.
std::uint64_t first_client_id_of(std::uint64_t seed) {
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U;
    constexpr std::uint64_t upper_half = 0xFFFFFFFF00000000U;
    return ((seed * odd) & upper_half) + 1;
}

// The first tick at the time or after it; never_ns stays what it is.
std::int64_t tick_not_before(std::int64_t time_ns) {
    const std::int64_t above =
        time_ns % simulation_tick_ns == 0 ? 0 : simulation_tick_ns - time_ns % simulation_tick_ns;
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

simulation::simulation(simulation_settings settings)
    : registry_(settings.state), pipeline_(settings.seed),
      service_(settings_of(settings), registered(settings.devices)), warn_(std::move(settings.warn)),
      seed_(settings.seed) {
    if (settings.narrate) {
        pipeline_.tell([narrate = settings.narrate](const fault_note& note) { narrate(note_text(note)); });
    }
}

void simulation::receive(const peer& from, std::span<const std::byte> datagram) {
    ++counters_.received;
    pipeline_.from_socket(from, datagram, now_ns_);
    settle();
}

void simulation::advance_to(std::int64_t target_ns) {
    const std::int64_t target = target_ns - target_ns % simulation_tick_ns;
    while (next_due_ns() <= target) {
        now_ns_ = next_due_ns();
        carry_out_late_actions();
        pipeline_.tick(now_ns_);
        settle();
        service_.tick(now_ns_);
        settle();
    }
    now_ns_ = std::max(now_ns_, target);
}

std::int64_t simulation::next_due_ns() const {
    const std::int64_t next_tick = now_ns_ + simulation_tick_ns;
    const std::int64_t due =
        late_actions_.empty() ? std::min(service_.next_due_ns(), pipeline_.next_due_ns()) : next_tick;
    return std::max(next_tick, tick_not_before(due));
}

void simulation::add_fault(const fault_rule& rule) {
    std::vector<peer> peers;
    for (const client& one : clients()) {
        peers.push_back(one.address);
    }
    pipeline_.add(rule, peers, now_ns_);
    settle();
}

std::uint32_t simulation::plug(std::uint8_t device_type) {
    const auto next = registry_.next_free(device_type, service_.devices());
    if (!next) {
        return 0;
    }
    registry_.keep(*next);
    operations_.know(next->id);
    service_.plug(registry_.as_saved(next->id));
    settle();
    return next->id;
}

bool simulation::unplug(std::uint32_t device_id) {
    const bool done = service_.unplug(device_id);
    settle();
    return done;
}

bool simulation::configure(std::uint32_t device_id, const configuration& settings) {
    const bool done = service_.configure(device_id, settings);
    settle();
    return done;
}

void simulation::send(const peer& to, std::span<const std::byte> datagram) {
    outgoing_datagram made{to};
    const std::size_t size = std::min<std::size_t>(datagram.size(), made.bytes.write_len());
    std::copy_n(datagram.begin(), size, made.bytes.unwritten());
    made.bytes.skip_write(size);
    pipeline_.from_service(made, now_ns_);
    settle();
}

void simulation::restart() {
    std::vector<device> devices;
    for (const device& one : service_.devices()) {
        devices.push_back(registry_.as_saved(one.id));
    }
    service_.restart(std::move(devices));
    ++counters_.restarts;
    settle();
}

void simulation::say_goodbye() {
    service_.say_goodbye();
    settle();
    // Nothing ticks any more: each round sends it on past one more rule.
    while (pipeline_.next_due_ns() != never_ns) {
        pipeline_.release(now_ns_);
        settle();
    }
}

service_settings simulation::settings_of(const simulation_settings& settings) {
    service_settings made;
    made.announce = settings.announce;
    made.single_client = settings.single_client;
    made.rate_hz = settings.rate_hz;
    made.first_client_id = first_client_id_of(settings.seed);
    made.save = [this](const device& which) { return save(which); };
    made.narrate = settings.narrate;
    return made;
}

std::vector<device> simulation::registered(const std::vector<device>& devices) {
    std::vector<device> made;
    for (const device& one : devices) {
        registry_.keep(one);
        operations_.know(one.id);
        made.push_back(registry_.as_saved(one.id));
    }
    return made;
}

bool simulation::save(const device& which) {
    const std::string failure = registry_.save(which);
    if (!failure.empty() && warn_) {
        warn_(failure);
    }
    return failure.empty();
}

void simulation::settle() {
    if (settling_) {
        return;
    }
    const settling_mark mark(settling_);
    deliver();
    act(pipeline_.take_actions());
    // Actions that an observer has asked for meanwhile wait for the next tick.
    for (const requested_action& one : pipeline_.take_actions()) {
        late_actions_.push_back(one);
    }
}

void simulation::deliver() {
    for (bool quiet = false; !quiet;) {
        quiet = true;
        for (const arrival& one : pipeline_.take_arrivals()) {
            service_.receive(one.from, one.bytes, now_ns_);
            note(one.from, one.bytes, direction::to_service);
            quiet = false;
        }
        for (const outgoing_datagram& one : service_.take_outgoing()) {
            pipeline_.from_service(one, now_ns_);
            quiet = false;
        }
        for (departure& one : pipeline_.take_departures()) {
            quiet = false;
            if (outgoing_.is_full()) {
                continue;
            }
            ++counters_.sent;
            if (!one.forged) {
                note(one.to, one.bytes, direction::to_client);
            }
            outgoing_.add(std::move(one));
        }
    }
}

void simulation::note(const peer& with, std::span<const std::byte> datagram, direction way) {
    observe_operations(datagram, way, pipeline_.number_of(with), [this](const observed_operation& what) {
        operations_.count(what);
        if (observer_) {
            observer_(what);
        }
    });
}

void simulation::act(const std::vector<requested_action>& wanted) {
    if (wanted.empty()) {
        return;
    }
    pipeline_.begin_action();
    for (const requested_action& one : wanted) {
        carry_out(one);
    }
    deliver();
    pipeline_.end_action();
}

void simulation::carry_out_late_actions() {
    const settling_mark mark(settling_);
    act(std::exchange(late_actions_, {}));
}

void simulation::carry_out(const requested_action& what) {
    switch (what.kind) {
    case fault_kind::goodbye:
        what.client ? service_.say_goodbye_to(*what.client) : service_.say_goodbye();
        break;
    case fault_kind::restart:
        restart();
        break;
    case fault_kind::unplug:
        if (what.argument) {
            service_.unplug(*what.argument);
        } else if (!service_.devices().empty()) {
            service_.unplug(service_.devices().front().id);
        }
        break;
    case fault_kind::plug:
        plug(static_cast<std::uint8_t>(what.argument.value_or(vantu_orvanta_device_type_orvanta3)));
        break;
    default:
        break;
    }
}

} // namespace vantu::orvanta::simulator
