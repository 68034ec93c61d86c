// Requests with a one-shot handler: each ends exactly once, with its reply, an acknowledgement or an error.
#include "support/client_session.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::ElementsAre;
using vantu::orvanta::client;
using vantu::orvanta::outcome;
using vantu::orvanta::reply;
using vantu::orvanta::request_options;
using vantu::orvanta::request_ticket;

// The arguments of handlers and default callbacks, as lines of text.
struct notes {
    std::vector<std::string> lines;

    template <typename Record> void handler(const reply<Record>& answer) {
        std::string line = answer.result == outcome::replied        ? "replied"
                           : answer.result == outcome::acknowledged ? "acknowledged"
                           : answer.result == outcome::timed_out    ? "timed out"
                                                                    : "failed";
        if constexpr (!std::is_void_v<Record>) {
            EXPECT_EQ(answer.record != nullptr, answer.result == outcome::replied);
            line += answer.record == nullptr ? "" : " " + hex(bytes_of(*answer.record));
        }
        EXPECT_EQ(answer.error != nullptr,
                  answer.result == outcome::failed || answer.result == outcome::timed_out);
        line += answer.error == nullptr ? "" : " " + std::to_string(answer.error->status);
        if (answer.result == outcome::replied || answer.result == outcome::timed_out) {
            EXPECT_EQ(answer.device_id, answer.result == outcome::replied ? 5U : 0U);
        }
        lines.push_back(line);
    }

    auto noting() {
        return [this](client&, const auto& answer) { handler(answer); };
    }

    // Default callbacks for the replies of these tests.
    client::config config() {
        client::config all;
        all.on_ack = [this](client&, unsigned) { lines.push_back("default ack"); };
        all.on_device_opened = [this](client&, unsigned) { lines.push_back("default opened"); };
        all.on_config_save = [this](client&, unsigned, const auto&) { lines.push_back("default save"); };
        all.on_orientation = [this](client&, unsigned, const auto&) {
            lines.push_back("default orientation");
        };
        all.on_error = [this](client&, unsigned, const vantu_orvanta_error& error) {
            lines.push_back("default error " + std::to_string(error.status));
        };
        all.on_disconnected = [this](client&) { lines.push_back("disconnected"); };
        return all;
    }
};

struct handled_request {
    std::string name;
    std::function<std::int32_t(client&, unsigned device, notes&, const request_options&)> send;
    std::uint8_t code;
    bytes body; // for device 5
    std::uint8_t reply_code;
    bytes reply_record;
};

const std::vector<handled_request>& handled_requests() {
    static const std::vector<handled_request> all{
        {"device_open",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.device_open(d, 0x1234, n.noting(), o);
         },
         18,
         join({id_5, {0x34, 0x12}}),
         19,
         {}},
        {"device_close",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.device_close(d, n.noting(), o);
         },
         20,
         id_5,
         21,
         {}},
        {"orientation_get",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.orientation_get(d, n.noting(), o);
         },
         47, id_5, 47, counting(0x20, 16)},
        {"config_save",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_save(d, n.noting(), o);
         },
         64,
         id_5,
         64,
         {1}},
        {"config_gravity_compensation_get",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_gravity_compensation_get(d, n.noting(), o);
         },
         66, id_5, 66, gravity_bytes},
        {"config_gravity_compensation_set",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_gravity_compensation_set(d, gravity, n.noting(), o);
         },
         67, join({id_5, gravity_bytes}), 66, gravity_bytes},
        {"config_torque_scaling_get",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_torque_scaling_get(d, n.noting(), o);
         },
         68,
         id_5,
         68,
         {1}},
        {"config_torque_scaling_set",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_torque_scaling_set(d, torque, n.noting(), o);
         },
         69,
         join({id_5, {1}}),
         68,
         {1}},
        {"config_handedness_set",
         [](client& c, unsigned d, notes& n, const request_options& o) {
             return c.config_handedness_set(d, 2, n.noting(), o);
         },
         71,
         join({id_5, {2}}),
         70,
         {2}},
    };
    return all;
}

class a_handled_request : public testing::TestWithParam<handled_request> {
  protected:
    // Sends the request and returns its tag.
    std::uint8_t send(const request_options& options = {}) {
        session.expect(GetParam().code, GetParam().body);
        EXPECT_EQ(GetParam().send(session.client(), 5, noted, options), 0);
        const std::uint8_t tag = session.tag_of_last_request();
        EXPECT_NE(tag, 0);
        return tag;
    }

    bytes reply_under(std::uint8_t tag) {
        return op(GetParam().reply_code, tag, join({id_5, GetParam().reply_record}));
    }

