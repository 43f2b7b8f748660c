#include "writing/output.h"

#include "reading/input_file.h"
#include "writing/safe_text.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

bool is_same(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool is_open_as(int fd, const struct stat &file)
{
    struct stat open {
    };
    return ::fstat(fd, &open) == 0 && is_same(open, file);
}

bool is_at(const std::string &place, const struct stat &file)
{
    struct stat placed {
    };
    return ::lstat(place.c_str(), &placed) == 0 && is_same(placed, file);
}

// The one of the shell's descriptors that this file is; -1: neither.
int open_descriptor_of(const struct stat &file)
{
    for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) {
        if (is_open_as(fd, file))
            return fd;
    }
    return -1;
}

// Whether a link in a folder for everybody, such as /tmp, is somebody else's, who may have made it
// lead to a file that only this user may write. Systems that protect links judge it so, too, but do
// not know when a program follows one by itself.
bool is_strangers(const std::filesystem::path &link, const std::filesystem::path &folder)
{
    struct stat itself {
    };
    struct stat around {
    };
    if (::lstat(link.c_str(), &itself) != 0 || ::stat(folder.c_str(), &around) != 0)
        return false;
    const bool is_for_everybody =
        (around.st_mode & S_ISVTX) != 0 && (around.st_mode & S_IWOTH) != 0;
    return is_for_everybody && itself.st_uid != ::geteuid() && itself.st_uid != around.st_uid;
}

// Where a name leads through links, also those that lead to nothing.
struct destination {
    std::string place; // of the file that is there or would be
    int fd = -1;       // that the caller opened and /dev/fd/3 and the like stand for; -1: none
};

destination destination_of(const std::string &name)
{
    constexpr int most_links = 40; // as the system allows
    std::error_code unknown;       // what cannot be looked at cannot be opened either
    std::filesystem::path place(name);
    for (int i = 0; i < most_links && std::filesystem::is_symlink(place, unknown); ++i) {
        const std::filesystem::path folder =
            place.has_parent_path() ? place.parent_path() : std::filesystem::path(".");
        if (std::filesystem::equivalent(folder, "/proc/self/fd", unknown))
            return {name, std::stoi(place.filename())};
        if (is_strangers(place, folder))
            throw input_error(name + ": a link of somebody else in a folder for everybody, "
                                     "expected the name of the file");
        place = folder / std::filesystem::read_symlink(place, unknown);
    }
    return {place.string()};
}

// The file that is written must not be one of those that are read.
void refuse_inputs(const struct stat &file, std::span<const std::string> inputs)
{
    if (!S_ISREG(file.st_mode))
        return;
    for (const std::string &input : inputs) {
        struct stat read {
        };
        const bool is_there =
            input == "-" ? ::fstat(STDIN_FILENO, &read) == 0 : ::stat(input.c_str(), &read) == 0;
        if (is_there && is_same(read, file))
            throw input_error(shown_file_name(input) +
                              ": is the output as well, expected another file");
    }
}

std::mutex writing;

} // namespace

int write_all(int fd, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count > 0)
            text.remove_prefix(static_cast<size_t>(count));
        if (count >= 0 || errno == EINTR)
            continue;
        if (errno != EAGAIN)
            return errno;
        pollfd full{fd, POLLOUT, 0};
        ::poll(&full, 1, -1);
    }
    return 0;
}

output::output(std::string name, std::span<const std::string> inputs) : name_(std::move(name))
{
    open(inputs);
    is_terminal_ = ::isatty(fd_) == 1;
}

output::~output()
{
    if (is_own_ && fd_ >= 0)
        ::close(fd_);
}

// Only of that one the system tells the session.
bool output::is_users_terminal() const
{
    return is_terminal_ && ::tcgetsid(fd_) >= 0;
}

void output::fail(int error) const
{
    const std::string shown_name = name_.empty() ? "standard output" : name_;
    const std::string message = shown_name + ": " + std::generic_category().message(error);
    if (error == EPIPE)
        throw reader_gone(message);
    throw input_error(message);
}

void output::open_new(const std::string &place)
{
    try {
        file_.emplace(place);
    } catch (const std::system_error &fault) {
        const int error = fault.code().value();
        if (!replaced_ || ::access(place.c_str(), W_OK) != 0)
            fail(error);
        throw input_error(name_ +
                          ": no new file can be made beside it to replace it when it is "
                          "whole: " +
                          std::generic_category().message(error) +
                          "; expected a folder that can be written to, or '>' instead of -o");
    }
    fd_ = file_->descriptor();
}

void output::open(std::span<const std::string> inputs)
{
    const destination to = name_.empty() ? destination{"", STDOUT_FILENO} : destination_of(name_);
    struct stat old {
    };
    if (to.fd >= 0) {
        fd_ = to.fd;
        if (::fstat(fd_, &old) == 0)
            refuse_inputs(old, inputs);
        return;
    }
    if (::stat(name_.c_str(), &old) != 0) {
        if (errno != ENOENT)
            fail(errno);
        return open_new(to.place);
    }
    refuse_inputs(old, inputs);
    // The shell opened the file as well and perhaps appends to it.
    fd_ = open_descriptor_of(old);
    if (fd_ >= 0)
        return;
    const std::string moved = name_ + ": leads elsewhere by now, expected a name that stays";
    if (S_ISREG(old.st_mode)) {
        if (!is_at(to.place, old))
            throw input_error(moved);
        replaced_ = old;
        return open_new(to.place); // through a link, so that the link stays
    }
    fd_ = ::open(name_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (fd_ < 0)
        fail(errno);
    is_own_ = true;
    if (!is_open_as(fd_, old))
        throw input_error(moved);
}

void output::end_all()
{
    writing.lock();
}

void output::write(std::string_view text) const
{
    write_bytes(is_terminal_ ? for_terminal(text) : text);
}

void output::write_bytes(std::string_view bytes) const
{
    const std::lock_guard lock(writing);
    if (const int error = write_all(fd_, bytes))
        fail(error);
}

void output::finish()
{
    if (file_) {
        try {
            file_->take_place(replaced_);
        } catch (const std::system_error &fault) {
            fail(fault.code().value());
        }
    }
    if (is_own_ && ::close(std::exchange(fd_, -1)) != 0)
        fail(errno);
}

} // namespace tool
