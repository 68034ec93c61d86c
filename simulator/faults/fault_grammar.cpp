// Reading a fault's argument and selectors.
#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/faults/faults.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <limits>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;

constexpr std::uint32_t greatest_byte = std::numeric_limits<std::uint8_t>::max();
constexpr std::uint32_t greatest_number = std::numeric_limits<std::uint32_t>::max();

// One fault's text, its parts and how to complain about them.
class fault_reader {
  public:
    fault_reader(fault_kind kind, std::string_view text) : row_(row_of(kind)) {
        rule_.kind = kind;
        const auto at = text.find('@');
        read_argument(trimmed(text.substr(0, at)));
        if (at != std::string_view::npos) {
            read_selectors(text.substr(at + 1));
        }
        rule_.now = row_.at_once && !selected_;
    }

    [[nodiscard]] const fault_rule& rule() const { return rule_; }

  private:
    [[noreturn]] void refuse(const std::string& what) const {
        throw std::invalid_argument(
            formatted("{}: {}, as in '{} {}'", row_.name, what, row_.name, row_.example));
    }

    [[nodiscard]] std::uint32_t number(std::string_view text, std::uint32_t least, std::uint32_t greatest,
                                       std::string_view what) const {
        const auto value = whole_number(text);
        if (!value.has_value() || *value < least || *value > greatest) {
            refuse(formatted("'{}' is no {}; it takes a whole number from {} to {}", text, what, least,
                             greatest));
        }
        return static_cast<std::uint32_t>(*value);
    }

    // Two numbers with a sign between them, the second of which may be left out.
    void read_pair(std::string_view text, char between, std::uint32_t greatest, std::uint32_t greatest_last,
                   std::string_view what) {
        const auto place = text.find(between);
        rule_.first = number(trimmed(text.substr(0, place)), 0, greatest, what);
        if (place != std::string_view::npos) {
            rule_.last = number(trimmed(text.substr(place + 1)), 0, greatest_last, what);
        }
    }

    void read_probability(std::string_view text) {
        const auto value = real_number(text);
        if (!value.has_value() || !(*value >= 0 && *value <= 1)) {
            refuse(formatted("'{}' is no probability; it takes a number from 0 to 1", text));
        }
        if (probable_) {
            refuse("the probability is given twice; once is enough");
        }
        rule_.probability = *value;
        probable_ = true;
        selected_ = true;
    }

    void read_milliseconds(std::string_view text) {
        read_pair(text, '-', greatest_number, greatest_number, "time in milliseconds");
        if (rule_.last.has_value() && *rule_.last < *rule_.first) {
            refuse(formatted("'{}' ends before it begins; the smaller number comes first", text));
        }
    }

    void read_device_type(std::string_view text) {
        if (text == "orvanta3") {
            rule_.first = vantu_orvanta_device_type_orvanta3;
        } else if (text == "palmetron") {
            rule_.first = vantu_orvanta_device_type_palmetron;
        } else {
            refuse(formatted("'{}' is no type of device; it takes orvanta3 or palmetron", text));
        }
    }

    [[nodiscard]] bool argument_may_be_left_out() const {
        return row_.argument == fault_argument::none || row_.argument == fault_argument::tag ||
               row_.argument == fault_argument::device;
    }

    void read_argument(std::string_view text) {
        if (text.empty()) {
            if (!argument_may_be_left_out()) {
                refuse("it lacks its argument; say it before any '@'");
            }
            return;
        }
        switch (row_.argument) {
        case fault_argument::none:
            return read_probability(text);
        case fault_argument::count:
            rule_.first = number(text, 1, most_copies, "count");
            return;
        case fault_argument::bytes:
            rule_.first = number(text, 0, row_.kind == fault_kind::short_acceptance ? 7 : greatest_datagram,
                                 "number of bytes");
            return;
        case fault_argument::milliseconds:
            return read_milliseconds(text);
        case fault_argument::status:
            rule_.first = number(text, 0, greatest_byte, "status");
            return;
        case fault_argument::status_and_tag:
            return read_pair(text, ':', greatest_byte, greatest_byte, "status or tag");
        case fault_argument::tag:
            rule_.first = number(text, 0, greatest_byte, "tag");
            return;
        case fault_argument::device:
            rule_.first = number(text, 0, greatest_number, "device id");
            return;
        case fault_argument::device_type:
            return read_device_type(text);
        }
    }

    void read_selectors(std::string_view text) {
        for (;;) {
            const auto comma = text.find(',');
            read_selector(trimmed(text.substr(0, comma)));
            if (comma == std::string_view::npos) {
                break;
            }
            text.remove_prefix(comma + 1);
        }
        if (probable_ && rule_.nth != 0) {
            refuse("n and a probability exclude each other; take one of them");
        }
    }

    void read_selector(std::string_view text) {
        const auto equals = text.find('=');
        const std::string_view key = trimmed(text.substr(0, equals));
        const std::string_view value =
            equals == std::string_view::npos ? std::string_view{} : trimmed(text.substr(equals + 1));
        if (key == "op") {
            read_operation(value);
        } else if (key == "dir") {
            read_direction(value);
        } else if (key == "n") {
            read_nth(value);
        } else if (key == "p") {
            read_probability(value);
        } else {
            refuse(formatted("'{}' is no selector; it takes op=, dir=, n= or p=", text));
        }
        selected_ = true;
    }

    void once(bool given, std::string_view key) const {
        if (given) {
            refuse(formatted("{} is given twice; once is enough", key));
        }
    }

    void read_operation(std::string_view text) {
        once(rule_.code.has_value(), "op");
        for (const communication::operation& row : communication::operations) {
            if (row.name == text) {
                rule_.code = row.code;
                return;
            }
        }
        const auto value = whole_number(text);
        if (!value.has_value() || *value > greatest_byte) {
            refuse(formatted("'{}' is no operation; op takes a code from 0 to 255 or a name{}", text,
                             hint_for_operation(text)));
        }
        rule_.code = static_cast<std::uint8_t>(*value);
    }

    [[nodiscard]] static std::string hint_for_operation(std::string_view text) {
        std::array<std::string_view, communication::operations.size()> names;
        for (std::size_t i = 0; i < names.size(); ++i) {
            names[i] = communication::operations[i].name;
        }
        return hint_for(text, names);
    }

    void read_direction(std::string_view text) {
        once(rule_.way.has_value(), "dir");
        if (text == "in") {
            rule_.way = direction::to_service;
        } else if (text == "out") {
            rule_.way = direction::to_client;
        } else {
            refuse(formatted("'{}' is no direction; dir takes in (from clients) or out (to clients)", text));
        }
        if (!(*rule_.way == direction::to_service ? row_.to_service : row_.to_client)) {
            refuse(row_.to_client ? "it can only happen to datagrams to clients; dir takes out"
                                  : "it can only happen to datagrams from clients; dir takes in");
        }
    }

    void read_nth(std::string_view text) {
        once(rule_.nth != 0, "n");
        const auto value = whole_number(text);
        if (!value.has_value() || *value == 0) {
            refuse(formatted("'{}' is no count of datagrams; n takes a whole number from 1", text));
        }
        rule_.nth = *value;
    }

    const fault_row& row_;
    fault_rule rule_;
    bool probable_{false};
    bool selected_{false};
};

} // namespace

fault_rule parse_fault(fault_kind kind, std::string_view text) {
    return fault_reader(kind, text).rule();
}

} // namespace vantu::orvanta::simulator
