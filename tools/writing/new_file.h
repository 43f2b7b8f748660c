// A file that takes its place only when it is whole.
#ifndef QELRCPT_TOOLS_NEW_FILE_H
#define QELRCPT_TOOLS_NEW_FILE_H

#include "signals.h"

#include <sys/stat.h>

#include <optional>
#include <string>

namespace tool
{

// Until it takes its place nobody but its owner can read it, and it has no name, where the file
// system can make such files: whatever ends the program, nothing stays behind. Elsewhere it lies
// beside its place as ".qelrcpt-" and 16 digits, and signals that end the program remove it.
class new_file
{
  public:
    enum class name { none_if_possible, beside };

    // Makes the file in the place's folder. Throws std::system_error.
    explicit new_file(std::string place, name how = name::none_if_possible);
    ~new_file();
    new_file(const new_file &) = delete;
    new_file &operator=(const new_file &) = delete;

    int descriptor() const { return fd_; }

    // Moves the file, which is safely stored by then, to its place; open no more. It gets the owner
    // and the mode of the file that it replaces, as far as this process may give them: where the
    // group cannot be kept, the group may do no more than everybody. Throws std::system_error.
    void take_place(const std::optional<struct stat> &replaced);

  private:
    bool make_nameless(const std::string &folder);
    void make_beside();
    void give_name();
    void resemble(const std::optional<struct stat> &replaced) const;
    void close();

    std::string place_;
    std::optional<removed_by_signals> path_; // absent: it has no name
    int fd_ = -1;
};

} // namespace tool

#endif
