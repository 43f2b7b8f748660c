#include "reading/input_file.h"

#include "messages.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <system_error>

namespace tool
{

std::string shown_file_name(const std::string &name)
{
    return name == "-" ? "<stdin>" : name;
}

input_file::input_file(const std::string &name)
    : shown_name_(shown_file_name(name)),
      fd_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
{
    if (fd_ < 0)
        fail();
}

input_file::~input_file()
{
    if (fd_ != STDIN_FILENO)
        ::close(fd_);
}

bool input_file::wait(int stop_descriptor) const
{
    pollfd waited[] = {{stop_descriptor, POLLIN, 0}, {fd_, POLLIN, 0}};
    while (::poll(waited, std::size(waited), -1) < 0) {
        if (errno != EINTR)
            fail();
    }
    return waited[0].revents == 0;
}

size_t input_file::read(std::span<char> bytes) const
{
    for (;;) {
        wait();
        const ssize_t count = ::read(fd_, bytes.data(), bytes.size());
        if (count >= 0)
            return static_cast<size_t>(count);
        if (errno != EINTR && errno != EAGAIN)
            fail();
    }
}

void input_file::fail() const
{
    throw input_error(shown_name_ + ": " + std::generic_category().message(errno));
}

} // namespace tool
