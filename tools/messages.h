// What the command says on standard error.
#ifndef QELRCPT_TOOLS_MESSAGES_H
#define QELRCPT_TOOLS_MESSAGES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tool
{

// Something is wrong with the input or the output: exit status 1.
struct input_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Something is wrong with the command line: exit status 2.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Something is wrong at a byte of an input's text.
struct text_error : std::runtime_error {
    text_error(size_t at, const std::string &message) : std::runtime_error(message), offset(at) {}
    size_t offset;
};

// The text without what must not reach a log: of 12 digits in a row or more, and of what looks like
// a card number in groups, the first six and the last four stay; of a track of a magnetic stripe
// (ISO/IEC 7813), with or without its end, nothing does but the sentinels.
std::string masked(std::string_view text);

// Writes "qelrcpt: " and the message as a line to standard error, masked and harmless to a
// terminal.
void complain(const std::string &message);

// The text in single quotes, masked and fit for a terminal: no control characters, no broken UTF-8,
// and the end of a long one left out.
std::string in_quotes(std::string_view text);

// "1 record", "2 records".
std::string counted(std::uint64_t number, std::string_view noun);

// "a, b or c".
std::string listed(std::span<const std::string_view> words);

// Counted from 1, columns in characters. An archive may have more lines than memory has bytes.
struct text_place {
    std::uint64_t line = 0;
    size_t column = 0;
};

// Turns byte offsets of a named text into "name:line:column", columns counted in characters. The
// whole is linear as long as the offsets do not decrease.
class places
{
  public:
    places(std::string name, std::string_view text) : name_(std::move(name)), text_(text) {}
    std::string at(size_t offset);
    text_place place_at(size_t offset);

  private:
    void advance_to(size_t offset);

    std::string name_;
    std::string_view text_;
    size_t offset_ = 0;
    size_t line_ = 1;
    size_t column_ = 1;
};

} // namespace tool

#endif
