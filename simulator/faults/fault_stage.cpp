// The stage's rules: adding and healing them, letting go what they hold back, and what is done at once.
#include "simulator/faults/fault_engine.hpp"
#include "simulator/faults/fault_forgeries.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vantu::orvanta::simulator {

using communication::direction;

namespace {

// Earlier than all times: due whatever the time is.
constexpr std::int64_t at_once_ns = std::numeric_limits<std::int64_t>::min();

} // namespace

void fault_stage::implementation::add(const fault_rule& rule, std::span<const peer> clients,
                                      std::int64_t now_ns) {
    now_ns_ = now_ns;
    const std::uint64_t ordinal = ordinals_++;
    if (rule.now) {
        act_now(rule, clients);
    } else {
        rules_.push_back({{rule, 0, 0}, ordinal, fault_random(seed_, ordinal)});
    }
}

void fault_stage::implementation::heal(std::optional<fault_kind> kind) {
    const auto heals = [kind](const live_rule& rule) {
        return !kind.has_value() || rule.state.rule.kind == *kind;
    };
    for (held_datagram& one : held_) {
        const auto holder = std::find_if(rules_.begin(), rules_.end(),
                                         [&one](const live_rule& rule) { return rule.ordinal == one.by; });
        if (holder == rules_.end() || heals(*holder)) {
            one.due_ns = at_once_ns;
        }
    }
    std::erase_if(rules_, heals);
    if (!kind.has_value() || *kind == fault_kind::silence) {
        silent_until_ns_ = at_once_ns;
    }
}

void fault_stage::implementation::from_client(const peer& from, std::span<const std::byte> bytes,
                                              std::int64_t now_ns) {
    now_ns_ = now_ns;
    if (is_silent()) {
        return;
    }
    conversations_.note_requests(from, bytes);
    travel({direction::to_service, from, {bytes.begin(), bytes.end()}, std::nullopt}, 0);
}

void fault_stage::implementation::to_client(const peer& to, std::span<const std::byte> bytes,
                                            std::int64_t now_ns) {
    now_ns_ = now_ns;
    if (is_silent()) {
        return;
    }
    const auto answer = conversations_.note_answers(to, bytes);
    travel({direction::to_client, to, {bytes.begin(), bytes.end()}, answer}, 0);
}

std::size_t fault_stage::implementation::rule_behind(std::uint64_t ordinal) const {
    const auto found = std::find_if(rules_.begin(), rules_.end(),
                                    [ordinal](const live_rule& rule) { return rule.ordinal > ordinal; });
    return static_cast<std::size_t>(found - rules_.begin());
}

void fault_stage::implementation::tick(std::int64_t now_ns) {
    now_ns_ = now_ns;
    const auto is_later = [now_ns](const held_datagram& one) { return one.due_ns > now_ns; };
    const auto first_due = std::stable_partition(held_.begin(), held_.end(), is_later);
    std::vector<held_datagram> due(std::make_move_iterator(first_due), std::make_move_iterator(held_.end()));
    held_.erase(first_due, held_.end());
    std::stable_sort(due.begin(), due.end(), [](const held_datagram& left, const held_datagram& right) {
        return left.due_ns < right.due_ns;
    });
    for (held_datagram& one : due) {
        travel(std::move(one.what), rule_behind(one.by));
    }
}

std::int64_t fault_stage::implementation::next_due_ns() const noexcept {
    std::int64_t soonest = never_ns;
    for (const held_datagram& one : held_) {
        soonest = std::min(soonest, one.due_ns);
    }
    return soonest;
}

std::vector<rule_state> fault_stage::implementation::rules() const {
    std::vector<rule_state> states;
    states.reserve(rules_.size());
    for (const live_rule& rule : rules_) {
        states.push_back(rule.state);
    }
    return states;
}

void fault_stage::implementation::act_now(const fault_rule& rule, std::span<const peer> clients) {
    std::uint64_t& happened = happened_[static_cast<std::size_t>(rule.kind)];
    const fault_act act = row_of(rule.kind).act;
    if (act == fault_act::silence) {
        fault_random chance(seed_, ordinals_);
        fall_silent(rule, chance);
        ++happened;
    } else if (act == fault_act::action) {
        actions.push_back({rule.kind, rule.first, std::nullopt});
        ++happened;
    } else {
        for (const peer& client : clients) {
            act_now_on(rule, client);
        }
        happened += clients.size();
    }
}

void fault_stage::implementation::act_now_on(const fault_rule& rule, const peer& client) {
    const auto number = rule.first.value_or(0);
    switch (rule.kind) {
    case fault_kind::empty:
        leave({direction::to_client, client, {}, std::nullopt});
        break;
    case fault_kind::flood:
        for (std::uint32_t i = 0; i < number; ++i) {
            leave({direction::to_client, client, idle_acknowledgement(), std::nullopt});
        }
        break;
    case fault_kind::error:
        leave({direction::to_client, client,
               refusal_of(static_cast<std::uint8_t>(rule.last.value_or(0)), 0,
                          static_cast<std::uint8_t>(number)),
               std::nullopt});
        break;
    case fault_kind::inject:
        forge(client, number);
        break;
    default:
        break;
    }
}

fault_stage::fault_stage(std::uint64_t seed) : implementation_(std::make_unique<implementation>(seed)) {}
fault_stage::~fault_stage() = default;
fault_stage::fault_stage(fault_stage&&) noexcept = default;
fault_stage& fault_stage::operator=(fault_stage&&) noexcept = default;

void fault_stage::add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns) {
    implementation_->add(rule, clients, now_ns);
}

void fault_stage::heal() {
    implementation_->heal(std::nullopt);
}

void fault_stage::heal(fault_kind kind) {
    implementation_->heal(kind);
}

std::vector<rule_state> fault_stage::rules() const {
    return implementation_->rules();
}

std::uint64_t fault_stage::happened(fault_kind kind) const noexcept {
    return implementation_->happened(kind);
}

void fault_stage::from_socket(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns) {
    implementation_->from_client(from, bytes, now_ns);
}

void fault_stage::from_service(const outgoing_datagram& datagram, std::int64_t now_ns) {
    implementation_->to_client(datagram.to, {datagram.bytes.unread(), datagram.bytes.read_len()}, now_ns);
}

void fault_stage::tick(std::int64_t now_ns) {
    implementation_->tick(now_ns);
}

std::int64_t fault_stage::next_due_ns() const noexcept {
    return implementation_->next_due_ns();
}

std::vector<arrival> fault_stage::take_arrivals() {
    return std::exchange(implementation_->arrivals, {});
}

std::vector<departure> fault_stage::take_departures() {
    return std::exchange(implementation_->departures, {});
}

std::vector<requested_action> fault_stage::take_actions() {
    return std::exchange(implementation_->actions, {});
}

void fault_stage::begin_action() noexcept {
    implementation_->in_action = true;
}

void fault_stage::end_action() noexcept {
    implementation_->in_action = false;
}

} // namespace vantu::orvanta::simulator
