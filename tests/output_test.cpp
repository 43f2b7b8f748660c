// Where the command reads from and writes to: files and what becomes of them, pipes with names,
// descriptors that do not wait.
#include "messages.h"
#include "processes.hpp"
#include "writing/new_file.h"
#include "writing/output.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace
{

constexpr uid_t nobody = 65534;

bool is_root()
{
    return geteuid() == 0;
}

struct stat status_of(const fs::path &path)
{
    struct stat file {
    };
    EXPECT_EQ(stat(path.c_str(), &file), 0) << path;
    return file;
}

class Output : public ProcessTest
{
  protected:
    void SetUp() override
    {
        ProcessTest::SetUp();
        chmod(directory_.c_str(), 0755); // for nobody
    }

    result run(const arguments &args, const std::string &input = "") const
    {
        return shell("exec \"$0\" \"$@\"", args, input);
    }

    // Lets the shell run the command, which is $0, with its arguments.
    result shell(const std::string &script, arguments args = {},
                 const std::string &input = "") const
    {
        args.insert(args.begin(), {"-c", script, QELRCPT_COMMAND});
        channel in = make_pipe(false);
        channel out = make_pipe(true);
        channel err = make_pipe(true);
        const pid_t child =
            start(args, in.theirs.get(), out.theirs.get(), err.theirs.get(), "/bin/sh");
        for (channel *end : {&in, &out, &err})
            end->theirs.close();
        in.ours.write(input);
        in.ours.close();
        std::string text = out.ours.read();
        std::string message = err.ours.read();
        return {wait_for(child), std::move(text), std::move(message)};
    }

    // Runs in a process of its own, as nobody where it may; gives the message of an input_error.
    template <typename Function>
    std::string message_as_nobody(Function function) const
    {
        channel said = make_pipe(true);
        const pid_t child = fork();
        if (child == 0) {
            try {
                if (!is_root() || (setgid(nobody) == 0 && setuid(nobody) == 0))
                    function();
            } catch (const tool::input_error &fault) {
                said.theirs.write(fault.what());
            }
            _exit(0);
        }
        said.theirs.close();
        std::string message = said.ours.read();
        wait_for(child);
        return message;
    }

    std::string path(const std::string &name) const { return (directory_ / name).string(); }
};

const arguments money_only = {"--block=money", "--copy=customer", "--width=20"};
const std::string sale = R"({"amount": 5})";
const std::string money = "SUBTOTAL:      $5.00\nTOTAL:         $5.00\n";

arguments with(arguments args, const arguments &more)
{
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

TEST_F(Output, IsAsReadableAsWhatItReplacesAndByNobodyBefore)
{
    const mode_t old_mask = umask(0027);
    const struct {
        std::optional<mode_t> old_mode; // absent: there is no old file
        mode_t mode;
    } cases[] = {{{}, 0640}, {0600, 0600}, {0666, 0666}, {0444, 0444}, {07751, 0751}};
    for (const auto how : {tool::new_file::name::none_if_possible, tool::new_file::name::beside}) {
        for (const auto &[old_mode, mode] : cases) {
            const std::string name = path("receipt");
            std::optional<struct stat> old;
            if (old_mode) {
                write("receipt", "old");
                if (is_root()) {
                    EXPECT_EQ(chown(name.c_str(), 1234, 5678), 0);
                }
                EXPECT_EQ(chmod(name.c_str(), *old_mode), 0);
                old = status_of(name);
            }
            tool::new_file file(name, how);
            struct stat made {
            };
            EXPECT_EQ(fstat(file.descriptor(), &made), 0);
            EXPECT_EQ(made.st_mode & 07777U, 0600U);
            EXPECT_EQ(files_in(directory_), (old ? 1 : 0) + static_cast<long>(made.st_nlink));
            EXPECT_EQ(tool::write_all(file.descriptor(), "new"), 0);
            file.take_place(old);
            const struct stat now = status_of(name);
            EXPECT_EQ(now.st_mode & 07777U, mode);
            EXPECT_EQ(now.st_uid, old ? old->st_uid : geteuid());
            EXPECT_EQ(now.st_gid, old ? old->st_gid : getegid());
            EXPECT_EQ(read_file(name), "new");
            EXPECT_EQ(files_in(directory_), 1) << "a file is left over";
            fs::remove(name);
        }
    }
    umask(old_mask);
}

// Whose group cannot be kept: its members were not the new group's.
TEST_F(Output, GivesAStrangersGroupNoMoreThanEverybody)
{
    if (!is_root())
        GTEST_SKIP() << "needs a file of somebody else";
    chmod(directory_.c_str(), 0777);
    const struct {
        mode_t old_mode, mode;
        gid_t group;
    } cases[] = {{0660, 0600, 0},
                 {0664, 0644, 0},
                 {0626, 0626, 0},
                 {0671, 0611, 0},
                 {0660, 0660, nobody}}; // the new group's, too
    for (const auto &[old_mode, mode, group] : cases) {
        const std::string name = write("receipt", "old");
        EXPECT_EQ(chown(name.c_str(), 0, group), 0);
        chmod(name.c_str(), old_mode);
        EXPECT_EQ(message_as_nobody([&] {
                      tool::output out(name);
                      out.write("new");
                      out.finish();
                  }),
                  "");
        EXPECT_EQ(read_file(name), "new");
        EXPECT_EQ(status_of(name).st_uid, nobody);
        EXPECT_EQ(status_of(name).st_mode & 07777U, mode);
        fs::remove(name);
    }
}

// A file that has a name from its beginning, as on file systems that know no others.
TEST_F(Output, LeavesNothingBehindWhateverEndsIt)
{
    const auto end_by = [&](int signal, tool::new_file::name how) {
        const pid_t child = fork();
        if (child == 0) {
            const rlimit no_core{0, 0};
            setrlimit(RLIMIT_CORE, &no_core);
            const tool::new_file file(path("receipt"), how);
            raise(signal);
            _exit(0);
        }
        EXPECT_EQ(wait_for(child).status, -signal);
    };
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGABRT, SIGXCPU}) {
        end_by(signal, tool::new_file::name::beside);
        EXPECT_EQ(files_in(directory_), 0) << signal;
    }
    end_by(SIGKILL, tool::new_file::name::beside);
    ASSERT_EQ(files_in(directory_), 1);
    const fs::path left = fs::directory_iterator(directory_)->path();
    EXPECT_TRUE(left.filename().string().starts_with(".qelrcpt-")) << left;
    fs::remove(left);
    { // nor is what was left behind in the way of another process of the same number
        const tool::new_file one(path("receipt"), tool::new_file::name::beside);
        const tool::new_file other(path("receipt"), tool::new_file::name::beside);
        EXPECT_EQ(files_in(directory_), 2);
    }
    const bool can_be_nameless = ::open(directory_.c_str(), O_TMPFILE | O_WRONLY, 0600) >= 0;
    end_by(SIGKILL, tool::new_file::name::none_if_possible);
    EXPECT_EQ(files_in(directory_), can_be_nameless ? 0 : 1);
}

