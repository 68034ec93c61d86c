// Rules of requests and their answers.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <map>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

constexpr unsigned last_tag = 255;

// The request that changes nothing of the user's device, and closes none.
bytes idle_request(const device_user& who, const kept_settings& kept, std::uint8_t code, std::uint8_t tag) {
    return device_request(code, tag, who.device(), kept.argument_of(code));
}

// Those that every rule may send to an opened Orvanta3: the closing last.
std::vector<std::uint8_t> harmless_requests() {
    std::vector<std::uint8_t> codes;
    for (const operation& row : device_requests()) {
        if (row.code != op_code::config_save && row.code != op_code::device_close) {
            codes.push_back(row.code);
        }
    }
    codes.push_back(op_code::device_close);
    return codes;
}

void expect_own_answer(device_user& who, const kept_settings& kept, std::uint8_t code) {
    const operation& row = row_of(code, direction::to_service);
    expect_operation(row.name, who.ask(idle_request(who, kept, code, 1)), row.answered_by);
}

} // namespace

void answer_to_request(surroundings& around, std::uint8_t code) {
    const bool any = code == op_code::device_open || code == op_code::device_close;
    if (code == op_code::device_open) {
        device_visitor who(around);
        expect_operation("device_open", who.ask(device_request(code, 1, who.device(), bytes(2))),
                         op_code::device_opened);
        return;
    }
    device_user who(around, any ? any_type : orvanta3_type);
    const kept_settings kept(who);
    expect_own_answer(who, kept, code);
}

void config_save_is_answered(surroundings& around) {
    if (!around.may_save) {
        skip("only with --save");
    }
    answer_to_request(around, op_code::config_save);
}

void disconnect_is_answered(surroundings& around) {
    visitor who(around);
    who.connect();
    expect_operation("disconnect", who.ask(datagram_of(op_code::disconnect, 0)), op_code::disconnected);
}

void keep_alives_are_not_answered(surroundings& around) {
    visitor who(around);
    who.connect();
    who.forget();
    who.send(datagram_of(op_code::keep_alive, 0));
    who.listen(around.quiet_time_ns);
    expect_no_answer(who, "keep_alive");
}

void answers_copy_the_tag(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    const auto expect_tag = [&](std::uint8_t code, unsigned tag) {
        const auto answer = need_answer(who, idle_request(who, kept, code, static_cast<std::uint8_t>(tag)));
        if (answer.tag != tag) {
            fail(text_of(answer), formatted("tag {}", tag));
        }
    };
    for (unsigned tag = 1; tag <= last_tag; ++tag) {
        expect_tag(op_code::device_open, tag);
    }
    unsigned tag = last_tag;
    for (const std::uint8_t code : harmless_requests()) {
        expect_tag(code, --tag);
    }
    // Settings are put back with the device opened.
    expect_tag(op_code::device_open, 1);
}

void answers_name_the_device(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    for (const std::uint8_t code : harmless_requests()) {
        const auto answer = need_answer(who, idle_request(who, kept, code, 1));
        if (answer.device_id() != who.device()) {
            fail(text_of(answer), formatted("device {}", who.device()));
        }
    }
    (void)need_answer(who, idle_request(who, kept, op_code::device_open, 1));
}

void a_request_has_one_answer(surroundings& around) {
    device_user who(around, orvanta3_type);
    const kept_settings kept(who);
    for (const std::uint8_t code : harmless_requests()) {
        const operation& row = row_of(code, direction::to_service);
        const std::size_t before = who.operations().size();
        (void)need_answer(who, idle_request(who, kept, code, 1));
        who.listen(around.quiet_time_ns / 10);
        const auto answers =
            std::count_if(who.operations().begin() + static_cast<std::ptrdiff_t>(before),
                          who.operations().end(), [&row](const seen_operation& one) {
                              return one.code == row.answered_by || one.code == op_code::service_error;
                          });
        if (answers != 1) {
            fail(formatted("{}: {} answers", row.name, answers), "one");
        }
    }
    (void)need_answer(who, idle_request(who, kept, op_code::device_open, 1));
}

} // namespace vantu::orvanta::conformance::look
