#include "writing/output.h"

#include "writing/safe_text.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

[[noreturn]] void fail(const std::string &name, int error)
{
    const std::string message = name + ": " + std::generic_category().message(error);
    if (error == EPIPE)
        throw reader_gone(message);
    throw input_error(message);
}

bool is_open_as(int fd, const struct stat &file)
{
    struct stat open {
    };
    return ::fstat(fd, &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino;
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

} // namespace

output_descriptor::output_descriptor(int open_fd, std::string shown_name)
    : shown_name_(std::move(shown_name)), fd_(open_fd), is_own_(false)
{
}

output_descriptor::output_descriptor(const std::string &path, int flags, std::string shown_name)
    : shown_name_(std::move(shown_name)),
      fd_(::open(path.c_str(), flags | O_WRONLY | O_CLOEXEC, 0666)), is_own_(true)
{
    if (fd_ < 0)
        fail(shown_name_, errno);
}

output_descriptor::~output_descriptor()
{
    if (is_own_ && fd_ >= 0)
        ::close(fd_);
}

bool output_descriptor::is_terminal() const
{
    return ::isatty(fd_) == 1;
}

void output_descriptor::write(std::string_view text) const
{
    while (!text.empty()) {
        const ssize_t count = ::write(fd_, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            fail(shown_name_, errno);
        if (count > 0)
            text.remove_prefix(static_cast<size_t>(count));
    }
}

void output_descriptor::set_mode(mode_t mode) const
{
    if (::fchmod(fd_, mode) != 0)
        fail(shown_name_, errno);
}

void output_descriptor::sync() const
{
    if (::fsync(fd_) != 0)
        fail(shown_name_, errno);
}

void output_descriptor::close()
{
    const int fd = std::exchange(fd_, -1);
    if (is_own_ && ::close(fd) != 0)
        fail(shown_name_, errno);
}

temporary_file::~temporary_file()
{
    if (!path_.empty())
        ::unlink(path_.c_str());
}

void temporary_file::take_place_of(const std::string &target, const std::string &shown_name)
{
    if (::rename(path_.c_str(), target.c_str()) != 0)
        fail(shown_name, errno);
    path_.clear();
}

output::output(std::string name) : name_(std::move(name))
{
    open();
    is_terminal_ = descriptor_->is_terminal();
}

// Makes the file beside its place; it moves there when it is complete.
void output::open_beside(const std::string &target, const struct stat *old)
{
    const std::filesystem::path path(target);
    std::string beside(1, '.');
    beside.append(path.filename().string()).append(1, '.');
    beside.append(std::to_string(::getpid())).append(".tmp");
    const std::string temporary_path = (path.parent_path() / beside).string();
    descriptor_.emplace(temporary_path, O_CREAT | O_EXCL, name_);
    temporary_.emplace(temporary_path);
    target_ = target;
    if (old != nullptr)
        descriptor_->set_mode(old->st_mode & 07777U);
}

void output::open()
{
    if (name_.empty()) {
        descriptor_.emplace(STDOUT_FILENO, "standard output");
        return;
    }
    struct stat old {
    };
    if (::stat(name_.c_str(), &old) != 0) {
        if (errno != ENOENT)
            fail(name_, errno);
        return open_beside(name_, nullptr);
    }
    // /dev/stdout is the file that the shell opened and perhaps appends to.
    if (const int fd = open_descriptor_of(old); fd >= 0)
        descriptor_.emplace(fd, name_);
    else if (S_ISREG(old.st_mode)) // through a link, so that the link stays
        open_beside(std::filesystem::canonical(name_).string(), &old);
    else
        descriptor_.emplace(name_, 0, name_);
}

void output::write(std::string_view text)
{
    if (is_terminal_)
        descriptor_->write(for_terminal(text));
    else
        descriptor_->write(text);
}

void output::finish()
{
    if (temporary_)
        descriptor_->sync();
    descriptor_->close();
    if (temporary_)
        temporary_->take_place_of(target_, name_);
}

} // namespace tool
