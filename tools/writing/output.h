// Writing what the command made.
#ifndef QELRCPT_TOOLS_OUTPUT_H
#define QELRCPT_TOOLS_OUTPUT_H

#include "messages.h"
#include "writing/new_file.h"

#include <sys/stat.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tool
{

// Nobody reads the pipe any more.
struct reader_gone : input_error {
    using input_error::input_error;
};

// Where the receipts go. A file has either its old content or, from finish() on, all of the new; a
// name that stands for something else than a file is written to directly, and so is what the caller
// opened: /dev/stdout, /dev/fd/3. All throw input_error.
class output
{
  public:
    // An empty name is standard output. The inputs ("-" is standard input) are what is read for it:
    // none of them may be the file that is written. A pipe with a name is waited for.
    explicit output(std::string name, std::span<const std::string> inputs = {});
    ~output();
    output(const output &) = delete;
    output &operator=(const output &) = delete;

    // Whether it is any terminal, which a printer at a serial port is as well; or the one from
    // which the program is used.
    bool is_terminal() const { return is_terminal_; }
    bool is_users_terminal() const;

    void write(std::string_view text) const; // made harmless to a terminal
    void write_bytes(std::string_view bytes) const;
    void finish();

    // Whether finish() replaces a file.
    bool replaces_file() const { return file_.has_value(); }

    // Waits until nothing is being written, and lets nobody write any more: the program ends.
    static void end_all();

  private:
    void open(std::span<const std::string> inputs);
    void open_new(const std::string &place);
    [[noreturn]] void fail(int error) const;

    std::string name_;
    std::optional<struct stat> replaced_;
    std::optional<new_file> file_; // that replaces it
    int fd_ = -1;
    bool is_own_ = false; // opened here
    bool is_terminal_ = false;
};

// Writes all of the text, also where the descriptor does not wait by itself. Gives 0 or what errno
// says.
int write_all(int fd, std::string_view text);

} // namespace tool

#endif
