#include "shared/capture_file.hpp"

#include "shared/capture_frames.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace vantu::orvanta {
namespace {

constexpr std::uint32_t magic_of_microseconds = 0xA1B2C3D4;
constexpr std::uint32_t magic_of_nanoseconds = 0xA1B23C4D;
constexpr std::uint32_t magic_of_pcapng = 0x0A0D0D0A;
constexpr std::uint32_t greatest_frame = 262'144;
constexpr std::size_t file_header_size = 24;
constexpr std::size_t frame_header_size = 16;

std::string system_text(int error) {
    return std::generic_category().message(error);
}

template <std::size_t count>
std::array<std::byte, 4 * count> little_endian(const std::uint32_t (&numbers)[count]) {
    std::array<std::byte, 4 * count> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::byte>(numbers[i / 4] >> (8 * (i % 4)));
    }
    return bytes;
}

} // namespace

capture_writer::capture_writer(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wb")) {
    if (file_ == nullptr) {
        throw std::runtime_error(formatted("cannot write {}: {}", path_, system_text(errno)));
    }
    constexpr std::uint32_t version_2_4 = 2 | 4U << 16U;
    const auto header =
        little_endian({magic_of_nanoseconds, version_2_4, 0, 0, greatest_frame, link_type::raw});
    write_bytes(header.data(), header.size());
    flush();
}

void capture_writer::write(const captured_datagram& what) {
    const std::vector<std::byte> frame = raw_frame(what);
    const auto size = static_cast<std::uint32_t>(frame.size());
    const auto header = little_endian({static_cast<std::uint32_t>(what.time_ns / ns_per_second),
                                       static_cast<std::uint32_t>(what.time_ns % ns_per_second), size, size});
    write_bytes(header.data(), header.size());
    write_bytes(frame.data(), frame.size());
}

void capture_writer::flush() {
    if (std::fflush(file_.get()) != 0) {
        throw std::runtime_error(formatted("cannot write {}: {}", path_, system_text(errno)));
    }
}

void capture_writer::write_bytes(const void* bytes, std::size_t size) {
    if (std::fwrite(bytes, 1, size, file_.get()) != size) {
        throw std::runtime_error(formatted("cannot write {}: {}", path_, system_text(errno)));
    }
}

capture_reader::capture_reader(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "rb")) {
    if (file_ == nullptr) {
        throw std::runtime_error(formatted("cannot read {}: {}", path_, system_text(errno)));
    }
    std::array<std::byte, file_header_size> header{};
    if (!read_bytes(header.data(), header.size())) {
        throw std::runtime_error(formatted("{} is no capture: it is shorter than a pcap header", path_));
    }
    for (const bool is_big_endian : {false, true}) {
        is_big_endian_ = is_big_endian;
        const std::uint32_t magic = number_at(header.data());
        if (magic == magic_of_microseconds || magic == magic_of_nanoseconds) {
            ns_per_fraction_ = magic == magic_of_nanoseconds ? 1 : 1'000;
            constexpr std::size_t link_place = 20;
            link_ = number_at(header.data() + link_place) & 0x0FFFFFFFU; // above it stand other facts
            if (!is_known_link_type(link_)) {
                throw std::runtime_error(
                    formatted("{} has frames of link type {}, which is not known; a capture "
                              "of the loopback interface would be right",
                              path_, link_));
            }
            return;
        }
        if (magic == magic_of_pcapng) {
            throw std::runtime_error(
                formatted("{} is in the pcapng format; 'editcap -F pcap {} NEW' makes a pcap file of it",
                          path_, path_));
        }
    }
    throw std::runtime_error(formatted("{} is no capture: it does not begin as a pcap file does", path_));
}

std::optional<captured_datagram> capture_reader::next() {
    for (;; ++passed_over_) {
        std::array<std::byte, frame_header_size> header{};
        const std::size_t there = std::fread(header.data(), 1, header.size(), file_.get());
        if (there == 0 && std::feof(file_.get()) != 0) {
            return std::nullopt;
        }
        const std::uint32_t size = number_at(header.data() + 8);
        std::vector<std::byte> frame(size <= greatest_frame ? size : 0);
        if (there != header.size() || size > greatest_frame || !read_bytes(frame.data(), frame.size())) {
            throw std::runtime_error(formatted("{} ends in the middle of a frame", path_));
        }
        if (auto found = datagram_of(frame, link_)) {
            found->time_ns = std::int64_t{number_at(header.data())} * ns_per_second +
                             std::int64_t{number_at(header.data() + 4)} * ns_per_fraction_;
            return found;
        }
    }
}

bool capture_reader::read_bytes(void* bytes, std::size_t size) {
    return std::fread(bytes, 1, size, file_.get()) == size;
}

std::uint32_t capture_reader::number_at(const std::byte* bytes) const noexcept {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        number = number << 8U | std::to_integer<std::uint32_t>(bytes[is_big_endian_ ? i : 3 - i]);
    }
    return number;
}

} // namespace vantu::orvanta
