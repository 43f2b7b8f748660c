// Writing what the command made.
#ifndef QELRCPT_TOOLS_OUTPUT_H
#define QELRCPT_TOOLS_OUTPUT_H

#include "messages.h"

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

namespace tool
{

// Nobody reads the pipe any more.
struct reader_gone : input_error {
    using input_error::input_error;
};

// A descriptor that is closed at the latest when it goes out of scope, if it was opened here.
class output_descriptor
{
  public:
    output_descriptor(int open_fd, std::string shown_name);
    output_descriptor(const std::string &path, int flags, std::string shown_name);
    ~output_descriptor();
    output_descriptor(const output_descriptor &) = delete;
    output_descriptor &operator=(const output_descriptor &) = delete;

    bool is_terminal() const;
    void write(std::string_view text) const;
    void set_mode(mode_t mode) const;
    void sync() const;
    void close(); // the file system may report only here that it could not write

  private:
    std::string shown_name_;
    int fd_;
    bool is_own_;
};

// A file that is removed again unless it takes its place.
class temporary_file
{
  public:
    explicit temporary_file(std::string path) : path_(std::move(path)) {}
    ~temporary_file();
    temporary_file(const temporary_file &) = delete;
    temporary_file &operator=(const temporary_file &) = delete;

    void take_place_of(const std::string &target, const std::string &shown_name);

  private:
    std::string path_;
};

// Where the receipts go. A file has either its old content or, from finish() on, all of the new; a
// name that stands for something else than a file, such as /dev/stdout, is written to directly.
// What goes to a terminal is made harmless to it. All throw input_error.
class output
{
  public:
    explicit output(std::string name); // empty: standard output
    bool is_terminal() const { return is_terminal_; }
    void write(std::string_view text);
    void finish();

  private:
    void open_beside(const std::string &target, const struct stat *old);
    void open();

    std::string name_;
    std::string target_; // to be replaced
    std::optional<output_descriptor> descriptor_;
    std::optional<temporary_file> temporary_; // what replaces it
    bool is_terminal_ = false;
};

} // namespace tool

#endif
