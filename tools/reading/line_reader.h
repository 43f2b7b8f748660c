// Cutting inputs of any size into pieces of whole lines.
#ifndef QELRCPT_TOOLS_LINE_READER_H
#define QELRCPT_TOOLS_LINE_READER_H

#include "reading/input_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tool
{

struct line_piece {
    size_t file = 0;            // its place among the files
    uint64_t first_line = 0;    // its number in the file, from 1
    std::string text;           // the lines
    uint64_t lines = 0;         // how many
    uint64_t bytes = 0;         // of the input, the byte-order mark and skipped lines too
    bool is_unfinished = false; // one line without a line feed, the last
    bool is_too_long = false;   // stands for one line that is too long; the text is empty
};

class line_reader
{
  public:
    static constexpr size_t longest_line = size_t{16} * 1024 * 1024;

    // Reads the files one after the other, the first from this line on, until something can be read
    // from the descriptor.
    line_reader(const std::vector<std::string> &files, uint64_t first_line, int stop_descriptor);

    // The next lines, as soon as there are any; absent at the end. Throws input_error.
    std::optional<line_piece> next();

  private:
    static constexpr size_t most_lines = 256; // in a piece
    static constexpr size_t block_size = size_t{64} * 1024;

    bool skip_lines();
    std::optional<line_piece> next_of_file();
    std::optional<line_piece> cut_lines();
    line_piece cut(size_t size, uint64_t lines);
    line_piece skip_line();
    bool fill();

    std::span<const std::string> files_;
    uint64_t first_line_; // of the first file
    int stop_descriptor_;
    size_t file_ = 0;
    std::optional<input_file> input_;
    std::string held_;     // bytes that were read
    size_t begin_ = 0;     // of those that were not given yet
    size_t searched_ = 0;  // before it no line feed
    uint64_t line_ = 1;    // the number of the next line
    uint64_t skipped_ = 0; // bytes that no piece counts yet
    bool at_end_ = false;  // of the file
};

} // namespace tool

#endif
