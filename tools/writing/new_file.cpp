#include "writing/new_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

constexpr mode_t only_owner = 0600;

[[noreturn]] void fail()
{
    throw std::system_error(errno, std::generic_category());
}

std::filesystem::path folder_of(const std::string &place)
{
    const std::filesystem::path folder = std::filesystem::path(place).parent_path();
    return folder.empty() ? "." : folder;
}

// A name that nobody can take beforehand, short whatever the length of the place's own.
std::string name_beside(const std::string &place)
{
    uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number)
        fail();
    constexpr const char *digits = "0123456789abcdef";
    std::string name(".qelrcpt-");
    for (int shift = 60; shift >= 0; shift -= 4)
        name += digits[(number >> static_cast<unsigned>(shift)) & 0xFU];
    return (folder_of(place) / name).string();
}

// The name by which a file without one can be linked.
std::string open_name(int fd)
{
    return "/proc/self/fd/" + std::to_string(fd);
}

mode_t mode_of_new_files()
{
    const mode_t mask = ::umask(only_owner); // no thread makes files besides
    ::umask(mask);
    return 0666U & ~mask;
}

} // namespace

new_file::new_file(std::string place, name how) : place_(std::move(place))
{
    if (how == name::beside || !make_nameless(folder_of(place_)))
        make_beside();
}

new_file::~new_file()
{
    if (fd_ >= 0)
        ::close(fd_);
}

bool new_file::make_nameless(const std::string &folder)
{
    fd_ = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, only_owner);
    if (fd_ >= 0 && ::access(open_name(fd_).c_str(), F_OK) != 0) // without /proc
        close();
    return fd_ >= 0;
}

void new_file::make_beside()
{
    path_.emplace(name_beside(place_));
    fd_ = ::open(path_->c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, only_owner);
    if (fd_ < 0)
        fail();
}

void new_file::resemble(const std::optional<struct stat> &replaced) const
{
    mode_t mode = mode_of_new_files();
    if (replaced) {
        mode = replaced->st_mode & 0777U;
        const bool has_group = ::fchown(fd_, replaced->st_uid, replaced->st_gid) == 0 ||
                               ::fchown(fd_, static_cast<uid_t>(-1), replaced->st_gid) == 0;
        if (!has_group)
            mode = (mode & ~mode_t{0070}) | (mode & (mode & 0007U) << 3U);
    }
    // Where a file system knows no such modes, the file stays as closed as it was made.
    [[maybe_unused]] const int is_kept_closed = ::fchmod(fd_, mode);
}

// Only a name of its own can be moved over another file.
void new_file::give_name()
{
    path_.emplace(name_beside(place_));
    if (::linkat(AT_FDCWD, open_name(fd_).c_str(), AT_FDCWD, path_->c_str(), AT_SYMLINK_FOLLOW) !=
        0)
        fail();
}

void new_file::close()
{
    if (::close(std::exchange(fd_, -1)) != 0)
        fail();
}

void new_file::take_place(const std::optional<struct stat> &replaced)
{
    resemble(replaced);
    if (::fsync(fd_) != 0)
        fail();
    if (!path_)
        give_name();
    close(); // the file system may report only here that it could not write
    if (::rename(path_->c_str(), place_.c_str()) != 0)
        fail();
    path_->keep();
}

} // namespace tool
