#include "shared/located_json.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

namespace vantu::orvanta {
namespace {

using json = nlohmann::json;

constexpr std::size_t deepest = 16;

// The place of the reader in the text. The parser looks one character past a number: a line counts from its
// first character that is no blank.
struct text_position {
    std::size_t line{1};
    std::size_t token_line{1};

    void pass(char letter) noexcept {
        if (letter == '\n') {
            ++line;
        } else if (letter != ' ' && letter != '\t' && letter != '\r') {
            token_line = line;
        }
    }
};

// Goes over the text and tells the position, which all copies share.
class counting_iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    counting_iterator(const char* at, text_position* position) : at_(at), position_(position) {}

    reference operator*() const { return *at_; }
    counting_iterator& operator++() {
        position_->pass(*at_);
        ++at_;
        return *this;
    }
    counting_iterator operator++(int) {
        counting_iterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const counting_iterator& other) const { return at_ == other.at_; }
    bool operator!=(const counting_iterator& other) const { return at_ != other.at_; }

  private:
    const char* at_;
    text_position* position_;
};

// Builds the tree from the parser's events.
class tree_builder final : public nlohmann::json_sax<json> {
  public:
    explicit tree_builder(const text_position& position) : position_(position) {}

    bool null() override { return add(made(json_kind::null)); }
    bool boolean(bool value) override {
        located_value one = made(json_kind::boolean);
        one.boolean = value;
        return add(std::move(one));
    }
    bool number_integer(number_integer_t value) override {
        located_value one = made(json_kind::number);
        one.number = static_cast<double>(value);
        return add(std::move(one));
    }
    bool number_unsigned(number_unsigned_t value) override {
        located_value one = made(json_kind::number);
        one.number = static_cast<double>(value);
        one.is_whole = true;
        one.whole = value;
        return add(std::move(one));
    }
    bool number_float(number_float_t value, const string_t& /*text*/) override {
        located_value one = made(json_kind::number);
        one.number = value;
        return add(std::move(one));
    }
    bool string(string_t& value) override {
        located_value one = made(json_kind::string);
        one.string = value;
        return add(std::move(one));
    }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*size*/) override { return open(json_kind::object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t /*size*/) override { return open(json_kind::array); }
    bool end_array() override { return close(); }

    bool key(string_t& value) override {
        const std::string_view name(value);
        if (open_.back().find(name) != nullptr) {
            throw located_error(position_.token_line,
                                formatted("\"{}\" stands twice in one object; once is right", name));
        }
        name_ = value;
        name_line_ = position_.token_line;
        return true;
    }

    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        // Without the parser's own name for the error and its own place.
        std::string_view reason(error.what());
        for (const std::string_view lead : {std::string_view("] "), std::string_view(": ")}) {
            if (const auto found = reason.find(lead); found != std::string_view::npos) {
                reason.remove_prefix(found + lead.size());
            }
        }
        throw located_error(position_.token_line, formatted("{}; JSON text would be right", reason));
    }

    located_value whole;

  private:
    located_value made(json_kind kind) {
        located_value one;
        one.kind = kind;
        one.line = position_.token_line;
        one.name = std::exchange(name_, {});
        one.name_line = name_line_;
        return one;
    }
    bool add(located_value&& one) {
        if (open_.empty()) {
            whole = std::move(one);
        } else {
            open_.back().items.push_back(std::move(one));
        }
        return true;
    }
    bool open(json_kind kind) {
        if (open_.size() == deepest) {
            throw located_error(position_.token_line,
                                formatted("nested too deep; {} levels are the most", deepest));
        }
        open_.push_back(made(kind));
        return true;
    }
    bool close() {
        located_value done = std::move(open_.back());
        open_.pop_back();
        return add(std::move(done));
    }

    const text_position& position_;
    std::vector<located_value> open_;
    std::string name_;
    std::size_t name_line_{1};
};

