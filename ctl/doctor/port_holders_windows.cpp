// The programs that hold UDP ports, from the tables of the IP helper.
#include "ctl/doctor/port_holders.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iphlpapi.h>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace vantu::orvanta::ctl {
namespace {

constexpr int attempts = 8;

// The table of an address family, as bytes; empty when the system refuses.
std::vector<std::byte> table_of(ULONG family) {
    std::vector<std::byte> table;
    DWORD size = 0;
    // It may grow between two calls.
    for (int i = 0; i < attempts; ++i) {
        const DWORD error = GetExtendedUdpTable(table.data(), &size, FALSE, family, UDP_TABLE_OWNER_PID, 0);
        if (error == NO_ERROR) {
            return table;
        }
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            break;
        }
        table.resize(size);
    }
    return {};
}

std::string program_of(DWORD process) {
    HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (handle == nullptr) {
        return "";
    }
    char path[MAX_PATH]{};
    DWORD length = MAX_PATH;
    const bool is_told = QueryFullProcessImageNameA(handle, 0, path, &length) != 0;
    CloseHandle(handle);
    const std::string text(path, is_told ? length : 0);
    return text.substr(text.find_last_of("\\/") + 1);
}

std::string text_of(int family, const void* address) {
    char text[INET6_ADDRSTRLEN + 1]{};
    inet_ntop(family, address, text, sizeof text);
    return text;
}

struct wanted_ports {
    std::uint16_t first;
    std::uint16_t last;
};

// Rows of one family, read from a table as the system laid it out.
template <typename Table, typename Row>
bool add_rows(std::vector<port_holder>& found, ULONG family, const wanted_ports& wanted,
              const void* (*address_in)(const Row&)) {
    const std::vector<std::byte> table = table_of(family);
    DWORD count = 0;
    if (table.size() < sizeof count) {
        return false;
    }
    std::memcpy(&count, table.data(), sizeof count);
    for (DWORD i = 0; i < count; ++i) {
        Row row{};
        const std::size_t at = offsetof(Table, table) + i * sizeof row;
        if (at + sizeof row > table.size()) {
            break;
        }
        std::memcpy(&row, table.data() + at, sizeof row);
        const std::uint16_t port = ntohs(static_cast<u_short>(row.dwLocalPort));
        if (port >= wanted.first && port <= wanted.last) {
            found.push_back({port, text_of(static_cast<int>(family), address_in(row)), row.dwOwningPid,
                             program_of(row.dwOwningPid)});
        }
    }
    return true;
}

} // namespace

std::optional<std::vector<port_holder>> holders_of(std::uint16_t first, std::uint16_t last) {
    std::vector<port_holder> holders;
    const wanted_ports wanted{first, last};
    const bool is_listed = add_rows<MIB_UDPTABLE_OWNER_PID, MIB_UDPROW_OWNER_PID>(
        holders, AF_INET, wanted,
        [](const MIB_UDPROW_OWNER_PID& row) -> const void* { return &row.dwLocalAddr; });
    // There is none where the system has no IPv6.
    add_rows<MIB_UDP6TABLE_OWNER_PID, MIB_UDP6ROW_OWNER_PID>(
        holders, AF_INET6, wanted,
        [](const MIB_UDP6ROW_OWNER_PID& row) -> const void* { return row.ucLocalAddr; });
    if (!is_listed) {
        return std::nullopt;
    }
    std::stable_sort(holders.begin(), holders.end(), [](const port_holder& one, const port_holder& other) {
        return one.port != other.port ? one.port < other.port : one.address < other.address;
    });
    return holders;
}

} // namespace vantu::orvanta::ctl