TEST_F(Output, IsNoLargerThanTheShellAllows)
{
    const std::string out = write("receipts", "old");
    const std::string archive =
        write("archive", std::string(2000 * 14, ' ').append("{}\n{}\n{}\n"));
    for (const std::string batch : {"", "--batch"}) {
        const std::string note = R"({"order_notes": ")" + std::string(200000, 'x') + "\"}\n";
        const result made = shell("ulimit -f 64; exec \"$0\" -q -o " + out + " " + batch, {}, note);
        EXPECT_EQ(made.status, 1);
        EXPECT_EQ(made.err, "qelrcpt: " + out + ": File too large\n");
        EXPECT_EQ(read_file(out), "old");
        EXPECT_EQ(files_in(directory_), 2) << "a file is left over";
    }
}

TEST_F(Output, IsNeverOneOfItsInputs)
{
    const std::string file = write("file", sale + "\n");
    const std::string other = write("other", sale + "\n");
    fs::create_hard_link(file, path("hard"));
    fs::create_symlink("file", path("soft"));
    const struct {
        std::string script;
        bool is_refused;
    } cases[] = {
        {"-o file file", true},
        {"-o file other soft", true},
        {"-o soft hard", true},
        {"-o file - < file", true},
        {"-o file < file", true},
        {"file >> file", true},
        {"soft -o /dev/stdout >> hard", true},
        {"other - < file >> file", true},
        {"file < file > new", false},
        {"/dev/null - < /dev/null > /dev/null; true", false},
    };
    for (const std::string batch : {"--batch ", ""}) {
        for (const auto &[script, is_refused] : cases) {
            const result made =
                shell("cd " + directory_.string() + "; \"$0\" -q " + batch + script);
            EXPECT_EQ(made.status, is_refused ? 1 : 0) << script << made.err;
            EXPECT_EQ(has(made.err, "is the output as well, expected another file"), is_refused)
                << script;
            EXPECT_EQ(read_file(file), sale + "\n") << script;
        }
    }
}

