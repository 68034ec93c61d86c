// Rules of settings. Each rule gives the device its own settings back.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <optional>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

struct setting {
    std::uint8_t set;
    std::vector<bytes> values; // never the same twice running
};

std::vector<setting> settings() {
    using gravity = vantu_orvanta_config_gravity_compensation;
    return {
        {op_code::config_gravity_compensation_set,
         {bytes_of(gravity{1, 0.5F}), bytes_of(gravity{0, 0.25F}), bytes_of(gravity{1, 1.0F})}},
        {op_code::config_torque_scaling_set, {{std::byte{1}}, {std::byte{0}}, {std::byte{1}}}},
        {op_code::config_handedness_set, {{std::byte{2}}, {std::byte{1}}, {std::byte{2}}}},
    };
}

std::string hex(const bytes& of) {
    std::string text;
    for (const std::byte one : of) {
        text += formatted("{}{:02X}", text.empty() ? "" : " ", static_cast<unsigned>(one));
    }
    return text;
}

void expect_record(std::string_view after, const seen_operation& seen, const bytes& wanted) {
    if (seen.record() != wanted) {
        fail(formatted("{}: {} with {}", after, text_of(seen), hex(seen.record())), hex(wanted));
    }
}

seen_operation set_to(device_user& who, std::uint8_t set, const bytes& value) {
    return need_answer(who, who.request(set, value));
}

void expect_kept(device_user& who, std::uint8_t set, std::uint8_t get) {
    for (const setting& one : settings()) {
        for (const bytes& value : one.values) {
            if (one.set == set) {
                (void)set_to(who, set, value);
                expect_record("after the set", need_answer(who, who.request(get)), value);
            }
        }
    }
}

// Waits until the last details of a device that have come since tell this handedness.
void expect_hand(std::string_view whom, visitor& who, std::size_t since, std::uint32_t device,
                 std::byte hand) {
    std::optional<seen_operation> last;
    std::optional<seen_operation> next;
    do {
        for (; since < who.operations().size(); ++since) {
            const seen_operation& one = who.operations()[since];
            if (one.code == op_code::device_info_orvanta3 && one.device_id() == device) {
                last = one;
            }
        }
        if (last && last->body.back() == hand) {
            return;
        }
        next = who.await({op_code::device_info_orvanta3});
    } while (next);
    const std::string with = last ? formatted(" with {}", static_cast<unsigned>(last->body.back())) : "";
    fail(formatted("{}: {}{}", whom, text_of(last), with),
         formatted("device_info_orvanta3 with handedness {}", static_cast<unsigned>(hand)));
}

} // namespace

void sets_are_answered_with_their_values(device_owner& who) {
    for (const setting& one : settings()) {
        for (const bytes& value : one.values) {
            expect_record(row_of(one.set, direction::to_service).name, set_to(who, one.set, value), value);
        }
    }
}

void gravity_compensation_is_kept(device_owner& who) {
    expect_kept(who, op_code::config_gravity_compensation_set, op_code::config_gravity_compensation_get);
}

void torque_scaling_is_kept(device_owner& who) {
    expect_kept(who, op_code::config_torque_scaling_set, op_code::config_torque_scaling_get);
}

void handedness_is_kept(device_owner& who) {
    for (const std::byte hand : {std::byte{2}, std::byte{1}, std::byte{2}}) {
        (void)set_to(who, op_code::config_handedness_set, {hand});
        who.disconnect();
        const std::size_t before = who.operations().size();
        who.connect();
        // Needed to put the setting back.
        who.open();
        expect_hand("the listing after the set", who, before, who.device(), hand);
    }
}

void handedness_is_told_to_all_clients(device_owner& who) {
    visitor other(who.around());
    const bool is_served = other.try_connect();
    other.listen(who.around().quiet_time_ns);
    for (const std::byte hand : {std::byte{2}, std::byte{1}}) {
        const std::size_t before = who.operations().size();
        const std::size_t before_at_other = other.operations().size();
        (void)set_to(who, op_code::config_handedness_set, {hand});
        expect_hand("the client that set it", who, before, who.device(), hand);
        if (is_served) {
            expect_hand("another client", other, before_at_other, who.device(), hand);
        }
    }
}

void refused_requests_change_nothing(device_owner& who) {
    const bytes gravity = who.request(op_code::config_gravity_compensation_get);
    const bytes torque = who.request(op_code::config_torque_scaling_get);
    const bytes gravity_before = need_answer(who, gravity).record();
    const bytes torque_before = need_answer(who, torque).record();
    using gravity_value = vantu_orvanta_config_gravity_compensation;
    for (const bytes& wrong :
         {who.request(op_code::config_gravity_compensation_set, bytes_of(gravity_value{2, 0.125F})),
          who.request(op_code::config_gravity_compensation_set, bytes_of(gravity_value{0, 2.0F})),
          who.request(op_code::config_torque_scaling_set, bytes(1, std::byte{2}))}) {
        (void)need_refusal(who, wrong, "wrong_arguments_are_refused");
    }
    expect_record("after refused sets", need_answer(who, gravity), gravity_before);
    expect_record("after refused sets", need_answer(who, torque), torque_before);
}

} // namespace vantu::orvanta::conformance::look
