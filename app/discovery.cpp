#include "app/discovery.hpp"

#include "app/reports.hpp"

#include "vantu/orvanta/orvanta.h"

#include <array>

namespace vantu::orvanta::app {
namespace {

std::vector<std::uint32_t> orvanta3_among(const client& connection, const std::vector<std::uint32_t>& ids) {
    std::vector<std::uint32_t> kept;
    for (const std::uint32_t id : ids) {
        const device_lookup found = device_report(connection, id);
        if (found.code == 0 && found.device.device_type == vantu_orvanta_device_type_orvanta3) {
            kept.push_back(id);
        }
    }
    return kept;
}

std::uint32_t choose_device(console& terminal, const client& connection,
                            const std::vector<std::uint32_t>& ids) {
    terminal.print("Found multiple devices\n");
    unsigned long long position = 0;
    for (const std::uint32_t id : ids) {
        const vantu_orvanta_device device = device_report(connection, id).device;
        terminal.print("\t%llu   %s %x\n", position, device_type_name(device.device_type),
                       unsigned{device.short_id});
        ++position;
    }
    for (;;) {
        const std::uint64_t choice = select_option(terminal, ids.size(), 1);
        if (choice < ids.size()) {
            return ids[static_cast<std::size_t>(choice)];
        }
    }
}

} // namespace

device_id_list list_device_ids(const client& connection) {
    std::array<std::uint32_t, most_devices_listed> ids{};
    std::size_t count = ids.size();
    const std::int32_t code = vantu_orvanta_device_ids(connection.context(), ids.data(), &count);
    if (code != 0) {
        return {{}, code};
    }
    return {{ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(count)}, code};
}

device_lookup device_report(const client& connection, std::uint32_t id) {
    device_lookup result{};
    result.code = vantu_orvanta_device_info(connection.context(), id, &result.device);
    if (result.code != 0) {
        result.device = {};
    }
    return result;
}

std::uint32_t find_orvanta3(console& terminal, const client& connection) {
    const device_id_list known = list_device_ids(connection);
    if (known.code != 0) {
        terminal.print_error("Error in find_orvanta3: %s\n", error_message(known.code));
        return 0;
    }
    const std::vector<std::uint32_t> kept = orvanta3_among(connection, known.ids);
    if (kept.empty()) {
        terminal.print_error("No devices found\n");
        return 0;
    }
    const std::uint32_t id = kept.size() == 1 ? kept.front() : choose_device(terminal, connection, kept);
    return vantu_orvanta_device_open(connection.context(), id, 0, 0) == 0 ? id : 0;
}

} // namespace vantu::orvanta::app
