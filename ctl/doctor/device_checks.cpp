#include "ctl/doctor/device_checks.hpp"

#include "ctl/doctor/milliseconds.hpp"
#include "ctl/doctor/port_holders.hpp"
#include "ctl/service/device_choice.hpp"
#include "ctl/service/device_text.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/names.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace vantu::orvanta::ctl {
namespace {

constexpr const char* devices_name = "devices";
constexpr const char* open_name = "open";
constexpr const char* request_name = "request";
constexpr int requests = 5;
constexpr auto slow_answer = std::chrono::milliseconds(100);
constexpr const char* lost_datagram =
    "the protocol repeats nothing, so a lost datagram stays lost: run it again, and "
    "if it stays so, start the service anew";

bool is_orvanta3(const device& one) {
    return one.type == device_type::orvanta3;
}

std::string remedy_of(error_code code) {
    switch (code) {
    case error_code::timed_out:
        return lost_datagram;
    case error_code::device_communication_error:
    case error_code::invalid_device_id:
        return "plug the device in again, and see whether its cable is loose and its power is on";
    case error_code::unsupported_device_model:
        return "update the service: it is older than the device";
    default:
        return "start the service anew";
    }
}

std::string code_text(error_code code) {
    return formatted("{} ({})", vantu_orvanta_error_message(static_cast<std::int32_t>(code)),
                     static_cast<std::int32_t>(code));
}

std::vector<device> wanted_of(const std::vector<device>& devices, const std::string& wanted) {
    if (!wanted.empty()) {
        return {choose_device(devices, wanted)};
    }
    std::vector<device> chosen;
    std::copy_if(devices.begin(), devices.end(), std::back_inserter(chosen), is_orvanta3);
    return chosen;
}

std::string ids_of(const std::vector<std::uint32_t>& ids) {
    std::vector<std::string> names;
    std::transform(ids.begin(), ids.end(), std::back_inserter(names),
                   [](std::uint32_t id) { return std::to_string(id); });
    return (ids.size() == 1 ? "device " : "devices ") + enumerated(names);
}

opening open_all(connection& to, const std::vector<device>& wanted, std::chrono::nanoseconds time) {
    opening done{passed(open_name, "")};
    std::vector<std::string> told;
    to.restart_time(time);
    for (const device& one : wanted) {
        const auto begin = std::chrono::steady_clock::now();
        const result<void> answer = to.try_to_ask<void>([&](session& service, auto handler, auto left) {
            service.open(one.id, std::move(handler), left);
        });
        if (answer) {
            done.opened.push_back(one.id);
            continue;
        }
        const std::string why = answer.error() == error_code::timed_out
                                    ? formatted("no answer within {}",
                                                milliseconds_text(std::chrono::steady_clock::now() - begin))
                                    : code_text(answer.error());
        told.push_back(formatted("device {} does not open: {}", one.id, why));
        if (is_usable(done.found)) {
            done.found = failed(open_name, status_of(answer.error()), "", remedy_of(answer.error()));
        }
        if (answer.error() == error_code::timed_out) {
            break;
        }
    }
    if (!done.opened.empty()) {
        told.insert(told.begin(), ids_of(done.opened) + (done.opened.size() == 1 ? " opens" : " open"));
    }
    for (const std::string& one : told) {
        done.found.seen += (done.found.seen.empty() ? "" : "; ") + one;
    }
    return done;
}

} // namespace

finding check_devices(const std::vector<device>& devices) {
    const auto orvantas = std::count_if(devices.begin(), devices.end(), is_orvanta3);
    const auto palmetrons = std::count_if(
        devices.begin(), devices.end(), [](const device& one) { return one.type == device_type::palmetron; });
    const auto others = static_cast<std::ptrdiff_t>(devices.size()) - orvantas - palmetrons;
    std::string seen = formatted("{} orvanta3, {} palmetron", orvantas, palmetrons);
    if (others > 0) {
        seen += formatted(", {} of another type", others);
    }
    if (orvantas == 0) {
        return failed(devices_name, exit_status::no_device, seen,
                      "plug an Orvanta3 in and switch its power on; if it is, start the service anew");
    }
    return passed(devices_name, seen);
}

