// The command as a process of its own, with pipes and terminals at its ends.
#ifndef QELRCPT_TESTS_PROCESSES_HPP
#define QELRCPT_TESTS_PROCESSES_HPP

#include "utility.hpp"

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using arguments = std::vector<std::string>;

class descriptor
{
  public:
    explicit descriptor(int fd) : fd_(fd) {}
    descriptor(descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    descriptor &operator=(descriptor &&) = delete;
    ~descriptor() { close(); }

    int get() const { return fd_; }
    void close()
    {
        if (fd_ >= 0)
            ::close(std::exchange(fd_, -1));
    }
    bool write(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t count = ::write(fd_, text.data(), text.size());
            if (count <= 0)
                return false;
            text.remove_prefix(static_cast<size_t>(count));
        }
        return true;
    }
    // Up to the end, or until the text has the mark; a terminal ends with an error.
    std::string read(const std::string &mark = "") const
    {
        std::string text;
        char bytes[4096];
        ssize_t count = 0;
        while ((mark.empty() || !has(text, mark)) && (count = ::read(fd_, bytes, sizeof bytes)) > 0)
            text.append(bytes, static_cast<size_t>(count));
        return text;
    }

  private:
    int fd_;
};

struct channel {
    descriptor ours;
    descriptor theirs;
};

inline channel make_pipe(bool we_read)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    return {descriptor(ends[we_read ? 0 : 1]), descriptor(ends[we_read ? 1 : 0])};
}

inline channel make_terminal()
{
    int ours = -1;
    int theirs = -1;
    winsize size{24, 100, 0, 0};
    EXPECT_EQ(openpty(&ours, &theirs, nullptr, nullptr, &size), 0);
    termios settings{};
    tcgetattr(theirs, &settings);
    cfmakeraw(&settings);
    tcsetattr(theirs, TCSANOW, &settings);
    fcntl(ours, F_SETFD, FD_CLOEXEC);
    fcntl(theirs, F_SETFD, FD_CLOEXEC);
    return {descriptor(ours), descriptor(theirs)};
}

inline pid_t start(arguments args, int in, int out, int err, const char *program = QELRCPT_COMMAND)
{
    args.insert(args.begin(), "qelrcpt");
    std::vector<char *> argv;
    for (std::string &arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    for (const auto &[given, wanted] : {std::pair(in, 0), std::pair(out, 1), std::pair(err, 2)})
        posix_spawn_file_actions_adddup2(&files, given, wanted);
    posix_spawnattr_t attributes; // the tests themselves ignore SIGPIPE
    posix_spawnattr_init(&attributes);
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &pipe);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, program, &files, &attributes, argv.data(), environ), 0);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return child;
}

struct ending {
    int status; // negative: the signal
    long most_kilobytes;
};

inline ending wait_for(pid_t child)
{
    int status = 0;
    rusage usage{};
    EXPECT_EQ(wait4(child, &status, 0, &usage), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), usage.ru_maxrss};
}

struct result : ending {
    std::string out;
    std::string err;
};

using feeder = std::function<void(const descriptor &)>;

class ProcessTest : public FolderTest
{
  protected:
    void SetUp() override
    {
        std::signal(SIGPIPE, SIG_IGN); // the command may end before its input
        setenv("TZ", "UTC", 0); // without it the C library reads its zone under a lock of its own,
                                // which the thread sanitizer does not see
        FolderTest::SetUp();
    }
};

// As wait_for, but a process that does not end by itself within a minute is killed.
inline ending wait_a_minute_for(pid_t child)
{
    const auto last = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    siginfo_t info{};
    while (std::chrono::steady_clock::now() < last) {
        EXPECT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT), 0);
        if (info.si_pid == child)
            return wait_for(child);
        std::this_thread::yield();
    }
    kill(child, SIGKILL);
    return wait_for(child);
}

// Whether the process sleeps, as it does when it waits for another.
inline bool is_asleep(pid_t child)
{
    const std::string stat = read_file("/proc/" + std::to_string(child) + "/stat");
    return has(stat, ") S ");
}

// Whether the process keeps some signals from acting at once.
inline bool holds_signals(pid_t child)
{
    const std::string status = read_file("/proc/" + std::to_string(child) + "/status");
    return has(status, "SigBlk:") && !has(status, "SigBlk:\t0000000000000000");
}

// Whether the process has a file of the folder open, with or without a name.
inline bool has_open(pid_t child, const fs::path &folder)
{
    std::error_code error;
    for (const auto &open :
         fs::directory_iterator("/proc/" + std::to_string(child) + "/fd", error)) {
        const fs::path file = fs::read_symlink(open.path(), error);
        if (file.string().starts_with(folder.string() + "/"))
            return true;
    }
    return false;
}

inline std::ptrdiff_t files_in(const fs::path &folder)
{
    return std::distance(fs::directory_iterator(folder), {});
}

#endif
