#include "simulator/faults/held_datagrams.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace vantu::orvanta::simulator {

using communication::direction;

namespace {

// Earlier than all times: due whatever the time is.
constexpr std::int64_t at_once_ns = std::numeric_limits<std::int64_t>::min();

} // namespace

void held_datagrams::hold(entry&& one, std::int64_t due_ns, std::optional<std::uint32_t> to_pass) {
    if (is_full()) {
        return;
    }
    const place where{due_ns, numbers_++};
    if (to_pass) {
        overtaken_.push_back({where, one.by, one.what.way, one.what.with, *to_pass});
    }
    bytes_ += one.what.bytes.size();
    by_due_.emplace(where, std::move(one));
}

held_datagrams::entry held_datagrams::taken(const place& where) {
    auto node = by_due_.extract(where);
    bytes_ -= node.mapped().what.bytes.size();
    return std::move(node.mapped());
}

std::vector<held_datagrams::overtaken>::const_iterator held_datagrams::find(std::uint64_t by, direction way,
                                                                            const peer& with) const {
    return std::find_if(overtaken_.begin(), overtaken_.end(), [&](const overtaken& one) {
        return one.by == by && one.way == way && same_peer(one.with, with);
    });
}

std::optional<held_datagrams::entry> held_datagrams::let_one_pass(std::uint64_t by, direction way,
                                                                  const peer& with) {
    const auto found = find(by, way, with);
    if (found == overtaken_.end()) {
        return std::nullopt;
    }
    overtaken& one = overtaken_[static_cast<std::size_t>(found - overtaken_.begin())];
    if (--one.to_pass != 0) {
        return std::nullopt;
    }
    const place where = one.where;
    overtaken_.erase(found);
    return taken(where);
}

void held_datagrams::release(const std::function<bool(std::uint64_t by)>& is_chosen) {
    std::map<place, entry> moved;
    while (!by_due_.empty()) {
        auto node = by_due_.extract(by_due_.begin());
        if (is_chosen(node.mapped().by)) {
            node.key().due_ns = at_once_ns;
            for (overtaken& one : overtaken_) {
                one.where = one.where.number == node.key().number ? node.key() : one.where;
            }
        }
        moved.insert(std::move(node));
    }
    by_due_ = std::move(moved);
}

std::vector<held_datagrams::entry> held_datagrams::take_due(std::int64_t now_ns) {
    std::vector<entry> due;
    while (!by_due_.empty() && by_due_.begin()->first.due_ns <= now_ns) {
        const place where = by_due_.begin()->first;
        std::erase_if(overtaken_, [&where](const overtaken& one) { return one.where == where; });
        due.push_back(taken(where));
    }
    return due;
}

} // namespace vantu::orvanta::simulator