opening check_open(connection& to, const std::string& wanted, std::chrono::nanoseconds time) {
    std::vector<device> chosen;
    try {
        chosen = wanted_of(to.service().devices(), wanted);
    } catch (const failure_with_status& why) {
        return {failed(open_name, why.status(), why.what(), "name one of the devices of orvantactl list")};
    }
    if (chosen.empty()) {
        return {failed(open_name, exit_status::no_device, "no Orvanta3 is there any more",
                       remedy_of(error_code::invalid_device_id))};
    }
    if (!is_orvanta3(chosen.front())) {
        return {failed(
            open_name, exit_status::no_device,
            formatted("device {} is a {}, not an orvanta3", chosen.front().id, name_of(chosen.front().type)),
            "name an Orvanta3 of orvantactl list")};
    }
    return open_all(to, chosen, time);
}

request_view ask_for_orientation(connection& to, std::uint32_t device_id, std::chrono::nanoseconds time) {
    request_view seen;
    seen.device_id = device_id;
    for (int i = 0; i < requests; ++i) {
        to.restart_time(time / requests);
        const auto begin = std::chrono::steady_clock::now();
        const result<orientation> answer =
            to.try_to_ask<orientation>([&](session& service, auto handler, auto left) {
                service.get_orientation(device_id, std::move(handler), left);
            });
        ++seen.asked;
        if (answer) {
            seen.times.push_back(std::chrono::steady_clock::now() - begin);
            continue;
        }
        seen.last_failure = {answer.error(), answer.message()};
        if (answer.error() != error_code::timed_out) {
            break;
        }
    }
    return seen;
}

finding check_request(const request_view& seen) {
    const error_code code = seen.last_failure.code;
    const bool is_refused = code != error_code::success && code != error_code::timed_out;
    if (is_refused || seen.times.empty()) {
        return failed(request_name, status_of(code),
                      formatted("device {} was asked {} times for its orientation, {} answers: {}",
                                seen.device_id, seen.asked, seen.times.size(), code_text(code)),
                      remedy_of(code));
    }
    std::vector<std::chrono::nanoseconds> sorted = seen.times;
    std::sort(sorted.begin(), sorted.end());
    const std::chrono::nanoseconds median = sorted[sorted.size() / 2];
    const std::chrono::nanoseconds worst = sorted.back();
    const std::string told = formatted(
        "device {}: {} of {} requests for the orientation answered, median {}, worst {}", seen.device_id,
        seen.times.size(), seen.asked, milliseconds_text(median), milliseconds_text(worst));
    finding found = passed(request_name, told);
    if (seen.times.size() < seen.asked) {
        found = warned(request_name, told, lost_datagram);
    } else if (median > slow_answer) {
        found =
            warned(request_name, told,
                   "answers of a service on the same machine come within a few milliseconds: relieve it of "
                   "other work");
    }
    found.figures = {{"median_ms", milliseconds_of(median)}, {"worst_ms", milliseconds_of(worst)}};
    return found;
}

stream_view watch_stream(connection& to, stream_recorder& recorder, std::uint32_t device_id,
                         std::chrono::nanoseconds time) {
    const std::uint64_t rejected = to.service().count().rejected;
    stream_view seen;
    seen.device_id = device_id;
    recorder.begin(device_id);
    seen.begin = std::chrono::steady_clock::now();
    seen.end = seen.begin + time;
    while (std::chrono::steady_clock::now() < seen.end) {
        end_when_interrupted();
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(
            look_for_interruption, seen.end - std::chrono::steady_clock::now()));
    }
    seen.times = recorder.take();
    seen.rejected = to.service().count().rejected - rejected;
    return seen;
}

} // namespace vantu::orvanta::ctl
