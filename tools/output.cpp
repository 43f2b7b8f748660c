#include "output.h"

#include "messages.h"

#include <fcntl.h>
#include <sys/stat.h>
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
    throw input_error(name + ": " + std::generic_category().message(error));
}

void write_all(int fd, std::string_view text, const std::string &name)
{
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            fail(name, errno);
        if (count > 0)
            text.remove_prefix(static_cast<size_t>(count));
    }
}

// An open file that is closed at the latest when it goes out of scope.
class output_descriptor
{
  public:
    output_descriptor(const std::string &path, int flags, std::string shown_name)
        : fd_(::open(path.c_str(), flags | O_WRONLY | O_CLOEXEC, 0666)),
          shown_name_(std::move(shown_name))
    {
        if (fd_ < 0)
            fail(shown_name_, errno);
    }
    ~output_descriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    output_descriptor(const output_descriptor &) = delete;
    output_descriptor &operator=(const output_descriptor &) = delete;

    void write(std::string_view text) const { write_all(fd_, text, shown_name_); }
    void set_mode(mode_t mode) const
    {
        if (::fchmod(fd_, mode) != 0)
            fail(shown_name_, errno);
    }
    void sync() const
    {
        if (::fsync(fd_) != 0)
            fail(shown_name_, errno);
    }
    // The file system may report only here that it could not write.
    void close()
    {
        if (::close(std::exchange(fd_, -1)) != 0)
            fail(shown_name_, errno);
    }

  private:
    int fd_;
    std::string shown_name_;
};

// A file that is removed again unless it takes its place.
class temporary_file
{
  public:
    explicit temporary_file(std::string path) : path_(std::move(path)) {}
    ~temporary_file()
    {
        if (!path_.empty())
            ::unlink(path_.c_str());
    }
    temporary_file(const temporary_file &) = delete;
    temporary_file &operator=(const temporary_file &) = delete;

    const std::string &path() const { return path_; }
    void take_place_of(const std::string &target, const std::string &shown_name)
    {
        if (::rename(path_.c_str(), target.c_str()) != 0)
            fail(shown_name, errno);
        path_.clear();
    }

  private:
    std::string path_;
};

// Makes the file beside its place and moves it there when it is complete.
void replace_file(const std::string &target, const struct stat *old, std::string_view text,
                  const std::string &shown_name)
{
    const std::filesystem::path path(target);
    std::string beside(1, '.');
    beside.append(path.filename().string()).append(1, '.');
    beside.append(std::to_string(::getpid())).append(".tmp");
    const std::string temporary_path = (path.parent_path() / beside).string();
    output_descriptor output(temporary_path, O_CREAT | O_EXCL, shown_name);
    temporary_file temporary(temporary_path);
    if (old != nullptr)
        output.set_mode(old->st_mode & 07777U);
    output.write(text);
    output.sync();
    output.close();
    temporary.take_place_of(target, shown_name);
}

bool is_open_as(int fd, const struct stat &file)
{
    struct stat open {
    };
    return ::fstat(fd, &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino;
}

} // namespace

void write_standard_output(std::string_view text)
{
    write_all(STDOUT_FILENO, text, "standard output");
}

void write_file(const std::string &name, std::string_view text)
{
    struct stat old {
    };
    if (::stat(name.c_str(), &old) != 0) {
        if (errno != ENOENT)
            fail(name, errno);
        return replace_file(name, nullptr, text, name);
    }
    // /dev/stdout is the file that the shell opened and perhaps appends to.
    for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) {
        if (is_open_as(fd, old))
            return write_all(fd, text, name);
    }
    if (S_ISREG(old.st_mode)) // through a link, so that the link stays
        return replace_file(std::filesystem::canonical(name).string(), &old, text, name);
    output_descriptor output(name, 0, name);
    output.write(text);
    output.close();
}

} // namespace tool
