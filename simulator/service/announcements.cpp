#include "simulator/service/announcements.hpp"

#include <algorithm>
#include <iterator>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

constexpr std::size_t announcement_size =
    outbox::size_of<op_code::device_added>() + std::max(outbox::size_of<op_code::device_info_orvanta3>(),
                                                        outbox::size_of<op_code::device_info_palmetron>());
constexpr std::size_t acceptance_size = outbox::size_of<op_code::connected>();

outbox::body<op_code::device_info_orvanta3> orvanta3_details(const device& which) {
    outbox::body<op_code::device_info_orvanta3> details{which.id, {}};
    std::copy(std::begin(which.information), std::end(which.information), details.record.information);
    details.record.handedness = which.settings.handedness;
    return details;
}

outbox::body<op_code::device_info_palmetron> palmetron_details(const device& which) {
    outbox::body<op_code::device_info_palmetron> details{which.id, {}};
    std::copy(std::begin(which.information), std::end(which.information), details.record.information);
    return details;
}

void announce(outbox& out, const peer& to, const device& which) {
    out.keep_together(to, announcement_size);
    out.pack<op_code::device_added>(to, 0, {which.id, which.description});
    if (which.is_orvanta3()) {
        out.pack<op_code::device_info_orvanta3>(to, 0, orvanta3_details(which));
    } else {
        out.pack<op_code::device_info_palmetron>(to, 0, palmetron_details(which));
    }
}

} // namespace

void accept_client(outbox& out, const peer& to, std::uint8_t tag, std::uint64_t client_id,
                   std::span<const device> devices, announce_order order) {
    out.seal();
    auto next = devices.begin();
    while (order == announce_order::before && next != devices.end() &&
           out.room_for(to) >= announcement_size + acceptance_size) {
        announce(out, to, *next);
        ++next;
    }
    out.pack<op_code::connected>(to, tag, {client_id});
    out.seal();
    for (; next != devices.end(); ++next) {
        announce(out, to, *next);
    }
    out.seal();
}

void announce_device(outbox& out, std::span<const client> to, const device& which) {
    for (const client& one : to) {
        out.seal();
        announce(out, one.address, which);
    }
    out.seal();
}

void send_orvanta3_details(outbox& out, std::span<const client> to, const device& which) {
    for (const client& one : to) {
        out.send<op_code::device_info_orvanta3>(one.address, 0, orvanta3_details(which));
    }
}

} // namespace vantu::orvanta::simulator
