// How runs over archives end: with their input, by signals, for want of room, readers or threads.
#include "batch_runs.hpp"

#include <algorithm>

namespace
{

TEST_F(Batch, SaysThatTheOutputIsFull)
{
    std::string archive;
    for (int i = 0; i < 5000; ++i)
        archive += "{\"amount\": 5}\n";
    const result made = run({"--jobs=2", "--quiet"}, archive, "/dev/full");
    EXPECT_EQ(made.status, 1);
    EXPECT_EQ(made.err, "qelrcpt: standard output: No space left on device\n");
}

// As a program uses it that stays open beside another: one line in, one line out, before the next.
TEST_F(BatchAtWork, AnswersEveryLineAtOnceAndEndsQuietlyWithItsReader)
{
    begin({"--quiet", "--block=money", "--copy=customer", "--width=20"});
    const std::string long_record = R"({"amount": 5, "order_notes": ")" + std::string(300000, 'x');
    uint64_t line = 0;
    for (int round = 0; round < 100; ++round) {
        in_.ours.write("{\"amount\": 5}\n");
        EXPECT_EQ(out_.ours.read("\n"), money_line(++line));
        in_.ours.write("bad\n");
        const std::string error = out_.ours.read("\n");
        EXPECT_TRUE(error.starts_with(R"({"line": )" + std::to_string(++line) + R"(, "error": )"))
            << error;
        EXPECT_EQ(error.find('\n'), error.size() - 1);
    }
    for (const std::string part : {"{\"amou", "nt\": 5", "}\n"})
        in_.ours.write(part);
    EXPECT_EQ(out_.ours.read("\n"), money_line(++line));
    in_.ours.write(long_record + "\"}\r\n");
    EXPECT_EQ(out_.ours.read("\n"), money_line(++line));
    out_.ours.close();
    while (in_.ours.write("{\"amount\": 5}\n")) {
    }
    EXPECT_EQ(wait_for(child_).status, -SIGPIPE);
    EXPECT_EQ(err_.ours.read(), "");
}

// As a program has it that does not want to end by the signal itself.
TEST_F(Batch, SaysThatItsReaderIsGoneWhereSigpipeIsIgnored)
{
    channel out = make_pipe(true);
    out.ours.close();
    const std::string script =
        "trap '' PIPE; exec " QELRCPT_COMMAND " -q --batch " + write("archive", sale_line);
    channel err = make_pipe(true);
    const pid_t child = start({"-c", script}, 0, out.theirs.get(), err.theirs.get(), "/bin/sh");
    err.theirs.close();
    EXPECT_EQ(err.ours.read(), "qelrcpt: standard output: Broken pipe\n");
    EXPECT_EQ(wait_for(child).status, 1);
}

class BatchInterrupted : public BatchAtWork, public testing::WithParamInterface<int>
{
};

TEST_P(BatchInterrupted, WritesWholeLinesAndEndsByTheSignal)
{
    begin(money_only);
    in_.ours.write(sale_line + sale_line + "{\"amount\"");
    std::string text = out_.ours.read(money_line(2));
    kill(child_, GetParam());
    text += out_.ours.read();
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    EXPECT_EQ(text, money_line(1) + money_line(2));
    EXPECT_EQ(err_.ours.read(),
              "qelrcpt: stopped after line 2 of <stdin>; --start-line 3 goes on\n");
}

TEST_P(BatchInterrupted, FinishesWhatASlowReaderStillTakes)
{
    begin({});
    std::jthread feeding([&] { // until nobody reads
        while (in_.ours.write("{\"amount\": 5, \"ordernum\": \"A-1\"}\n")) {
        }
    });
    std::string text = out_.ours.read("\n");
    kill(child_, GetParam());
    text += out_.ours.read();
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    const auto lines = lines_of(text);
    for (size_t i = 0; i < lines.size(); ++i)
        ASSERT_EQ(lines[i]["line"], i + 1);
}

TEST_P(BatchInterrupted, KeepsTheOldOutputFile)
{
    const std::string file = write("out", "old");
    begin({"-o", file});
    while (!has_open(child_, directory_) || !holds_signals(child_))
        std::this_thread::yield();
    kill(child_, GetParam());
    EXPECT_EQ(out_.ours.read(), "");
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    EXPECT_EQ(read_file(file), "old");
    EXPECT_EQ(err_.ours.read(),
              "qelrcpt: stopped after line 0 of <stdin>; " + file + " is as it was before\n");
    EXPECT_EQ(files_in(directory_), 1) << "a file is left over";
}

