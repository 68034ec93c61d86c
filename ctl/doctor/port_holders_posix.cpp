// The programs that hold UDP ports, from /proc of Linux: its lists name a socket by its inode, and the
// processes' descriptors tell which of them has that inode open. Descriptors of other users are hidden from
// all but root.
#include "ctl/doctor/port_holders.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <netinet/in.h>
#include <sstream>
#include <string_view>

namespace vantu::orvanta::ctl {
namespace {

namespace fs = std::filesystem;

using holders_by_inode = std::multimap<std::string, port_holder>;

// An address as the kernel prints it: words of 32 bits in hexadecimal, each in the machine's order of bytes.
std::string address_of(std::string_view hexadecimal) {
    constexpr std::size_t word_digits = 8;
    std::array<std::uint32_t, 4> words{};
    const std::size_t count = std::min(hexadecimal.size() / word_digits, words.size());
    for (std::size_t i = 0; i < count; ++i) {
        const char* const at = hexadecimal.data() + i * word_digits;
        std::from_chars(at, at + word_digits, words[i], 16);
    }
    char text[INET6_ADDRSTRLEN]{};
    inet_ntop(count == 1 ? AF_INET : AF_INET6, words.data(), text, sizeof text);
    return text;
}

std::string without_mapping(const std::string& address) {
    constexpr std::string_view mapped = "::ffff:";
    return address.starts_with(mapped) ? address.substr(mapped.size()) : address;
}

// Lines such as "  12: 0100007F:D430 00000000:0000 07 00000000:00000000 00:00000000 00000000 0 0 4711 2 ...".
bool add_sockets(holders_by_inode& found, const char* list, std::uint16_t first, std::uint16_t last) {
    std::ifstream file(list);
    std::string line;
    if (!std::getline(file, line)) {
        return false;
    }
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string skipped;
        std::string local;
        std::string inode;
        words >> skipped >> local;
        for (int i = 0; i < 7; ++i) {
            words >> skipped;
        }
        words >> inode;
        const std::size_t colon = local.find(':');
        std::uint16_t port = 0;
        if (colon == std::string::npos) {
            continue;
        }
        std::from_chars(local.data() + colon + 1, local.data() + local.size(), port, 16);
        if (port >= first && port <= last) {
            found.emplace(inode, port_holder{port, without_mapping(address_of(local.substr(0, colon)))});
        }
    }
    return true;
}

std::string program_of(const fs::path& process) {
    std::error_code hidden;
    const std::string name = fs::read_symlink(process / "exe", hidden).filename().string();
    constexpr std::string_view replaced = " (deleted)";
    return name.ends_with(replaced) ? name.substr(0, name.size() - replaced.size()) : name;
}

// Processes come and go meanwhile, so nothing here throws.
void name_holders(holders_by_inode& found, const fs::path& process, std::uint32_t id) {
    std::error_code hidden;
    for (fs::directory_iterator entry(process / "fd", hidden), end; !hidden && entry != end;
         entry.increment(hidden)) {
        std::error_code closed;
        const std::string target = fs::read_symlink(entry->path(), closed).string();
        constexpr std::string_view socket = "socket:[";
        if (!target.starts_with(socket)) {
            continue;
        }
        const std::string inode = target.substr(socket.size(), target.size() - socket.size() - 1);
        const auto [begin, stop] = found.equal_range(inode);
        for (auto at = begin; at != stop; ++at) {
            at->second.process = id;
            at->second.program = program_of(process);
        }
    }
}

} // namespace

std::optional<std::vector<port_holder>> holders_of(std::uint16_t first, std::uint16_t last) {
    holders_by_inode found;
    const bool is_listed = add_sockets(found, "/proc/net/udp", first, last);
    // There is none where the system has no IPv6.
    add_sockets(found, "/proc/net/udp6", first, last);
    if (!is_listed) {
        return std::nullopt;
    }
    std::error_code hidden;
    for (fs::directory_iterator entry("/proc", hidden), end; !found.empty() && !hidden && entry != end;
         entry.increment(hidden)) {
        const std::string name = entry->path().filename().string();
        std::uint32_t id = 0;
        const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), id);
        if (error == std::errc{} && stop == name.data() + name.size()) {
            name_holders(found, entry->path(), id);
        }
    }
    std::vector<port_holder> holders;
    for (auto& [inode, holder] : found) {
        holders.push_back(std::move(holder));
    }
    std::stable_sort(holders.begin(), holders.end(), [](const port_holder& one, const port_holder& other) {
        return one.port != other.port ? one.port < other.port : one.address < other.address;
    });
    return holders;
}

} // namespace vantu::orvanta::ctl
