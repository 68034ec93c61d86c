// A device as text and as JSON, in the same form in all commands.
#pragma once

#include "vantu/orvanta/device.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

namespace vantu::orvanta::ctl {

// The short id as menus print it: four hexadecimal digits.
std::string short_id_text(const device& of);

// "1 orvanta3 3001 6e2b8410-...", in columns.
std::string line_of(const device& one);

// All that is known, a line each.
std::string description_of(const device& one);

// {"id", "type", "short_id", "uuid"}
nlohmann::ordered_json document_of(const device& one);

std::string hexadecimal(std::span<const std::uint8_t> bytes);

} // namespace vantu::orvanta::ctl
