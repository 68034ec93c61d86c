#include "ctl/settings/apply.hpp"

#include "ctl/settings/configuration.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <iterator>
#include <set>
#include <string>

namespace vantu::orvanta::ctl {
namespace {

// The values of a part in a set.
value_set only(part which, const value_set& all) {
    value_set found;
    for (const key one : keys_of(which)) {
        if (const auto at = all.find(one); at != all.end()) {
            found.insert(*at);
        }
    }
    return found;
}

value_set after(const value_set& in_force, const std::vector<change>& changes) {
    value_set result = in_force;
    for (const change& one : changes) {
        result.insert_or_assign(one.which, one.after);
    }
    return result;
}

// The parts to which the changes belong, or those alone that really change.
std::set<part> parts_of(const std::vector<change>& changes, bool only_real) {
    std::set<part> found;
    for (const change& one : changes) {
        if (!only_real || is_real(one)) {
            found.insert(part_of(one.which));
        }
    }
    return found;
}

// "gravity-compensation and scaling-factor": what really changes of a part.
std::string names_of(part which, const std::vector<change>& changes) {
    std::string text;
    for (const change& one : changes) {
        if (is_real(one) && part_of(one.which) == which) {
            text += text.empty() ? "" : " and ";
            text += row_of(one.which).name;
        }
    }
    return text;
}

std::string account_of(const std::set<part>& done, const std::vector<change>& changes) {
    std::string text;
    for (const change& one : changes) {
        if (is_real(one) && done.count(part_of(one.which)) != 0) {
            text += text.empty() ? "" : ", ";
            text += line_of(one);
        }
    }
    return text.empty() ? "nothing was set before" : "set before: " + text;
}

// A request of which nobody knows whether it was carried out.
bool is_open(const failure_with_status& why) {
    switch (why.status()) {
    case exit_status::timed_out:
    case exit_status::interrupted:
        return true;
    case exit_status::lost:
        return why.code() == error_code::disconnected_from_service ||
               why.code() == error_code::invalid_connection_state;
    case exit_status::done:
    case exit_status::refused:
    case exit_status::wrong_usage:
    case exit_status::no_service:
    case exit_status::no_device:
        return false;
    }
    return false;
}

// Names the first value that is not as wanted; empty when all are.
std::string difference(const value_set& wanted, const value_set& told) {
    for (const auto& [which, one] : wanted) {
        if (!are_same(one, told.at(which))) {
            return std::string(row_of(which).name) + " is " + text_of(told.at(which)) + " in place of " +
                   text_of(one);
        }
    }
    return {};
}

// One attempt at carrying out.
class work {
  public:
    work(connection& to, std::uint32_t device_id, const value_set& in_force,
         const std::vector<change>& changes, after_failure then)
        : to_(to), device_id_(device_id), in_force_(in_force), changes_(changes), then_(then) {}

    void do_all() {
        const value_set target = after(in_force_, changes_);
        for (const part which : parts_of(changes_, true)) {
            try {
                set(which, target);
            } catch (const failure_with_status& why) {
                end(which, why);
            }
            done_.insert(which);
        }
    }

  private:
    // Another value than the one asked for is in force, or may be.
    struct other_value : failure_with_status {
        using failure_with_status::failure_with_status;
    };

    void set(part which, const value_set& target) {
        const value_set wanted = only(which, target);
        const auto left = to_.time_left();
        const value_set told =
            set_part(to_, device_id_, which, wanted, then_ == after_failure::put_back ? left / 2 : left);
        if (const std::string wrong = difference(wanted, told); !wrong.empty()) {
            throw other_value(exit_status::refused, "the service's answer to the set is that " + wrong);
        }
    }

    [[noreturn]] void end(part failed, const failure_with_status& why) {
        const bool is_other = dynamic_cast<const other_value*>(&why) != nullptr;
        const bool may_be_set = is_other || is_open(why);
        const char* how =
            is_other ? " was not set as asked: " : (may_be_set ? " may be set or not: " : " was not set: ");
        std::string text = names_of(failed, changes_) + how + why.what() + "; " + account_of(done_, changes_);
        if (then_ == after_failure::put_back) {
            to_.outlast_interruption();
            std::set<part> back = done_;
            if (may_be_set) {
                back.insert(failed);
            }
            for (auto at = back.rbegin(); at != back.rend(); ++at) {
                text += "; " + put_back(*at);
            }
        }
        throw failure_with_status(why.status(), text, why.code());
    }

    std::string put_back(part which) {
        const std::string names = names_of(which, changes_);
        try {
            set(which, in_force_);
            return names + " put back";
        } catch (const failure_with_status& why) {
            return names + " could not be put back: " + why.what();
        }
    }

    connection& to_;
    std::uint32_t device_id_;
    const value_set& in_force_;
    const std::vector<change>& changes_;
    after_failure then_;
    std::set<part> done_;
};

} // namespace

value_set read_parts_of(connection& to, std::uint32_t device_id, const value_set& wanted) {
    std::set<part> parts;
    for (const auto& [which, unused] : wanted) {
        parts.insert(part_of(which));
    }
    value_set found;
    for (const part which : parts) {
        found.merge(ask_part(to, device_id, which));
    }
    return found;
}

void carry_out(connection& to, std::uint32_t device_id, const value_set& in_force,
               const std::vector<change>& changes, after_failure then) {
    work(to, device_id, in_force, changes, then).do_all();
}

void save_and_check(connection& to, std::uint32_t device_id, const value_set& in_force,
                    const std::vector<change>& changes) {
    const std::string account = "; " + account_of(parts_of(changes, true), changes);
    try {
        save(to, device_id);
    } catch (const failure_with_status& why) {
        const char* how = is_open(why) ? "it may be saved or not: " : "nothing was saved: ";
        throw failure_with_status(why.status(), how + (why.what() + account), why.code());
    }
    const value_set target = after(in_force, changes);
    for (const part which : parts_of(changes, false)) {
        if (which == part::hand) {
            continue;
        }
        std::string wrong;
        try {
            wrong = difference(only(which, target), ask_part(to, device_id, which));
        } catch (const failure_with_status& why) {
            throw failure_with_status(
                why.status(), std::string("saved, but not read again: ") + why.what() + account, why.code());
        }
        if (!wrong.empty()) {
            throw failure_with_status(exit_status::refused, formatted("after saving {}{}", wrong, account));
        }
    }
}

} // namespace vantu::orvanta::ctl
