// What the values of options are read with: words of a list, numbers within bounds, names of files.
// A value that is none of them is refused with what was expected.
#ifndef QELRCPT_TOOLS_OPTION_VALUES_H
#define QELRCPT_TOOLS_OPTION_VALUES_H

#include "messages.h"

#include <charconv>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tool
{

using word_list = std::vector<std::string_view>;

template <typename T>
using choice = std::pair<std::string_view, T>;

// Of the choices, each a word and what it stands for.
template <typename Choice, size_t N>
word_list words_of(const Choice (&choices)[N])
{
    word_list words;
    for (const auto &[word, value] : choices)
        words.emplace_back(word);
    return words;
}

[[noreturn]] inline void reject(const std::string &given, const word_list &words)
{
    throw std::invalid_argument(in_quotes(given) + " is unknown, expected " + listed(words));
}

template <typename Choice, size_t N>
auto choose(const Choice (&choices)[N], const std::string &given)
{
    for (const auto &[word, value] : choices) {
        if (word == given)
            return value;
    }
    reject(given, words_of(choices));
}

// A number of what is named, within its bounds.
inline size_t to_number(const std::string &given, std::string_view what, size_t least, size_t most)
{
    size_t number = 0;
    const char *const end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw std::invalid_argument(in_quotes(given) + " is not a " + std::string(what) +
                                    ", expected a number from " + std::to_string(least) + " to " +
                                    std::to_string(most));
    return number;
}

inline const std::string &file_name(const std::string &given)
{
    if (given.empty())
        throw std::invalid_argument("the name is empty, expected the name of a file");
    return given;
}

} // namespace tool

#endif