    notes noted;
    client_session session{noted.config()};
};

TEST_P(a_handled_request, ends_with_its_reply) {
    session.receive(reply_under(send()));
    const std::string record = hex(GetParam().reply_record);
    EXPECT_THAT(noted.lines, ElementsAre(record.empty() ? "replied" : "replied " + record));
}

TEST_P(a_handled_request, ends_with_an_acknowledgement) {
    session.receive(op(2, send()));
    EXPECT_THAT(noted.lines, ElementsAre("acknowledged"));
}

TEST_P(a_handled_request, ends_with_the_error_of_the_service) {
    session.receive(op(240, send(), join({id_5, {0xB1}})));
    EXPECT_THAT(noted.lines, ElementsAre("failed 177"));
}

TEST_P(a_handled_request, ends_at_its_deadline) {
    const std::uint8_t tag = send({std::chrono::seconds(-1)});
    session.client().expire_requests();
    EXPECT_THAT(noted.lines, ElementsAre("timed out 4"));
    session.receive(op(2, tag));
    session.client().expire_requests();
    EXPECT_THAT(noted.lines, ElementsAre("timed out 4", "default ack"));
}

TEST_P(a_handled_request, is_not_ended_after_a_cancel) {
    request_ticket ticket;
    const std::uint8_t tag = send({std::chrono::seconds(-1), &ticket});
    EXPECT_TRUE(session.client().cancel(ticket));
    session.client().expire_requests();
    session.receive(op(2, tag));
    EXPECT_THAT(noted.lines, ElementsAre("default ack"));
}

TEST_P(a_handled_request, ends_once_and_leaves_what_follows_to_the_default_callbacks) {
    const std::uint8_t tag = send();
    session.receive(reply_under(tag));
    noted.lines.clear();
    session.receive(op(2, tag));
    session.receive(op(240, tag, join({id_5, {0xC0}})));
    EXPECT_THAT(noted.lines, ElementsAre("default ack", "default error 192"));
    session.receive(reply_under(tag));
    for (std::size_t i = 2; i < noted.lines.size(); ++i) {
        EXPECT_EQ(noted.lines[i].rfind("default", 0), 0U) << noted.lines[i];
    }
}

TEST_P(a_handled_request, is_not_ended_by_its_own_reply_under_another_tag) {
    const std::uint8_t tag = send();
    session.receive(reply_under(static_cast<std::uint8_t>(tag + 1)));
    session.receive(reply_under(0));
    EXPECT_EQ(std::count(noted.lines.begin(), noted.lines.end(), "failed 177"), 0);
    noted.lines.clear();
    session.receive(op(240, tag, join({id_5, {0xB1}})));
    EXPECT_THAT(noted.lines, ElementsAre("failed 177"));
}

TEST_P(a_handled_request, returns_2_for_device_0_and_enters_nothing) {
    EXPECT_EQ(GetParam().send(session.client(), 0, noted, {}), vantu_orvanta_invalid_argument);
    for (int tag = 0; tag < 256; ++tag) {
        session.client().dispatch(make_event(vantu_orvanta_event_ack, static_cast<std::uint8_t>(tag)));
    }
    EXPECT_EQ(std::count(noted.lines.begin(), noted.lines.end(), "default ack"), 256);
}

TEST_P(a_handled_request, returns_3_without_a_connection_and_enters_nothing) {
    client unconnected(noted.config());
    EXPECT_EQ(GetParam().send(unconnected, 5, noted, {}), vantu_orvanta_invalid_connection_state);
    for (int tag = 0; tag < 256; ++tag) {
        unconnected.dispatch(make_event(vantu_orvanta_event_ack, static_cast<std::uint8_t>(tag)));
    }
    EXPECT_EQ(std::count(noted.lines.begin(), noted.lines.end(), "default ack"), 256);
    EXPECT_EQ(noted.lines.size(), 256U);
}

INSTANTIATE_TEST_SUITE_P(each, a_handled_request, testing::ValuesIn(handled_requests()),
                         [](const auto& row) { return row.param.name; });

TEST(requests_with_a_handler, are_all_that_the_service_answers) {
    using namespace vantu::orvanta::communication;
    for (const operation& row : operations) {
        const bool opens_or_ends_a_connection =
            row.code == op_code::connect || row.code == op_code::disconnect;
        if (row.answered_by == op_code::none || opens_or_ends_a_connection) {
            continue;
        }
        const auto is_row = [&](const handled_request& request) {
            return request.code == row.code && request.reply_code == row.answered_by;
        };
        EXPECT_EQ(std::count_if(handled_requests().begin(), handled_requests().end(), is_row), 1)
            << "class client or handled_requests lacks the request " << row.name;
    }
}