TEST_F(Output, HoldsNoMessagesWhereTheCallerClosedDescriptors)
{
    const std::string file = write("file", R"({"timestamp": "1", "zzz": "1"})");
    ASSERT_EQ(shell("cd " + directory_.string() + "; \"$0\" --batch -o whole file").status, 0);
    for (const std::string closed : {"2>&-", "<&- 2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        const result made =
            shell("cd " + directory_.string() + "; \"$0\" --batch -o new file " + closed);
        EXPECT_EQ(made.status, 0) << closed;
        EXPECT_EQ(read_file(path("new")), read_file(path("whole"))) << closed;
        fs::remove(path("new"));
    }
    for (const std::string closed : {"file >&-", "--batch file >&-", "- <&-", "--batch - <&-"})
        EXPECT_EQ(shell("cd " + directory_.string() + "; \"$0\" -q " + closed).status, 1) << closed;
}

TEST_F(Output, GoesWhereTheNameLeads)
{
    fs::create_directory(directory_ / "folder");
    fs::create_symlink("folder/new", path("dangling"));
    fs::create_symlink("dangling", path("twice"));
    fs::create_symlink("folder/no/such", path("nowhere"));
    fs::create_symlink("circle", path("circle"));
    const struct {
        std::string name;
        std::string place; // empty: it cannot be
        std::string message;
    } cases[] = {
        {"dangling", "folder/new", ""},
        {"twice", "folder/new", ""},
        {std::string(250, 'n'), std::string(250, 'n'), ""},
        {std::string(255, 'n'), std::string(255, 'n'), ""},
        {std::string(256, 'n'), "", "File name too long"},
        {"nowhere", "", "No such file or directory"},
        {"circle", "", "Too many levels of symbolic links"},
    };
    for (const auto &[name, place, message] : cases) {
        const bool is_link = name.size() < 250 && fs::is_symlink(path(name));
        const result made = run(with(money_only, {"-o", path(name)}), sale);
        EXPECT_EQ(made.status, place.empty() ? 1 : 0) << name << made.err;
        EXPECT_TRUE(message.empty() || has(made.err, ": " + message + "\n")) << made.err;
        if (place.empty())
            continue;
        EXPECT_EQ(read_file(path(place)), money) << name;
        EXPECT_EQ(fs::is_symlink(path(name)), is_link) << name;
        fs::remove(path(place));
    }
}

// What the caller opened, perhaps to append to it or to remove its name, is written to as it is.
TEST_F(Output, GoesOnWhereTheCallersDescriptorsAre)
{
    fs::create_symlink("/dev/fd/3", path("link"));
    const std::string begin = "cd " + directory_.string() + "; echo old >log; exec 3>>log; ";
    const std::string command = "\"$0\" -q --block=money --copy=customer --width=20 -o ";
    for (const std::string name : {"/dev/fd/3", "/proc/self/fd/3", "link"}) {
        const std::string end = name + " || exit; echo after >&3; cat log; ";
        const result kept = shell(begin + command + end, {}, sale);
        EXPECT_EQ(kept.out, "old\n" + money + "after\n") << name << kept.err;
        const result nameless =
            shell(begin + "exec 4<log; rm log; " + command + name + "; cat <&4; ls", {}, sale);
        EXPECT_EQ(nameless.out, "old\n" + money + "link\n") << name << nameless.err;
    }
    const result closed = shell(begin + command + "/dev/fd/9 9>&-", {}, sale);
    EXPECT_TRUE(closed.status == 1 && has(closed.err, "qelrcpt: /dev/fd/9: ")) << closed.err;
}

// In a folder such as /tmp others may lay links to what they may not write themselves.
TEST_F(Output, FollowsNoStrangersLinkInAFolderForEverybody)
{
    if (!is_root())
        GTEST_SKIP() << "needs a link of somebody else";
    for (const uid_t owner : {uid_t{0}, nobody}) {
        for (const std::string old : {"old", ""}) {
            fs::create_directory(directory_ / "all");
            chmod(path("all").c_str(), 01777);
            if (!old.empty())
                write("victim", old);
            fs::create_symlink("../victim", path("all/out"));
            EXPECT_EQ(lchown(path("all/out").c_str(), owner, owner), 0);
            const bool is_own = owner == 0;
            const result made = run(with(money_only, {"-o", path("all/out")}), sale);
            EXPECT_EQ(made.status, is_own ? 0 : 1) << made.err;
            EXPECT_EQ(has(made.err, "a link of somebody else"), !is_own) << made.err;
            EXPECT_EQ(read_file(path("victim")), is_own ? money : old);
            fs::remove_all(path("all"));
            fs::remove(path("victim"));
        }
    }
}

TEST_F(Output, SaysWhyAFileInAClosedFolderIsNotReplaced)
{
    const std::string file = write("receipt", "old");
    chmod(file.c_str(), 0666);
    chmod(directory_.c_str(), 0555);
    const std::string message = message_as_nobody([&] { const tool::output out(file); });
    EXPECT_TRUE(has(message, "no new file can be made beside it")) << message;
    EXPECT_TRUE(has(message, std::generic_category().message(EACCES))) << message;
    EXPECT_EQ(read_file(file), "old");
    chmod(directory_.c_str(), 0755);
}

// Whatever it waits for, a signal ends it.
TEST_F(Output, WaitsForTheOtherEndOfAPipeAndForSignals)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const std::string record = write("record", sale);
    const descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const arguments &args : {arguments{"--batch", path("pipe")},
                                  {path("pipe")},
                                  {"--batch", "-o", path("pipe"), record},
                                  {"-o", path("pipe"), record}}) {
        const pid_t child = start(args, nowhere.get(), nowhere.get(), nowhere.get());
        while (!is_asleep(child))
            std::this_thread::yield();
        kill(child, SIGTERM);
        EXPECT_EQ(wait_a_minute_for(child).status, -SIGTERM) << args.back();
    }
    const std::string lines = sale + "\n" + sale + "\n";
    for (const char *batch : {"--quiet", "--batch"}) {
        const bool is_batch = std::string_view(batch) == "--batch";
        const result made = shell(R"(cat "$2/pipe" & "$0" --block=money "$1" -o "$2/pipe" -; wait)",
                                  {batch, directory_.string()}, is_batch ? lines : sale);
        EXPECT_EQ(std::ranges::count(made.out, '\n'), is_batch ? 2 : 7) << made.out;
        const result read = shell(R"("$0" --block=money "$1" "$2/pipe" & cat > "$2/pipe"; wait)",
                                  {batch, directory_.string()}, is_batch ? lines : sale);
        EXPECT_EQ(read.out, made.out);
    }
}

