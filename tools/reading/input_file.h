// Reading bytes.
#ifndef QELRCPT_TOOLS_INPUT_FILE_H
#define QELRCPT_TOOLS_INPUT_FILE_H

#include <cstddef>
#include <span>
#include <string>

namespace tool
{

// What messages call a file: "<stdin>" for "-".
std::string shown_file_name(const std::string &name);

// An open file, standard input for "-". All throw input_error.
class input_file
{
  public:
    explicit input_file(const std::string &name);
    ~input_file();
    input_file(const input_file &) = delete;
    input_file &operator=(const input_file &) = delete;

    int descriptor() const { return fd_; }

    // Reads what there is into the bytes; 0 only at the end.
    size_t read(std::span<char> bytes) const;

  private:
    [[noreturn]] void fail() const;

    std::string shown_name_;
    int fd_;
};

} // namespace tool

#endif
