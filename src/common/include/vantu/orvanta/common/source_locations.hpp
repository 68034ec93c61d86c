// The source locations that log lines and checks report when the location is part of their contract.
// Everything else reports the file and line of its own call (log_here, assume).
#pragma once

#include <cstdint>

namespace vantu::orvanta {

struct source_location {
    const char* path;
    std::uint64_t line;
};

namespace locations {

inline constexpr const char* data_path =
    "hardware-api-service/src/common/include/vantu/orvanta/common/utils/data";
inline constexpr const char* utils_path =
    "hardware-api-service/src/common/include/vantu/orvanta/common/utils/utils";
inline constexpr const char* lib_path = "hardware-api-service/src/runtime/lib";

inline constexpr source_location skip_write_length{data_path, 40};
inline constexpr source_location skip_read_length{data_path, 45};
inline constexpr source_location read_mode{data_path, 68};
inline constexpr source_location read_length{data_path, 69};
inline constexpr source_location write_mode{data_path, 80};
inline constexpr source_location write_length{data_path, 81};

inline constexpr source_location text_size{utils_path, 85};

inline constexpr source_location handshake_operation{lib_path, 1082};
inline constexpr source_location poll_header_length{lib_path, 1181};
inline constexpr source_location poll_header_magic{lib_path, 1188};
inline constexpr source_location poll_header_version{lib_path, 1193};
inline constexpr source_location poll_operation_length{lib_path, 1199};
inline constexpr source_location poll_operation_magic{lib_path, 1207};

} // namespace locations
} // namespace vantu::orvanta
