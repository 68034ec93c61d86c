#include "simulator/service/device.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <iterator>

namespace vantu::orvanta::simulator {
namespace {

// The first bytes of the identities of one type.
struct device_family {
    std::uint8_t type;
    std::uint32_t first_id;
    std::uint16_t first_short_id;
    std::uint8_t uuid_begin[12];
};

constexpr device_family orvanta3_family{
    vantu_orvanta_device_type_orvanta3,
    first_orvanta3_id,
    0x3001,
    {0x6E, 0x2B, 0x84, 0x10, 0x5F, 0x3C, 0x4D, 0x71, 0x9A, 0x03, 0xC5, 0x38}};
constexpr device_family palmetron_family{
    vantu_orvanta_device_type_palmetron,
    first_palmetron_id,
    0x5001,
    {0xB1, 0x47, 0x0D, 0x29, 0xE8, 0x62, 0x4A, 0x15, 0x8C, 0x90, 0x7E, 0xD4}};
static_assert(first_orvanta3_id + most_devices_of_a_type <= first_palmetron_id);

} // namespace

device make_device(std::uint8_t device_type, std::uint32_t place) {
    const device_family& family =
        device_type == vantu_orvanta_device_type_orvanta3 ? orvanta3_family : palmetron_family;
    device made;
    made.id = family.first_id + place;
    made.place = place;
    made.description.device_type = family.type;
    made.description.short_id = static_cast<std::uint16_t>(family.first_short_id + place);
    std::copy(std::begin(family.uuid_begin), std::end(family.uuid_begin), made.description.uuid);
    for (std::uint32_t i = 0; i < 4; ++i) {
        const auto value = static_cast<std::uint8_t>((place + 1) >> (24 - 8 * i));
        made.description.uuid[12 + i] = value;
        made.information[4 + i] = value;
    }
    made.information[0] = 2; // the firmware's version, 2.0.0
    return made;
}

std::vector<device> make_devices(std::size_t orvanta3_count, std::size_t palmetron_count) {
    std::vector<device> made;
    made.reserve(orvanta3_count + palmetron_count);
    for (std::uint32_t place = 0; place < orvanta3_count; ++place) {
        made.push_back(make_device(vantu_orvanta_device_type_orvanta3, place));
    }
    for (std::uint32_t place = 0; place < palmetron_count; ++place) {
        made.push_back(make_device(vantu_orvanta_device_type_palmetron, place));
    }
    return made;
}

device* find_device(std::span<device> devices, std::uint32_t id) noexcept {
    const auto found =
        std::lower_bound(devices.begin(), devices.end(), id,
                         [](const device& which, std::uint32_t value) { return which.id < value; });
    return found != devices.end() && found->id == id ? &*found : nullptr;
}

std::string uuid_text(const device& which) {
    std::string text;
    for (const std::uint8_t value : which.description.uuid) {
        text += formatted("{:02x}", value);
    }
    return text;
}

} // namespace vantu::orvanta::simulator
