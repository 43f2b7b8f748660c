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

// An open file, standard input for "-". A pipe with a name is open before somebody writes to it, so
// that only wait() waits. All throw input_error.
class input_file
{
  public:
    explicit input_file(const std::string &name);
    ~input_file();
    input_file(const input_file &) = delete;
    input_file &operator=(const input_file &) = delete;

    // Waits until there is something to read, or the end; false when the other descriptor, unless
    // it is -1, can be read.
    bool wait(int stop_descriptor = -1) const;

    // Waits, and reads what there is into the bytes; 0 only at the end.
    size_t read(std::span<char> bytes) const;

  private:
    [[noreturn]] void fail() const;

    std::string shown_name_;
    int fd_;
};

} // namespace tool

#endif
