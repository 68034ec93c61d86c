#include "ctl/service/device_text.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {

std::string short_id_text(const device& of) {
    return formatted("{:04X}", of.short_id);
}

std::string line_of(const device& one) {
    return formatted("{:<5} {:<9} {} {}", one.id, name_of(one.type), short_id_text(one), one.uuid);
}

std::string description_of(const device& one) {
    return formatted("id           {}\ntype         {}\nshort id     {}\nuuid         {}\nhandedness   {}\n"
                     "information  {}\n",
                     one.id, name_of(one.type), short_id_text(one), one.uuid, name_of(one.handedness),
                     hexadecimal(one.information));
}

nlohmann::ordered_json document_of(const device& one) {
    return {
        {"id", one.id}, {"type", name_of(one.type)}, {"short_id", short_id_text(one)}, {"uuid", one.uuid}};
}

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += formatted("{:02x}", byte);
    }
    return text;
}

} // namespace vantu::orvanta::ctl
