// What an input says, before anybody asks what its keys mean.
#ifndef QELRCPT_TOOLS_ENTRIES_H
#define QELRCPT_TOOLS_ENTRIES_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

// White space, as between the parts of an input.
inline constexpr std::string_view blanks = " \t\r\n\v\f";

// The object that a member stands in: the input's own, or one of the two of an envelope.
enum class section { top, config, record };

enum class entry_kind {
    text,   // the value is a text, a number or a boolean
    nested, // the value is an object or an array, held as JSON
    opening // the beginning of the section that the key names
};

struct entry {
    section where = section::top;
    std::string key;
    std::string value;
    entry_kind kind = entry_kind::text;
    size_t offset = 0; // of the key in the input
};

// The members of a JSON object in their order. Numbers are taken by their decimal value and
// booleans as their own text, also inside of nested values; a null member counts as absent. Throws
// text_error.
std::vector<entry> json_entries(std::string_view text);

// The elements of a JSON array of texts; absent for any other JSON.
std::optional<std::vector<std::string>> json_texts(std::string_view json);

// The lines of key=value in their order. Throws text_error.
std::vector<entry> line_entries(std::string_view text);

} // namespace tool

#endif
