#include "ctl/doctor/handshake.hpp"

#include "ctl/doctor/machine_checks.hpp"
#include "ctl/doctor/milliseconds.hpp"
#include "ctl/doctor/probe_socket.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/text_field.hpp"
#include "vantu/orvanta/common/version.hpp"
#include "vantu/orvanta/communication/compose.hpp"
#include "vantu/orvanta/communication/service_status.hpp"
#include "vantu/orvanta/names.h"

#include <algorithm>
#include <system_error>

namespace vantu::orvanta::ctl {
namespace {

using namespace communication;

constexpr const char* handshake_name = "handshake";
constexpr std::uint64_t keep_alive_ns = 5'000'000'000;

template <std::uint8_t code>
void send(probe_socket& to, const proto::body<code, direction::to_service>& body) {
    byte_buffer datagram(constants::mode_write);
    compose_datagram<code, direction::to_service>(datagram, 0, body);
    to.send({datagram.unread(), static_cast<std::size_t>(datagram.read_len())});
}

proto::connect_body introduction() {
    proto::connect_body body{};
    body.keep_alive_ns = keep_alive_ns;
    body.process_id = platform::process_id();
    assign_text(body.client_name, "orvantactl doctor");
    assign_text(body.version_text, version.version_text);
    return body;
}

handshake_answer answer_from(const reception& came) {
    switch (came.kind) {
    case reception_kind::datagram:
        return read_answer(came.bytes);
    case reception_kind::silence:
        return {answer_kind::silence};
    case reception_kind::closed_port:
        return {answer_kind::closed_port};
    case reception_kind::refused:
        return {answer_kind::not_sent, 0, 0, came.refusal};
    }
    return {};
}

void say_goodbye(probe_socket& to, probe_socket::time_point until) {
    send<op_code::disconnect>(to, {});
    reception came = to.receive(until);
    while (came.kind == reception_kind::datagram && !has_operation(came.bytes, op_code::disconnected)) {
        came = to.receive(until);
    }
}

std::string or_the_holder(const std::string& holder) {
    return holder.empty() ? "the program that holds the service's port" : holder;
}

finding check_refusal(const handshake_answer& answer) {
    const std::string seen =
        formatted("the service refuses the connection: status 0x{:02X}, {}", answer.status,
                  service_status_message(static_cast<std::int8_t>(answer.status)));
    switch (static_cast<service_status>(answer.status)) {
    case service_status::another_client_connected:
        return failed(handshake_name, exit_status::no_service, seen,
                      "end the other program that is connected to the service: it serves one at a time");
    case service_status::buffer_full_or_empty:
        return failed(
            handshake_name, exit_status::no_service, seen,
            "end one of the programs that are connected to the service: it has no room for one more");
    default:
        return failed(handshake_name, exit_status::no_service, seen,
                      "use the library that fits the service, or start the service anew");
    }
}

std::string text_of_other_version(const handshake_answer& answer) {
    return answer.status != 0
               ? formatted("the service does not know version {} of the protocol: status 0x{:02X}, {}",
                           proto::protocol_version, answer.status,
                           service_status_message(static_cast<std::int8_t>(answer.status)))
               : formatted("the answer is of version {} of the protocol, the library speaks {}: {}",
                           answer.version, proto::protocol_version, answer.raw);
}

finding check_acceptance(const handshake_view& seen, std::chrono::nanoseconds connect_time,
                         const std::optional<failure>& of_the_library) {
    const std::chrono::nanoseconds wait = time_of_one_port(connect_time);
    std::string told = formatted("the service accepts a client after {}", milliseconds_text(seen.time));
    std::string remedy = "run it again; if it stays so, start the service anew";
    if (seen.time > wait) {
        told += formatted("; a connect of {} waits {} on each port", milliseconds_text(connect_time),
                          milliseconds_text(wait));
        remedy = formatted(
            "relieve the machine, or give programs a longer time to connect, as orvantactl "
            "--timeout {}s does",
            std::chrono::ceil<std::chrono::seconds>(seen.time * 2 * int{client_port_count}).count());
    }
    if (of_the_library) {
        const bool is_late = of_the_library->code == error_code::socket_bind_failed;
        return failed(handshake_name, is_late ? exit_status::timed_out : exit_status::no_service,
                      formatted("{}; the library does not get there: {} ({})", told,
                                vantu_orvanta_error_message(static_cast<std::int32_t>(of_the_library->code)),
                                static_cast<std::int32_t>(of_the_library->code)),
                      remedy);
    }
    return seen.time > wait ? warned(handshake_name, told, remedy) : passed(handshake_name, told);
}

} // namespace

std::chrono::nanoseconds time_of_one_port(std::chrono::nanoseconds connect_time) {
    return connect_time / int{client_port_count};
}

handshake_view shake_hands(const std::string& address, std::uint16_t client_port,
                           std::chrono::nanoseconds time) {
    const probe_socket::time_point end = std::chrono::steady_clock::now() + time;
    handshake_view seen;
    try {
        probe_socket socket(address, client_port);
        socket.connect(address, service_port);
        const probe_socket::time_point asked = std::chrono::steady_clock::now();
        send<op_code::connect>(socket, introduction());
        seen.answer = answer_from(socket.receive(end));
        seen.time = std::chrono::steady_clock::now() - asked;
        if (seen.answer.kind == answer_kind::accepted || seen.answer.kind == answer_kind::cut_short) {
            say_goodbye(socket, end);
        }
    } catch (const std::system_error& refused) {
        seen.answer = {answer_kind::not_sent, 0, 0, refused.code().message()};
    }
    return seen;
}

finding check_handshake(const handshake_view& seen, const std::string& holder,
                        std::chrono::nanoseconds connect_time, const std::optional<failure>& of_the_library) {
    const handshake_answer& answer = seen.answer;
    switch (answer.kind) {
    case answer_kind::accepted:
        return check_acceptance(seen, connect_time, of_the_library);
    case answer_kind::refused:
        return check_refusal(answer);
    case answer_kind::other_version:
        return failed(handshake_name, exit_status::no_service, text_of_other_version(answer),
                      "use the library that fits the service, or the service that fits the library");
    case answer_kind::foreign:
        return failed(
            handshake_name, exit_status::no_service,
            "what answers does not speak the protocol of the service: " + answer.raw,
            formatted("end {} if it is not the device service, and start that", or_the_holder(holder)));
    case answer_kind::cut_short:
        return failed(handshake_name, exit_status::no_service,
                      "the answer of the service is cut short: " + answer.raw,
                      "update the service: programs with this library end at such an answer");
    case answer_kind::closed_port:
        return failed(handshake_name, exit_status::no_service,
                      formatted("UDP port {} is closed, tells the system", service_port),
                      "start the device service, or orvanta-simulator where there is no device");
    case answer_kind::silence:
        return failed(
            handshake_name, exit_status::timed_out,
            formatted("no answer from UDP port {} within {}", service_port, milliseconds_text(connect_time)),
            formatted("end {} if it is not the device service; else start it anew, and see whether a "
                      "packet filter drops UDP on the loopback",
                      or_the_holder(holder)));
    case answer_kind::not_sent:
        return failed(handshake_name, exit_status::refused,
                      "the system refuses to send to the service: " + answer.raw,
                      "see whether a packet filter refuses UDP on the loopback");
    }
    return {};
}

} // namespace vantu::orvanta::ctl