// A signal within a line that is too long: nothing of it is left but the error.
TEST_P(BatchInterrupted, EndsWithinALineThatIsTooLong)
{
    begin(money_only);
    in_.ours.write(std::string(size_t{17} << 20, 'x'));
    kill(child_, GetParam());
    const auto lines = lines_of(out_.ours.read());
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(has(lines[0]["error"], "longer than 16 MiB")) << lines[0];
}

TEST_P(BatchInterrupted, BeforeTheLineToStartWith)
{
    begin({"--start-line=3000"});
    in_.ours.write(sale_line);
    while (!holds_signals(child_))
        std::this_thread::yield();
    kill(child_, GetParam());
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    EXPECT_EQ(err_.ours.read(),
              "qelrcpt: stopped after line 2999 of <stdin>; --start-line 3000 goes on\n");
}

// The receipts of a run that was stopped and of the one that goes on are those of one run.
TEST_P(BatchInterrupted, SaysHowToGoOn)
{
    const std::string one = write("one", sale_line);
    std::string lines;
    for (int i = 0; i < 5000; ++i)
        lines += sale_line;
    const std::string two = write("two", lines);
    const result whole = run({"--block=money", one, two});
    begin({"--block=money", one, two});
    std::string text = out_.ours.read("two");
    kill(child_, GetParam());
    text += out_.ours.read();
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    const auto count = std::ranges::count(text, '\n');
    const std::string next = std::to_string(count);
    EXPECT_EQ(err_.ours.read(), "qelrcpt: stopped after line " + std::to_string(count - 1) +
                                    " of " + two + "; --start-line " + next + " goes on, with " +
                                    two + " as the first FILE and /dev/null as another, for " +
                                    "lines with \"file\"\n");
    const result rest = run({"--block=money", "--start-line", next, two, "/dev/null"});
    EXPECT_EQ(rest.status, 0) << rest.err;
    EXPECT_TRUE(text + rest.out == whole.out) << next;
}

// Threads of a gibibyte each, of which so many have room.
TEST_F(Batch, GoesOnWithTheThreadsThatItCanStartOrEnds)
{
    if (is_sanitized)
        GTEST_SKIP() << "the sanitizers take more room than there is";
    std::string lines; // more than can be on the way
    for (int i = 0; i < 6000; ++i)
        lines += sale_line;
    const std::string archive = write("archive", lines);
    const std::string expected = run({"--block=money", archive}).out;
    const std::string out = (directory_ / "out").string();
    const std::string err = (directory_ / "err").string();
    const std::string no_thread = "qelrcpt: expected to start a thread: Resource temporarily "
                                  "unavailable\n";
    for (int threads = 0; threads < 8; ++threads) {
        const std::string script = "ulimit -s 1048576; ulimit -v " +
                                   std::to_string(threads * 1048576 + 600000) +
                                   "; exec " QELRCPT_COMMAND " --batch --jobs 4 --block=money " +
                                   archive + " > " + out + " 2> " + err;
        const int status = wait_a_minute_for(start({"-c", script}, 0, 1, 2, "/bin/sh")).status;
        const int jobs = threads - 2; // besides those that read and write
        EXPECT_EQ(status, jobs < 1 ? 1 : 0) << threads;
        EXPECT_TRUE(read_file(out) == (jobs < 1 ? "" : expected)) << threads;
        EXPECT_EQ(read_file(err), jobs < 1   ? no_thread
                                  : jobs < 4 ? "qelrcpt: started " + std::to_string(jobs) +
                                                   " of 4 jobs only: Resource temporarily "
                                                   "unavailable\n"
                                             : "")
            << threads;
    }
}

// As nohup wants it.
TEST_F(BatchAtWork, GoesOnAfterASignalThatIsIgnored)
{
    const auto before = std::signal(SIGHUP, SIG_IGN);
    begin(money_only);
    std::signal(SIGHUP, before);
    in_.ours.write(sale_line);
    EXPECT_EQ(out_.ours.read("\n"), money_line(1));
    kill(child_, SIGHUP);
    in_.ours.write(sale_line);
    in_.ours.close();
    EXPECT_EQ(out_.ours.read(), money_line(2));
    EXPECT_EQ(wait_for(child_).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, BatchInterrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
