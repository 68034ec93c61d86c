#include "ctl/doctor/port_holders.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::ctl {
namespace {

std::string process_of(const port_holder& holder) {
    if (holder.process == 0) {
        return "a process that the system does not name";
    }
    return holder.program.empty() ? formatted("process {}", holder.process)
                                  : formatted("{} (process {})", holder.program, holder.process);
}

void add_once(std::vector<std::string>& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
}

} // namespace

bool listens_at(const port_holder& holder, const std::string& address) noexcept {
    const bool is_six = address.find(':') != std::string::npos;
    // A socket at :: takes IPv4 as well unless it was told not to, which no list tells.
    return holder.address == address || holder.address == "::" || (!is_six && holder.address == "0.0.0.0");
}

std::string processes_of(std::span<const port_holder> holders) {
    std::vector<std::string> names;
    for (const port_holder& holder : holders) {
        add_once(names, process_of(holder));
    }
    return enumerated(names);
}

std::string addresses_of(std::span<const port_holder> holders) {
    std::vector<std::string> names;
    for (const port_holder& holder : holders) {
        add_once(names, holder.address);
    }
    return enumerated(names);
}

std::string enumerated(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool is_last = i + 1 == names.size();
        text += i == 0 ? "" : is_last ? " and " : ", ";
        text += names[i];
    }
    return text;
}

} // namespace vantu::orvanta::ctl
