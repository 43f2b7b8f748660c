#include "reading/line_reader.h"

#include "messages.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tool
{

line_reader::line_reader(const std::vector<std::string> &files, uint64_t first_line,
                         int stop_descriptor)
    : files_(files), first_line_(first_line), stop_descriptor_(stop_descriptor)
{
}

std::optional<line_piece> line_reader::next()
{
    for (; file_ < files_.size(); ++file_) {
        if (!input_) {
            input_.emplace(files_[file_]);
            held_.clear();
            begin_ = searched_ = 0;
            line_ = 1;
            at_end_ = false;
            if (file_ == 0 && !skip_lines())
                return std::nullopt;
        }
        if (auto piece = next_of_file())
            return piece;
        if (!at_end_) // stopped
            return std::nullopt;
        input_.reset();
    }
    return std::nullopt;
}

// Reads up to the first line that is wanted; false when stopped.
bool line_reader::skip_lines()
{
    bool is_within_line = false;
    while (line_ < first_line_ && !at_end_) {
        const size_t feed = held_.find('\n', begin_);
        const size_t end = feed == std::string::npos ? held_.size() : feed + 1;
        line_ += feed == std::string::npos ? 0 : 1;
        is_within_line = feed == std::string::npos && (is_within_line || end > begin_);
        skipped_ += end - begin_;
        begin_ = end;
        if (feed == std::string::npos && !fill())
            return false;
    }
    line_ += at_end_ && is_within_line ? 1 : 0; // the last one has no line feed
    if (line_ < first_line_)
        throw input_error(shown_file_name(files_[0]) + ": there are " + std::to_string(line_ - 1) +
                          " lines only, expected no --start-line " + std::to_string(first_line_));
    return true;
}

std::optional<line_piece> line_reader::next_of_file()
{
    for (;;) {
        if (auto piece = cut_lines())
            return piece;
        const size_t rest = held_.size() - begin_;
        if (at_end_ && rest == 0)
            return std::nullopt;
        if (rest > longest_line)
            return skip_line();
        if (at_end_) {
            line_piece piece = cut(rest, 1);
            piece.is_unfinished = true;
            return piece;
        }
        if (!fill())
            return std::nullopt;
    }
}

// The whole lines that are held, as many as a piece may have.
std::optional<line_piece> line_reader::cut_lines()
{
    uint64_t lines = 0;
    size_t end = begin_;
    while (lines < most_lines && end - begin_ < block_size) {
        const size_t feed = held_.find('\n', std::max(end, searched_));
        if (feed == std::string::npos)
            break;
        end = feed + 1;
        ++lines;
    }
    if (lines == 0) {
        searched_ = held_.size();
        return std::nullopt;
    }
    return cut(end - begin_, lines);
}

line_piece line_reader::cut(size_t size, uint64_t lines)
{
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    line_piece piece;
    piece.file = file_;
    piece.first_line = line_;
    piece.text = held_.substr(begin_, size);
    piece.lines = lines;
    piece.bytes = size + std::exchange(skipped_, 0);
    if (line_ == 1 && piece.text.starts_with(byte_order_mark))
        piece.text.erase(0, byte_order_mark.size());
    begin_ += size;
    line_ += lines;
    return piece;
}

// Reads on to the end of a line, of which no more is held than was just read.
line_piece line_reader::skip_line()
{
    line_piece piece;
    piece.file = file_;
    piece.first_line = line_++;
    piece.lines = 1;
    piece.is_too_long = true;
    piece.bytes = std::exchange(skipped_, 0);
    size_t size = 0; // of the line's part that is held
    do {
        piece.bytes += held_.size() - begin_;
        begin_ = held_.size();
        if (!fill())
            break;
        size = held_.find('\n') + 1;
    } while (size == 0 && !at_end_);
    piece.bytes += size;
    begin_ += size;
    return piece;
}

// Reads what there is; false when stopped.
bool line_reader::fill()
{
    held_.erase(0, begin_);
    searched_ -= std::min(searched_, begin_);
    begin_ = 0;
    if (!input_->wait(stop_descriptor_))
        return false;
    const size_t size = held_.size();
    held_.resize(size + block_size);
    const size_t count = input_->read(std::span(held_).subspan(size));
    held_.resize(size + count);
    at_end_ = count == 0;
    return true;
}

} // namespace tool
