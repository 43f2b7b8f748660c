#include "signals.h"

#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

bool is_ignored(int signal)
{
    struct sigaction action {
    };
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

int checked(int fd)
{
    if (fd < 0)
        throw std::system_error(errno, std::generic_category());
    return fd;
}

// What the handler removes. Only calls that signals may interrupt anywhere are made there.
std::atomic<const char *> removed_path = nullptr;
static_assert(std::atomic<const char *>::is_always_lock_free);

constexpr int ending_signals[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGABRT, SIGXCPU};

extern "C" void remove_and_end(int signal)
{
    removed_by_signals::remove();
    ::raise(signal); // its own action is the default one again, which follows on return
}

bool has_default_action(int signal)
{
    struct sigaction action {
    };
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_DFL;
}

} // namespace

removed_by_signals::removed_by_signals(std::string path) : path_(std::move(path))
{
    removed_path = path_.c_str();
    struct sigaction action {
    };
    action.sa_handler = remove_and_end;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : ending_signals) {
        if (has_default_action(signal))
            ::sigaction(signal, &action, nullptr);
    }
}

removed_by_signals::~removed_by_signals()
{
    if (!is_kept_)
        ::unlink(path_.c_str());
    removed_path = nullptr;
}

void removed_by_signals::keep()
{
    removed_path = nullptr;
    is_kept_ = true;
}

void removed_by_signals::remove()
{
    if (const char *path = removed_path.exchange(nullptr))
        ::unlink(path);
}

event::event() : fd_(checked(::eventfd(0, EFD_CLOEXEC))) {}

event::~event()
{
    ::close(fd_);
}

void event::set() const
{
    const uint64_t one = 1;
    while (::write(fd_, &one, sizeof one) < 0 && errno == EINTR) {
    }
}

held_signals::held_signals()
{
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!is_ignored(signal))
            sigaddset(&held, signal);
    }
    fd_ = checked(::signalfd(-1, &held, SFD_CLOEXEC));
    ::pthread_sigmask(SIG_BLOCK, &held, &old_mask_);
}

held_signals::~held_signals()
{
    let_through();
    ::close(fd_);
}

int held_signals::take() const
{
    signalfd_siginfo signal{};
    while (::read(fd_, &signal, sizeof signal) < 0 && errno == EINTR) {
    }
    return static_cast<int>(signal.ssi_signo);
}

void held_signals::let_through() const
{
    ::pthread_sigmask(SIG_SETMASK, &old_mask_, nullptr);
}

void end_by(int signal)
{
    sigset_t this_one;
    sigemptyset(&this_one);
    sigaddset(&this_one, signal);
    std::signal(signal, SIG_DFL);
    ::pthread_sigmask(SIG_UNBLOCK, &this_one, nullptr);
    std::raise(signal);
    std::_Exit(128 + signal); // not reached, unless the signal does not end a program
}

} // namespace tool