std::string listed(std::span<const std::string_view> names, std::string_view last = " and ") {
    std::string text;
    std::size_t left = names.size();
    for (const std::string_view name : names) {
        --left;
        text += formatted("\"{}\"{}", name, left == 0 ? "" : left == 1 ? last : ", ");
    }
    return text;
}

[[noreturn]] void refuse(const located_value& value, std::string_view place, std::string_view right) {
    throw located_error(value.line,
                        formatted("{} is {}; {} would be right", place, description_of(value), right));
}

} // namespace

located_error::located_error(std::size_t line, std::string_view what)
    : std::runtime_error(without_control_characters(what)), line_(line) {}

const located_value* located_value::find(std::string_view member) const noexcept {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](const located_value& one) { return one.name == member; });
    return kind == json_kind::object && found != items.end() ? &*found : nullptr;
}

located_value read_located_json(const std::string& text) {
    text_position position;
    tree_builder builder(position);
    const char* const begin = text.data();
    (void)json::sax_parse(counting_iterator(begin, &position),
                          counting_iterator(begin + text.size(), &position), &builder);
    return std::move(builder.whole);
}

void require_object(const located_value& value, std::string_view place,
                    std::span<const std::string_view> members) {
    if (value.kind != json_kind::object) {
        refuse(value, place, formatted("an object with {}", listed(members)));
    }
    for (const located_value& member : value.items) {
        if (std::find(members.begin(), members.end(), member.name) == members.end()) {
            throw located_error(member.name_line, formatted("{} has an unknown member \"{}\"; it may have {}",
                                                            place, member.name, listed(members)));
        }
    }
}

const located_value& required_member(const located_value& object, std::string_view place,
                                     std::string_view member) {
    const located_value* found = object.find(member);
    if (found == nullptr) {
        throw located_error(object.line, formatted("{} has no \"{}\"; it needs one", place, member));
    }
    return *found;
}

std::uint64_t require_whole(const located_value& value, std::string_view place, std::uint64_t least,
                            std::uint64_t greatest) {
    if (!value.is_whole || value.whole < least || value.whole > greatest) {
        refuse(value, place,
               least == greatest ? formatted("{}", least)
                                 : formatted("a whole number from {} to {}", least, greatest));
    }
    return value.whole;
}

const std::string& require_string(const located_value& value, std::string_view place,
                                  std::string_view right) {
    if (value.kind != json_kind::string) {
        refuse(value, place, right);
    }
    return value.string;
}

double require_number(const located_value& value, std::string_view place, double least, double greatest) {
    if (value.kind != json_kind::number || !(value.number >= least && value.number <= greatest)) {
        refuse(value, place, formatted("a number from {} to {}", least, greatest));
    }
    return value.number;
}

bool require_flag(const located_value& value, std::string_view place) {
    if (value.kind != json_kind::boolean) {
        refuse(value, place, "true or false");
    }
    return value.boolean;
}

const std::vector<located_value>& require_array(const located_value& value, std::string_view place) {
    if (value.kind != json_kind::array) {
        refuse(value, place, "an array");
    }
    return value.items;
}

std::size_t require_word(const located_value& value, std::string_view place,
                         std::span<const std::string_view> words) {
    const auto found = std::find(words.begin(), words.end(), value.string);
    if (value.kind != json_kind::string || found == words.end()) {
        refuse(value, place, listed(words, " or "));
    }
    return static_cast<std::size_t>(found - words.begin());
}

std::string description_of(const located_value& value) {
    switch (value.kind) {
    case json_kind::boolean:
        return value.boolean ? "true" : "false";
    case json_kind::number:
        return value.is_whole ? formatted("{}", value.whole) : formatted("{}", value.number);
    case json_kind::string:
        return formatted("\"{}\"", value.string);
    case json_kind::array:
        return "an array";
    case json_kind::object:
        return "an object";
    case json_kind::null:
        break;
    }
    return "null";
}

} // namespace vantu::orvanta
