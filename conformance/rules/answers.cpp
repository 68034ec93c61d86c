// Rules of requests and their answers.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

constexpr unsigned last_tag = 255;

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

} // namespace

void answer_to_request(device_owner& who, std::uint8_t code) {
    const operation& row = row_of(code, direction::to_service);
    expect_operation(row.name, who.ask(who.idle_request(code)), row.answered_by);
}

void device_open_is_answered(surroundings& around) {
    device_client who(around);
    expect_operation("device_open", who.ask(who.request(op_code::device_open, bytes(2))),
                     op_code::device_opened);
}

void config_save_is_answered(surroundings& around) {
    if (!around.may_save) {
        skip("only with --save");
    }
    device_owner who(around);
    answer_to_request(who, op_code::config_save);
}

void device_close_is_answered(device_user& who) {
    expect_operation("device_close", who.ask(who.request(op_code::device_close)), op_code::device_closed);
}

void disconnect_is_answered(client& who) {
    expect_operation("disconnect", who.ask(datagram_of(op_code::disconnect, 0)), op_code::disconnected);
}

void keep_alives_are_not_answered(client& who) {
    expect_ignored(who, "keep_alive", {datagram_of(op_code::keep_alive, 0)});
}

void answers_copy_the_tag(device_owner& who) {
    const auto expect_tag = [&](std::uint8_t code, unsigned tag) {
        const auto answer =
            need_answer(who, who.idle_request(code, who.device(), static_cast<std::uint8_t>(tag)));
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

void answers_name_the_device(device_owner& who) {
    for (const std::uint8_t code : harmless_requests()) {
        const auto answer = need_answer(who, who.idle_request(code));
        if (answer.device_id() != who.device()) {
            fail(text_of(answer), formatted("device {}", who.device()));
        }
    }
    who.open();
}

void a_request_has_one_answer(device_owner& who) {
    for (const std::uint8_t code : harmless_requests()) {
        const operation& row = row_of(code, direction::to_service);
        const std::size_t before = who.operations().size();
        (void)need_answer(who, who.idle_request(code));
        who.listen(who.around().quiet_time_ns / 10);
        const auto answers =
            std::count_if(who.operations().begin() + static_cast<std::ptrdiff_t>(before),
                          who.operations().end(), [&row](const seen_operation& one) {
                              return one.code == row.answered_by || one.code == op_code::service_error;
                          });
        if (answers != 1) {
            fail(formatted("{}: {} answers", row.name, answers), "one");
        }
    }
    who.open();
}

} // namespace vantu::orvanta::conformance::look
