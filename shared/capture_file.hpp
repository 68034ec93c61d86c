// Captures in files of the pcap format, which every tool for captures reads.
#pragma once

#include "shared/captured_datagram.hpp"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace vantu::orvanta {

struct close_file {
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};
using file_handle = std::unique_ptr<std::FILE, close_file>;

class capture_writer {
  public:
    // Begins the file anew. Every function throws std::runtime_error with one line where the file cannot be
    // written.
    explicit capture_writer(std::string path);

    void write(const captured_datagram& what);

    // Hands all to the system, for others to read. Without it the last datagrams come with the destructor,
    // which does not tell when that fails.
    void flush();

  private:
    void write_bytes(const void* bytes, std::size_t size);

    std::string path_;
    file_handle file_;
};

class capture_reader {
  public:
    // Throws std::runtime_error with one line for a file that cannot be read, is no pcap file, or has frames
    // of a link type that is not known.
    explicit capture_reader(std::string path);

    // The next UDP datagram; empty after the last. Frames without a whole one are passed over. Throws
    // std::runtime_error where the file ends in the middle of a frame.
    [[nodiscard]] std::optional<captured_datagram> next();

    // Frames that were passed over.
    [[nodiscard]] std::uint64_t passed_over() const noexcept { return passed_over_; }

  private:
    [[nodiscard]] bool read_bytes(void* bytes, std::size_t size);
    [[nodiscard]] std::uint32_t number_at(const std::byte* bytes) const noexcept;

    std::string path_;
    file_handle file_;
    bool is_big_endian_{false};
    std::int64_t ns_per_fraction_{1};
    std::uint32_t link_{0};
    std::uint64_t passed_over_{0};
};

} // namespace vantu::orvanta
