// Signals as events of a program with several threads.
#ifndef QELRCPT_TOOLS_SIGNALS_H
#define QELRCPT_TOOLS_SIGNALS_H

#include <csignal>
#include <string>

namespace tool
{

// The path of a file that is removed when this goes out of scope, and before that by the signals
// that end the program, where they are not ignored: interrupt, quit, termination, hang-up, abort
// and the limit of processor time. There may be one at a time.
class removed_by_signals
{
  public:
    explicit removed_by_signals(std::string path);
    ~removed_by_signals();
    removed_by_signals(const removed_by_signals &) = delete;
    removed_by_signals &operator=(const removed_by_signals &) = delete;

    const char *c_str() const { return path_.c_str(); }
    void keep(); // the file is another's from now on

    // Removes the file of whoever has one, before the program ends in another way.
    static void remove();

  private:
    std::string path_;
    bool is_kept_ = false;
};

// An event that one thread sets and others wait for by its descriptor, which then can be read.
class event
{
  public:
    event();
    ~event();
    event(const event &) = delete;
    event &operator=(const event &) = delete;

    int descriptor() const { return fd_; }
    void set() const;

  private:
    int fd_ = -1;
};

// Keeps the signals that ask the program to end (interrupt, termination, hang-up) from ending it:
// for this thread and those that it starts from then on. Those that the caller ignores stay so.
class held_signals
{
  public:
    held_signals();
    ~held_signals();
    held_signals(const held_signals &) = delete;
    held_signals &operator=(const held_signals &) = delete;

    int descriptor() const { return fd_; } // can be read once a signal came
    int take() const;                      // the signal that came

    // From now on a signal ends the program at once.
    void let_through() const;

  private:
    sigset_t old_mask_{};
    int fd_ = -1;
};

// Ends the program as the signal does, so that the caller sees what it was.
[[noreturn]] void end_by(int signal);

} // namespace tool

#endif
