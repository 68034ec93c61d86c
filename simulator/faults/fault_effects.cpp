// The effects of the pipeline's rules: on a datagram, and at once.
#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/fault_fit.hpp"
#include "simulator/faults/fault_pipeline.hpp"
#include "simulator/service/requests.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

constexpr std::int64_t longest_reorder_ns = 100 * ns_per_millisecond;

// Milliseconds from `first` to `last`, where there is a last.
std::int64_t drawn_time_ns(const fault_rule& rule, fault_random& chance) {
    const std::uint32_t least = rule.first.value_or(0);
    const std::uint64_t drawn = chance.between(least, std::max(least, rule.last.value_or(least)));
    return static_cast<std::int64_t>(drawn) * ns_per_millisecond;
}

} // namespace

void fault_pipeline::apply(live_rule& rule, piped_datagram what, std::size_t next_rule) {
    switch (row_of(rule.state.rule.kind).act) {
    case fault_act::change:
        return send_changed(rule, std::move(what), next_rule);
    case fault_act::loss:
        return count(rule, what);
    case fault_act::copies:
        return send_with_copies(rule, what, next_rule);
    case fault_act::overtaking:
        return hold(rule, std::move(what), longest_reorder_ns, rule.state.rule.first);
    case fault_act::delay:
        return hold_for_a_while(rule, std::move(what), next_rule);
    case fault_act::stale_reply:
        return send_after_stale_reply(rule, std::move(what), next_rule);
    case fault_act::silence:
        count(rule, what);
        return fall_silent(rule.state.rule, rule.draw.chance);
    case fault_act::refusal:
        return refuse_operation(rule, std::move(what), next_rule);
    case fault_act::action:
    case fault_act::forgery:
        return send_and_act(rule, std::move(what), next_rule);
    }
}

void fault_pipeline::send_changed(live_rule& rule, piped_datagram&& what, std::size_t next_rule) {
    datagram_bytes changed = what.bytes;
    if (mutate(changed, rule.state.rule, what.way, rule.draw.chance)) {
        count(rule, what);
        what.bytes = std::move(changed);
    }
    run(std::move(what), next_rule);
}

void fault_pipeline::hold(live_rule& rule, piped_datagram&& what, std::int64_t for_ns,
                          std::optional<std::uint32_t> to_pass) {
    count(rule, what);
    held_.hold({std::move(what), rule.ordinal}, now_ns_ + for_ns, to_pass);
}

void fault_pipeline::hold_for_a_while(live_rule& rule, piped_datagram&& what, std::size_t next_rule) {
    const std::int64_t time_ns = drawn_time_ns(rule.state.rule, rule.draw.chance);
    if (time_ns == 0) {
        return run(std::move(what), next_rule);
    }
    hold(rule, std::move(what), time_ns, std::nullopt);
}

void fault_pipeline::send_with_copies(live_rule& rule, const piped_datagram& what, std::size_t next_rule) {
    count(rule, what);
    piped_datagram copy = what;
    copy.is_copy = true;
    if (rule.state.rule.kind == fault_kind::flood) {
        copy.bytes = idle_acknowledgement();
        copy.answer.reset();
    }
    run(what, next_rule);
    for (std::uint32_t i = 0; i < rule.state.rule.first.value_or(0) && has_room(); ++i) {
        run(copy, next_rule);
    }
}

void fault_pipeline::send_after_stale_reply(live_rule& rule, piped_datagram&& what, std::size_t next_rule) {
    const datagram_bytes* const earlier = conversations_.earlier_answer(what.with, what.answer.value_or(0));
    if (earlier != nullptr) {
        count(rule, what);
        run({what.way, what.with, *earlier, std::nullopt}, next_rule);
    }
    run(std::move(what), next_rule);
}

void fault_pipeline::refuse_operation(live_rule& rule, piped_datagram&& what, std::size_t next_rule) {
    const fault_rule& wanted = rule.state.rule;
    const auto place = chosen_operation(wanted, what.bytes, what.way);
    if (!place.has_value()) {
        return run(std::move(what), next_rule);
    }
    count(rule, what);
    const std::span<const std::byte> bytes(what.bytes);
    const std::uint32_t device =
        place->code == op_code::connect ? 0 : named_device(bytes.subspan(place->body(), place->body_size));
    const auto tag = static_cast<std::uint8_t>(wanted.last.value_or(place->tag));
    piped_datagram refusal{direction::to_client, what.with,
                           refusal_of(tag, device, static_cast<std::uint8_t>(wanted.first.value_or(0))),
                           std::nullopt};
    refusal.answer = conversations_.note_answers(what.with, refusal.bytes);
    const auto begin = what.bytes.begin();
    what.bytes.erase(begin + static_cast<std::ptrdiff_t>(place->record),
                     begin + static_cast<std::ptrdiff_t>(place->end()));
    if (what.bytes.size() > sizeof(proto::header)) {
        run(std::move(what), next_rule);
    }
    run(std::move(refusal), next_rule);
}

void fault_pipeline::send_and_act(live_rule& rule, piped_datagram&& what, std::size_t next_rule) {
    const fault_rule& wanted = rule.state.rule;
    const peer with = what.with;
    count(rule, what);
    run(std::move(what), next_rule);
    if (wanted.kind == fault_kind::inject) {
        forge(with, wanted.first.value_or(0));
    } else {
        const bool is_for_one = wanted.kind == fault_kind::goodbye;
        actions_.push_back({wanted.kind, wanted.first, is_for_one ? std::optional(with) : std::nullopt});
    }
}

void fault_pipeline::fall_silent(const fault_rule& rule, fault_random& chance) {
    silent_until_ns_ = std::max(silent_until_ns_, now_ns_ + drawn_time_ns(rule, chance));
}

void fault_pipeline::forge(const peer& to, std::uint32_t how_many) {
    for (std::uint32_t i = 0; i < how_many && has_room(); ++i) {
        departures_.add({to, forged_datagram(i), true});
    }
}

void fault_pipeline::act_at_once(const fault_rule& rule, std::span<const peer> clients) {
    std::uint64_t& happened = happened_[static_cast<std::size_t>(rule.kind)];
    const fault_act act = row_of(rule.kind).act;
    if (act == fault_act::silence) {
        fault_random chance(seed_, {ordinals_});
        fall_silent(rule, chance);
        ++happened;
    } else if (act == fault_act::action) {
        actions_.push_back({rule.kind, rule.first, std::nullopt});
        ++happened;
    } else {
        for (const peer& client : clients) {
            act_at_once_on(rule, client);
        }
        happened += clients.size();
    }
}

void fault_pipeline::act_at_once_on(const fault_rule& rule, const peer& client) {
    const auto number = rule.first.value_or(0);
    switch (rule.kind) {
    case fault_kind::flood:
        for (std::uint32_t i = 0; i < number && has_room(); ++i) {
            deliver({direction::to_client, client, idle_acknowledgement(), std::nullopt});
        }
        break;
    case fault_kind::error:
        deliver({direction::to_client, client,
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

} // namespace vantu::orvanta::simulator
