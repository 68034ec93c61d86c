#include "ctl/service/device_choice.hpp"

#include "ctl/report/exit_status.hpp"
#include "ctl/service/device_text.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <string_view>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t shortest_part = 4;

std::string in_lower_case(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower) {
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return lower;
}

bool has_id(const device& one, const std::string& text) {
    std::uint32_t id = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    return error == std::errc{} && stop == end && id == one.id;
}

bool is_named(const device& one, const std::string& lower) {
    return in_lower_case(short_id_text(one)) == lower ||
           (lower.size() >= shortest_part && one.uuid.find(lower) != std::string::npos);
}

std::string list_of(const std::vector<device>& devices) {
    std::string text;
    for (const device& one : devices) {
        text += text.empty() ? "" : ", ";
        text += std::to_string(one.id) + " (" + name_of(one.type) + " " + short_id_text(one) + ", " +
                one.uuid + ")";
    }
    return text;
}

[[noreturn]] void fail(const std::string& text) {
    throw failure_with_status(exit_status::no_device, text);
}

device only_one_of(const std::vector<device>& devices) {
    if (devices.empty()) {
        fail("the service has no Orvanta3; plug one in, or see orvantactl list");
    }
    if (devices.size() > 1) {
        fail("there are several devices; choose one with --device: " + list_of(devices));
    }
    return devices.front();
}

} // namespace

device choose_device(const std::vector<device>& devices, const std::string& text) {
    std::vector<device> fitting;
    if (text.empty()) {
        std::copy_if(devices.begin(), devices.end(), std::back_inserter(fitting),
                     [](const device& one) { return one.type == device_type::orvanta3; });
        return only_one_of(fitting);
    }
    const std::string lower = in_lower_case(text);
    const auto same_id =
        std::find_if(devices.begin(), devices.end(), [&](const device& one) { return has_id(one, text); });
    if (same_id != devices.end()) {
        return *same_id;
    }
    std::copy_if(devices.begin(), devices.end(), std::back_inserter(fitting),
                 [&](const device& one) { return is_named(one, lower); });
    if (fitting.size() == 1) {
        return fitting.front();
    }
    if (fitting.empty()) {
        fail("no device is called '" + text + "'" + (devices.empty() ? "; there are none" : "; there are: ") +
             list_of(devices));
    }
    fail("'" + text + "' names several devices: " + list_of(fitting));
}

bool is_meant(const device& one, const std::string& text) {
    return text.empty() ? one.type == device_type::orvanta3
                        : has_id(one, text) || is_named(one, in_lower_case(text));
}

} // namespace vantu::orvanta::ctl