class handlers : public testing::Test {
  protected:
    // Sends a save request with a handler and returns its tag.
    std::uint8_t save(vantu::orvanta::reply_handler<vantu_orvanta_config_save> handler) {
        session.expect(64, id_5);
        EXPECT_EQ(session.client().config_save(5, std::move(handler)), 0);
        return session.tag_of_last_request();
    }

    notes noted;
    client_session session{noted.config()};
};

TEST_F(handlers, wait_on_when_another_kind_of_reply_comes_under_their_tag) {
    const std::uint8_t tag = save(noted.noting());
    session.receive(op(47, tag, join({id_5, filled(16, 0)})));
    session.receive(op(19, tag, id_5));
    session.receive(op(64, tag, join({id_5, {3}})));
    EXPECT_THAT(noted.lines, ElementsAre("default orientation", "default opened", "replied 03"));
}

TEST_F(handlers, may_be_empty_and_still_take_the_reply) {
    const std::uint8_t tag = save(nullptr);
    session.receive(op(64, tag, join({id_5, {3}})));
    EXPECT_THAT(noted.lines, ElementsAre());
    session.receive(op(64, tag, join({id_5, {3}})));
    EXPECT_THAT(noted.lines, ElementsAre("default save"));
}

TEST_F(handlers, are_given_the_client) {
    client* seen = nullptr;
    const std::uint8_t tag = save([&](client& from, const auto&) { seen = &from; });
    session.receive(op(2, tag));
    EXPECT_EQ(seen, &session.client());
}

TEST_F(handlers, may_send_the_next_request) {
    const std::uint8_t first = save([&](client& from, const auto& answer) {
        noted.handler(answer);
        session.expect(47, id_5);
        EXPECT_EQ(from.orientation_get(5, noted.noting()), 0);
    });
    session.receive(op(64, first, join({id_5, {1}})));
    const std::uint8_t second = session.tag_of_last_request();
    session.receive(op(47, second, join({id_5, filled(16, 1)})));
    EXPECT_THAT(noted.lines,
                ElementsAre("replied 01", "replied 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01"));
}

TEST_F(handlers, are_done_with_even_when_they_throw) {
    const std::uint8_t tag = save([](client&, const auto&) { throw std::runtime_error("from the handler"); });
    EXPECT_THROW(session.client().dispatch(make_event(vantu_orvanta_event_ack, tag)), std::runtime_error);
    EXPECT_TRUE(session.client().dispatch(make_event(vantu_orvanta_event_ack, tag)));
    EXPECT_THAT(noted.lines, ElementsAre("default ack"));
}

TEST_F(handlers, let_go_of_what_they_own_once_they_were_called) {
    const auto owned = std::make_shared<int>(1);
    const std::uint8_t tag = save([owned](client&, const auto&) {});
    EXPECT_EQ(owned.use_count(), 2);
    session.receive(op(2, tag));
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(handlers, are_dropped_without_a_call_when_the_client_is_destroyed) {
    const auto owned = std::make_shared<int>(1);
    static_cast<void>(save([owned](client&, const auto&) { FAIL() << "called"; }));
    session.destroy_client();
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(handlers, all_fail_with_8_before_the_goodbye_of_the_service_is_announced) {
    session.expect(64, id_5);
    EXPECT_EQ(session.client().config_save(5, noted.noting()), 0);
    session.expect(18, join({id_5, {0, 0}}));
    EXPECT_EQ(session.client().device_open(5, 0, noted.noting()), 0);
    session.expect(47, id_5);
    EXPECT_EQ(session.client().orientation_get(5, noted.noting()), 0);
    session.service().await_script();
    session.receive(op(6, 0));
    EXPECT_THAT(noted.lines, ElementsAre("failed 8", "failed 8", "failed 8", "disconnected"));
    session.client().dispatch(make_event(vantu_orvanta_event_disconnected));
    EXPECT_EQ(noted.lines.size(), 5U) << "only the announcement comes a second time";
}

TEST_F(handlers, cannot_send_while_the_goodbye_ends_them) {
    std::int32_t code = -1;
    static_cast<void>(save([&](client& from, const auto&) { code = from.config_save(5, noted.noting()); }));
    session.receive(op(6, 0));
    EXPECT_EQ(code, vantu_orvanta_invalid_connection_state);
    EXPECT_THAT(noted.lines, ElementsAre("disconnected"));
}

} // namespace
