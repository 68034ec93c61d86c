// JSON text as a tree. Its values know their lines, so that a message can name the line of a mistake.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta {

enum class json_kind : std::uint8_t { null, boolean, number, string, array, object };

struct located_value {
    json_kind kind{json_kind::null};
    std::size_t line{1}; // from 1; of an array or object the line on which it begins
    bool boolean{false};
    double number{0};
    bool is_whole{false}; // a number from 0 on without a fraction, which whole holds
    std::uint64_t whole{0};
    std::string string;
    std::string name;                 // the name of a member of an object
    std::size_t name_line{1};         // where that name stands
    std::vector<located_value> items; // an array's values or an object's members, in the text's order

    // The member of that name, or null.
    [[nodiscard]] const located_value* find(std::string_view member) const noexcept;
};

// A mistake in a text, in one line without control characters, and its line.
class located_error : public std::runtime_error {
  public:
    located_error(std::size_t line, std::string_view what);
    [[nodiscard]] std::size_t line() const noexcept { return line_; }

  private:
    std::size_t line_;
};

// Reads a whole text. Throws located_error where it is no JSON, names a member of an object twice, or is
// nested deeper than any use of ours.
[[nodiscard]] located_value read_located_json(const std::string& text);

// The questions of readers to such trees. Each throws located_error with what is wrong and what would be
// right, in which `place` names the value.
void require_object(const located_value& value, std::string_view place,
                    std::span<const std::string_view> members);
[[nodiscard]] const located_value& required_member(const located_value& object, std::string_view place,
                                                   std::string_view member);
[[nodiscard]] std::uint64_t require_whole(const located_value& value, std::string_view place,
                                          std::uint64_t least, std::uint64_t greatest);
[[nodiscard]] const std::string& require_string(const located_value& value, std::string_view place,
                                                std::string_view right);
[[nodiscard]] double require_number(const located_value& value, std::string_view place, double least,
                                    double greatest);
[[nodiscard]] bool require_flag(const located_value& value, std::string_view place);
[[nodiscard]] const std::vector<located_value>& require_array(const located_value& value,
                                                              std::string_view place);
// The place of the value among the words that it may be.
[[nodiscard]] std::size_t require_word(const located_value& value, std::string_view place,
                                       std::span<const std::string_view> words);

// The value as a message names it: "the text \"x\"", "the number 1.5", "an array".
[[nodiscard]] std::string description_of(const located_value& value);

} // namespace vantu::orvanta
