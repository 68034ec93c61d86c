#include "ctl/replay/replay_text.hpp"

#include "shared/field_text.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/names.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <vector>

namespace vantu::orvanta::ctl {
namespace {

using namespace communication;
using json = nlohmann::ordered_json;

struct event_field {
    field what; // a tail has its count
    std::span<const std::byte> value;
};

std::span<const field> layout_of(std::uint32_t event_type) {
    const auto* const row =
        std::find_if(operations.begin(), operations.end(), [event_type](const operation& one) {
            return one.way == direction::to_client && one.event_type == event_type;
        });
    return row != operations.end() ? fields_of(row->code, row->way) : std::span<const field>{};
}

// The payload is the operation's body, but for the device id before it.
std::vector<event_field> fields_of(const vantu_orvanta_event& event) {
    const auto payload = std::as_bytes(std::span(event.payload));
    std::vector<event_field> found;
    std::size_t at = 0;
    for (const field& one : layout_of(event.event_type)) {
        if (one.name == "device_id") {
            continue;
        }
        std::size_t size = size_of(one);
        if (one.type == field_type::tail) {
            size = std::to_integer<std::size_t>(payload[at - 1]);
        }
        found.push_back({one, payload.subspan(at, size)});
        at += size;
    }
    return found;
}

// The status of an error is a code of the library.
const char* error_of(const vantu_orvanta_event& event) {
    vantu_orvanta_error error{};
    std::memcpy(&error, event.payload, sizeof error);
    return vantu_orvanta_error_name(static_cast<std::int32_t>(error.status));
}

json number_of(const field& what, std::span<const std::byte> value) {
    const json number = json::parse(value_text(what, value), nullptr, false);
    return number.is_number() ? number : json(); // what is no finite number is null
}

json value_of(const event_field& one) {
    switch (one.what.type) {
    case field_type::bytes:
    case field_type::text:
    case field_type::tail:
        return value_text(one.what, one.value);
    case field_type::u8:
    case field_type::u16:
    case field_type::u32:
    case field_type::u64:
    case field_type::f32:
        break;
    }
    field single = one.what;
    single.count = 1;
    if (one.what.count == 1) {
        return number_of(single, one.value);
    }
    json all = json::array();
    const std::size_t size = value_size_of(single.type);
    for (std::size_t at = 0; at < one.value.size(); at += size) {
        all.push_back(number_of(single, one.value.subspan(at, size)));
    }
    return all;
}

// An outcome without its time.
std::string outcome_text(const replayed_connection& made) {
    std::string ids;
    for (const std::uint32_t id : made.device_ids) {
        ids += ids.empty() ? "" : ",";
        ids += std::to_string(id);
    }
    return formatted("connected client_id={} devices={}", made.client_id, ids.empty() ? "none" : ids);
}

std::string outcome_text(const vantu_orvanta_event& event) {
    std::string text = vantu_orvanta_event_type_name(event.event_type);
    if (event.device_id != 0) {
        text += formatted(" device={}", static_cast<std::uint32_t>(event.device_id));
    }
    if (event.tag != 0) {
        text += formatted(" tag={}", event.tag);
    }
    if (event.event_type == vantu_orvanta_event_error) {
        return text + formatted(" status={}", error_of(event));
    }
    for (const event_field& one : fields_of(event)) {
        text += formatted(" {}={}", one.what.name, value_text(one.what, one.value));
    }
    return text;
}

std::string outcome_text(const replayed_rejection& rejected) {
    return formatted("rejected {}: {}", vantu_orvanta_error_name(rejected.code), rejected.reason);
}

void add_outcome(json& document, const replayed_connection& made) {
    document["connected"] = {{"client_id", made.client_id}, {"devices", made.device_ids}};
}

void add_outcome(json& document, const vantu_orvanta_event& event) {
    document["event"] = vantu_orvanta_event_type_name(event.event_type);
    document["device"] = static_cast<std::uint32_t>(event.device_id);
    document["tag"] = event.tag;
    json fields = json::object();
    if (event.event_type == vantu_orvanta_event_error) {
        fields["status"] = error_of(event);
    } else {
        for (const event_field& one : fields_of(event)) {
            fields[std::string(one.what.name)] = value_of(one);
        }
    }
    document["fields"] = std::move(fields);
}

void add_outcome(json& document, const replayed_rejection& rejected) {
    document["rejected"] = {{"code", vantu_orvanta_error_name(rejected.code)}, {"reason", rejected.reason}};
}

double seconds_of(std::int64_t time_ns) {
    return static_cast<double>(time_ns) / 1e9;
}

} // namespace

std::string line_of(const replayed& one, bool names_client) {
    const std::string text =
        std::visit([](const auto& outcome) { return outcome_text(outcome); }, one.outcome);
    return formatted("{:>12.6f} s  {}{}\n", seconds_of(one.time_ns),
                     names_client ? formatted("client={} ", one.client.port) : std::string(), text);
}

json document_of(const replayed& one) {
    json document{{"time", seconds_of(one.time_ns)}, {"client", one.client.port}};
    std::visit([&document](const auto& outcome) { add_outcome(document, outcome); }, one.outcome);
    return document;
}

std::string line_of(const replay_counts& counts) {
    std::string text = formatted("{} datagrams to clients: {} events, {} rejected", counts.datagrams,
                                 counts.events, counts.rejected);
    if (counts.discarded != 0) {
        text += formatted(", {} discarded after the goodbye", counts.discarded);
    }
    if (counts.others != 0) {
        text += formatted("; {} datagrams of others", counts.others);
    }
    return text;
}

json document_of(const replay_counts& counts) {
    return {{"replayed",
             {{"datagrams", counts.datagrams},
              {"events", counts.events},
              {"rejected", counts.rejected},
              {"discarded", counts.discarded},
              {"others", counts.others}}}};
}

} // namespace vantu::orvanta::ctl
