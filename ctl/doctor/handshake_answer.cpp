#include "ctl/doctor/handshake_answer.hpp"

#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <algorithm>
#include <cstring>
#include <optional>

namespace vantu::orvanta::ctl {
namespace {

using namespace communication;

constexpr std::size_t shown_bytes = 16;

// Reads records from the front; what is not there whole is not read.
class reader {
  public:
    explicit reader(std::span<const std::byte> bytes) : left_(bytes) {}

    template <typename Record> std::optional<Record> take() {
        if (left_.size() < sizeof(Record)) {
            return std::nullopt;
        }
        Record record;
        std::memcpy(&record, left_.data(), sizeof record);
        left_ = left_.subspan(sizeof record);
        return record;
    }
    [[nodiscard]] bool skip(std::size_t count) {
        const bool is_there = count <= left_.size();
        left_ = left_.subspan(std::min(count, left_.size()));
        return is_there;
    }
    [[nodiscard]] bool is_empty() const { return left_.empty(); }

  private:
    std::span<const std::byte> left_;
};

std::string raw_text(std::span<const std::byte> datagram) {
    std::string text = formatted("{} bytes", datagram.size());
    const char* before = ": ";
    for (const std::byte byte : datagram.first(std::min(datagram.size(), shown_bytes))) {
        text += before + formatted("{:02X}", std::to_integer<unsigned>(byte));
        before = " ";
    }
    return datagram.size() > shown_bytes ? text + " ..." : text;
}

answer_kind kind_of_refusal(service_status status) {
    return status == service_status::invalid_version ? answer_kind::other_version : answer_kind::refused;
}

bool may_come_before_the_acceptance(std::uint8_t code) {
    return code == op_code::device_added || code == op_code::device_info_orvanta3 ||
           code == op_code::device_info_palmetron;
}

void read_operations(reader& from, handshake_answer& answer) {
    while (const std::optional<proto::op> op = from.take<proto::op>()) {
        if (op->magic != proto::op_magic) {
            answer.kind = answer_kind::foreign;
            return;
        }
        if (op->code == op_code::connected) {
            answer.kind = from.take<proto::connected_body>() ? answer_kind::accepted : answer_kind::cut_short;
            return;
        }
        if (op->code == op_code::service_error) {
            const auto body = from.take<proto::addressed<proto::status_byte>>();
            answer.status = body ? body->record.status : std::uint8_t{0};
            answer.kind =
                body ? kind_of_refusal(static_cast<service_status>(answer.status)) : answer_kind::cut_short;
            return;
        }
        if (!may_come_before_the_acceptance(op->code)) {
            answer.kind = answer_kind::foreign;
            return;
        }
        if (!from.skip(op->length)) {
            break;
        }
    }
    answer.kind = answer_kind::cut_short;
}

} // namespace

handshake_answer read_answer(std::span<const std::byte> datagram) {
    handshake_answer answer;
    answer.raw = raw_text(datagram);
    reader from(datagram);
    const std::optional<proto::header> header = from.take<proto::header>();
    if (!header || header->magic != proto::header_magic || datagram.size() > constants::buffer_capacity) {
        answer.kind = answer_kind::foreign;
    } else if (header->version != proto::protocol_version) {
        answer.kind = answer_kind::other_version;
        answer.version = header->version;
    } else {
        read_operations(from, answer);
    }
    return answer;
}

bool has_operation(std::span<const std::byte> datagram, std::uint8_t code) {
    reader from(datagram);
    if (!from.take<proto::header>()) {
        return false;
    }
    for (std::optional<proto::op> op = from.take<proto::op>(); op; op = from.take<proto::op>()) {
        if (op->code == code) {
            return true;
        }
        if (!from.skip(op->length)) {
            return false;
        }
    }
    return false;
}

} // namespace vantu::orvanta::ctl
