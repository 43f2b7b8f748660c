#include "reading/line_reader.h"

#include <algorithm>
#include <string_view>

namespace tool
{

line_reader::line_reader(const std::vector<std::string> &files, int stop_descriptor)
    : files_(files), stop_descriptor_(stop_descriptor)
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
        }
        if (auto piece = next_of_file())
            return piece;
        if (!at_end_) // stopped
            return std::nullopt;
        input_.reset();
    }
    return std::nullopt;
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
            line_piece piece = cut(rest);
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
    line_piece piece = cut(end - begin_);
    line_ += lines;
    return piece;
}

line_piece line_reader::cut(size_t size)
{
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    line_piece piece;
    piece.file = file_;
    piece.first_line = line_;
    piece.text = held_.substr(begin_, size);
    piece.bytes = size;
    if (line_ == 1 && piece.text.starts_with(byte_order_mark))
        piece.text.erase(0, byte_order_mark.size());
    begin_ += size;
    return piece;
}

// Reads on to the end of a line, of which no more is held than was just read.
line_piece line_reader::skip_line()
{
    line_piece piece;
    piece.file = file_;
    piece.first_line = line_++;
    piece.is_too_long = true;
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
