#include "simulator/library/traffic_record.hpp"

#include "network/internet_address.hpp"
#include "shared/datagram_text.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {

using communication::direction;

namespace {

socket_place place_of(const internet_address& address) {
    return {address.version == 6, address.bytes, address.port};
}

} // namespace

traffic_record::traffic_record(const service_simulator::settings& wanted, const simulation& simulated,
                               record_times times)
    : simulated_(simulated), times_(std::move(times)), trace_(wanted.trace), warn_(wanted.warn) {
    if (!wanted.capture_path.empty()) {
        capture_.emplace(wanted.capture_path);
    }
}

void traffic_record::note(const wire_datagram& what) {
    if (trace_) {
        write_line(what.way, what.with, what.bytes, {});
    }
    if (capture_) {
        capture(what);
    }
}

void traffic_record::note(const fault_note& what) {
    if (trace_) {
        write_line(what.way, what.with, what.bytes, what.rule);
    }
}

void traffic_record::write_line(direction way, const peer& with, std::span<const std::byte> bytes,
                                std::string_view rule) {
    const std::string address = address_text(with);
    trace_(formatted("{:.6f} {} {} {}: {}{}{}", seconds_of(times_.since_start_ns()),
                     way == direction::to_service ? "in " : "out", address, client_text(address, with),
                     datagram_text(bytes, way), rule.empty() ? "" : " <- ", rule));
}

// The service forgets a client before its goodbye goes out.
const std::string& traffic_record::client_text(const std::string& address, const peer& with) {
    std::string& text = clients_.try_emplace(address, "-").first->second;
    const auto& all = simulated_.clients();
    const auto known = std::find_if(all.begin(), all.end(),
                                    [&with](const client& one) { return same_peer(one.address, with); });
    if (known != all.end()) {
        text = formatted("{} '{}'", known->id, known->name);
    }
    return text;
}

void traffic_record::capture(const wire_datagram& what) {
    const endpoint& with = what.with.address;
    captured_datagram made;
    made.time_ns = times_.since_1970_ns();
    made.from = place_of(internet_address_of(with.address, with.length));
    const auto [own, is_new] = own_places_.try_emplace(what.socket);
    if (is_new) {
        own->second = place_of(local_address_of(what.socket));
    }
    made.to = own->second;
    if (what.way == direction::to_client) {
        std::swap(made.from, made.to);
    }
    made.bytes.assign(what.bytes.begin(), what.bytes.end());
    try {
        capture_->write(made);
    } catch (const std::runtime_error& failure) {
        end_capture(failure.what());
    }
}

void traffic_record::flush() {
    if (capture_) {
        try {
            capture_->flush();
        } catch (const std::runtime_error& failure) {
            end_capture(failure.what());
        }
    }
}

void traffic_record::end_capture(const char* why) {
    capture_.reset();
    if (warn_) {
        warn_(formatted("{}; the capture ends here", why));
    }
}

} // namespace vantu::orvanta::simulator
