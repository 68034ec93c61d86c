// Reading a fault's argument and selectors.
#include "shared/field_text.hpp"
#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/faults/fault_fit.hpp"
#include "simulator/faults/fault_patch.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;

constexpr std::uint64_t greatest_byte = std::numeric_limits<std::uint8_t>::max();
constexpr std::uint64_t greatest_number = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t greatest_count = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t longest_name = 32;

bool is_name(std::string_view text) {
    const auto is_letter = [](char one) { return (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z'); };
    return !text.empty() && text.size() <= longest_name && is_letter(text.front()) &&
           std::all_of(text.begin(), text.end(), [&](char one) {
               return is_letter(one) || (one >= '0' && one <= '9') || one == '-' || one == '_';
           });
}

std::string known_selectors() {
    std::string text;
    for (const selector_row& row : fault_selectors) {
        text += formatted("{}{}=", text.empty() ? "" : " ", row.key);
    }
    return text;
}

// One fault's text, its parts and how to complain about them.
class fault_reader {
  public:
    fault_reader(fault_kind kind, std::string_view text) : row_(row_of(kind)) {
        rule_.kind = kind;
        const auto [argument, selectors] = parted(text, '@');
        read_argument(argument);
        read_selectors(selectors);
        rule_.now = row_.at_once && !selected_;
        check_chances();
        check_fit();
    }

    [[nodiscard]] const fault_rule& rule() const { return rule_; }

  private:
    [[noreturn]] void refuse(const std::string& what) const {
        refuse(what, formatted("{} {}", row_.name, row_.example));
    }
    [[noreturn]] void refuse(const std::string& what, const std::string& right_line) const {
        throw std::invalid_argument(formatted("{}: {}; '{}' would be right", row_.name, what, right_line));
    }

    [[nodiscard]] std::uint64_t number(std::string_view text, std::uint64_t least, std::uint64_t greatest,
                                       std::string_view what) const {
        const auto value = whole_number(text);
        if (!value.has_value() || *value < least || *value > greatest) {
            const std::string end = greatest == greatest_count ? "" : formatted(" to {}", greatest);
            refuse(formatted("'{}' is no {}, a whole number from {}{}", text, what, least, end));
        }
        return *value;
    }

    [[nodiscard]] std::uint32_t short_number(std::string_view text, std::uint32_t least,
                                             std::uint64_t greatest, std::string_view what) const {
        return static_cast<std::uint32_t>(number(text, least, std::min(greatest, greatest_number), what));
    }

    // Two numbers with a sign between them, the second of which may be left out.
    void read_pair(std::string_view text, char between, std::uint64_t greatest, std::string_view what) {
        const auto [first, last] = parted(text, between);
        rule_.first = short_number(first, 0, greatest, what);
        if (last) {
            rule_.last = short_number(*last, 0, greatest, what);
        }
    }

    void read_probability(std::string_view text) {
        const auto value = real_number(text);
        if (!value.has_value() || !(*value >= 0 && *value <= 1)) {
            refuse(formatted("'{}' is no probability, a number from 0 to 1", text));
        }
        rule_.probability = *value;
        probable_ = true;
        selected_ = true;
    }

    void read_milliseconds(std::string_view text) {
        read_pair(text, '-', greatest_number, "time in milliseconds");
        if (rule_.last.has_value() && *rule_.last < *rule_.first) {
            refuse(formatted("'{}' ends before it begins", text),
                   formatted("{} {}-{}", row_.name, *rule_.last, *rule_.first));
        }
    }

    void read_device_type(std::string_view text) {
        if (text != "orvanta3" && text != "palmetron") {
            refuse(formatted("'{}' is no type of device, orvanta3 or palmetron", text));
        }
        rule_.first =
            text == "orvanta3" ? vantu_orvanta_device_type_orvanta3 : vantu_orvanta_device_type_palmetron;
    }

    void read_hexadecimal(std::string_view text) {
        if (!bytes_of_hexadecimal(text) || text.size() / 2 > greatest_datagram) {
            refuse(formatted("'{}' is no row of bytes, two hexadecimal digits each", text));
        }
        rule_.text = text;
    }

    void read_field(std::string_view text) {
        const auto [name, value] = parted(text, '=');
        if (!value || without_control_characters(text) != text) {
            refuse(formatted("'{}' is no FIELD=VALUE", text));
        }
        rule_.text = formatted("{}={}", name, *value);
    }

    void read_argument(std::string_view text) {
        if (text.empty()) {
            if (!row_of(row_.argument).form.starts_with('[')) {
                refuse("it lacks its argument, before any '@'");
            }
            return;
        }
        switch (row_.argument) {
        case fault_argument::none:
            return read_probability(text);
        case fault_argument::count:
            rule_.first = short_number(text, 1, most_copies, "count");
            return;
        case fault_argument::size:
            rule_.first = short_number(text, 0, greatest_datagram, "number of bytes");
            return;
        case fault_argument::milliseconds:
            return read_milliseconds(text);
        case fault_argument::field:
            return read_field(text);
        case fault_argument::hexadecimal:
            return read_hexadecimal(text);
        case fault_argument::status:
            return read_pair(text, ':', greatest_byte, "status or tag");
        case fault_argument::device:
            rule_.first = short_number(text, 0, greatest_number, "device id");
            return;
        case fault_argument::device_type:
            return read_device_type(text);
        }
    }

    void read_selectors(std::optional<std::string_view> text) {
        while (text) {
            const auto [first, others] = parted(*text, ',');
            read_selector(first);
            text = others;
        }
    }

    void read_selector(std::string_view text) {
        const auto [key, given] = parted(text, '=');
        const std::string_view value = given.value_or("");
        const auto* const row = std::find_if(fault_selectors.begin(), fault_selectors.end(),
                                             [key = key](const selector_row& one) { return one.key == key; });
        if (row == fault_selectors.end()) {
            refuse(formatted("'{}' is no selector, one of {}", text, known_selectors()));
        }
        const auto place = static_cast<std::size_t>(row - fault_selectors.begin());
        if (std::exchange(given_[place], true) || (key == "p" && probable_)) {
            refuse(formatted("{}= is given twice", key));
        }
        selected_ = true;
        if (key == "op") {
            read_operation(value);
        } else if (key == "dir") {
            read_direction(value);
        } else if (key == "device") {
            rule_.device = short_number(value, 0, greatest_number, "device id");
        } else if (key == "client") {
            rule_.client = number(value, 1, greatest_count, "client's number");
        } else if (key == "p") {
            read_probability(value);
        } else if (key == "burst") {
            rule_.burst = number(value, 1, greatest_number, "length of a burst");
        } else if (key == "nth") {
            rule_.nth = number(value, 1, greatest_count, "count of datagrams");
        } else if (key == "every") {
            rule_.every = number(value, 1, greatest_count, "count of datagrams");
        } else {
            read_name(value);
        }
    }

    void read_operation(std::string_view text) {
        const auto code = whole_number(text);
        std::array<std::string_view, communication::operations.size()> names;
        for (std::size_t i = 0; i < names.size(); ++i) {
            const communication::operation& row = communication::operations[i];
            names[i] = row.name;
            if (row.name == text || row.code == code) {
                rule_.code = row.code;
                return;
            }
        }
        const auto* const nearest = std::find(names.begin(), names.end(), near_word(text, names));
        const std::string what = formatted("there is no operation '{}'", text);
        nearest == names.end()
            ? refuse(what)
            : refuse_with_operation(
                  what, communication::operations[static_cast<std::size_t>(nearest - names.begin())].code);
    }

    // With the argument of the example: the rest of the line has not been read.
    [[noreturn]] void refuse_with_operation(const std::string& what, std::uint8_t code) const {
        fault_rule right = rule_;
        right.way.reset();
        right.answers = false;
        right.code = code;
        can_fit(right) ? refuse(what, text_of(right)) : refuse(what);
    }

    void read_direction(std::string_view text) {
        if (text != "in" && text != "out" && text != "answer") {
            refuse(formatted("'{}' is no direction, in (from clients), out (to clients) or answer", text));
        }
        rule_.way = text == "in" ? direction::to_service : direction::to_client;
        rule_.answers = text == "answer";
        if (!(*rule_.way == direction::to_service ? row_.to_service : row_.to_client)) {
            refuse(formatted("it happens to datagrams {} clients alone", row_.to_client ? "to" : "from"));
        }
    }

    void read_name(std::string_view text) {
        if (!is_name(text) || find_fault(text) != nullptr) {
            refuse(formatted("'{}' is no name, letters, digits, - and _, and no fault's", text),
                   formatted("{} {}{}as=rule", row_.name, row_.example,
                             row_.example.find('@') == std::string_view::npos ? '@' : ','));
        }
        rule_.name = text;
    }

    void check_chances() const {
        if ((rule_.nth != 0 ? 1 : 0) + (rule_.every != 0 ? 1 : 0) + (probable_ ? 1 : 0) > 1) {
            refuse("a probability, nth= and every= exclude each other");
        }
        const auto length = static_cast<double>(rule_.burst);
        if (rule_.burst != 0 && (!probable_ || rule_.probability > length / (length + 1))) {
            refuse(formatted("bursts of {} take a probability, of {:.2g} at most", rule_.burst,
                             length / (length + 1)),
                   formatted("drop 0.05@burst={}", rule_.burst));
        }
    }

    // By the table of operations. The line that would be right lacks the selector that goes with nothing.
    void check_fit() const {
        if (!can_fit(rule_)) {
            refuse_misfit();
        }
        if (rule_.kind == fault_kind::patch) {
            if (const std::string complaint = complaint_about_value(rule_); !complaint.empty()) {
                throw std::invalid_argument(formatted("{}: {}", row_.name, complaint));
            }
        }
    }

    [[noreturn]] void refuse_misfit() const {
        std::array<fault_rule, 4> others{rule_, rule_, rule_, rule_};
        others[0].way.reset();
        others[0].answers = false;
        others[1].device.reset();
        others[2].code.reset();
        others[3] = others[0];
        others[3].code.reset();
        others[3].device.reset();
        for (const fault_rule& other : others) {
            if (can_fit(other) && complaint_about_value(other).empty()) {
                refuse("no datagram can fit that" + fields_of_the_operation(), text_of(other));
            }
        }
        refuse(rule_.kind == fault_kind::patch ? formatted("no operation has the field of '{}'", rule_.text)
                                               : std::string("no datagram can fit that"));
    }

    // ", as OPERATION has the fields ..." for a patch of one operation.
    [[nodiscard]] std::string fields_of_the_operation() const {
        std::string text;
        for (const communication::operation& row : communication::operations) {
            if (rule_.kind == fault_kind::patch && row.code == rule_.code &&
                row.way == rule_.way.value_or(row.way)) {
                text = formatted(", as {} has", row.name);
                for (const std::string_view name : fields_to_patch(row.code, row.way)) {
                    text += formatted(" {}", name);
                }
            }
        }
        return text;
    }

    const fault_row& row_;
    fault_rule rule_;
    std::array<bool, fault_selectors.size()> given_{};
    bool probable_{false};
    bool selected_{false};
};

} // namespace

fault_rule parse_fault(fault_kind kind, std::string_view text) {
    return fault_reader(kind, text).rule();
}

} // namespace vantu::orvanta::simulator