// The ends that a shell hands on may be set so that they do not wait.
TEST_F(Output, WaitsWhereADescriptorDoesNot)
{
    const std::string record = R"({"order_notes": ")" + std::string(1 << 20, 'x') + "\"}";
    for (const char *batch : {"--quiet", "--batch"}) {
        channel in = make_pipe(false);
        channel out = make_pipe(true);
        const descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
        fcntl(in.theirs.get(), F_SETFL, O_NONBLOCK);
        fcntl(out.theirs.get(), F_SETFL, O_NONBLOCK);
        const pid_t child =
            start({batch, "--copy=customer"}, in.theirs.get(), out.theirs.get(), nowhere.get());
        in.theirs.close();
        out.theirs.close();
        while (!is_asleep(child))
            std::this_thread::yield();
        in.ours.write(record + "\n");
        in.ours.close();
        while (!is_asleep(child))
            std::this_thread::yield();
        const std::string text = out.ours.read();
        EXPECT_EQ(wait_for(child).status, 0);
        EXPECT_EQ(std::ranges::count(text, 'X'), 1 << 20);
    }
}

// A printer at a serial port is a terminal, too.
TEST_F(Output, TakesPrintersBytesButWhereItsUserSits)
{
    const std::string command = "\"$0\" -q --output=escpos --block=money " + write("record", sale);
    const std::string bytes = shell(command).out;
    ASSERT_TRUE(has(bytes, "\x1b")) << bytes;
    const struct {
        std::string script;
        bool is_refused;
    } cases[] = {{command + " >$tty", false},
                 {command + " -o $tty", false},
                 {"setsid -w " + command + " -o $tty", false}, // which does not make it its own
                 {"setsid -w sh -c 'exec <>$tty; " + command + " >&0' \"$0\"", true}};
    for (const auto &[script, is_refused] : cases) {
        channel terminal = make_terminal();
        setenv("tty", ttyname(terminal.theirs.get()), 1);
        const result made = shell(script);
        EXPECT_EQ(made.status, is_refused ? 2 : 0) << script << made.err;
        EXPECT_EQ(has(made.err, "not for a terminal"), is_refused) << made.err;
        terminal.theirs.close();
        EXPECT_EQ(terminal.ours.read(), is_refused ? "" : bytes) << script;
    }
}

// Whoever starts the command without a file should not wonder what it waits for.
TEST_F(Output, IsAnnouncedWhereTheRecordIsTyped)
{
    for (const bool is_quiet : {false, true}) {
        channel terminal = make_terminal();
        termios settings{};
        tcgetattr(terminal.theirs.get(), &settings);
        settings.c_lflag |= ICANON;
        settings.c_cc[VEOF] = 4;
        tcsetattr(terminal.theirs.get(), TCSANOW, &settings);
        terminal.ours.write("amount=5\n\x04");
        channel out = make_pipe(true);
        channel err = make_pipe(true);
        const pid_t child =
            start({is_quiet ? "--quiet" : "--block=money", "--width=20", "--copy=customer"},
                  terminal.theirs.get(), out.theirs.get(), err.theirs.get());
        out.theirs.close();
        err.theirs.close();
        EXPECT_TRUE(has(out.ours.read(), "TOTAL:         $5.00\n"));
        EXPECT_EQ(has(err.ours.read(), "standard input"), !is_quiet);
        EXPECT_EQ(wait_for(child).status, 0);
    }
}

} // namespace
